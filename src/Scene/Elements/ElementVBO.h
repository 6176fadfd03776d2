// ElementVBO: the GPU side of an element: its vertex buffers, the vertex arrays that describe
// them for each vertex layout, and the draw with the uniforms every object draw sets.
//
// Vertex data is a triangle soup (three vertices a triangle, no index buffer), one
// VertexBuffer per attribute, so that a stroke re-uploads only what it moved. Vertex arrays
// are cached by a state key that changes exactly when the layout changes (render_state), so
// a steady frame makes no attribute call at all.
//
// GL calls live in the .cpp only: model code and its tests include this header without a
// context, and nothing here touches GL before a draw.
#pragma once

#include "Memory/Shared.h"
#include "OpenGL/VertexBuffer.h"
#include "Scene/Element.h"

#include <deque>
#include <unordered_map>

namespace vel {

class ElementVBO : public Element {
public:
    // render_state bits above the low byte.
    static constexpr int KEY_PBR = 1 << 8;
    static constexpr int KEY_FAST = 1 << 9;
    static constexpr int KEY_SNAKE = 1 << 10;

    int dataType = 0;                              // 0 plain, 1 per-corner Pbr, 2 per-corner UV
    std::unordered_map<int, unsigned> vaos;        // state key -> vertex array
    std::deque<Shared<VertexBuffer>> vbos;         // vbos_count() of them, in the kind's order
    // Stroke state of the GPU sculpting kinds (Clay).
    bool absoluteDeform = false;                   // the stroke deforms from its start, not step by step
    bool absoluteMaterial = false;                 // the same for materials
    int paintDepth = 0;                            // steps of a paint stroke so far, capped at 2

    ElementVBO() = default;
    ~ElementVBO() override;

    int getDataType() const override { return dataType; }
    // The copy takes the size mapping, and its buffers must be filled anew.
    void reset_clone(Element* other) override;
    // buildGPUData, and new vertex arrays when the buffers were dirty.
    void prepareRender() override;
    // Releases the buffers' GL objects and forgets every vertex array.
    void deleteGPUData() override;
    // Binds the vertex array of the layout; describes it on first use.
    bool enableGPUData(TRenderState const& state, bool snake) override;
    void render(TRenderState const& state, Matrix34<double> const& M, int objectId, int items, int elementId,
                int instance, Material const& material, int flags, float time) override;
    // The chain form: `instance` copies of the element bent between the two ends of the
    // snake uniforms the tool has set (bones come with the kinds that use them).
    void renderSnake(TRenderState const& state, Matrix34<double> const& M, int objectId, int items, int elementId,
                     int instance, Material const& material, int flags, float time) override;
    // With a user object shader: the same data under the "i" names, one instance; the
    // transforms go as "iMatrices" (model, world) and "iNormalMatrices" (model, world, view).
    void renderCustom(TRenderState const& state, Matrix34<double> const& M, int objectId, int items,
                      int elementId, int instance, Material const& material, int flags, float time) override;

    // ---- buffer slots, in slot order ----
    virtual int points_count() const { return 0; }
    virtual void sculptStep(std::deque<Sculptor*>& sculptors, int index, unsigned char phase);
    virtual int vbos_count() const { return 0; }
    virtual bool hasPbr() const { return dataType == 1; }
    virtual bool hasUVs() const { return dataType == 2; }
    virtual void setDataType(int type);
    // Deletes every vertex array: the next draw of each layout describes it anew.
    virtual void reset_vaos();
    virtual bool vbos_dirty() const;
    virtual void set_vbos_dirty(bool dirty);
    // vbos_count() new buffers, dirty; the old ones (and their GL objects) go.
    virtual void reset_vbos();
    virtual Vector3<float> PointSculptSmooth(int v) const;
    // The vertex-array key of a draw; 0 means the kind has no vertex array here.
    virtual int render_state(TRenderState const& state, bool snake) const;
    // All ones: no vertex array for this key; 1: bound from the cache; 0: made and bound,
    // the caller must describe its attributes.
    virtual unsigned bind_vao(TRenderState const& state, bool snake);

    // Marks one buffer for rebuilding (no-op past the end).
    void set_vbo_dirty(int index);
    // Bytes of GPU storage the buffers hold now.
    long long gpuBytes() const;

    // The RenderFlags pair for front and back faces: bit 29 always, FLAG_FLIPPED on the back.
    static void RenderFlagPair(int flags, bool mirrored, int& front, int& back);

protected:
    // A copy owns no GL object: it gets its own buffers (the kinds that have some) and no
    // vertex array. Assignment keeps this element's buffers and marks them dirty.
    ElementVBO(ElementVBO const& other);
    ElementVBO& operator=(ElementVBO const& other);

    // Describes the attributes of the bound, new vertex array for the state's layout.
    virtual void describeAttributes(TRenderState const& state, bool snake);
    // The uniforms shared by render and renderSnake; true when the transform mirrors.
    bool objectUniforms(TRenderState const& state, Matrix34<double> const& M, int objectId, int items,
                        int elementId, int instance, Material const& material, int flags, char const* prefix);
    // Culling for a draw: off when two-sided, else the side a mirroring transform turns away.
    static void cull(TRenderState const& state, bool mirrored);
};

} // namespace vel
