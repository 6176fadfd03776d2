#include "Scene/Scene.h"

#include "Core/Assert.h"
#include "OpenGL/Rendering.h"
#include "Scene/Elements/Mesh/Mesh.h"
#include "Scene/Elements/Mesh/MeshFile.h"
#include "Scene/Root.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tool.h"

#include <memory>
#include <set>
#include <unordered_map>

namespace vel {

std::vector<UITool> Scene::UITools;
bool Scene::Error = false;

// ---- construction and lists ------------------------------------------------------------

// The history is made first, so that it outlives the singleton scene, whose teardown
// pauses it.
Scene::Scene()
{
    History::instance();
    root = new Root;
}

Scene::~Scene()
{
    History::Pause pause;
    delete root;
}

void Scene::init(bool keepRoot)
{
    History::Pause pause;
    Error = false;
    deselect();
    list.reset();
    temporary.reset();
    map.clear();
    delete root;
    root = keepRoot ? nullptr : new Root;
    dirty = true;
}

void Scene::toList(bool clear, bool forPicking)
{
    VEL_ASSERT(root);
    if (clear)
        clearTemporary();
    list.clear();
    list.append(root, forPicking);
    if (forPicking) {
        // The topmost selected tools, each with its subtree, as the walk above left them out.
        std::vector<Tool*> pending(root->children.rbegin(), root->children.rend());
        while (!pending.empty()) {
            Tool* t = pending.back();
            pending.pop_back();
            if (t->flags & Tool::FLAG_SELECTED)
                temporary.append(t, false);
            else
                pending.insert(pending.end(), t->children.rbegin(), t->children.rend());
        }
    }
    Rendering const& rendering = Rendering::instance();
    list.sort(rendering.showCurves, rendering.showTransparent, rendering.showRigidBodies);
    dirty = false;
}

void Scene::toMap()
{
    VEL_ASSERT(root);
    map.clear();
    root->toMap(map);
}

void Scene::clearTemporary()
{
    temporary.clear();
}

// ---- searches by id --------------------------------------------------------------------

Tool* Scene::findObject(int id)
{
    VEL_ASSERT_MSG(id >= 0 && id <= list.count(), "error_id_not_in_scene");
    return id == 0 ? root : list.items[size_t(id - 1)].tool;
}

bool Scene::findObjects(int id, Tool*& object, Tool*& tool)
{
    object = tool = nullptr;
    if (id < 1 || id > list.count())
        return false;
    tool = list.items[size_t(id - 1)].tool;
    object = list.items[size_t(list.parent(searchStart(id)))].tool;
    return true;
}

int Scene::searchStart(int id) const
{
    int stored = list.indices[size_t(id - 1)];
    return stored >= 0 ? stored : id - 1;
}

bool Scene::searchObject(int id)
{
    hit = SceneHit();
    objectIndex = toolIndex = -1;
    if (id < 1 || id > list.count())
        return false;
    toolIndex = id - 1;
    objectIndex = list.parent(searchStart(id));
    hit.tool = list.items[size_t(toolIndex)].tool;
    hit.toolMatrix = list.matrices[size_t(toolIndex)];
    hit.object = list.items[size_t(objectIndex)].tool;
    hit.objectMatrix = list.matrices[size_t(objectIndex)];
    return true;
}

bool Scene::searchObject(int id, Tool*& tool, Tool*& object)
{
    bool found = searchObject(id);
    tool = hit.tool;
    object = hit.object;
    return found;
}

bool Scene::searchObject(int id, Tool*& tool, Tool*& object, Tool*& parent, Matrix34<double>& toolMatrix,
                         Matrix34<double>& objectMatrix, Matrix34<double>& parentMatrix)
{
    parent = nullptr;
    if (!searchObject(id, tool, object))
        return false;
    toolMatrix = hit.toolMatrix;
    objectMatrix = hit.objectMatrix;
    parent = list.FirstParent(toolIndex);
    parentMatrix = list.pivot(toolIndex);
    return true;
}

bool Scene::searchFirstParent(int id, Tool*& tool, Matrix34<double>& M)
{
    tool = nullptr;
    M = Matrix34<double>();
    if (id < 1 || id > list.count())
        return false;
    int above = list.parents[size_t(searchStart(id))];
    tool = list.items[size_t(above)].tool;
    M = list.matrices[size_t(above)];
    return true;
}

bool Scene::findHiHierarchy(int id, std::vector<Tool*>& tools, std::vector<Matrix34<double>>& matrices, int levels)
{
    tools.clear();
    matrices.clear();
    if (id < 1 || id > list.count())
        return false;
    int i = id - 1;
    for (int level = 0; level < levels; ++level) {
        Tool* t = list.items[size_t(i)].tool;
        tools.insert(tools.begin(), t);
        int above = list.parents[size_t(i)];
        if (above == i) {
            matrices.insert(matrices.begin(), t->parentPivot());
            break;
        }
        matrices.insert(matrices.begin(), list.matrices[size_t(i)]);
        i = above;
    }
    return true;
}

bool Scene::findElement(Element* e, std::vector<Tool*>& tools)
{
    bool any = false;
    for (RenderItem const& item : list.items)
        if (item.tool->element.get() == e) {
            tools.push_back(item.tool);
            any = true;
        }
    return any;
}

int Scene::findID(Tool* T)
{
    if (!T || T == root)
        return 0;
    for (int i = 0; i < list.count(); ++i)
        if (list.items[size_t(i)].tool == T)
            return i + 1;
    return 0;
}

// ---- selection -------------------------------------------------------------------------

void Scene::selectObject(int id)
{
    deselect();
    searchObject(id);
    selection = hit;
}

void Scene::deselect()
{
    hit = SceneHit();
    selection = SceneHit();
    objectIndex = toolIndex = -1;
}

void Scene::selectionObjects(std::vector<Tool*>& out, int id, bool ofObject, bool links, bool sameParent)
{
    Tool* target = root;
    if (id != 0) {
        Tool* object;
        Tool* tool;
        if (!findObjects(id, object, tool))
            return;
        target = ofObject ? object : tool;
    }
    target->selectObjects(out, links, sameParent);
}

// ---- adding objects --------------------------------------------------------------------

void Scene::addObjectToList(Tool* T, Matrix34<double> const& M, std::vector<Matrix34<double>> const& matrices,
                            int mode, bool skipSelected)
{
    if (!T)
        return;
    if (hit.tool && mode == 2)
        return temporary.append(T, M, matrices, list, hit.object, objectIndex, skipSelected);
    if (hit.tool && mode == 3)
        return temporary.append(T, M, matrices, list, hit.tool, toolIndex, skipSelected);
    if (hit.tool && mode != 1)
        return;
    temporary.append(T, M, matrices, list, nullptr, -1, skipSelected);
}

std::deque<Tool*> Scene::addObjectsOnID(int id, Tool* T, Matrix34<double> const& M,
                                        std::vector<Matrix34<double>> const& matrices, int mode, bool links,
                                        bool sameParent)
{
    if (!T)
        return {};
    Tool* object;
    Tool* tool;
    bool found = findObjects(id, object, tool);
    dirty = true;
    Tool* target = root;
    if (found && mode == 2)
        target = object;
    else if (found && mode == 3)
        target = tool;
    std::vector<Tool*> parents;
    target->selectObjects(parents, links, sameParent);
    return addCopies(T, parents, M, matrices);
}

std::deque<Tool*> Scene::addObjectsOnParent(Tool* T, Tool* parent, Matrix34<double> const& M,
                                            std::vector<Matrix34<double>> const& matrices)
{
    VEL_ASSERT(T);
    VEL_ASSERT(parent);
    dirty = true;
    return addCopies(T, {parent}, M, matrices);
}

std::deque<Tool*> Scene::addCopies(Tool* T, std::vector<Tool*> const& parents, Matrix34<double> const& M,
                                   std::vector<Matrix34<double>> const& matrices)
{
    std::deque<Tool*> copies;
    for (Tool* parent : parents)
        for (Matrix34<double> const& matrix : matrices) {
            Tool* copy = T->cloneObject(M, matrix);
            copy->addToParent(parent);
            copies.push_back(copy);
        }
    return copies;
}

// ---- merging, fitting, saving, time ----------------------------------------------------

// Not a step of the history: undoing one adoption would leave its tool owned by nobody.
void Scene::append(Scene* other)
{
    VEL_ASSERT(other && other != this);
    VEL_ASSERT(root && other->root);
    History::Pause pause;
    for (Tool* child : other->root->children) {
        child->Parent = nullptr;
        root->addChild(child);
    }
    other->root->children.clear();
    delete other;
    dirty = true;
}

AABB Scene::fit(double fallback)
{
    VEL_ASSERT(root);
    AABB box;
    if (!root->children.empty()) {
        toMap();
        toList(true, false);
        // Own box to unit shape, once per element however many tools show it.
        std::unordered_map<Element*, AABB> boxes;
        for (int i = 0; i < list.count(); ++i) {
            Element* e = list.items[size_t(i)].element;
            if (!e)
                continue;
            auto found = boxes.find(e);
            if (found == boxes.end()) {
                e->calculateAABB(Matrix34<double>());
                found = boxes.emplace(e, e->aabb.transform(e->Transform(1.0f))).first;
            }
            box.add(found->second.transform(list.matrices[size_t(i)]));
        }
    }
    // Nothing with a size: the fallback cube, as for an empty scene.
    if (box.empty()) {
        box = AABB();
        box.add(Vector3<double>(-fallback, -fallback, -fallback));
        box.add(Vector3<double>(fallback, fallback, fallback));
        centre = Vector3<double>();
        radius = fallback;
        return box;
    }
    centre = box.center();
    radius = box.size().length() * 0.5;
    return box;
}

void Scene::prepareSave()
{
    std::set<Element*> elements;
    if (root)
        root->toElements(elements);
    for (UITool const& entry : UITools)
        if (entry.tool)
            entry.tool->toElements(elements);
    for (Element* e : elements)
        e->prepareSave();
}

bool Scene::timer(double t)
{
    VEL_ASSERT(root);
    Tool::GlobalTime = t;
    return root->timer();
}

void Scene::updateTransformsFromPhysicsWorld()
{
    VEL_ASSERT(root);
    root->updateTransformsFromPhysicsWorld();
}

bool Scene::saveOBJ(std::vector<Tool*> const& tools, std::string const& path, bool normals)
{
    std::unordered_map<Element*, Mesh*> meshes;
    std::vector<std::unique_ptr<Mesh>> made; // conversions, gone with the export
    std::vector<PlacedMesh> placed;
    // A group stands for its children, and theirs: walk them in place of it, each tool once.
    std::vector<Tool*> walk(tools.rbegin(), tools.rend());
    std::set<Tool*> seen;
    while (!walk.empty()) {
        Tool* t = walk.back();
        walk.pop_back();
        if (!seen.insert(t).second)
            continue;
        if (t->isGroup())
            walk.insert(walk.end(), t->children.rbegin(), t->children.rend());
        Element* e = t->element.get();
        if (t->isGroup() || t->isBone() || !e)
            continue;
        auto found = meshes.find(e);
        if (found == meshes.end()) {
            Mesh* mesh = Element::CreateMesh(e);
            if (mesh && static_cast<Element*>(mesh) != e)
                made.emplace_back(mesh);
            found = meshes.emplace(e, mesh).first;
        }
        if (!found->second)
            continue;
        Matrix34<double> world;
        t->worldTransform(world, true);
        placed.emplace_back(found->second, e->Transform(1.0f) * world);
    }
    return vel::saveOBJ(placed, path, normals);
}

} // namespace vel
