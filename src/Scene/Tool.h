// Tool: an object of the scene, whatever its kind, and the spine of the object tree.
//
// A tool places geometry: it owns a position in the tree (its children, in order), two
// matrices, a material, constraints, a ring of links to its twins and one shared Element.
//
// Invariants:
// - Every child's `Parent` is the tool whose `children` list it; a tool sits in at most one
//   such list (or in one item slot) and is never its own ancestor.
// - `linkNext` closes a ring: following it from any tool comes back to that tool. A lone
//   tool points to itself.
// - Placement: with object matrix A and pivot matrix B, a point of the element goes by
//   `transform()` = A B into the parent's frame, and by A B, then the parent's world
//   transform, into the world (row vectors: `A *= B` applies A, then B).
//
// Ownership: a parent owns its children; a tool taken out by `remove` is owned by its
// CommandObjectDelete until that command leaves the history; a tool whose creation is
// undone, or whose placement is undone and then cut off by a new step, is owned by its
// CommandRegisterToolCreation; a tool kept out of the tree on purpose by its maker.
// Every tree change is recorded in History as it happens; `remove` is one step of its own.
//
// The trailing pair of bools on transforming and changing operations: the first applies
// the operation to the ring of links too, the second limits that to members with the same
// `Parent`. This tool always gets it; other members only when they are objects.
//
// Index (Tool.cpp)
// - construction and destruction
// - parents and children
// - links
// - cloning
// - listing and searching
// - transforms
// - constrained moves and rotations
// - selection and changes over the ring
// - kind queries, element queries, time
#pragma once

#include <functional>

#include "Math/Matrix34.h"
#include "Math/Vector3.h"
#include "Memory/Shared.h"
#include "OpenGL/ObjectShader.h"
#include "Scene/Element.h"
#include "Scene/Elements/TRenderState.h"
#include "Scene/Material.h"

#include <deque>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace vel {

class Tool;
class ToolList;

// The object the viewport added last; cleared when that tool leaves its parent.
extern Tool* gPreviouslyAddedObject;
// Resets the sticky selection if it holds the tool; installed by whoever keeps that
// selection, null until then.
extern void (*gResetStickySelection)(Tool*);
// Records the creation of a tool as its own step: a closed group "Register Tool Creation"
// holding one CommandRegisterToolCreation.
void g_REGISTER_TOOL_CREATION(Tool* tool);

class Tool : public ObjectShader {
public:
    // ---- flag bits ----
    static constexpr unsigned short FLAG_VISIBLE = 1;
    static constexpr unsigned short FLAG_SELECTED = 2;
    static constexpr unsigned short FLAG_TRANSPARENT = 4;
    static constexpr unsigned short FLAG_OBJECT = 8; // answers to the user as one object
    static constexpr unsigned short FLAG_HIGHLIGHTED = 16; // also the mark of a save or load pass
    static constexpr unsigned short FLAG_ORIENTATION = 64 | 128; // mode in bits 6 and 7
    static constexpr int ORIENTATION_SHIFT = 6;
    static constexpr unsigned short FLAG_CLONABLE = 0x100;
    static constexpr unsigned short FLAG_GEAR_PARTNER = 0x8000;
    // What a copy takes from its original; the other bits stay the copy's own.
    static constexpr unsigned short CLONE_FLAGS = 0x80c4;

    // ---- statics ----
    static int GlobalID;      // advanced per construction
    static int COUNT;         // live tools; 0 once everything is torn down
    static double GlobalTime; // seconds
    static bool Error;
    static bool ShowHandles;

    // ---- fields ----
    int id = 0; // unique in the process
    Shared<Element> element; // null for a group
    Tool* Parent = nullptr; // null for the root and for a tool out of the tree
    Tool* clone = nullptr; // the copy made in the current clone pass; cleared by Mark
    Tool* linkNext = this; // next in the ring of links (named apart from link(Tool*))
    // A vector, not a deque: an empty deque allocates some 600 bytes, and most tools are leaves.
    std::vector<Tool*> children;
    Matrix34<double> objectMatrix; // the object in the frame of its pivot
    Matrix34<double> pivotMatrix;  // the pivot in the frame of the parent
    Vector3<float> rotationAxis;    // rotation constraint; zero for free
    Vector3<float> translationAxis; // translation constraint; zero for free, need not be unit
    float rotationMultiplier = 1.0f; // a linked twin turns by the angle times the ratio of these
    Material material;
    unsigned short flags = FLAG_VISIBLE;
    int listIndex = -1; // position in the last flat list made by toList
    double record = 0.02; // saved with the tool, for the kinds that use it
    bool option0 = false; // kept for the kinds and the interface that use them
    bool option1 = true;
    std::vector<double> timePoints; // not a deque: an empty one allocates some 600 bytes
    double time = 0; // the last GlobalTime seen by timer()
    float speed = 1.0f;
    float delay = 0.0f;
    bool changed = true;
    double settings[4] = {15, 5, 5, 10}; // kept for the kinds and the interface that use them

    explicit Tool(Shared<Element> const& element = Shared<Element>(),
                  Matrix34<double> const& object = Matrix34<double>(),
                  Matrix34<double> const& pivot = Matrix34<double>(), Material const& material = Material());
    Tool(Tool const&) = delete;
    Tool& operator=(Tool const&) = delete;
    ~Tool() override;

    // Whether the tool that had `id` still exists: commands that may own a tool ask before
    // they destroy it, since another owner may have come first.
    static bool Alive(int id);
    // Marks a live tool out of the tree whose placement was undone and cut off from the
    // history: unless it is placed again, its creation command destroys it. Tools kept
    // out of the tree on purpose (tool boxes, the drawing tool) are never marked.
    static void Abandon(int id);
    static bool Abandoned(int id);

    virtual int ToolType() const;
    virtual Element* RenderElement() const;
    // A kind's own way of cloning; plain tools have none.
    virtual Tool* cloneTool2(bool withPivot);
    // Takes this tool and its subtree out of the tree; the pushed CommandObjectDelete owns
    // it from then on. With recording off that command, and so the tool, is destroyed at
    // once: the caller must not touch the tool afterwards.
    virtual void remove();
    // Appends the subtree, and for each tool its previous in the ring.
    virtual void findLinks(std::vector<Tool*>& tools, std::vector<Tool*>& previous);
    // Copies everything but placement onto `copy`; with `asObject` the copy is an object.
    virtual void CloneInfo(bool asObject, Tool* copy, bool withLinks);
    // A new tool of this kind with the given matrices, linked to this one.
    virtual Tool* SimpleClone(bool asObject, Matrix34<double> const& object, Matrix34<double> const& pivot);
    virtual void clearSelection();
    virtual void clearChildren();
    virtual void setElement(Shared<Element> const& newElement);
    // Appends this tool, and with `links` the ring's objects.
    virtual void selectObjects(std::vector<Tool*>& out, bool links, bool sameParent);
    // Sets or clears the clonable bit on the subtree, and forgets the copies.
    virtual void Mark(bool on);
    virtual bool clonable() const;
    virtual void setChild(int position, Tool* T);
    virtual void addChild(Tool* T);
    virtual void addToParent(Tool* P);
    virtual void addToParent(Tool* P, Matrix34<double> const& pivot);
    virtual void subChild(Tool* T);
    virtual bool isChild(Tool* T) const;
    // Leaves the parent (or its item slot); returns the former parent, or null.
    virtual Tool* subFromParent();
    // With `all` the ring's selected members, else this tool alone.
    virtual void findAllLinked(std::vector<Tool*>& out, bool all);
    virtual void findAllLinks(std::vector<Tool*>& out);
    virtual std::vector<Tool*> findAllObjectLinks();
    virtual void toElements(std::set<Element*>& out);
    virtual void toMap(std::unordered_map<int, Tool*>& map);
    // Pre-order: writes each tool's listIndex and appends it.
    virtual void toList(std::vector<Tool*>& list);
    // The frame's listing: adds this tool to `list` with world matrix transform() *
    // parentWorld under entry `parentEntry` (`index` as ToolList::append tells), then its
    // subtree through ToolList::walk. Kinds that show other tools (arrays, enders) add their
    // instances here, as matrices, without copying anything.
    virtual void toList(ToolList& list, Matrix34<double> const& parentWorld, int parentEntry, int index,
                        bool skipSelected);
    // Sets `found` if T is in this subtree.
    virtual void inList(Tool* T, bool& found);
    virtual Tool* previous();
    virtual bool linked() const;
    virtual bool linked(Tool* T) const;
    virtual void link(Tool* T);
    virtual void unlink(bool recursive);
    virtual int linksCount() const;
    virtual void worldTransform(Matrix34<double>& M, bool identityFirst) const;
    // The world transform of the parent: the frame `transform()` maps into.
    virtual Matrix34<double> worldPivot() const;
    // The world frame of the pivot, in which the object matrix acts: B, then worldPivot.
    virtual Matrix34<double> parentPivot() const;
    virtual Matrix34<double> transform() const;
    virtual void setObject(bool on);
    virtual void setObjectHierarchy(bool on);
    virtual bool isObject() const;
    virtual bool isGroup() const;
    virtual bool isSimpleGroup() const;
    virtual bool isSimple() const;
    virtual bool isArray() const;
    virtual bool isEnder() const;
    virtual bool isSnake() const;
    virtual bool hasItem() const;
    virtual bool hasItem(Tool* T) const;
    virtual bool isSimplex() const;
    virtual bool isCurve() const;
    virtual bool elementIsCurve() const;
    virtual bool isBiTool() const;
    virtual bool isRoot() const;
    virtual bool isBone() const;
    virtual bool isPrimitive() const;
    virtual bool isGear() const;
    virtual bool isRigidBody() const;
    virtual bool isConstraint() const;
    virtual bool isSimulated() const;
    virtual bool isActiveRigidBody() const;
    virtual bool isSDF() const;
    // Whether a sculpt stroke may run on this tool's element: a mesh (clay included) or a curve.
    virtual bool acceptsSculpt() const;
    // One call of a stroke: nothing when the tool refuses, or for a stamp (actions 21 to 24)
    // while gSculptStampReady says no stamp is ready; else the element's sculpt.
    virtual void sculpt(std::deque<Sculptor*>& sculptors);
    // Set by the rendering side, which owns the stamp's alpha; unset means no stamp.
    static std::function<bool()> gSculptStampReady;
    // The program `e` draws with for this tool in `state`: the element's own, until the
    // tool's object shader takes part.
    virtual Shader* renderShader(Element* e, TRenderState const& state);
    // ---- drawing: the list calls these per item, with the item's shader current ----
    // The element's renderBegin (vertex array, textures); false skips the draw.
    virtual bool renderBegin(Element* e, TRenderState const& state);
    // Draws `e` with model matrix M (the item's transformRender, the piece's own transform
    // first); `pivot` is the world matrix of the tool's parent. The ints are what the id
    // buffer receives: object id, item index, element id, and the spare fourth word.
    virtual void render(Element* e, TRenderState const& state, Matrix34<double> const& M,
                        Matrix34<double> const& pivot, int objectId, int items, int elementId, int fourth);
    // The world matrix W of the tool as drawn: the element's own size mapping first, and the
    // rotation replaced by the view's inverse for orientation modes 2 and 3 (facing the viewer).
    virtual Matrix34<double> transformRender(Matrix34<double> const& W);
    // Fills the element's buffers before the frame's passes; primitives have none.
    virtual void prepareRender(Element* e);
    virtual void renderBorders(Matrix34<double> const& M, bvec4 const& mask);
    virtual void renderHelpers(Matrix34<double> const& M, bvec4 const& mask);
    virtual bool hasBorders();
    virtual bool hasHelpers();
    virtual void clearHelpers();
    // `t` along the translation axis; unchanged when the tool has none.
    Vector3<double> constrainTranslation(Vector3<double> const& t) const;
    virtual void constrainedMoveElement(Matrix34<double> const& M, bool links, bool sameParent);
    virtual void constrainedMoveObject(Matrix34<double> const& M, bool links, bool sameParent);
    virtual void constrainedRotateElement(Matrix34<double> const& M, bool links, bool sameParent);
    virtual void constrainedRotateObject(Matrix34<double> const& M, bool links, bool sameParent);
    virtual void constrainedRotateObjectPivot(Matrix34<double> const& M, bool links, bool sameParent);
    // The element moves by M; the children keep their place in the world.
    virtual void transformElement(Matrix34<double> const& M, bool links, bool sameParent);
    // A := A M: the object and its children move within the pivot.
    virtual void transformObject(Matrix34<double> const& M, bool links, bool sameParent);
    // The pivot moves by M and the object stays: A B is kept.
    virtual void transformPivot(Matrix34<double> const& M, bool links, bool sameParent);
    // B := M B.
    virtual void transformObjectPivot(Matrix34<double> const& M, bool links, bool sameParent);
    virtual void align(Matrix34<double> const& M, bool links, bool sameParent);
    // Takes GlobalTime, advances the element and the children; true if anything changed.
    virtual bool timer();
    virtual bool hasChanged() const;
    virtual void setChanged(bool on);
    // The children of a simple group, which may replace it; empty for anything else.
    virtual std::deque<Tool*> Explode();
    virtual void updateTransformsFromPhysicsWorld();
    // The item slot of the kinds that show another object; plain tools have none.
    virtual Tool* itemSlot() const;
    virtual void setItemSlot(Tool* item);

    // ---- file record (ToolFile.cpp; the frame is Scene's) ----
    // The file's numbers of what a record read refers to, until identify resolves them.
    struct FileRefs {
        std::vector<int> children;
        int link = -1;    // negative: the tool itself
        int element = -1; // negative: none
        bool failed = false; // the record could not be read
        bool topLevel = false; // the first record of a block: placed by the reader, nobody's child
    };
    std::unique_ptr<FileRefs> fileRefs; // only between reading and identify

    // Reads a plain tool's record after its header; `fileRefs->failed` tells a damaged one.
    Tool(IFile& in, int payload);
    // Bytes of the record, header included.
    virtual int DataSize() const;
    // The fields after the header; `ids` numbers the elements of the file. A derived kind
    // calls its base's Data first.
    virtual void Data(OFile& out, std::unordered_map<Element*, int>& ids);
    // Tag, DataSize, then Data.
    virtual void DataWrite(OFile& out, std::unordered_map<Element*, int>& ids);
    // Reads what Data wrote, in the layout of FILE_VERSION; `payload` is the record's size
    // for plain tools and 175 for the other kinds. False on a record cut short or corrupt.
    virtual bool DataRead(IFile& in, int payload);
    virtual bool DataReadOld(IFile& in);
    // Turns the numbers read into references: `tools` is the file's list of records,
    // `elements` its element block. Broken references are dropped with a log line.
    virtual void identify(std::vector<Tool*> const& tools, std::vector<Shared<Element>> const& elements);
    // Saves this tool and its subtree alone: an object file (.vob) or OBJ by the extension.
    bool save(std::string const& path);

    // ---- cloning: copies with their subtrees, links among copies kept ----
    Tool* cloneTool(bool withPivot);
    // The copy's object matrix is A B C (the whole placement baked in), its pivot D.
    Tool* cloneObject(Matrix34<double> const& C, Matrix34<double> const& D);
    Tool* InternalClone();

    // ---- selection and highlight, of one tool or its ring, and of lists ----
    void select(bool links, bool sameParent);
    void deselect(bool links, bool sameParent);
    void highlight(bool links, bool sameParent);
    void unhighlight(bool links, bool sameParent);
    static void select(std::vector<Tool*> const& tools, bool links, bool sameParent);
    static void deselect(std::vector<Tool*> const& tools, bool links, bool sameParent);
    static void highlight(std::vector<Tool*> const& tools, bool links, bool sameParent);
    static void unhighlight(std::vector<Tool*> const& tools, bool links, bool sameParent);

    // ---- changes over the ring; the caller records them with the matching command ----
    void changeMaterial(Material const& source, int mask, bool links, bool sameParent);
    void changeOrientation(unsigned char mode, bool links, bool sameParent);
    void changeSpeed(float value, bool links, bool sameParent);
    void changeDelay(float value, bool links, bool sameParent);

    // transform(), preceded by the element's own Transform when there is an element.
    Matrix34<double> element_transform() const;
    unsigned char orientation() const;
    // The render flag word of the tool's draws (FLAG_NON_EMPTY is the element's to add): the
    // object type in bits 26 to 28, and lit, glowing colour, contours and features from the
    // material's flag bits 64, 128, 0x2000 and 0x4000.
    int renderFlags() const;
    // Position of T in children, searched from the back; -1 when absent.
    int childPosition(Tool* T) const;

protected:
    // For the root, whose creation is never a step of the history.
    struct Unrecorded {};
    Tool(Unrecorded);

private:
    // One step along the ring, counted: a ring longer than the live tools cannot close.
    static Tool* ringNext(Tool const* t, int& steps);
    template <class Operation>
    void forRing(bool links, bool sameParent, Operation const& operation);
    void setFlags(unsigned short bits, bool on, bool links, bool sameParent);
    bool hasAncestor(Tool const* T) const;
    Tool* finishClone(Tool* copy);
    void constrainedMove(Matrix34<double> const& M, bool links, bool sameParent, bool ofElement);
    void constrainedRotate(Matrix34<double> const& M, bool links, bool sameParent, int target);
};

} // namespace vel
