#include "Scene/ToolList.h"

#include "Core/Assert.h"
#include "OpenGL/Rendering.h"
#include "Scene/Tool.h"

namespace vel {

ToolList::ToolList()
{
    for (size_t i = 0; i < arenas.size(); ++i) {
        arenas[i] = std::make_unique<std::pmr::monotonic_buffer_resource>();
        sorted[i] = DrawList(arenas[i].get());
    }
}

void ToolList::clear()
{
    items.clear();
    matrices.clear();
    parents.clear();
    indices.clear();
}

void ToolList::reset()
{
    clear();
    for (int i = 0; i < int(sorted.size()); ++i)
        restart(i);
}

// ---- listing ---------------------------------------------------------------------------

int ToolList::add(Tool* T, Matrix34<double> const& world, int parentEntry, int index)
{
    int i = count();
    items.push_back(RenderItem{T, T->RenderElement(), parentEntry});
    matrices.push_back(world);
    // A tool that is not an object belongs to the object above it.
    parents.push_back(parentEntry < 0 || T->isObject() ? i : parentEntry);
    indices.push_back(index);
    return i;
}

void ToolList::walk(Tool* T, bool skipSelected, Matrix34<double> const& parentWorld, int parentEntry, int index)
{
    if (skipSelected && (T->flags & Tool::FLAG_SELECTED))
        return;
    Matrix34<double> world = T->transform() * parentWorld;
    int i = add(T, world, parentEntry, index);
    for (Tool* child : T->children)
        walk(child, skipSelected, world, i, index);
}

void ToolList::append(Tool* T, bool skipSelected)
{
    VEL_ASSERT(T);
    if (T->isRoot()) {
        for (Tool* child : T->children)
            walk(child, skipSelected, Matrix34<double>(), -1, -1);
        return;
    }
    walk(T, skipSelected, T->worldPivot(), -1, -1);
}

void ToolList::append(Tool* T, Matrix34<double> const& M, std::vector<Matrix34<double>> const& instances,
                      ToolList const& list, Tool* parent, int index, bool skipSelected)
{
    VEL_ASSERT(T);
    Matrix34<double> W;
    if (index >= 0) {
        VEL_ASSERT_MSG(index < list.count(), "the owner's entry is in the list given");
        VEL_ASSERT_MSG(list.items[size_t(index)].tool == parent, "the entry given is the owner's");
        W = list.matrices[size_t(index)];
    }
    for (Matrix34<double> const& instance : instances)
        walk(T, skipSelected, M * instance * W, -1, index);
}

// ---- sorting ---------------------------------------------------------------------------

bool ToolList::isTransparent(int i) const
{
    RenderItem const& item = items[size_t(i)];
    return (item.element && item.element->transparent) || (item.tool->flags & Tool::FLAG_TRANSPARENT) ||
           item.tool->material.pbr.color(3) < ALPHA_OPAQUE;
}

void ToolList::restart(int which)
{
    size_t previous = sorted[size_t(which)].size();
    // The list goes first: its nodes live in the arena released next.
    sorted[size_t(which)] = DrawList();
    arenas[size_t(which)]->release();
    sorted[size_t(which)] = DrawList(arenas[size_t(which)].get());
    sorted[size_t(which)].reserve(previous);
}

void ToolList::sort(bool curves, bool transparent, bool rigid)
{
    restart(DRAW_OPAQUE);
    restart(DRAW_TRANSPARENT);
    restart(3);
    Rendering const& rendering = Rendering::instance();
    bool twoPasses = Rendering::hasMaterials(rendering.style);
    int kind = twoPasses ? 0 : rendering.style == rtDEPTH ? rtDEPTH : 6;
    TRenderState state = rendering.renderState(kind);
    // Many tools share few elements: their pieces are asked for once.
    std::unordered_map<Element*, std::deque<Element::SubElement>> pieces;
    for (int i = 0; i < count(); ++i) {
        Tool* tool = items[size_t(i)].tool;
        Element* element = items[size_t(i)].element;
        if (!(tool->flags & Tool::FLAG_VISIBLE) || tool->isGroup() || !element)
            continue;
        if (!curves && tool->elementIsCurve())
            continue;
        bool seeThrough = isTransparent(i);
        if ((!transparent && seeThrough) || (!rigid && tool->isRigidBody()))
            continue;
        int target = twoPasses && seeThrough ? DRAW_TRANSPARENT : DRAW_OPAQUE;
        // Bones and bodies draw their own shape: one piece, as it is.
        if (tool->isBone() || tool->isRigidBody()) {
            Element::SubElement whole{element, Matrix34<double>(), Pbr()};
            sorted[size_t(target)].emplace(tool->renderShader(element, state), RenderSubItem{tool, whole, i, tool->material});
            continue;
        }
        auto found = pieces.find(element);
        if (found == pieces.end())
            found = pieces.emplace(element, element->subelements(true)).first;
        for (Element::SubElement const& sub : found->second)
            sorted[size_t(target)].emplace(tool->renderShader(sub.element, state), RenderSubItem{tool, sub, i, tool->material});
    }
}

// ---- chasing ---------------------------------------------------------------------------

int ToolList::parent(int i) const
{
    VEL_ASSERT(i >= 0 && i < count());
    // A chain is never longer than the list: a longer one is a cycle.
    for (int steps = 0; parents[size_t(i)] != i; ++steps) {
        VEL_ASSERT_MSG(steps < count(), "the chase table has a cycle");
        i = parents[size_t(i)];
    }
    return i;
}

Matrix34<double> ToolList::pivot(int i) const
{
    VEL_ASSERT(i >= 0 && i < count());
    int p = items[size_t(i)].parent;
    return matrices[size_t(p >= 0 ? p : i)];
}

Tool* ToolList::FirstParent(int i) const
{
    if (i < 0 || i >= count())
        return nullptr;
    int p = items[size_t(i)].parent;
    return p >= 0 ? items[size_t(p)].tool : nullptr;
}

} // namespace vel
