// Clay: life, the tables, normals, undo data and drawing.
#include "Scene/Elements/Mesh/Clay.h"

#include "Core/Assert.h"
#include "Memory/ScratchpadMemory.h"
#include "OpenGL/FBO.h"
#include "OpenGL/GLMachine.h"
#include "OpenGL/GLFunctions.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderManager.h"
#include "OpenGL/Texture2D.h"
#include "Scene/Elements/Mesh/MeshScratch.h"

#include <glad/gl.h>

#include <cstring>

// Index
// - construction and conversion
// - the tables
// - normals
// - copies, read-back and undo data
// - drawing

namespace vel {

// ---- construction and conversion --------------------------------------------------------

Clay::Clay() = default;

Clay::Clay(Mesh const* mesh)
    : Mesh(*mesh)
{
}

Clay::Clay(IFile& in)
{
    Mesh::DataRead(in);
}

Clay::Clay(Clay const& other)
    : Mesh(other)
    , promotedToPbr(false)
{
}

Clay::~Clay()
{
    deleteGPUData();
}

Clay* Clay::clone()
{
    ClayToMesh();
    return new Clay(*this);
}

void Clay::ClayToMesh()
{
    if (vertexBuffer == 0)
        return;
    Vector2<int> const V = sizeV();
    ScratchPadGeometry::Lease pad;
    auto* texels = pad.at<Vector3<float>>(0, std::size_t(V.x) * std::size_t(V.y));
    VEL_ASSERT(positions[std::size_t(positionRoles.current)]->enable());
    get_positions(positionRoles.current, texels);
    for (std::size_t v = 0; v < verts.size(); ++v)
        verts[v].position = texels[v];
    if (hasPbr() && materials.size() == edges.size()) {
        auto* words = pad.at<Pbr>(0, std::size_t(sizeE().x) * std::size_t(sizeE().y));
        get_materials(materialRoles.current, words);
        for (std::size_t e = 0; e < edges.size(); ++e)
            materials[e] = words[e];
    }
    geometryChanged = true;
    update();
}

void Clay::MeshToClay()
{
    deleteGPUData();
    buildGPUData();
}

Mesh* Clay::ToMesh()
{
    ClayToMesh();
    Mesh* mesh = new Mesh(static_cast<Mesh const&>(*this));
    mesh->updateGeometry();
    return mesh;
}

void Clay::subdivide(bool smooth)
{
    ClayToMesh();
    Mesh::subdivide(smooth);
    MeshToClay();
}

void Clay::prepareSave()
{
    ClayToMesh();
    // Compaction renumbers records: the tables then follow the new numbers.
    bool renumbered = hasInactive;
    Mesh::prepareSave();
    if (renumbered && vertexBuffer != 0)
        MeshToClay();
}

// ---- the tables ---------------------------------------------------------------------------

Vector2<int> Clay::sizeV() const
{
    return Texture2D::LinearSize_2DEven(int(verts.size()));
}

Vector2<int> Clay::sizeE() const
{
    return Texture2D::LinearSize_2DEven(int(edges.size()));
}

Vector2<int> Clay::sizeF() const
{
    return Texture2D::LinearSize_2DEven(int(faces.size()));
}

namespace {

struct Int4 {
    int32_t x, y, z, w;
};

// Every table texel starts as padding: all ones for integer tables, zero elsewhere.
template <class T>
T* Table(ScratchPadGeometry::Lease& pad, Vector2<int> size, unsigned char fill)
{
    std::size_t texels = std::size_t(size.x) * std::size_t(size.y);
    VEL_ASSERT((256ull << 20) >= texels * sizeof(T));
    T* data = pad.at<T>(0, texels);
    std::memset(static_cast<void*>(data), fill, texels * sizeof(T));
    return data;
}

} // namespace

bool Clay::buildGPUData()
{
    if (vertexBuffer != 0)
        return true;
    if (verts.size() == 0 || edges.size() == 0 || faces.size() == 0)
        return false;
    Vector2<int> const V = sizeV(), E = sizeE(), F = sizeF();
    auto target = [](FBO& fbo, int internal, int format, int type) {
        return fbo.addColor(internal, format, type, GL_CLAMP_TO_EDGE, GL_NEAREST);
    };
    auto table = [](Vector2<int> size, int internal, int format, int type) {
        return std::make_unique<Texture2D>(size.x, size.y, internal, format, type, GL_CLAMP_TO_EDGE, GL_NEAREST);
    };
    fboV = std::make_unique<FBO>(dsNone, V.x, V.y);
    fboE = std::make_unique<FBO>(dsNone, E.x, E.y);
    fboF = std::make_unique<FBO>(dsNone, F.x, F.y);
    positions.clear();
    for (int i = 0; i < 3; ++i)
        positions.push_back(target(*fboV, GL_RGB32F, GL_RGB, GL_FLOAT));
    deformations = target(*fboV, GL_RGB32F, GL_RGB, GL_FLOAT);
    vertsWeight = target(*fboV, GL_R32F, GL_RED, GL_FLOAT);
    vertsInfo = table(V, GL_R32I, GL_RED_INTEGER, GL_INT);
    edgesVE = table(E, GL_RGBA32I, GL_RGBA_INTEGER, GL_INT);
    edgesHFEN = table(E, GL_RGBA32I, GL_RGBA_INTEGER, GL_INT);
    edgesNormal = target(*fboE, GL_RGBA16F, GL_RGBA, GL_FLOAT);
    edgesMaterial.clear();
    for (int i = 0; i < 3; ++i)
        edgesMaterial.push_back(target(*fboE, GL_RGBA32UI, GL_RGBA_INTEGER, GL_UNSIGNED_INT));
    facesECP = table(F, GL_RGB32I, GL_RGB_INTEGER, GL_INT);
    facesNormal = target(*fboF, GL_RGBA16F, GL_RGBA, GL_FLOAT);
    positionRoles = Roles();
    materialRoles = Roles();

    bool uploaded = true;
    auto upload = [&uploaded](Texture2D* t, void* data) { uploaded = t->compile(data) && uploaded; };
    // Edge sharp: the pair's flag, or a border.
    auto sharp = [this](int e) {
        MeshEdge const& r = edges[std::size_t(e)];
        return r.is(MeshEdge::SHARP) || r.half < 0;
    };
    {
        ScratchPadGeometry::Lease pad;
        auto* p = Table<Vector3<float>>(pad, V, 0);
        for (std::size_t v = 0; v < verts.size(); ++v)
            p[v] = verts[v].position;
        for (Texture2D* t : positions)
            upload(t, p);
        std::memset(static_cast<void*>(p), 0, sizeof(float) * std::size_t(V.x) * std::size_t(V.y));
        upload(deformations, p);
        upload(vertsWeight, p);
        auto* info = Table<int32_t>(pad, V, 0xff);
        for (std::size_t v = 0; v < verts.size(); ++v) {
            MeshVert const& r = verts[v];
            info[v] = pack14(r.edge, E.x, r.is(MeshVert::SHARP), r.is(MeshVert::ANCHOR), r.is(MeshVert::BORDER),
                             r.is(MeshVert::USER));
        }
        upload(vertsInfo.get(), info);
    }
    {
        ScratchPadGeometry::Lease pad;
        auto* ve = Table<Int4>(pad, E, 0xff);
        for (std::size_t i = 0; i < edges.size(); ++i) {
            MeshEdge const& r = edges[i];
            bool s = sharp(int(i));
            ve[i] = {pack14(r.v[0], V.x, s), pack14(r.v[1], V.x, s), pack14(r.e[0], E.x), pack14(r.e[1], E.x)};
        }
        upload(edgesVE.get(), ve);
        for (std::size_t i = 0; i < edges.size(); ++i) {
            MeshEdge const& r = edges[i];
            bool s = sharp(int(i));
            ve[i] = {pack14(r.half, E.x, s), pack14(r.face, F.x), pack14(edgeStart(int(i)), E.x),
                     pack14(r.e[1], E.x, s)};
        }
        upload(edgesHFEN.get(), ve);
        // Materials: the corners' own, or the default for a mesh without them.
        auto* words = Table<Pbr>(pad, E, 0);
        bool own = hasPbr() && materials.size() == edges.size();
        for (std::size_t i = 0; i < edges.size(); ++i)
            words[i] = own ? materials[i] : Pbr();
        for (Texture2D* t : edgesMaterial)
            upload(t, words);
        upload(edgesNormal, nullptr);
    }
    {
        ScratchPadGeometry::Lease pad;
        auto* ecp = Table<Int4>(pad, F, 0xff);
        auto* faceTable = reinterpret_cast<int32_t*>(ecp);
        for (std::size_t f = 0; f < faces.size(); ++f) {
            faceTable[3 * f] = pack14(faces[f].edge, E.x);
            faceTable[3 * f + 1] = faces[f].component;
            faceTable[3 * f + 2] = faces[f].patch;
        }
        upload(facesECP.get(), ecp);
        upload(facesNormal, nullptr);
    }
    if (!uploaded || !fboV->compile() || !fboE->compile() || !fboF->compile()) {
        deleteGPUData();
        return false;
    }
    // The triangle stream: per corner the packed vertex and the packed half-edge arriving there.
    {
        ScratchPadGeometry::Lease pad;
        std::size_t corners = 0;
        ForEachSoupCorner(*this, [&](int, int) { ++corners; });
        auto* stream = pad.at<int32_t>(0, 2 * corners);
        std::size_t n = 0;
        ForEachSoupCorner(*this, [&](int c, int) {
            stream[n++] = pack14(edges[std::size_t(c)].v[1], V.x);
            stream[n++] = pack14(c, E.x);
        });
        streamCorners = int(corners);
        triangles = int(corners / 3);
        glGenBuffers(1, &vertexBuffer);
        glBindBuffer(GL_ARRAY_BUFFER, vertexBuffer);
        glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(n * sizeof(int32_t)), stream, GL_STATIC_DRAW);
        glBindBuffer(GL_ARRAY_BUFFER, 0);
    }
    if (glGetError() != GL_NO_ERROR) {
        deleteGPUData();
        return false;
    }
    reset_vaos();
    updateNormals();
    return true;
}

void Clay::deleteGPUData()
{
    reset_vaos();
    if (vertexBuffer != 0)
        glDeleteBuffers(1, &vertexBuffer);
    vertexBuffer = 0;
    streamCorners = 0;
    positions.clear();
    edgesMaterial.clear();
    deformations = vertsWeight = edgesNormal = facesNormal = nullptr;
    vertsInfo.reset();
    edgesVE.reset();
    edgesHFEN.reset();
    facesECP.reset();
    fboV.reset();
    fboE.reset();
    fboF.reset();
}

long long Clay::gpuTableBytes() const
{
    if (vertexBuffer == 0)
        return 0;
    long long bytes = 8ll * streamCorners;
    for (FBO* fbo : {fboV.get(), fboE.get(), fboF.get()})
        for (Shared<Texture2D> const& t : fbo->attachments)
            bytes += (long long)t->bytesPerPixel() * t->texelCount();
    for (Texture2D* t : {vertsInfo.get(), edgesVE.get(), edgesHFEN.get(), facesECP.get()})
        bytes += (long long)t->bytesPerPixel() * t->texelCount();
    return bytes;
}

// ---- normals ------------------------------------------------------------------------------

Clay::KeepDrawTarget::KeepDrawTarget()
{
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &framebuffer);
    glGetIntegerv(GL_VIEWPORT, viewport);
}

Clay::KeepDrawTarget::~KeepDrawTarget()
{
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, GLuint(framebuffer));
    FBO::DRAW_ID = unsigned(framebuffer);
    glViewport(viewport[0], viewport[1], viewport[2], viewport[3]);
}

void Clay::TablePass(FBO& fbo, Texture2D* target, Shader* shader, NamedTextures const& textures,
                     std::function<void()> const& draw)
{
    KeepDrawTarget keep;
    VEL_ASSERT(fbo.enableDraw());
    glViewport(0, 0, fbo.width, fbo.height);
    glDrawBuffer(GLenum(target->attachment));
    GLMachine m;
    if (shader) {
        m.add(shader);
        for (auto const& t : textures)
            m.add(t.second);
        VEL_ASSERT(m.enable());
        for (auto const& t : textures)
            Shader::setUniform(t.first, t.second->unit);
    }
    draw();
    if (shader)
        m.disable();
}

void Clay::calculateFacesNormals()
{
    TablePass(*fboF, facesNormal, ShaderManager::instance().ShaderClayFacesNormal,
              {{"Positions", positions[std::size_t(positionRoles.current)]},
               {"FacesE", facesECP.get()},
               {"EdgesVE", edgesVE.get()}},
              GLFill);
}

void Clay::calculateVertsNormals()
{
    TablePass(*fboE, edgesNormal, ShaderManager::instance().ShaderClayVertsNormals,
              {{"EdgesHFEN", edgesHFEN.get()}, {"FacesN", facesNormal}}, GLFill);
}

void Clay::updateNormals()
{
    bool blend = glIsEnabled(GL_BLEND);
    glDisable(GL_BLEND);
    calculateFacesNormals();
    calculateVertsNormals();
    if (blend)
        glEnable(GL_BLEND);
}

// ---- copies, read-back and undo data ------------------------------------------------------

namespace {

// Copies attachment `from` of `fbo` onto attachment `to`, texel for texel.
void Blit(FBO& fbo, Texture2D* from, Texture2D* to)
{
    GLint draw = 0, read = 0;
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &draw);
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &read);
    VEL_ASSERT(fbo.enable());
    glReadBuffer(GLenum(from->attachment));
    glDrawBuffer(GLenum(to->attachment));
    glBlitFramebuffer(0, 0, fbo.width, fbo.height, 0, 0, fbo.width, fbo.height, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, GLuint(draw));
    glBindFramebuffer(GL_READ_FRAMEBUFFER, GLuint(read));
    FBO::DRAW_ID = unsigned(draw);
    FBO::READ_ID = unsigned(read);
}

} // namespace

void Clay::copy_positions(int from, int to)
{
    Blit(*fboV, positions[std::size_t(from)], positions[std::size_t(to)]);
}

void Clay::copy_materials(int from, int to)
{
    Blit(*fboE, edgesMaterial[std::size_t(from)], edgesMaterial[std::size_t(to)]);
}

void Clay::get_positions(int i, void* out)
{
    positions[std::size_t(i)]->getUnstructuredData(out);
}

void Clay::get_materials(int i, void* out)
{
    edgesMaterial[std::size_t(i)]->getUnstructuredData(out);
}

namespace {

// The records (of `count`) whose texels differ in any bit between the two read-backs, with
// the value of `old`.
template <class T, class Value>
std::unordered_map<int, Value> Differences(T const* old, T const* now, std::size_t count)
{
    std::unordered_map<int, Value> map;
    for (std::size_t i = 0; i < count; ++i)
        if (std::memcmp(&old[i], &now[i], sizeof(T)) != 0) {
            Value v;
            std::memcpy(&v, &old[i], sizeof(T));
            map.emplace(int(i), v);
        }
    return map;
}

// Exchanges the map's entries with the texels of `data`.
template <class T, class Value>
void Exchange(T* data, std::unordered_map<int, Value>& map)
{
    for (auto& entry : map) {
        unsigned char held[sizeof(T)];
        void* texel = static_cast<void*>(&data[entry.first]);
        std::memcpy(held, texel, sizeof(T));
        std::memcpy(texel, &entry.second, sizeof(T));
        std::memcpy(&entry.second, held, sizeof(T));
    }
}

} // namespace

std::unordered_map<int, Vector3<float>> Clay::diff_positions()
{
    if (vertexBuffer == 0)
        return {};
    std::size_t texels = std::size_t(sizeV().x) * std::size_t(sizeV().y);
    ScratchPadGeometry::Lease oldPad;
    ScratchPadBrush::Lease nowPad;
    auto* old = oldPad.at<Vector3<float>>(0, texels);
    auto* now = nowPad.at<Vector3<float>>(0, texels);
    get_positions(positionRoles.backup, old);
    get_positions(positionRoles.current, now);
    return Differences<Vector3<float>, Vector3<float>>(old, now, verts.size());
}

std::unordered_map<int, std::array<uint32_t, 4>> Clay::diff_materials()
{
    if (vertexBuffer == 0)
        return {};
    std::size_t texels = std::size_t(sizeE().x) * std::size_t(sizeE().y);
    ScratchPadGeometry::Lease oldPad;
    ScratchPadBrush::Lease nowPad;
    auto* old = oldPad.at<Pbr>(0, texels);
    auto* now = nowPad.at<Pbr>(0, texels);
    get_materials(materialRoles.backup, old);
    get_materials(materialRoles.current, now);
    return Differences<Pbr, std::array<uint32_t, 4>>(old, now, edges.size());
}

void Clay::swap_positions(std::unordered_map<int, Vector3<float>>& map)
{
    if (!buildGPUData())
        return;
    ScratchPadGeometry::Lease pad;
    auto* data = pad.at<Vector3<float>>(0, std::size_t(sizeV().x) * std::size_t(sizeV().y));
    Texture2D* t = positions[std::size_t(positionRoles.current)];
    get_positions(positionRoles.current, data);
    Exchange(data, map);
    VEL_ASSERT(t->compile(data));
    updateNormals();
    update();
}

void Clay::swap_materials(std::unordered_map<int, std::array<uint32_t, 4>>& map)
{
    if (!buildGPUData())
        return;
    ScratchPadGeometry::Lease pad;
    auto* data = pad.at<Pbr>(0, std::size_t(sizeE().x) * std::size_t(sizeE().y));
    Texture2D* t = edgesMaterial[std::size_t(materialRoles.current)];
    get_materials(materialRoles.current, data);
    Exchange(data, map);
    VEL_ASSERT(t->compile(data));
    update();
}

// ---- drawing ------------------------------------------------------------------------------

void Clay::prepareRender()
{
    // The tables are the buffers: nothing to rebuild per frame once they exist.
    buildGPUData();
}

int Clay::render_state(TRenderState const& state, bool snake) const
{
    // One layout for every kind: the stream's ivec2 at location 0.
    bool drawn = state.kind == 0 || state.kind == 1 || state.kind == 6 || state.kind == rtDEPTH;
    return drawn ? 1 | (snake ? KEY_SNAKE : 0) : 0;
}

bool Clay::enableGPUData(TRenderState const& state, bool snake)
{
    if (vertexBuffer == 0)
        return false;
    unsigned bound = bind_vao(state, snake);
    if (bound == ~0u)
        return false; // a kind clay does not draw in
    if (bound == 0) {
        glBindBuffer(GL_ARRAY_BUFFER, vertexBuffer);
        glEnableVertexAttribArray(0);
        glVertexAttribIPointer(0, 2, GL_INT, 0, nullptr);
        glBindBuffer(GL_ARRAY_BUFFER, 0);
    }
    return true;
}

Shader* Clay::renderShader(TRenderState const& state) const
{
    ShaderManager const& m = ShaderManager::instance();
    switch (state.kind) {
    case 0:
    case 1:
        return hasPbr() ? m.ShaderClayRenderMeshPbr : m.ShaderClayRenderPbr;
    case 6:
        return Fast(state) ? m.ShaderClayRenderFast : m.ShaderClayRender;
    case rtDEPTH:
        return m.ShaderClayRenderDepth;
    default:
        // Paint, colour and peeling passes read mesh buffers, which clay does not keep.
        return nullptr;
    }
}

Shader* Clay::renderSnakeShader(TRenderState const& state) const
{
    // Chains draw clay links unbent.
    return renderShader(state);
}

void Clay::renderBuffers(TRenderState const&)
{
    renderPositions = absoluteDeform ? positionRoles.deformed : positionRoles.current;
    machine.add(positions[std::size_t(renderPositions)]);
    machine.add(edgesHFEN.get());
    machine.add(facesECP.get());
    machine.add(edgesNormal);
    machine.add(edgesMaterial[std::size_t(materialTarget())]);
}

void Clay::render(TRenderState const& state, Matrix34<double> const& M, int objectId, int items, int elementId,
                  int instance, Material const& material, int flags, float time)
{
    Shader::setUniform("Positions", positions[std::size_t(renderPositions)]->unit);
    Shader::setUniform("EdgesHalfFaceStart", edgesHFEN->unit);
    Shader::setUniform("FacesEdgeComponentPatch", facesECP->unit);
    Shader::setUniform("EdgesNormal", edgesNormal->unit);
    Shader::setUniform("EdgesMaterial", edgesMaterial[std::size_t(materialTarget())]->unit);
    ElementVBO::render(state, M, objectId, items, elementId, instance, material, flags, time);
}

int Clay::materialTarget() const
{
    return absoluteMaterial ? materialRoles.deformed : materialRoles.current;
}

} // namespace vel
