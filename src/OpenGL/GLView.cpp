#include "OpenGL/GLView.h"

#include "Core/Assert.h"
#include "Core/Communicate.h"
#include "OpenGL/GLFilters.h"
#include "OpenGL/GLFunctions.h"
#include "OpenGL/GLMachine.h"
#include "OpenGL/GLPrimitives.h"
#include "OpenGL/GLState.h"
#include "OpenGL/Keyboard.h"
#include "OpenGL/Mouse.h"
#include "OpenGL/Rendering.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderLayer.h"
#include "OpenGL/ShaderManager.h"
#include "OpenGL/TextureCube.h"
#include "OpenGL/ViewportInput.h"
#include "Scene/Element.h"
#include "Scene/Scene.h"
#include "Scene/Tool.h"
#include "OpenGL/FileDialogs.h"
#include "Scene/Root.h"
#include "Scene/SceneFile.h"
#include "Scene/Tool.h"
#include "mainwindow/ConfigFile.h"

#include <glad/gl.h>

#include <QString>

#include <algorithm>
#include <cmath>

namespace vel {

GLView* main_view = nullptr;

namespace {
constexpr double HIDE_CURSOR_AFTER = 0.5; // seconds without change
constexpr double TURNTABLE_SPEED = 0.5;   // radians per second
constexpr int SAVE_QUALITY = 90;
constexpr int GRID_HALF = 20;             // grid lines on each side of an axis
constexpr int BRUSH_SEGMENTS = 48;
constexpr int BRUSH_SEGMENTS_LARGE = 96;  // for a circle wider than this many pixels
constexpr double BRUSH_LARGE_PIXELS = 200;

// Element i of the Halton sequence in `base`, in 0..1.
float Halton(int i, int base)
{
    float f = 1.0f, r = 0.0f;
    for (; i > 0; i /= base) {
        f /= float(base);
        r += f * float(i % base);
    }
    return r;
}
} // namespace

// ---------------------------------------------------------------------------------------------
// Construction and size

GLView::GLView(int width, int height)
    : GLVisual(width, height)
    , windowWidth(width)
    , windowHeight(height)
    , Accumulation(new FBO(dsNone, width, height))
    , HintsLayer(new FBO(dsDepth, width, height))
    , image(new FBOTexture(Shared<Texture2D>(new Texture2D(width, height, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE))))
    , input(new ViewportInput(*this))
{
    Accumulation->addColor(GL_RGBA32F, GL_RGBA, GL_FLOAT);
    Accumulation->addColor(GL_RGBA32F, GL_RGBA, GL_FLOAT);
    HintsLayer->addColor(GL_RGBA16F, GL_RGBA, GL_HALF_FLOAT);
    camera.distance = 1000.0;
    camera.rotation = Matrix3<double>::Rotation(0.5, -0.6, 0.0);
}

GLView::~GLView()
{
    if (shadowFramebuffer != 0) {
        if (FBO::DRAW_ID == shadowFramebuffer)
            FBO::DRAW_ID = 0;
        glDeleteFramebuffers(1, &shadowFramebuffer);
    }
}

bool GLView::resize(int w, int h)
{
    windowWidth = w;
    windowHeight = h;
    float const s = Rendering::instance().HalfsizeViewport ? 0.5f : 1.0f;
    int const tw = std::max(1, int(float(w) * s)), th = std::max(1, int(float(h) * s));
    if (!GLVisual::resize(tw, th))
        return false;
    Accumulation->resize(tw, th);
    HintsLayer->resize(tw, th);
    image->resize(tw, th);
    accumulated = 0; // a sum of another size means nothing
    return true;
}

void GLView::enterEvent()
{
    outside = false;
}

void GLView::leaveEvent()
{
    outside = true;
    captured = false;
}

void GLView::turn(double angle)
{
    camera.rotate(0.0, angle, 0.0);
}

// ---------------------------------------------------------------------------------------------
// Frame entry points

bool GLView::MainLoopPreRender(double totalTime, double dt)
{
    if (!postRendered)
        return false;
    postRendered = false;
    Rendering& r = Rendering::instance();
    r.idleTime += dt;
    time = totalTime;
    keys.read();
    setState();
    if (turntable || r.Turntable)
        turn(TURNTABLE_SPEED * dt);
    bool changed = mouseRead.dx != 0 || mouseRead.dy != 0 || mouseRead.wheel != 0 || mouseRead.anyPressed() ||
                   mouseRead.anyReleased();
    if (changed) {
        r.idleTime = 0;
        unchanged = 0;
        hideCursor = false;
    } else {
        unchanged += dt;
        hideCursor = unchanged > HIDE_CURSOR_AFTER && !outside;
    }
    return true;
}

FBO* GLView::MainLoopRender(double dt)
{
    (void)dt;
    // The first frame looks at what the start put into the scene.
    if (frame == 0)
        viewAll();
    // The half-size setting may have changed since the last resize.
    resize(windowWidth, windowHeight);
    render();
    return image.get();
}

void GLView::MainLoopPostRender()
{
    ++Element::GlobalUpdate;
    keys.clearEdges();
    mouseRead.wheel = 0;
    ++frame;
    postRendered = true;
}

// ---------------------------------------------------------------------------------------------
// The frame

void GLView::viewAll()
{
    Scene& scene = Scene::instance();
    scene.fit(1.0);
    double const half = Rendering::instance().FieldOfView * M_PI / 360.0;
    camera.position = scene.centre;
    camera.distance = std::max(scene.radius, 1e-3) / std::sin(half) * 1.1;
    // Depth precision goes with the ratio far / near.
    zNear = float(camera.distance * 0.01);
    zFar = float(camera.distance * 100.0);
}

Vector2<float> GLView::jitter() const
{
    if (!accumulating())
        return {};
    float const j = Rendering::instance().jitter;
    // Halton (2, 3) from the second element: the first sample is centred.
    int const i = accumulated;
    return {(Halton(i, 2) - 0.5f) * j * (i > 0 ? 1.0f : 0.0f), (Halton(i, 3) - 0.5f) * j * (i > 0 ? 1.0f : 0.0f)};
}

void GLView::buildMatricesInViewport(bool overlay)
{
    buildMatrices(camera, overlay ? Vector2<float>() : jitter());
}

void GLView::prepareElements(ToolList& list)
{
    for (RenderItem const& item : list.items)
        if (item.element && prepared.insert(item.element).second)
            item.tool->prepareRender(item.element);
}

void GLView::render()
{
    Rendering const& r = Rendering::instance();
    Scene& scene = Scene::instance();
    // 1. The camera moves of the pointer first, so that this frame shows them.
    input->navigate();
    buildMatricesInViewport(false);
    input->beginFrame();
    // 2. The first list holds the unselected tools, the second the selected ones (and, with
    // the drawing gestures, the tools they make). While idle every tool is in the first,
    // so that the pick finds the selected ones too.
    scene.toMap();
    scene.toList(true, !input->idle());
    prepared.clear();
    prepareElements(scene.list);
    prepareElements(scene.temporary);
    // 3. Highlights of hovered and selected tools: with picking.
    // 4. The light of the frame, turning with RotateLight.
    // 5.
    renderClear();
    // 6.
    ShaderLayer::RenderPreCompositShaderLayers(*this, ShaderLayerUniforms::Frame(time, frame, height), 0); // RunPreOpaque
    // 7.
    renderObjects(scene.list, true, false);
    // 8. to 10. The pick under the pointer, then the mouse actions on it.
    MainLoopSelect();
    if (!renderOnly) {
        input->dispatch();
        input->updateSculpt();
        input->brushHint();
    }
    // 11.
    scene.temporary.sort(r.showCurves, r.showTransparent, r.showRigidBodies);
    renderObjects(scene.temporary, false, false);
    ShaderLayer::RenderPreCompositShaderLayers(*this, ShaderLayerUniforms::Frame(time, frame, height), 1); // RunPostOpaque
    // 12.
    if (r.fast)
        calculateNormals(Shader::ProjectionMatrixInv);
    // 13.
    composit(float(time));
    // 14. Selection masks, then the outlines of objects marked for contours.
    if (!renderOnly)
        input->contourSelection();
    if (r.contours > 0 && (hasContours(scene.list) || hasContours(scene.temporary)))
        contour();
    // 15.
    mixRefract();
    // 16.
    ShaderLayer::RenderPostCompositShaderLayers(*this, ShaderLayerUniforms::Frame(time, frame, height), 2); // RunPostComposit
    // 17.
    if (r.light && r.shadow > 0) {
        renderShadow({&scene.list, &scene.temporary}, false);
        shadow(Matrix4<float>(screenToWorld()), Matrix3<float>(Shader::NormalMatrixInv));
    }
    // 18. The screen effects in their fixed order. The flags are gathered once, then popped
    // one by one, so that the order lives here only.
    using Effect = void (GLView::*)();
    static Effect const effects[] = {
        &GLView::edgeDetection, &GLView::SSAO, &GLView::SSSS,
        &GLView::fog,           &GLView::SSR,  &GLView::bloom,
        &GLView::tonemap,       &GLView::chromaticAberration, &GLView::depthOfField,
    };
    bool const solid = !r.wireframe;
    std::deque<bool> enabled{r.EdgeDetect && r.style != 1 && r.style != 3,
                             r.ScreenSpaceAmbientOcclusion && solid,
                             r.ssss && solid,
                             r.fog && solid,
                             r.ScreenSpaceReflection && solid,
                             r.bloom > 0,
                             r.tonemap != 0,
                             r.LensChromaticAberration,
                             r.dofSize > 0};
    for (Effect e : effects) {
        bool on = enabled.front();
        enabled.pop_front();
        if (on)
            (this->*e)();
    }
    // 19. Then no value leaves 0..1.
    ShaderLayer::RenderPostCompositShaderLayers(*this, ShaderLayerUniforms::Frame(time, frame, height), 3); // RunFinal
    beginPass();
    GLClamp(current(), next());
    endPass();
    // 20.
    accumulate();
    // 21.
    if (r.noise > 0) {
        beginPass();
        GLNoise(current(), next(), int(frame), r.noise);
        endPass();
    }
    // 22. The picture goes to `image`, with the hints over it unless the view renders only.
    if (!renderOnly) {
        renderHints();
    } else {
        VEL_ASSERT(image->enableDraw());
        glViewport(0, 0, image->width, image->height);
        GLCopy(current());
    }
    // 23. The status panel: with the interface.
    FBO::disable(fbBoth);
    // 24.
    if (!renderOnly)
        mouseWheel();
    // 25.
    finishSave();
}

// ---------------------------------------------------------------------------------------------
// Input: ViewportInput does the work

void GLView::setState()
{
    input->setState();
}

bool GLView::MainLoopSelect()
{
    return input->MainLoopSelect();
}

void GLView::mouseDown()
{
    input->mouseDown();
}

void GLView::mouseMove()
{
    input->mouseMove();
}

void GLView::mouseUp(bool apply)
{
    input->mouseUp(apply);
}

void GLView::mouseWheel()
{
    input->mouseWheel();
}

void GLView::resetState()
{
    input->resetState();
}

bool GLView::linked() const
{
    return input->linked();
}

void GLView::UNDO()
{
    input->UNDO();
}

void GLView::REDO()
{
    input->REDO();
}

void GLView::setBrushFalloff(float value)
{
    SculptGesture::SetFalloff(value);
}

void GLView::setBrushStrength(float value)
{
    SculptGesture::SetStrength(value);
}

void GLView::setBrushElevation(float value)
{
    SculptGesture::SetElevation(value);
}

void GLView::setBrushSize(float pixels)
{
    SculptGesture::SetSize(pixels);
}

void GLView::mulBrushSize(float factor)
{
    input->sculpt.mulSize(factor);
}

void GLView::updateSculpt()
{
    input->updateSculpt();
}

// ---------------------------------------------------------------------------------------------
// Shadows

void GLView::ensureShadowTargets()
{
    if (!ShadowMap) {
        ShadowMap = Shared<TextureCube>(
            new TextureCube(SHADOW_SIZE, GL_DEPTH_COMPONENT24, GL_DEPTH_COMPONENT, GL_FLOAT, GL_CLAMP_TO_EDGE, GL_LINEAR));
        VEL_ASSERT(ShadowMap->enable());
        // Compared in the shader as a samplerCubeShadow: 1 where the reference is not farther.
        glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_COMPARE_MODE, GL_COMPARE_REF_TO_TEXTURE);
        glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_COMPARE_FUNC, GL_LEQUAL);
        ShadowMap->disable();
    }
    if (shadowFramebuffer == 0)
        glGenFramebuffers(1, &shadowFramebuffer);
}

Matrix4<double> GLView::shadowFaceMatrix(int face, Vector3<double> const& light) const
{
    // The view axes of each face in GL's cube-map convention: forward f and up u.
    static double const axes[6][6] = {
        {1, 0, 0, 0, -1, 0}, {-1, 0, 0, 0, -1, 0}, {0, 1, 0, 0, 0, 1},
        {0, -1, 0, 0, 0, -1}, {0, 0, 1, 0, -1, 0}, {0, 0, -1, 0, -1, 0},
    };
    Vector3<double> const f(axes[face][0], axes[face][1], axes[face][2]);
    Vector3<double> const up(axes[face][3], axes[face][4], axes[face][5]);
    Vector3<double> const s = f.cross(up);
    Vector3<double> const u = s.cross(f);
    // Row-vector view: the columns are s, u and -f.
    Matrix3<double> const V(s.x, u.x, -f.x, s.y, u.y, -f.y, s.z, u.z, -f.z);
    double const n = shadowNear, fa = shadowFar;
    Matrix4<double> P;
    P.m[10] = (fa + n) / (n - fa);
    P.m[11] = -1.0;
    P.m[14] = 2.0 * fa * n / (n - fa);
    P.m[15] = 0.0;
    return Matrix4<double>(Matrix34<double>::Translation(-light) * Matrix34<double>(V)) * P;
}

void GLView::renderShadow(std::deque<ToolList*> const& lists, bool transparentToo)
{
    ensureShadowTargets();
    Rendering const& r = Rendering::instance();
    std::vector<unsigned char> saved;
    Shader::Push(saved);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, shadowFramebuffer);
    FBO::DRAW_ID = shadowFramebuffer;
    VEL_ASSERT(ShadowMap->compile());
    glDrawBuffer(GL_NONE);
    glViewport(0, 0, SHADOW_SIZE, SHADOW_SIZE);
    gl_Depth_Test.set(true);
    glDepthMask(GL_TRUE);
    Vector3<double> const light(r.LightSource.x, r.LightSource.y, r.LightSource.z);
    TRenderState state = r.renderState(rtDEPTH);
    state.twoSided = true; // closed or not, every surface casts
    for (int face = 0; face < 6; ++face) {
        glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GLenum(GL_TEXTURE_CUBE_MAP_POSITIVE_X + face),
                               ShadowMap->textureId, 0);
        glClear(GL_DEPTH_BUFFER_BIT);
        Shader::ProjectionModelViewMatrix = shadowFaceMatrix(face, light);
        Shader::PMVSign = 1.0f;
        for (ToolList* list : lists) {
            int counter = 0;
            list->render(state, false, counter);
            if (transparentToo) {
                TRenderState back = state;
                back.kind = 1;
                list->render(back, false, counter);
            }
        }
    }
    Shader::Pop(saved);
    gl_Depth_Test.set(false);
}

Matrix4<double> GLView::screenToWorld() const
{
    // Window coordinates (0..1) and depth (0..1) to normalised device coordinates, then back
    // through the projection and the view.
    Matrix4<double> S;
    S.m[0] = S.m[5] = S.m[10] = 2.0;
    S.m[12] = S.m[13] = S.m[14] = -1.0;
    return S * Shader::ProjectionModelViewMatrixInv;
}

void GLView::shadow(Matrix4<float> const& toWorld, Matrix3<float> const& rotation)
{
    Rendering const& r = Rendering::instance();
    ensureShadowTargets();
    beginEffect();
    GLMachine m{ShaderManager::instance().ShaderShadowComposit, current(), DepthStencil(), Layers->NormalNormalized,
                ShadowMap.get()};
    VEL_ASSERT(m.enable());
    Shader::setUniform("iResolution", float(this->width), float(this->height));
    Shader::setUniform("iColor", current()->activeTexture());
    Shader::setUniform("iDepth", DepthStencil()->activeTexture());
    Shader::setUniform("iNormal", Layers->NormalNormalized->activeTexture());
    Shader::setUniform("iShadow", ShadowMap->activeTexture());
    Shader::setUniform("iDepthCompute", shadowNear, shadowFar);
    Shader::setUniform("iLightPositionAlpha", r.LightSource.x, r.LightSource.y, r.LightSource.z, r.shadow);
    Shader::setUniform("iScreenToWorld", toWorld);
    Shader::setUniform("iScreenToWorldRotation", rotation);
    GLFill();
    m.disable();
    endEffect();
}

// ---------------------------------------------------------------------------------------------
// Hints

void GLView::renderHints()
{
    buildMatricesInViewport(true);
    VEL_ASSERT(HintsLayer->enableDraw());
    glViewport(0, 0, HintsLayer->width, HintsLayer->height);
    // The merge below takes the nearer picture whole, so the hints fade towards the
    // background rather than towards transparency.
    Vector4<float> const bg = Rendering::instance().background;
    GLfloat const clear[4] = {bg.x, bg.y, bg.z, 1.0f};
    glClearBufferfv(GL_COLOR, 0, clear);
    glDepthMask(GL_TRUE);
    glClearBufferfi(GL_DEPTH_STENCIL, 0, 1.0f, 0);
    // Each hint with its own depth and stencil settings; lines blend over each other.
    gl_Depth_Test.set(true);
    gl_Stencil_Test.set(false);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    if (showGrid || showAxes) {
        // A grid cell of a power of ten near a tenth of the camera's distance.
        double const step = std::pow(10.0, std::floor(std::log10(std::max(camera.distance, 1e-6) * 0.1)));
        GLGrid(step, showGrid ? GRID_HALF : 0, showAxes);
    }
    // The gizmo, snapping points, segments, curve handles, SDF outlines and distance labels
    // come with the viewport's actions.
    if (brushVisible) {
        Vector3<double> const n = brushNormal.normalize();
        Vector3<double> const x = Matrix3<double>::AnyPerpendicular(n).normalize();
        Vector3<double> const y = n.cross(x);
        double const pixels = Shader::Lens > 0 ? brushRadius * Shader::Lens / camera.distance
                                                : brushRadius * this->height * 0.5 / Shader::ViewSize;
        // The circle lies on the surface it paints: it is kept in front of everything (depth
        // 0), so that the merge by depth shows all of it.
        glDepthFunc(GL_ALWAYS);
        glDepthRange(0.0, 0.0);
        GLCircle(brushCenter, x, y, brushRadius, pixels > BRUSH_LARGE_PIXELS ? BRUSH_SEGMENTS_LARGE : BRUSH_SEGMENTS,
                 {1.0f, 1.0f, 1.0f, 1.0f});
        glDepthRange(0.0, 1.0);
        glDepthFunc(GL_LESS);
    }
    glDisable(GL_BLEND);
    gl_Depth_Test.set(false);
    // The merge: per pixel the nearer of picture and hints; the picture wins ties, so that
    // where neither drew the background stays.
    VEL_ASSERT(image->enableDraw());
    glViewport(0, 0, image->width, image->height);
    GLMixDepth(current(), DepthStencil(), HintsLayer->color(0), HintsLayer->DepthStencil(), 0.0f, image->texture());
}

// ---------------------------------------------------------------------------------------------
// Accumulation and saving

void GLView::accumulate()
{
    if (!accumulating()) {
        accumulated = 0;
        return;
    }
    ++accumulated;
    // The sum ping-pongs between the two textures of Accumulation.
    VEL_ASSERT(Accumulation->enableDraw());
    glViewport(0, 0, Accumulation->width, Accumulation->height);
    gl_Depth_Test.set(false);
    gl_Stencil_Test.set(false);
    Texture2D* sum = Accumulation->color(accumulationIndex);
    if (accumulated == 1) {
        static GLfloat const zero[4] = {0, 0, 0, 0};
        glDrawBuffer(GLenum(sum->attachment));
        glClearBufferfv(GL_COLOR, 0, zero);
    }
    accumulationIndex = 1 - accumulationIndex;
    Texture2D* total = Accumulation->color(accumulationIndex);
    GLAdd(sum, current(), 1.0f, total);
    beginPass();
    float const mean = 1.0f / float(accumulated);
    GLMul(total, Vector4<float>(mean, mean, mean, mean), next());
    endPass();
}

void GLView::saveImage(std::string const& path, int count)
{
    saveRequested = true;
    savePath = path;
    saveSamples = std::max(1, count);
    accumulated = 0;
}

void GLView::finishSave()
{
    if (!saveRequested)
        return;
    if (saveSamples > 1) {
        --saveSamples;
        return;
    }
    saveRequested = false;
    savedSamples = accumulated;
    if (!current()->save(savePath, SAVE_QUALITY))
        LogInfo(QString("Could not write the image '%1'.").arg(QString::fromStdString(savePath)), 2);
}

void GLView::saveCamera(CameraState& state) const
{
    state.position = camera.position;
    state.rotation = camera.rotation;
    state.distance = camera.distance;
}

void GLView::loadCamera(CameraState const& state)
{
    camera.position = state.position;
    camera.rotation = state.rotation;
    camera.distance = state.distance;
    // An orbiting camera keeps its angles, not its matrix: take them from the file's rotation.
    if (camera.type == 1)
        camera.set_type(1, true);
}

// The selected objects by themselves, in an object file or OBJ: the topmost selected tools,
// each with its subtree.
void GLView::quickSave()
{
    std::vector<Tool*> selected, pending(Scene::instance().root->children.rbegin(), Scene::instance().root->children.rend());
    while (!pending.empty()) {
        Tool* t = pending.back();
        pending.pop_back();
        if (t->flags & Tool::FLAG_SELECTED)
            selected.push_back(t);
        else
            pending.insert(pending.end(), t->children.rbegin(), t->children.rend());
    }
    if (selected.empty())
        return;
    QString path = AskSaveFileName(nullptr, "Save Object", OPEN_OBJECT_PATH,
                                   "All (*.vob *.obj);;Object (*.vob);;Meshes (*.obj)", "vob");
    if (path.isEmpty())
        return;
    if (!Scene::instance().save(selected, path.toStdString()))
        LogInfo(QString("Cannot save '%1': the file could not be written; the old file is unchanged.").arg(path), 2);
}

} // namespace vel
