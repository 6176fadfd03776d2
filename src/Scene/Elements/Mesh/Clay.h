// Clay: a Mesh whose working copy lives on the graphics card, so that a brush step over
// millions of vertices is a few full-screen passes and no read-back.
//
// TABLES. One texel per record, row by row, in textures sized by Texture2D::LinearSize_2DEven;
// texels past the last record are padding: all ones in the integer tables (shaders discard
// there), zero in positions, weights and materials. Addresses are pack14 words (below).
//   vertsInfo      R32I     pack14(edge, edge width, sharp, anchor, border, user flag)
//   positions[3]   RGB32F   position            (roles: current, deformed, backup)
//   deformations   RGB32F   the step's summed displacement
//   vertsWeight    R32F     paint and selection weight
//   edgesVE        RGBA32I  pack14 of v[0], v[1] (vertex width, edge sharp), e[0], e[1]
//   edgesHFEN      RGBA32I  pack14 of half (sharp), face, edgeStart, e[1] (sharp)
//   edgesNormal    RGBA16F  corner normal
//   edgesMaterial  RGBA32UI the corner's Pbr words (roles as positions)
//   facesECP       RGB32I   pack14(edge), component, patch
//   facesNormal    RGBA16F  face normal
// "Edge sharp" is the half-edge's sharp flag or, when clear, whether it lies on a border.
// The triangle stream holds per corner (packed vertex, packed half-edge arriving there),
// triangles fanned from each face's first corner.
//
// STEPS. A sculpt step clears `deformations` (or `vertsWeight`), draws once per symmetric
// sculptor with additive blending, and apply_deformations adds the sum to the positions.
// Absolute strokes (absoluteDeform) keep positions[current] at the stroke's start and write
// start + deformation into positions[deformed]; incremental ones add into current.
//
// The CPU records go stale during a stroke: ClayToMesh brings them up to date. GL calls live
// in the .cpp files only (Clay.cpp: life, tables, normals, undo data, drawing;
// ClaySculpt.cpp: the sculpt and paint passes and the stroke states). GL thread only.
#pragma once

#include "Math/Matrix3.h"
#include "Math/Vector2.h"
#include "Math/Vector3.h"
#include "Math/Vector4.h"
#include "Scene/Elements/Mesh/Mesh.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

namespace vel {

class FBO;
class Shader;
class Texture2D;

// The texel address of record `index` in a table `width` texels wide: column in bits 0-13,
// row in bits 14-27, and four flags in bits 31, 30, 29, 28. A negative index packs to the
// flags over 0x0fffffff ("no record").
inline int32_t pack14(int index, int width, bool sharp = false, bool anchor = false, bool flag3 = false,
                      bool flag4 = false)
{
    uint32_t flags = uint32_t(sharp) << 31 | uint32_t(anchor) << 30 | uint32_t(flag3) << 29 | uint32_t(flag4) << 28;
    uint32_t address = index < 0 ? 0x0fffffffu : uint32_t(index % width) | uint32_t(index / width) << 14;
    return int32_t(flags | address);
}

// The three parts of a stroke as the gesture reports them.
enum class ClayStrokeState { Begin, Progress, End };

// A paint brush's values in the units of the packed material (colour and light 8192 = 1,
// rough and metal 4096 = 1); masks 0 or 1 per channel.
struct ClayBrushMaterial {
    Vector4<float> colorAlpha{8191, 8191, 8191, 8191};
    Vector4<float> lightThick{0, 0, 0, 0};
    Vector4<float> masks{1, 1, 1, 1};      // colour, alpha, light, thickness
    Vector4<float> roughMetal{2048, 0, 1, 1}; // roughness, metalness, their masks
};

class Clay : public Mesh {
public:
    // The roles of the three copies of positions or materials.
    struct Roles {
        int current = 0;
        int deformed = 1;
        int backup = 2;
    };

    unsigned vertexBuffer = 0; // the triangle stream; 0 until built
    std::unique_ptr<FBO> fboV, fboE, fboF;
    std::vector<Texture2D*> positions;     // 3, attached to fboV
    Texture2D* deformations = nullptr;     // attached to fboV
    std::unique_ptr<Texture2D> vertsInfo;
    Texture2D* vertsWeight = nullptr;      // attached to fboV
    std::unique_ptr<Texture2D> edgesVE, edgesHFEN;
    Texture2D* edgesNormal = nullptr;      // attached to fboE
    std::vector<Texture2D*> edgesMaterial; // 3, attached to fboE
    std::unique_ptr<Texture2D> facesECP;
    Texture2D* facesNormal = nullptr;      // attached to fboF
    Roles positionRoles;
    Roles materialRoles;
    int renderPositions = 0;   // the positions renderBuffers bound last
    bool promotedToPbr = false; // data type raised to 1 for a paint stroke that may be cancelled
    int streamCorners = 0;      // corners of the triangle stream, counted while filling it

    // An empty clay, for readers that fill the records.
    Clay();
    // The mesh is copied; GPU data is made at the first buildGPUData.
    explicit Clay(Mesh const* mesh);
    explicit Clay(IFile& in);
    Clay(Clay const& other);
    ~Clay() override;

    // ---- Element protocol ------------------------------------------------------------------
    int Type() const override { return 3; }
    unsigned BlockId() const override { return 0xe000000au; }
    Clay* clone() override;
    Mesh* ToMesh() override; // a new Mesh, up to date with the GPU
    void subdivide(bool smooth) override;
    void prepareSave() override;
    bool buildGPUData() override;
    void deleteGPUData() override;
    void prepareRender() override;
    bool enableGPUData(TRenderState const& state, bool snake) override;
    Shader* renderShader(TRenderState const& state) const override;
    Shader* renderSnakeShader(TRenderState const& state) const override;
    void renderBuffers(TRenderState const& state) override;
    void render(TRenderState const& state, Matrix34<double> const& M, int objectId, int items, int elementId,
                int instance, Material const& material, int flags, float time) override;
    int points_count() const override { return streamCorners; }
    int render_state(TRenderState const& state, bool snake) const override;
    void cancel_sculpt() override;

    // ---- Life ------------------------------------------------------------------------------
    void MeshToClay();
    void ClayToMesh();
    // The table sizes for the present records: vertices, half-edges, faces.
    Vector2<int> sizeV() const;
    Vector2<int> sizeE() const;
    Vector2<int> sizeF() const;
    // GPU bytes held by the tables and the stream (0 before buildGPUData).
    long long gpuTableBytes() const;

    // ---- Support ---------------------------------------------------------------------------
    void calculateFacesNormals();
    void calculateVertsNormals();
    void updateNormals();
    void copy_positions(int from, int to);
    void copy_materials(int from, int to);
    // Level 0 of positions[i] (3 floats a texel) or edgesMaterial[i] (4 words a texel) into
    // `out`, whole tables with their padding.
    void get_positions(int i, void* out);
    void get_materials(int i, void* out);
    // Old position (or material words) of every record where positions[backup] and
    // positions[current] differ in any bit.
    std::unordered_map<int, Vector3<float>> diff_positions();
    std::unordered_map<int, std::array<uint32_t, 4>> diff_materials();
    // Exchanges each entry with positions[current] (materials[current]): the map then holds
    // the other state, so undo and redo are the same call.
    void swap_positions(std::unordered_map<int, Vector3<float>>& map);
    void swap_materials(std::unordered_map<int, std::array<uint32_t, 4>>& map);

    // ---- Sculpt steps (ClaySculpt.cpp): one entry per symmetric sculptor in each vector ----
    void deform(std::vector<Vector3<float>> const& centers, std::vector<Vector3<float>> const& displacements,
                float radius, float falloff);
    void smooth(std::vector<Vector3<float>> const& centers, float intensity, float radius);
    void paintselect(std::vector<Vector3<float>> const& centers, float radius, float falloff, float strength);
    // `directions` run from the gradient's start to its end (weight 1 to 0).
    void gradientselect(std::vector<Vector3<float>> const& centers, std::vector<Vector3<float>> const& directions,
                        float strength);
    void fillselect(std::vector<Vector3<float>> const& centers, float strength);
    // `frames`: rows are the axes; the third is the stroke's direction.
    void deformVolume(std::vector<Vector3<float>> const& centers, std::vector<Matrix3<float>> const& frames,
                      float weight, float radius);
    void twist(std::vector<Vector3<float>> const& centers, std::vector<Vector3<float>> const& axes, float cosA,
               float sinA, float radius);
    void pinch(std::vector<Vector3<float>> const& centers, float intensity, float radius);
    void addsub(std::vector<Vector3<float>> const& centers, std::vector<Vector3<float>> const& normals, float radius,
                float falloff, float strength, float height, bool add);
    void addsubdir(std::vector<Vector3<float>> const& centers, std::vector<Vector3<float>> const& directions,
                   std::vector<Vector3<float>> const& normals, float radius, float falloff, float strength,
                   float height, bool add);
    void crease(std::vector<Vector3<float>> const& centers, std::vector<Vector3<float>> const& directions,
                std::vector<Vector3<float>> const& normals, float radius, float falloff, float strength, bool add);
    // `alpha`: the stamp's texture (its red channel). `center`: the stamp is centred on the
    // stroke's middle, so the direction is half the drag. Nothing happens for a first
    // direction of zero length.
    void addsubstamp(std::vector<Vector3<float>> const& centers, std::vector<Vector3<float>> const& directions,
                     std::vector<Vector3<float>> const& normals, std::vector<bool> const& flips, float strength,
                     bool add, bool center, Texture2D* alpha);
    void sculptmove(std::vector<Vector3<float>> const& deltas);
    // `rotations` are the rotations themselves (p' = p R about the centre).
    void sculptrotate(std::vector<Vector3<float>> const& centers, std::vector<Matrix3<float>> const& rotations);
    void sculptscale(std::vector<Vector3<float>> const& centers, std::vector<float> const& factors);
    void sculptscaledir(std::vector<Vector3<float>> const& centers, std::vector<Vector3<float>> const& axes,
                        std::vector<float> const& factors);
    void sculptskew(std::vector<Vector3<float>> const& centers, std::vector<Vector3<float>> const& axes,
                    std::vector<Vector3<float>> const& modifs);
    void sculptbend(std::vector<Vector3<float>> const& centers, std::vector<Vector3<float>> const& axes,
                    std::vector<Vector3<float>> const& modifs, float R);
    void sculpttaper(std::vector<Vector3<float>> const& centers, std::vector<Vector3<float>> const& axes,
                     std::vector<Vector3<float>> const& modifs);
    // `axis`: 0 x, 1 y, 2 z.
    void sculptswirl(std::vector<Vector3<float>> const& centers, std::vector<float> const& angles, int axis);

    void apply_deformations();
    void apply_materials(Vector4<float> const& colorAlpha, Vector4<float> const& lightThick,
                         Vector4<float> const& masks, Vector4<float> const& roughMetal);
    void smooth_materials();

    // ---- Strokes ---------------------------------------------------------------------------
    // The stroke of the sculptors (the first is the reference): one step of their newest
    // sample through the runner below, with the brush values of the paint actions.
    void sculpt(std::deque<Sculptor*>& sculptors) override;
    // The passes of sample `index` (phase 0 begin, 1 progress, 2 end) for the sculptors'
    // action, from PrepareSculptStep (ClaySculptStep.cpp).
    void sculptStep(std::deque<Sculptor*>& sculptors, int index, unsigned char phase) override;
    // The stamp of actions 21 to 24 (its red channel); none until one is captured, and the
    // stamp strokes do nothing without it.
    static Texture2D* StampAlpha;
    // One call of a stroke, in the place of the sculptors' entry: `action` is the sculpt
    // action, `samples` the gesture's samples so far, `step` runs the passes of sample
    // `index` (with phase 0 begin, 1 progress, 2 end), and `brush` gives a paint stroke's values.
    // Switches depth test, stencil test and culling off; the caller's draw framebuffer comes back.
    void sculpt(int action, int samples, ClayStrokeState state,
                std::function<void(int index, unsigned char phase)> const& step,
                ClayBrushMaterial const& brush = ClayBrushMaterial());
    static bool PaintAction(int action) { return action == 33 || (action >= 41 && action <= 49); }
    static bool AbsoluteDeformAction(int action);
    static bool AbsoluteMaterialAction(int action);

    // The caller's draw framebuffer and viewport, given back when this goes: every pass and
    // stroke leaves them as it found them.
    class KeepDrawTarget {
    public:
        KeepDrawTarget();
        ~KeepDrawTarget();
        KeepDrawTarget(KeepDrawTarget const&) = delete;
        KeepDrawTarget& operator=(KeepDrawTarget const&) = delete;

    private:
        int framebuffer = 0;
        int viewport[4] = {0, 0, 1, 1};
    };
    using NamedTextures = std::vector<std::pair<char const*, Texture2D*>>;
    // One pass over a whole table: draws into `target` (attached to `fbo`) with `shader` (may
    // be null: `draw` then only clears) and `textures` bound, each sampler named; `draw`
    // sets the rest and issues the draws.
    static void TablePass(FBO& fbo, Texture2D* target, Shader* shader, NamedTextures const& textures,
                          std::function<void()> const& draw);

private:
    // The material role the render reads and the paint passes write.
    int materialTarget() const;
    // Clears `target` (attached to fboV) to `value`, then draws `shader` once per sculptor
    // with additive blending; `uniforms(i)` sets sculptor i's uniforms, `textures` are
    // bound beside VertsInfo and Positions under their names.
    void pass(Shader* shader, Texture2D* target, Vector3<float> const& clear, int sculptors,
              std::function<void(int)> const& uniforms, NamedTextures const& textures = {});
    int savedDataType = -1; // the data type before a paint stroke raised it
};

} // namespace vel
