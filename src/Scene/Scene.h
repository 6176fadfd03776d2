// Scene: owns the tree of tools through its Root, and keeps flat lists of it for access by
// number: a pixel of the id buffer, a slot of a list, a search.
//
// Ids are positions, not properties of tools: entry i of `list` has id i + 1, id 0 is the
// root, and an id is valid only until the next rebuild. After any structural change `dirty`
// is set and toList renumbers; ids from before it must not be used.
//
// The singleton is the scene on screen. Other scenes are built freely: a load fills a
// private one on a worker thread, and the main thread takes it over.
//
// Index (Scene.cpp)
// - construction and lists
// - searches by id
// - selection
// - adding objects
// - merging, fitting, saving, time, OBJ export
// Index (SceneFile.cpp): scene and object files
#pragma once

#include "Math/AABB.h"
#include "Math/Matrix34.h"
#include "Math/Vector3.h"
#include "Memory/Singleton.h"
#include "Scene/ToolList.h"

#include <deque>
#include <string>
#include <unordered_map>
#include <vector>

namespace vel {

class IFile;
class OFile;
class Root;
class Tool;

// The result of a search: the object that answers for an id, and the tool that was hit.
struct SceneHit {
    Tool* object = nullptr;
    Tool* tool = nullptr;
    Matrix34<double> objectMatrix; // world matrices from the list
    Matrix34<double> toolMatrix;
};

// A tool that lives in a tool box or the tools panel: not in the tree, saved with the scene.
struct UITool {
    Matrix34<double> matrix;
    int blockId = 0;
    Tool* tool = nullptr;
};

class Scene : public Singleton<Scene> {
public:
    static std::vector<UITool> UITools;
    static bool Error;

    Vector3<double> centre; // of the last fit
    double radius = 1;      // half the diagonal of the last fit
    Root* root = nullptr;
    ToolList list;      // the tree, flat
    ToolList temporary; // tools that exist only during a drawing gesture, and a moved selection
    std::unordered_map<int, Tool*> map; // tool id to tool, rebuilt by toMap
    bool dirty = true;  // the list is out of date
    SceneHit hit;       // of the last search
    SceneHit selection; // what selectObject fixed
    int objectIndex = -1; // entries of the last hit
    int toolIndex = -1;

    Scene();
    ~Scene() override;

    // Clears everything. The root is replaced by a new one, or with `keepRoot` left null for
    // a caller that brings its own (a finished load). Records nothing.
    void init(bool keepRoot);
    // Rebuilds the list and sorts it with the settings of Rendering. With `forPicking` the
    // selected tools go to the temporary list instead, so that the frame's pick looks
    // through what is being moved.
    void toList(bool clearTemporary, bool forPicking);
    void toMap();
    void clearTemporary();

    // ---- searches by id ----
    // 0 is the root; an id below 0 or past the list asserts.
    Tool* findObject(int id);
    // The object and the tool of an id; false for ids below 1 or past the end.
    bool findObjects(int id, Tool*& object, Tool*& tool);
    // Fills `hit`, `objectIndex` and `toolIndex`; false for id 0 (and ids past the end).
    bool searchObject(int id);
    bool searchObject(int id, Tool*& tool, Tool*& object);
    // Also the tool's tree parent (null at the top) and the three world matrices.
    bool searchObject(int id, Tool*& tool, Tool*& object, Tool*& parent, Matrix34<double>& toolMatrix,
                      Matrix34<double>& objectMatrix, Matrix34<double>& parentMatrix);
    // One step up the chase table from the entry of `id` (or from where it redirects).
    bool searchFirstParent(int id, Tool*& tool, Matrix34<double>& M);
    // The chain from the tool of `id` up to its object, at most `levels` long, top first;
    // the top takes its parentPivot, the others their world matrices.
    bool findHiHierarchy(int id, std::vector<Tool*>& tools, std::vector<Matrix34<double>>& matrices, int levels);
    // Every tool of the list that shows `e`.
    bool findElement(Element* e, std::vector<Tool*>& tools);
    // The id of T: 0 for the root and for a tool not in the list. Linear.
    int findID(Tool* T);

    // ---- selection ----
    void selectObject(int id);
    void deselect();
    // The tool of `id` (its object with `ofObject`), and with `links` its ring's objects.
    void selectionObjects(std::vector<Tool*>& out, int id, bool ofObject, bool links, bool sameParent);

    // ---- adding objects ----
    // The temporary list during drawing: T under the last hit's object (mode 2) or tool
    // (mode 3), or with no parent (mode 1, or without a hit); other modes add nothing.
    void addObjectToList(Tool* T, Matrix34<double> const& M, std::vector<Matrix34<double>> const& matrices, int mode,
                         bool skipSelected);
    // Copies of T (cloneObject(M, matrix) per matrix) under the object (mode 2), the tool
    // (mode 3) or the root (mode 1, and a failed search) of `id`, and under each of that
    // target's linked twins with `links`. Returns the copies.
    std::deque<Tool*> addObjectsOnID(int id, Tool* T, Matrix34<double> const& M,
                                     std::vector<Matrix34<double>> const& matrices, int mode, bool links,
                                     bool sameParent);
    std::deque<Tool*> addObjectsOnParent(Tool* T, Tool* parent, Matrix34<double> const& M,
                                         std::vector<Matrix34<double>> const& matrices);

    // ---- merging, fitting, saving, time ----
    // Moves the other scene's objects under this root, then deletes the other scene.
    void append(Scene* other);
    // The world box of everything, stored as `centre` and `radius`; an empty scene gives the
    // cube of half-size `fallback` about the origin.
    AABB fit(double fallback);
    // Lets every element of the tree and of UITools prepare for writing, once each.
    void prepareSave();
    bool timer(double t);
    void updateTransformsFromPhysicsWorld();
    // Writes the meshes of `tools` in world coordinates to one OBJ file (".obj" added when
    // missing). Groups, bones and elements that do not convert are left out; an element
    // shown by several tools is converted once. False when the file cannot be written.
    bool saveOBJ(std::vector<Tool*> const& tools, std::string const& path, bool normals);

    // ---- scene and object files (SceneFile.cpp) ----
    // By the extension, in any case: ".vsc" the whole scene (saveN), ".obj" the root's tools
    // as OBJ; the list form ".vob" the tools alone (saveNO), ".obj" those as OBJ. False for
    // another extension or a stream that failed; nothing is logged here (the workflow does).
    bool save(std::string const& path);
    bool save(std::vector<Tool*> const& tools, std::string const& path);
    bool saveN(std::string const& path);
    bool saveNO(std::vector<Tool*> const& tools, std::string const& path);
    // The same into any stream (memory for tests): UITools' tools, the root's children and
    // every block; or `tools` and the elements they show.
    void saveN(OFile& out);
    void saveNO(std::vector<Tool*> const& tools, OFile& out);
    // Reads a scene or object file into this scene's root and UITools (emptied first), with
    // its messages in the log. False for an unsupported version, an unknown element kind or
    // a damaged file; what was read before the damage stays as a consistent scene.
    bool load(std::string const& path);
    bool load(IFile& in);
    // One object from a file that is not a scene: OBJ meshes (several under a group); null
    // for anything else or a file that cannot be read. Owned by the caller.
    static Tool* loadTool(std::string const& path);

private:
    // The entry of id, redirected where the entry says so.
    int searchStart(int id) const;
    std::deque<Tool*> addCopies(Tool* T, std::vector<Tool*> const& parents, Matrix34<double> const& M,
                                std::vector<Matrix34<double>> const& matrices);
};

} // namespace vel
