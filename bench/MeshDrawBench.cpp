// Element buffers on the GL thread: the GPU bytes each vertex layout costs per triangle
// (from the buffers actually allocated, with the time of a full upload), and the cost of the
// frame's draw list for 1000 tools sharing 10 elements; the upload of a snake's bones
// texture for a 10,000-vertex axis, and the frame of a 100-instance array of an 82k-triangle
// mesh.
//
// The draw list is measured twice: with the driver (llvmpipe, into a 1280x800 G-buffer of
// six targets, glFinish outside the timing), and with the driver's entry points for draws,
// uniforms and bindings replaced by empty functions, which leaves the list's own work: the
// walk, the matrices, the uniform cache and the state mirrors.
#include "OpenGL/FBO.h"
#include "OpenGL/GLState.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/Resources.h"
#include "OpenGL/Shader.h"
#include "Scene/Elements/Curve/Curve.h"
#include "Scene/Elements/Mesh/Mesh.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tool.h"
#include "Scene/ToolList.h"
#include "Scene/Tools/Array/Array.h"
#include "Support/GLTestContext.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <vector>

namespace {

using namespace vel;

bool Context(benchmark::State& state)
{
    std::string error;
    if (!test::MakeGLContextCurrent(&error)) {
        state.SkipWithError(("no GL context: " + error).c_str());
        return false;
    }
    InitResources();
    return true;
}

// The six targets of the materials pass at 1280x800, enabled for drawing with depth test,
// under the identity camera.
bool GBuffer(FBO& gbuffer)
{
    gbuffer.addColor(GL_RGBA32I, GL_RGBA_INTEGER, GL_INT, GL_CLAMP_TO_EDGE, GL_NEAREST);
    gbuffer.addColor(GL_RGB32I, GL_RGB_INTEGER, GL_INT, GL_CLAMP_TO_EDGE, GL_NEAREST);
    gbuffer.addColor(GL_RGBA32F, GL_RGBA, GL_FLOAT);
    gbuffer.addColor(GL_RG16F, GL_RG, GL_HALF_FLOAT);
    gbuffer.addColor(GL_RGBA16F, GL_RGBA, GL_HALF_FLOAT);
    gbuffer.addColor(GL_RGBA16F, GL_RGBA, GL_HALF_FLOAT);
    if (!gbuffer.enable())
        return false;
    GLenum const buffers[6] = {GL_COLOR_ATTACHMENT0, GL_COLOR_ATTACHMENT1, GL_COLOR_ATTACHMENT2,
                               GL_COLOR_ATTACHMENT3, GL_COLOR_ATTACHMENT4, GL_COLOR_ATTACHMENT5};
    glDrawBuffers(6, buffers);
    glViewport(0, 0, 1280, 800);
    gl_Depth_Test.set(true, true);
    Shader::ProjectionModelViewMatrix = Matrix4<double>();
    Shader::NormalMatrix = Matrix3<double>();
    Rendering::instance().style = Rendering::STYLE_PBR;
    return true;
}

// A sphere of about 20k triangles, with corner materials when `materials`.
void BM_MeshBufferBytesPerTriangle(benchmark::State& state)
{
    if (!Context(state))
        return;
    bool materials = state.range(0) != 0;
    std::unique_ptr<Mesh> mesh = Mesh::Sphere(Mesh::Icosahedron(), 5, materials ? 1 : 0);
    for (auto _ : state) {
        mesh->set_vbos_dirty(true);
        mesh->prepareRender();
        glFinish();
    }
    state.counters["triangles"] = double(mesh->triangles);
    double const triangles = double(mesh->triangles);
    state.counters["bytes_per_triangle"] = double(mesh->gpuBytes()) / triangles;
    // What each layout reads: depth passes the positions, the G-buffer all but the materials
    // (or all), fast mode all but the normals.
    state.counters["positions"] = mesh->vbo_positions()->size / triangles;
    state.counters["ids"] = mesh->vbo_ids()->size / triangles;
    state.counters["normals"] = mesh->vbo_normals()->size / triangles;
    state.counters["materials"] = mesh->vbo_pbrs()->size / triangles;
    state.SetLabel(materials ? "with vertex materials" : "plain");
    mesh->deleteGPUData();
}
BENCHMARK(BM_MeshBufferBytesPerTriangle)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// ---- the driver's entry points, swapped for empty ones ---------------------------------

void GLAD_API_PTR NoDrawArrays(GLenum, GLint, GLsizei) {}
void GLAD_API_PTR NoBindVertexArray(GLuint) {}
void GLAD_API_PTR NoCullFace(GLenum) {}
void GLAD_API_PTR NoUseProgram(GLuint) {}
void GLAD_API_PTR NoUniform1i(GLint, GLint) {}
void GLAD_API_PTR NoUniform1f(GLint, GLfloat) {}
void GLAD_API_PTR NoUniform2f(GLint, GLfloat, GLfloat) {}
void GLAD_API_PTR NoUniform3f(GLint, GLfloat, GLfloat, GLfloat) {}
void GLAD_API_PTR NoUniform4f(GLint, GLfloat, GLfloat, GLfloat, GLfloat) {}
void GLAD_API_PTR NoUniform4i(GLint, GLint, GLint, GLint, GLint) {}
void GLAD_API_PTR NoMatrix(GLint, GLsizei, GLboolean, GLfloat const*) {}
void GLAD_API_PTR NoGetIntegerv(GLenum name, GLint* v)
{
    v[0] = 0;
    if (name == GL_VIEWPORT) {
        v[1] = 0;
        v[2] = 1280;
        v[3] = 800;
    }
}

class DriverStubs {
public:
    DriverStubs()
        : drawArrays(glad_glDrawArrays)
        , bindVertexArray(glad_glBindVertexArray)
        , cullFace(glad_glCullFace)
        , useProgram(glad_glUseProgram)
        , uniform1i(glad_glUniform1i)
        , uniform1f(glad_glUniform1f)
        , uniform2f(glad_glUniform2f)
        , uniform3f(glad_glUniform3f)
        , uniform4f(glad_glUniform4f)
        , uniform4i(glad_glUniform4i)
        , matrix3(glad_glUniformMatrix3fv)
        , matrix4(glad_glUniformMatrix4fv)
        , matrix43(glad_glUniformMatrix4x3fv)
        , getIntegerv(glad_glGetIntegerv)
    {
        glad_glDrawArrays = NoDrawArrays;
        glad_glBindVertexArray = NoBindVertexArray;
        glad_glCullFace = NoCullFace;
        glad_glUseProgram = NoUseProgram;
        glad_glUniform1i = NoUniform1i;
        glad_glUniform1f = NoUniform1f;
        glad_glUniform2f = NoUniform2f;
        glad_glUniform3f = NoUniform3f;
        glad_glUniform4f = NoUniform4f;
        glad_glUniform4i = NoUniform4i;
        glad_glUniformMatrix3fv = NoMatrix;
        glad_glUniformMatrix4fv = NoMatrix;
        glad_glUniformMatrix4x3fv = NoMatrix;
        glad_glGetIntegerv = NoGetIntegerv;
    }
    ~DriverStubs()
    {
        glad_glDrawArrays = drawArrays;
        glad_glBindVertexArray = bindVertexArray;
        glad_glCullFace = cullFace;
        glad_glUseProgram = useProgram;
        glad_glUniform1i = uniform1i;
        glad_glUniform1f = uniform1f;
        glad_glUniform2f = uniform2f;
        glad_glUniform3f = uniform3f;
        glad_glUniform4f = uniform4f;
        glad_glUniform4i = uniform4i;
        glad_glUniformMatrix3fv = matrix3;
        glad_glUniformMatrix4fv = matrix4;
        glad_glUniformMatrix4x3fv = matrix43;
        glad_glGetIntegerv = getIntegerv;
    }
    DriverStubs(DriverStubs const&) = delete;
    DriverStubs& operator=(DriverStubs const&) = delete;

private:
    PFNGLDRAWARRAYSPROC drawArrays;
    PFNGLBINDVERTEXARRAYPROC bindVertexArray;
    PFNGLCULLFACEPROC cullFace;
    PFNGLUSEPROGRAMPROC useProgram;
    PFNGLUNIFORM1IPROC uniform1i;
    PFNGLUNIFORM1FPROC uniform1f;
    PFNGLUNIFORM2FPROC uniform2f;
    PFNGLUNIFORM3FPROC uniform3f;
    PFNGLUNIFORM4FPROC uniform4f;
    PFNGLUNIFORM4IPROC uniform4i;
    PFNGLUNIFORMMATRIX3FVPROC matrix3;
    PFNGLUNIFORMMATRIX4FVPROC matrix4;
    PFNGLUNIFORMMATRIX4X3FVPROC matrix43;
    PFNGLGETINTEGERVPROC getIntegerv;
};

// 1000 tools on a 40 x 25 grid over the picture, showing 10 small spheres in turn.
void BM_DrawList1000Tools10Elements(benchmark::State& state)
{
    if (!Context(state))
        return;
    bool withDriver = state.range(0) != 0;
    FBO gbuffer(dsDepth, 1280, 800);
    if (!GBuffer(gbuffer)) {
        state.SkipWithError("no G-buffer");
        return;
    }

    std::vector<Shared<Element>> elements;
    for (int i = 0; i < 10; ++i) {
        elements.emplace_back(Mesh::Sphere(Mesh::Icosahedron(), 1 + i % 2, i % 2).release());
        elements.back()->prepareRender();
    }
    std::vector<std::unique_ptr<Tool>> tools;
    ToolList list;
    for (int i = 0; i < 1000; ++i) {
        Matrix34<double> M(Matrix3<double>() * 0.04,
                           Vector3<double>(-0.975 + 0.05 * (i % 40), -0.96 + 0.08 * (i / 40), 0));
        tools.emplace_back(new Tool(elements[size_t(i % 10)], M));
        list.append(tools.back().get(), false);
    }
    list.sort(true, true, true);
    TRenderState kind0 = Rendering::instance().renderState(0);
    int counter = 0;
    list.render(kind0, false, counter); // programs compiled and uniforms learnt outside the timing
    glFinish();
    {
        std::unique_ptr<DriverStubs> stubs(withDriver ? nullptr : new DriverStubs);
        for (auto _ : state) {
            counter = 0;
            list.render(kind0, false, counter);
            if (withDriver) {
                state.PauseTiming();
                glFinish();
                state.ResumeTiming();
            }
        }
    }
    state.counters["draws"] = double(counter);
    state.SetLabel(withDriver ? "llvmpipe, 1280x800, six targets" : "list only, driver stubbed");
    list.reset();
    tools.clear();
    for (Shared<Element>& e : elements)
        e->deleteGPUData();
    elements.clear();
    History::instance().clear();
    FBO::disable(fbBoth);
}
BENCHMARK(BM_DrawList1000Tools10Elements)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// ---- arrays and snakes ------------------------------------------------------------------

void BM_SnakeBonesTextureRebuild10000Vertices(benchmark::State& state)
{
    if (!Context(state))
        return;
    std::vector<Vector3<float>> p;
    for (int i = 0; i < 10000; ++i)
        p.push_back({float(std::cos(0.01 * i)), float(std::sin(0.01 * i)), float(0.001 * i)});
    Curve axis(p, false, false, 0);
    for (auto _ : state) {
        axis.verts[5000].position.z += 1e-4f;
        axis.update();
        benchmark::DoNotOptimize(axis.buildGPUVertsFrames());
        glFinish();
    }
    state.counters["texels"] = double(axis.bones.size() * 4);
    axis.deleteGPUData();
}
BENCHMARK(BM_SnakeBonesTextureRebuild10000Vertices)->Unit(benchmark::kMillisecond);

void BM_Array100Instances100kTriangles(benchmark::State& state)
{
    if (!Context(state))
        return;
    FBO gbuffer(dsDepth, 1280, 800);
    if (!GBuffer(gbuffer)) {
        state.SkipWithError("no G-buffer");
        return;
    }
    {
        History::Pause pause;
        Tool parent;
        // A 10 x 10 grid of instances over the picture: ten rows of ten edges.
        auto* axis = new Curve;
        for (int row = 0; row < 10; ++row) {
            std::vector<Vector3<float>> line;
            for (int i = 0; i <= 10; ++i)
                line.push_back({-0.9f + 0.18f * float(i), -0.9f + 0.18f * float(row), 0});
            Curve part(line, false, false, 0);
            axis->append(&part);
        }
        axis->initialize(0);
        auto* array = new Array(Shared<Element>(axis), 0);
        parent.addChild(array);
        // Level 6 of the subdivided icosahedron: 81,920 triangles, the nearest to 100k.
        std::unique_ptr<Mesh> sphere = Mesh::Sphere(Mesh::Icosahedron(), 6, 0);
        double triangles = double(sphere->triangles);
        array->setItem(new Tool(Shared<Element>(sphere.release()), Matrix34<double>::Scale(0.8)));
        ToolList list;
        auto frame = [&] {
            list.reset();
            list.append(&parent, false);
            for (RenderItem const& item : list.items)
                item.tool->prepareRender(item.element);
            list.sort(false, true, true);
            int counter = 0;
            list.render(Rendering::instance().renderState(0), false, counter);
            glFinish();
            return counter;
        };
        int draws = frame(); // programs compiled and buffers filled outside the timing
        for (auto _ : state)
            benchmark::DoNotOptimize(frame());
        state.counters["draws"] = double(draws);
        state.counters["triangles"] = triangles * draws;
        state.SetLabel("llvmpipe, 1280x800, six targets");
        list.reset();
    }
    History::instance().clear();
    FBO::disable(fbBoth);
}
BENCHMARK(BM_Array100Instances100kTriangles)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace
