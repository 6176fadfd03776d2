// Clay: the sculpt and paint passes and the states of a stroke.
#include "Scene/Elements/Mesh/Clay.h"

#include "Core/Assert.h"
#include "Deformers/SculptStep.h"
#include "OpenGL/FBO.h"
#include "OpenGL/GLFunctions.h"
#include "OpenGL/GLMachine.h"
#include "OpenGL/GLState.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderManager.h"
#include "OpenGL/Texture2D.h"
#include "Scene/Commands/CommandMeshDataType.h"
#include "Scene/Commands/CommandPaintClay.h"
#include "Scene/Commands/CommandSculptClay.h"
#include "Scene/SceneHistory.h"

#include <glad/gl.h>

#include <algorithm>
#include <cmath>
#include <utility>

// Index
// - the pass of every step
// - sculpt steps
// - applying deformations and materials
// - strokes

namespace vel {

namespace {

using Vec = Vector3<float>;

ShaderManager const& Shaders()
{
    return ShaderManager::instance();
}

} // namespace

// ---- the pass of every step -------------------------------------------------------------

void Clay::pass(Shader* shader, Texture2D* target, Vec const& clear, int sculptors,
                std::function<void(int)> const& uniforms, NamedTextures const& textures)
{
    if (!buildGPUData())
        return;
    NamedTextures all = {{"VertsInfo", vertsInfo.get()}, {"Positions", positions[std::size_t(positionRoles.current)]}};
    all.insert(all.end(), textures.begin(), textures.end());
    TablePass(*fboV, target, sculptors > 0 ? shader : nullptr, all, [&]() {
        float const value[4] = {clear.x, clear.y, clear.z, 0.0f};
        glClearBufferfv(GL_COLOR, 0, value);
        if (!shader || sculptors <= 0)
            return;
        // The sculptors' contributions sum in the float target.
        glEnable(GL_BLEND);
        glBlendEquation(GL_FUNC_ADD);
        glBlendFunc(GL_ONE, GL_ONE);
        for (int i = 0; i < sculptors; ++i) {
            uniforms(i);
            GLFill();
        }
        glDisable(GL_BLEND);
    });
}

// ---- sculpt steps -----------------------------------------------------------------------

namespace {

int Count(std::size_t a, std::size_t b)
{
    return int(std::min(a, b));
}

// The frame of a stroke, as the CPU deformers build it.
Matrix3<float> StrokeFrame(Vec const& direction, Vec const& normal)
{
    return SculptStrokeFrame(direction, normal);
}

} // namespace

void Clay::deform(std::vector<Vec> const& centers, std::vector<Vec> const& displacements, float radius, float falloff)
{
    pass(Shaders().ShaderClayDeform, deformations, {}, Count(centers.size(), displacements.size()), [&](int i) {
        Shader::setUniform("center", centers[std::size_t(i)]);
        Shader::setUniform("displacement", displacements[std::size_t(i)]);
        Shader::setUniform("PARAMETERS", 1.0f / radius, falloff, 0.0f, 0.0f);
    });
}

void Clay::smooth(std::vector<Vec> const& centers, float intensity, float radius)
{
    pass(
        Shaders().ShaderClaySmooth, deformations, {}, int(centers.size()),
        [&](int i) {
            Shader::setUniform("center", centers[std::size_t(i)]);
            Shader::setUniform("PARAMETERS", 1.0f / radius, intensity, 0.0f, 0.0f);
        },
        {{"EdgesHFE", edgesHFEN.get()}, {"EdgesVE", edgesVE.get()}});
}

void Clay::paintselect(std::vector<Vec> const& centers, float radius, float falloff, float strength)
{
    pass(Shaders().ShaderClaySelectPaint, vertsWeight, {}, int(centers.size()), [&](int i) {
        Shader::setUniform("center", centers[std::size_t(i)]);
        Shader::setUniform("PARAMETERS", 1.0f / radius, falloff, strength, 0.0f);
    });
}

void Clay::gradientselect(std::vector<Vec> const& centers, std::vector<Vec> const& directions, float strength)
{
    pass(Shaders().ShaderClaySelectGradient, vertsWeight, {}, Count(centers.size(), directions.size()), [&](int i) {
        Vec d = directions[std::size_t(i)];
        float l2 = d.length2();
        Shader::setUniform("center", centers[std::size_t(i)]);
        Shader::setUniform("direction", l2 > 0.0f ? d * (1.0f / l2) : Vec());
        Shader::setUniform("strength", strength);
    });
}

void Clay::fillselect(std::vector<Vec> const&, float strength)
{
    pass(nullptr, vertsWeight, Vec(strength, 0, 0), 0, [](int) {});
}

void Clay::deformVolume(std::vector<Vec> const& centers, std::vector<Matrix3<float>> const& frames, float weight,
                        float radius)
{
    pass(Shaders().ShaderClayDeformVolume, deformations, {}, Count(centers.size(), frames.size()), [&](int i) {
        Shader::setUniform("center", centers[std::size_t(i)]);
        Shader::setUniform("frame", frames[std::size_t(i)]);
        Shader::setUniform("PARAMETERS", 1.0f / (radius * radius), weight, 0.0f, 0.0f);
    });
}

void Clay::twist(std::vector<Vec> const& centers, std::vector<Vec> const& axes, float cosA, float sinA, float radius)
{
    pass(Shaders().ShaderClayTwist, deformations, {}, Count(centers.size(), axes.size()), [&](int i) {
        Shader::setUniform("center", centers[std::size_t(i)]);
        Shader::setUniform("axis", axes[std::size_t(i)].normalize());
        Shader::setUniform("PARAMETERS", 1.0f / radius, cosA - 1.0f, sinA, 0.0f);
    });
}

void Clay::pinch(std::vector<Vec> const& centers, float intensity, float radius)
{
    pass(Shaders().ShaderClayPinch, deformations, {}, int(centers.size()), [&](int i) {
        Shader::setUniform("center", centers[std::size_t(i)]);
        Shader::setUniform("PARAMETERS", 1.0f / radius, intensity, 0.0f, 0.0f);
    });
}

void Clay::addsub(std::vector<Vec> const& centers, std::vector<Vec> const& normals, float radius, float falloff,
                  float strength, float height, bool add)
{
    pass(Shaders().ShaderClayAddSub, deformations, {}, Count(centers.size(), normals.size()), [&](int i) {
        Vec n = normals[std::size_t(i)].normalize();
        Shader::setUniform("center", centers[std::size_t(i)]);
        Shader::setUniform("normal", add ? n : -n);
        Shader::setUniform("PARAMETERS", 1.0f / radius, falloff, height, radius * strength);
    });
}

void Clay::addsubdir(std::vector<Vec> const& centers, std::vector<Vec> const& directions,
                     std::vector<Vec> const& normals, float radius, float falloff, float strength, float height,
                     bool add)
{
    int n = Count(centers.size(), std::min(directions.size(), normals.size()));
    pass(Shaders().ShaderClayAddSubDir, deformations, {}, n, [&](int i) {
        Vec normal = normals[std::size_t(i)].normalize();
        Shader::setUniform("center", centers[std::size_t(i)]);
        Shader::setUniform("frame", StrokeFrame(directions[std::size_t(i)], normal) * (1.0f / radius));
        Shader::setUniform("normal", normal * (add ? radius * strength : -radius * strength));
        Shader::setUniform("PARAMETERS", falloff, height, 0.0f, 0.0f);
    });
}

void Clay::crease(std::vector<Vec> const& centers, std::vector<Vec> const& directions,
                  std::vector<Vec> const& normals, float radius, float falloff, float strength, bool add)
{
    int n = Count(centers.size(), std::min(directions.size(), normals.size()));
    pass(Shaders().ShaderClayCrease, deformations, {}, n, [&](int i) {
        Vec normal = normals[std::size_t(i)].normalize();
        Shader::setUniform("center", centers[std::size_t(i)]);
        Shader::setUniform("frame", StrokeFrame(directions[std::size_t(i)], normal));
        Shader::setUniform("normal", normal * (add ? radius * strength : -radius * strength));
        Shader::setUniform("PARAMETERS", 1.0f / radius, falloff, 0.0f, 0.0f);
    });
}

void Clay::addsubstamp(std::vector<Vec> const& centers, std::vector<Vec> const& directions,
                       std::vector<Vec> const& normals, std::vector<bool> const& flips, float strength, bool add,
                       bool center, Texture2D* alpha)
{
    VEL_ASSERT_MSG(alpha, "a stamp stroke needs the stamp's alpha texture");
    int n = Count(centers.size(), std::min(directions.size(), normals.size()));
    if (n == 0 || directions[0].length2() == 0.0f)
        return;
    float const w = float(std::max(alpha->width(), 1)), h = float(std::max(alpha->height(), 1));
    float const side = std::max(w, h);
    pass(
        Shaders().ShaderClayAddSubStamp, deformations, {}, n,
        [&](int i) {
            Vec d = directions[std::size_t(i)] * (center ? 0.5f : 1.0f);
            float radius = d.length() * 1.4142f;
            Vec normal = normals[std::size_t(i)].normalize();
            Matrix3<float> frame = StrokeFrame(d, normal);
            // A flipped copy (a mirror) reads the stamp mirrored across its direction.
            if (std::size_t(i) < flips.size() && flips[std::size_t(i)])
                frame = Matrix3<float>(frame.row(0), frame.row(1) * -1.0f, frame.row(2));
            Shader::setUniform("center", centers[std::size_t(i)]);
            Shader::setUniform("frame", frame);
            Shader::setUniform("normal", normal * (add ? radius * strength : -radius * strength));
            Shader::setUniform("PARAMETERS", side / w * 0.707f, side / h * 0.707f, 1.0f / radius, 0.0f);
        },
        {{"Alpha", alpha}});
}

void Clay::sculptmove(std::vector<Vec> const& deltas)
{
    // Every vertex moves by the sum: a clear does it without a draw.
    Vec sum;
    for (Vec const& d : deltas)
        sum += d;
    pass(nullptr, deformations, sum, 0, [](int) {});
}

void Clay::sculptrotate(std::vector<Vec> const& centers, std::vector<Matrix3<float>> const& rotations)
{
    pass(Shaders().ShaderClayRotate, deformations, {}, Count(centers.size(), rotations.size()), [&](int i) {
        Matrix3<float> r = rotations[std::size_t(i)];
        Shader::setUniform("center", centers[std::size_t(i)]);
        Shader::setUniform("rotation", Matrix3<float>(r.row(0) - Vec(1, 0, 0), r.row(1) - Vec(0, 1, 0),
                                                      r.row(2) - Vec(0, 0, 1)));
    });
}

void Clay::sculptscale(std::vector<Vec> const& centers, std::vector<float> const& factors)
{
    pass(Shaders().ShaderClayScale, deformations, {}, Count(centers.size(), factors.size()), [&](int i) {
        float s = factors[std::size_t(i)] - 1.0f;
        Shader::setUniform("center", centers[std::size_t(i)]);
        Shader::setUniform("delta", Vec(s, s, s));
    });
}

void Clay::sculptscaledir(std::vector<Vec> const& centers, std::vector<Vec> const& axes,
                          std::vector<float> const& factors)
{
    // A scale along one direction is the skew of that direction onto itself.
    int n = Count(centers.size(), std::min(axes.size(), factors.size()));
    pass(Shaders().ShaderClaySkew, deformations, {}, n, [&](int i) {
        Vec a = axes[std::size_t(i)].normalize();
        Shader::setUniform("center", centers[std::size_t(i)]);
        Shader::setUniform("axis", a);
        Shader::setUniform("modif", a * (factors[std::size_t(i)] - 1.0f));
    });
}

namespace {

// The uniforms of the passes that take a centre, an axis and a second vector.
void AxisModif(Vec const& center, Vec const& axis, Vec const& modif)
{
    Shader::setUniform("center", center);
    Shader::setUniform("axis", axis);
    Shader::setUniform("modif", modif);
}

} // namespace

void Clay::sculptskew(std::vector<Vec> const& centers, std::vector<Vec> const& axes, std::vector<Vec> const& modifs)
{
    int n = Count(centers.size(), std::min(axes.size(), modifs.size()));
    pass(Shaders().ShaderClaySkew, deformations, {}, n, [&](int i) {
        AxisModif(centers[std::size_t(i)], axes[std::size_t(i)], modifs[std::size_t(i)]);
    });
}

void Clay::sculptbend(std::vector<Vec> const& centers, std::vector<Vec> const& axes, std::vector<Vec> const& modifs,
                      float R)
{
    int n = Count(centers.size(), std::min(axes.size(), modifs.size()));
    pass(Shaders().ShaderClayBend, deformations, {}, n, [&](int i) {
        AxisModif(centers[std::size_t(i)], axes[std::size_t(i)], modifs[std::size_t(i)]);
        Shader::setUniform("R", R);
    });
}

void Clay::sculpttaper(std::vector<Vec> const& centers, std::vector<Vec> const& axes, std::vector<Vec> const& modifs)
{
    int n = Count(centers.size(), std::min(axes.size(), modifs.size()));
    pass(Shaders().ShaderClayTaper, deformations, {}, n, [&](int i) {
        AxisModif(centers[std::size_t(i)], axes[std::size_t(i)], modifs[std::size_t(i)]);
    });
}

void Clay::sculptswirl(std::vector<Vec> const& centers, std::vector<float> const& angles, int axis)
{
    VEL_ASSERT_MSG(axis >= 0 && axis <= 2, "a swirl turns about x, y or z");
    pass(Shaders().ShaderClaySwirl[axis], deformations, {}, Count(centers.size(), angles.size()), [&](int i) {
        Shader::setUniform("center", centers[std::size_t(i)]);
        Shader::setUniform("angle", angles[std::size_t(i)]);
    });
}

// ---- applying deformations and materials ------------------------------------------------

void Clay::apply_deformations()
{
    if (!buildGPUData())
        return;
    Shader* shader = absoluteDeform ? Shaders().ShaderClayPosition : Shaders().ShaderClayPositionBlend;
    // Absolute: start + deformation into `deformed`, the start untouched. Incremental: the
    // deformation added onto `current` by blending, without reading the positions.
    Texture2D* target = positions[std::size_t(absoluteDeform ? positionRoles.deformed : positionRoles.current)];
    NamedTextures textures = {{"VertsInfo", vertsInfo.get()}, {"Deformations", deformations}};
    if (absoluteDeform)
        textures.emplace_back("Positions", positions[std::size_t(positionRoles.current)]);
    TablePass(*fboV, target, shader, textures, [&]() {
                  if (!absoluteDeform) {
                      glEnable(GL_BLEND);
                      glBlendEquation(GL_FUNC_ADD);
                      glBlendFunc(GL_ONE, GL_ONE);
                  }
                  GLFill();
                  glDisable(GL_BLEND);
              });
}

void Clay::apply_materials(Vector4<float> const& colorAlpha, Vector4<float> const& lightThick,
                           Vector4<float> const& masks, Vector4<float> const& roughMetal)
{
    if (!buildGPUData())
        return;
    // A pass never writes the copy it reads: an incremental paint writes `deformed` and the
    // two roles change places, which is the same as writing `current` in place.
    Texture2D* source = edgesMaterial[std::size_t(materialRoles.current)];
    Texture2D* target = edgesMaterial[std::size_t(materialRoles.deformed)];
    float const parameters[16] = {colorAlpha.x, colorAlpha.y, colorAlpha.z, colorAlpha.w,
                                  lightThick.x, lightThick.y, lightThick.z, lightThick.w,
                                  masks.x,      masks.y,      masks.z,      masks.w,
                                  roughMetal.x, roughMetal.y, roughMetal.z, roughMetal.w};
    TablePass(*fboE, target, Shaders().ShaderClayMaterial,
              {{"iEdgesVE", edgesVE.get()}, {"iEdgesMaterial", source}, {"iVerticesWeight", vertsWeight}}, [&]() {
                  Shader::setUniformArray("PARAMETERS", 4, parameters, 4);
                  GLFill();
              });
    if (!absoluteMaterial)
        std::swap(materialRoles.current, materialRoles.deformed);
}

void Clay::smooth_materials()
{
    if (!buildGPUData())
        return;
    // Neighbours are read: the pass writes the other copy, and the roles change places.
    Texture2D* source = edgesMaterial[std::size_t(materialRoles.current)];
    Texture2D* target = edgesMaterial[std::size_t(materialRoles.deformed)];
    TablePass(*fboE, target, Shaders().ShaderClaySmoothMaterial,
              {{"iEdgesVE", edgesVE.get()},
               {"iEdgesHFEN", edgesHFEN.get()},
               {"iEdgesMaterial", source},
               {"iVerticesWeight", vertsWeight}},
              GLFill);
    std::swap(materialRoles.current, materialRoles.deformed);
}

// ---- strokes ----------------------------------------------------------------------------

bool Clay::AbsoluteDeformAction(int action)
{
    return SculptAbsoluteAction(action);
}

bool Clay::AbsoluteMaterialAction(int action)
{
    return action == 42 || action == 43 || action == 45 || action == 46 || action == 48 || action == 49;
}

void Clay::sculpt(int action, int samples, ClayStrokeState state,
                  std::function<void(int index, unsigned char phase)> const& step, ClayBrushMaterial const& brush)
{
    if (!buildGPUData())
        return;
    KeepDrawTarget keep;
    gl_Depth_Test.set(false);
    gl_Stencil_Test.set(false);
    gl_Cull_Face.set(false);
    bool const paint = PaintAction(action);
    bool const begin = state == ClayStrokeState::Begin;
    History& history = History::instance();
    if (paint) {
        paintDepth = std::min(paintDepth + 1, 2);
        if (!hasPbr()) {
            // The tables already hold the default material: only the type is raised.
            savedDataType = dataType;
            setDataType(1);
            promotedToPbr = true;
        }
    }
    if (begin && history.recording()) {
        if (paint)
            copy_materials(materialRoles.current, materialRoles.backup);
        else
            copy_positions(positionRoles.current, positionRoles.backup);
    }
    // The stroke's draws go to the vertex table.
    VEL_ASSERT(fboV->enableDraw());
    glViewport(0, 0, fboV->width, fboV->height);
    bool stepped = false;
    if (state != ClayStrokeState::End || samples >= 3) {
        unsigned char phase = begin ? 0 : state == ClayStrokeState::End ? 2 : 1;
        absoluteDeform = AbsoluteDeformAction(action);
        absoluteMaterial = AbsoluteMaterialAction(action);
        step(samples - 1, phase);
        if (!paint)
            apply_deformations();
        stepped = true;
    }
    if (paint && stepped) {
        if (action == 33)
            smooth_materials();
        else
            apply_materials(brush.colorAlpha, brush.lightThick, brush.masks, brush.roughMetal);
    }
    if (state == ClayStrokeState::End) {
        if (paint) {
            if (absoluteMaterial)
                std::swap(materialRoles.current, materialRoles.deformed);
            absoluteMaterial = false;
            paintDepth = 0;
            if (history.recording()) {
                auto diff = diff_materials();
                if (!diff.empty()) {
                    ClayToMesh();
                    if (promotedToPbr) {
                        // The type change is recorded on its own: undone, the clay has no
                        // materials again.
                        history.superBegin("Paint Clay", false);
                        int raised = dataType;
                        ChunkedSequence<Pbr> painted;
                        painted.swap(materials);
                        dataType = savedDataType;
                        auto* type = new CommandMeshDataType(Shared<Element>(this, true));
                        dataType = raised;
                        materials.swap(painted);
                        history.push(type);
                        history.push(new CommandPaintClay(this, std::move(diff)));
                        history.superEnd();
                    } else {
                        history.push(new CommandPaintClay(this, std::move(diff)));
                    }
                }
            }
            promotedToPbr = false;
        } else {
            if (absoluteDeform)
                std::swap(positionRoles.current, positionRoles.deformed);
            absoluteDeform = false;
            updateNormals();
            if (history.recording()) {
                auto diff = diff_positions();
                // A stroke that moved nothing leaves nothing to undo.
                if (!diff.empty())
                    history.push(new CommandSculptClay(this, std::move(diff)));
            }
        }
        update();
    }
    Shader::Current = nullptr;
    Shader::id = 0;
    glUseProgram(0);
}

void Clay::cancel_sculpt()
{
    update();
    absoluteDeform = false;
    absoluteMaterial = false;
    paintDepth = 0;
    setChanged(false);
    if (promotedToPbr && savedDataType >= 0)
        setDataType(savedDataType);
    set_vbos_dirty(true);
    promotedToPbr = false;
    savedDataType = -1;
}

} // namespace vel
