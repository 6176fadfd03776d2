#include "Scene/ToolList.h"

#include "Core/Assert.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderManager.h"
#include "Scene/Elements/Mesh/Mesh.h"
#include "Scene/Tool.h"

#include <glad/gl.h>

#include <algorithm>

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
    items.push_back(RenderItem{T, T->RenderElement(), parentEntry, instance});
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
    T->toList(*this, parentWorld, parentEntry, index, skipSelected);
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
    for (Matrix34<double> const& each : instances)
        walk(T, skipSelected, M * each * W, -1, index);
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
        // What is drawn decides: a snake shows its item, not its axis curve.
        if (!curves && element->Type() >= 5 && element->Type() <= 7)
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

// ---- drawing ---------------------------------------------------------------------------

int ToolList::itemId(int i) const
{
    Tool const* tool = items[size_t(i)].tool;
    bool marked = tool->flags & (Tool::FLAG_SELECTED | Tool::FLAG_HIGHLIGHTED);
    return int(unsigned(i + 1) | (marked ? 0x80000000u : 0u));
}

namespace {

// The uniforms of the frame that object shaders may read; a program without one ignores it.
void FrameUniforms()
{
    int viewport[4] = {0, 0, 1, 1};
    glGetIntegerv(GL_VIEWPORT, viewport);
    Shader::setUniform("iGlobalTime", float(Tool::GlobalTime));
    Shader::setUniform("iResolution", float(viewport[2]), float(viewport[3]), 1.0f);
    Shader::setUniform("iViewToScreen", Shader::ProjectionMatrix);
    Shader::setUniform("iScreenToView", Shader::ProjectionMatrixInv);
    Shader::setUniform("iWorldToScreen", Shader::ProjectionModelViewMatrix);
    Shader::setUniform("iScreenToWorld", Shader::ProjectionModelViewMatrixInv);
    Shader::setUniform("iWorldToScreenRotation", Shader::NormalMatrix);
    Shader::setUniform("iScreenToWorldRotation", Shader::NormalMatrixInv);
}

} // namespace

template <class Draw>
void ToolList::walkDraws(TRenderState const& state, int& counter, Draw const& draw) const
{
    DrawList const& list = sorted[size_t(state.kind == 1 ? DRAW_TRANSPARENT : DRAW_OPAQUE)];
    ShaderManager const& manager = ShaderManager::instance();
    Shader* current = nullptr;
    bool masked = false;
    // Elements bind their own vertex arrays; the full-screen passes after the list draw with
    // the one that was bound before it.
    GLint previousArray = 0;
    glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &previousArray);
    // Equal keys of a multimap are adjacent: one program change per shader.
    for (auto const& entry : list) {
        Shader* shader = entry.first;
        if (!shader)
            continue; // a kind whose caller binds the program itself
        if (shader != current) {
            VEL_ASSERT(shader->enable());
            FrameUniforms();
            // The fast programs write only the flags of the normal target: its xyz stay
            // for the normals the frame derives from depth.
            bool fast = shader == manager.ShaderMeshRenderFast || shader == manager.ShaderMeshSnakeRenderFast ||
                        shader == manager.ShaderClayRenderFast;
            if (fast != masked) {
                if (fast)
                    glColorMaski(2, GL_FALSE, GL_FALSE, GL_FALSE, GL_TRUE);
                else
                    glColorMaski(2, GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
                masked = fast;
            }
            current = shader;
        }
        RenderSubItem const& sub = entry.second;
        draw(sub, sub.sub.transform * sub.tool->transformRender(matrices[size_t(sub.index)]));
        ++counter;
    }
    if (masked)
        glColorMaski(2, GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glBindVertexArray(GLuint(previousArray));
    if (current)
        current->disable();
    glUseProgram(0);
    Shader::id = 0;
    Shader::Current = nullptr;
}

void ToolList::render(TRenderState const& state, bool flag, int& counter) const
{
    int const first = counter;
    walkDraws(state, counter, [&](RenderSubItem const& sub, Matrix34<double> const& M) {
        sub.tool->render(sub.sub.element, state, M, pivot(sub.index), itemId(sub.index),
                         items[size_t(sub.index)].instance, sub.sub.element->id,
                         sub.tool->id);
    });
    if (Rendering::instance().showBoundingBoxes) {
        counter = first;
        renderOBBs(state, flag, counter);
    }
}

void ToolList::renderOBBs(TRenderState const& state, bool, int& counter) const
{
    if (!box)
        box = std::shared_ptr<Element>(Mesh::Box());
    // The boxes draw in lines and on both sides: the item's own program, the box's buffers.
    GLint polygon[2] = {GL_FILL, GL_FILL};
    glGetIntegerv(GL_POLYGON_MODE, polygon);
    glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    TRenderState lines = state;
    lines.twoSided = true;
    box->prepareRender();
    walkDraws(lines, counter, [&](RenderSubItem const& sub, Matrix34<double> const& M) {
        Element* element = sub.sub.element;
        if (element->aabb.empty())
            element->calculateAABB(Matrix34<double>()); // once: the box is kept with the element
        AABB const& bounds = element->aabb;
        if (bounds.empty())
            return;
        Vector3<double> size = bounds.max - bounds.min;
        // A flat shape keeps a sliver of depth, so that the box's matrix stays invertible.
        double least = 1e-3 * std::max({size.x, size.y, size.z, 1e-6});
        Matrix3<double> scale(std::max(size.x, least), 0, 0, 0, std::max(size.y, least), 0, 0, 0,
                              std::max(size.z, least));
        Matrix34<double> B(scale, (bounds.min + bounds.max) * 0.5);
        if (!box->renderBegin(lines, false))
            return;
        box->render(lines, B * M, itemId(sub.index), 0, sub.sub.element->id, sub.tool->id, sub.tool->material,
                    sub.tool->renderFlags(), 0.0f);
        box->renderEnd();
    });
    glPolygonMode(GL_FRONT_AND_BACK, GLenum(polygon[0]));
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
