#include "Scene/Elements/ElementVBO.h"

#include "Core/Assert.h"
#include "OpenGL/GLState.h"
#include "OpenGL/Shader.h"
#include "Scene/Material.h"
#include "Scene/RenderFlags.h"

#include <glad/gl.h>

#include <cstring>

// Index
// - construction and copies
// - buffer slots
// - vertex arrays
// - draws

namespace vel {

// ---- construction and copies ------------------------------------------------------------

ElementVBO::ElementVBO(ElementVBO const& other)
    : Element(other)
    , dataType(other.dataType)
{
}

ElementVBO& ElementVBO::operator=(ElementVBO const& other)
{
    Element::operator=(other);
    dataType = other.dataType;
    set_vbos_dirty(true);
    return *this;
}

ElementVBO::~ElementVBO()
{
    reset_vaos();
}

void ElementVBO::reset_clone(Element* other)
{
    Element::reset_clone(other);
    set_vbos_dirty(true);
}

// ---- buffer slots -----------------------------------------------------------------------

void ElementVBO::sculptStep(std::deque<Sculptor*>&, int, unsigned char)
{
}

void ElementVBO::setDataType(int type)
{
    VEL_ASSERT_MSG(type >= 0 && type <= 2, "data type is 0 plain, 1 materials, 2 UVs");
    dataType = type;
    set_vbos_dirty(true);
}

bool ElementVBO::vbos_dirty() const
{
    for (Shared<VertexBuffer> const& vbo : vbos)
        if (vbo->dirty)
            return true;
    return false;
}

void ElementVBO::set_vbos_dirty(bool dirty)
{
    for (Shared<VertexBuffer>& vbo : vbos)
        vbo->dirty = dirty;
}

void ElementVBO::set_vbo_dirty(int index)
{
    if (index >= 0 && index < int(vbos.size()))
        vbos[size_t(index)]->dirty = true;
}

void ElementVBO::reset_vbos()
{
    vbos.clear();
    for (int i = 0; i < vbos_count(); ++i)
        vbos.emplace_back(new VertexBuffer);
}

long long ElementVBO::gpuBytes() const
{
    long long bytes = 0;
    for (Shared<VertexBuffer> const& vbo : vbos)
        bytes += vbo->size;
    return bytes;
}

Vector3<float> ElementVBO::PointSculptSmooth(int) const
{
    return {};
}

// ---- vertex arrays ----------------------------------------------------------------------

int ElementVBO::render_state(TRenderState const&, bool) const
{
    return 0;
}

unsigned ElementVBO::bind_vao(TRenderState const& state, bool snake)
{
    int key = render_state(state, snake);
    if (key == 0)
        return ~0u;
    auto found = vaos.find(key);
    if (found != vaos.end()) {
        glBindVertexArray(found->second);
        return 1;
    }
    unsigned vao = 0;
    glGenVertexArrays(1, &vao);
    VEL_ASSERT(vao != 0);
    glBindVertexArray(vao);
    vaos.emplace(key, vao);
    return 0;
}

void ElementVBO::reset_vaos()
{
    for (auto const& entry : vaos)
        glDeleteVertexArrays(1, &entry.second);
    vaos.clear();
}

void ElementVBO::prepareRender()
{
    bool dirty = vbos_dirty();
    buildGPUData();
    if (dirty)
        reset_vaos();
}

void ElementVBO::deleteGPUData()
{
    reset_vaos();
    reset_vbos();
}

bool ElementVBO::enableGPUData(TRenderState const& state, bool snake)
{
    // Nothing uploaded yet (prepareRender has not run): no draw rather than a broken one.
    if (!vbos.empty() && vbos.front()->buffer == 0)
        return false;
    if (bind_vao(state, snake) == 0)
        describeAttributes(state, snake);
    return true;
}

void ElementVBO::describeAttributes(TRenderState const&, bool)
{
}

// ---- draws ------------------------------------------------------------------------------

void ElementVBO::RenderFlagPair(int flags, bool mirrored, int& front, int& back)
{
    int word = (flags & ~FLAG_FLIPPED) | FLAG_NON_EMPTY;
    front = word;
    back = word | FLAG_FLIPPED;
    // A mirroring transform turns the winding: what GL calls back is the element's front.
    if (mirrored)
        std::swap(front, back);
}

namespace {

float Bits(int word)
{
    float f;
    std::memcpy(&f, &word, sizeof f);
    return f;
}

} // namespace

bool ElementVBO::objectUniforms(TRenderState const& state, Matrix34<double> const& M, int objectId, int items,
                                int elementId, int instance, Material const& material, int flags,
                                char const* prefix)
{
    std::string p(prefix);
    // A transform mirrors when its sign disagrees with the view's; the material's
    // flipped-normals choice turns the object inside out the same way.
    bool mirrored = (M.determinant() * double(Shader::PMVSign) < 0) !=
                    ((material.flags & Material::FLAG_FLIPPED_NORMALS) != 0);
    if (state.kind != 7 && state.kind != rtDEPTH)
        Shader::setUniform(p + "ObjectItemsElement", objectId, items, elementId, instance);
    if (!(state.kind == 6 && state.plain && state.third)) {
        int front, back;
        RenderFlagPair(flags, mirrored, front, back);
        Shader::setUniform(p + "RenderFlags", Bits(front), Bits(back));
    }
    Matrix3<double> normal = inv(M.linear()).transposed() * Shader::NormalMatrix;
    // The shader turns the normal of what GL calls a back face; for a mirrored draw that is
    // the element's front, so the matrix turns it once more.
    if (mirrored)
        normal = normal * -1.0;
    Shader::setUniform(p + "ProjectionModelViewMatrix", Matrix4<double>(M) * Shader::ProjectionModelViewMatrix);
    Shader::setUniform(p + "NormalMatrix", normal);
    Pbr const& pbr = material.pbr;
    Shader::setUniform(p + "ObjectColorAlpha", pbr.color(0) / 8192.0f, pbr.color(1) / 8192.0f,
                       pbr.color(2) / 8192.0f, pbr.color(3) / 8192.0f);
    Shader::setUniform(p + "ObjectLightThick", pbr.light(0) / 8192.0f, pbr.light(1) / 8192.0f,
                       pbr.light(2) / 8192.0f, pbr.light(3) / 8192.0f);
    Shader::setUniform(p + "ObjectRoughMetal", (pbr.rough() - 2048) / 2048.0f, (pbr.metal() - 2048) / 2048.0f);
    return mirrored;
}

void ElementVBO::cull(TRenderState const& state, bool mirrored)
{
    if (state.twoSided) {
        gl_Cull_Face.set(false);
        return;
    }
    gl_Cull_Face.set(true);
    glCullFace(mirrored ? GL_FRONT : GL_BACK);
}

void ElementVBO::render(TRenderState const& state, Matrix34<double> const& M, int objectId, int items,
                        int elementId, int instance, Material const& material, int flags, float)
{
    VEL_ASSERT_MSG(Shader::Current, "renderBegin made the element's shader current");
    bool mirrored = objectUniforms(state, M, objectId, items, elementId, instance, material, flags, "");
    // Vertex colour and paint read whether the material attribute is there.
    if (state.kind == 3 || state.kind == 4 || state.kind == 7)
        Shader::setUniform("MeshPbr", hasPbr() ? 1 : 0);
    cull(state, mirrored);
    glDrawArrays(GL_TRIANGLES, 0, points_count());
}

void ElementVBO::renderSnake(TRenderState const& state, Matrix34<double> const& M, int objectId, int items,
                             int elementId, int instance, Material const& material, int flags, float time)
{
    VEL_ASSERT_MSG(Shader::Current, "renderBegin made the element's snake shader current");
    bool mirrored = objectUniforms(state, M, objectId, items, elementId, instance, material, flags, "");
    Shader::setUniform("Time", time);
    cull(state, mirrored);
    glDrawArraysInstanced(GL_TRIANGLES, 0, points_count(), instance > 0 ? instance : 1);
}

void ElementVBO::renderCustom(TRenderState const& state, Matrix34<double> const& M, int objectId, int items,
                              int elementId, int instance, Material const& material, int flags, float time)
{
    VEL_ASSERT_MSG(Shader::Current, "the object shader is current");
    // `instance` is the fourth id here, as in render: the draw is of one instance, the object.
    bool mirrored = objectUniforms(state, M, objectId, items, elementId, instance, material, flags, "i");
    Shader::setUniform("iTime", time);
    Shader::setUniform("iInstances", 1);
    Shader::setUniform("iProjViewMatrix", Shader::ProjectionModelViewMatrix);
    Shader::setUniform("iWorldToModelMatrix", inv(M));
    // Model space (the generated code's LOCAL), model to world, world to view normals.
    Shader::setUniform("iMatrices[0]", Matrix34<double>());
    Shader::setUniform("iMatrices[1]", M);
    Shader::setUniform("iNormalMatrices[0]", Matrix3<double>());
    Shader::setUniform("iNormalMatrices[1]", inv(M.linear()).transposed());
    Shader::setUniform("iNormalMatrices[2]", mirrored ? Shader::NormalMatrix * -1.0 : Shader::NormalMatrix);
    cull(state, mirrored);
    glDrawArraysInstanced(GL_TRIANGLES, 0, points_count(), 1);
}

} // namespace vel
