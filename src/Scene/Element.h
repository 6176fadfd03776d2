// Element: the geometry an object shows: points, topology and GPU data of one shape, in its
// own coordinates. Tools place it; several tools may show one element through Shared.
//
// Size mapping: `center` and `scale` relate own coordinates to a unit-sized shape:
// unit = (own - center) / scale. `Transform(f)` is that mapping scaled to size f.
//
// Update protocol: a global stamp, not a dirty flag per element. `GlobalUpdate` moves on
// whenever anything that may affect geometry changes, and every `update()` is such a change
// (it advances the stamp and stores it), so an edit of an element ends with its update().
// `ready()` is the lazy form, which rebuilds a composite only when one of its parts has
// moved on past it.
//
// Lifecycle: constructed; filled (a factory or DataRead); `initialize(style)`;
// `prepareRender` each frame; `renderBegin`, `render`, `renderEnd`; `prepareSave` before
// writing. `COUNT` counts live elements and is 0 once a scene is torn down.
//
// The virtual protocol below is in slot order, with the base behaviour every kind starts
// from. The draws (render*, *GPUData) belong to the buffer classes between Element and the
// geometry kinds; here they do nothing and succeed.
//
// Index (Element.cpp)
// - construction, identity, factories
// - size and transform family
// - update protocol and time
// - parts and conversion
// - drawing
// - files and flags
#pragma once

#include "Math/AABB.h"
#include "Math/Matrix34.h"
#include "Math/PackedVectors.h"
#include "Math/Pbr.h"
#include "Math/Vector3.h"
#include "Memory/Shared.h"
#include "OpenGL/GLMachine.h"
#include "Scene/Elements/TRenderState.h"

#include <cstdint>
#include <deque>
#include <string>
#include <unordered_map>
#include <vector>

namespace vel {

class Clay;
class Cloth;
class IFile;
class Mesh;
class OFile;
class Sculptor;
class Shader;
struct Material;

// How initialize normalises a shape: 0 keeps center and scale; 1 centres on the mean of the
// points, scale twice the largest distance from it; 2 centres on the middle of the box,
// scale its largest side. A zero distance or side gives scale 1.
using TResizeStyle = int;

class Element {
public:
    // One drawable piece: what a composite hands the render list for each of its parts.
    struct SubElement {
        Element* element = nullptr;
        Matrix34<double> transform;
        Pbr material;
    };

    // ---- statics ----
    static int GlobalID;            // taken per construction, copies included
    static int COUNT;               // live elements
    static int64_t GlobalUpdate;    // moves on whenever geometry inputs change

    // ---- fields ----
    int id;
    int64_t updateStamp = 0; // GlobalUpdate as advanced by the last update()
    bool invalid = false;    // the topology could not be built
    bool transparent = false; // drawn in the transparent pass whatever the tool's material
    AABB aabb;               // filled by calculateAABB; starts empty
    Vector3<float> center;   // own coordinates of the unit shape's centre
    float scale = 1.0f;      // own length of the unit shape's size
    GLMachine machine;       // the atoms enabled around a draw, collected by renderBuffers
    bool changed = true;

    Element();
    virtual ~Element();

    // ---- virtual protocol, in slot order ----
    // 0 plain, 1 per-corner Pbr, 2 per-corner UV; -1 for kinds without vertex data.
    virtual int getDataType() const;
    virtual int Type() const = 0;
    // The kind to instantiate when re-creating this one.
    virtual int CreateType() const;
    virtual bool empty() const;
    // Fills `aabb`; the base has the unit box about the origin and ignores M.
    virtual void calculateAABB(Matrix34<double> const& M);
    virtual Vector3<float> ScaleCenter(Vector3<float> const& v) const;
    virtual Vector3<float> InvScaleCenter(Vector3<float> const& v) const;
    virtual float Scale(float x) const;
    virtual float InvScale(float x) const;
    // From own coordinates to a shape of size f about the origin.
    virtual Matrix34<double> Transform(float f) const;
    // From the unit shape back to own coordinates.
    virtual Matrix34<double> InvTransform() const;
    // For positions a sculpt gesture delivers in own coordinates.
    virtual Matrix34<double> TransformSculpt(Vector3<float>& position, int component, int patch);
    // The picked curve vertex, -1 for none.
    virtual int pickCurve(Vector3<float> const& position, int x, int y);
    virtual void initialize(TResizeStyle style);
    // Takes the size mapping of `other`, whose copy this is.
    virtual void reset_clone(Element* other);
    // A copy for kinds that own their data; the element itself for those that do not.
    virtual Element* clone();
    // The points of the shape, carried by M.
    virtual std::deque<Vector3<double>> Points(Matrix34<double> const& M) const;
    // The part of kind `component` (the sculptor's component kinds: 1 patch, 3 component)
    // at `position`, as a new element; its index in `index`. Null when there is none.
    virtual Element* Part(Vector3<float> const& position, int& index, int component);
    virtual Element* Component(Vector3<float> const& position, int& index);
    virtual Element* DetachComponent(int component);
    virtual Element* Patch(Vector3<float> const& position, int& index);
    virtual bool ConvertibleToMesh() const;
    // The element as a mesh: a mesh answers itself, a kind that converts a new mesh.
    virtual Mesh* ToMesh();
    virtual std::deque<float> ClothLengths();
    virtual void subdivide(bool smooth);
    virtual void clearSelection();
    // The drawable pieces; the base is one: itself, identity, default material.
    virtual std::deque<SubElement> subelements(bool all);
    // Appends itself; composite elements then append their parts.
    virtual void elements(std::vector<Element*>& out);
    // Resolves part ids read from a file into references.
    virtual void identify(std::vector<Shared<Element>> const& elements);
    // Advances GlobalUpdate and takes it as this element's stamp.
    virtual void update();
    // Advances every part after the first to time t; true if any of them changed.
    virtual bool timer(double t);
    // Brings the element up to date if one of its parts moved on; returns its stamp.
    virtual int64_t ready();
    virtual void prepareSave();
    virtual void prepareRender();
    virtual bool buildGPUData();
    virtual void deleteGPUData();
    virtual bool enableGPUData(TRenderState const& state, bool snake);
    virtual void disableGPUData();
    virtual Shader* renderShader(TRenderState const& state) const = 0;
    virtual Shader* renderSnakeShader(TRenderState const& state) const;
    // Adds the element's textures to `machine`.
    virtual void renderBuffers(TRenderState const& state);
    // enableGPUData, renderBuffers, then the machine; false skips the draw.
    virtual bool renderBegin(TRenderState const& state, bool snake);
    // disableGPUData; disables the machine if enabled and forgets its atoms.
    virtual void renderEnd();
    virtual void render(TRenderState const& state, Matrix34<double> const& M, int objectId, int items, int elementId,
                        int instance, Material const& material, int flags, float time);
    // Argument lists as render(); the frame pipeline gives them their own.
    virtual void renderCustom(TRenderState const& state, Matrix34<double> const& M, int objectId, int items,
                              int elementId, int instance, Material const& material, int flags, float time);
    virtual void renderSnake(TRenderState const& state, Matrix34<double> const& M, int objectId, int items,
                             int elementId, int instance, Material const& material, int flags, float time);
    virtual bool hasBorders();
    virtual void renderBorders(Matrix34<double> const& M, bvec4 const& mask);
    virtual bool hasHelpers();
    virtual void renderHelpers(Matrix34<double> const& M, bvec4 const& mask);
    virtual Matrix34<double> transformHelpers(Matrix34<double> const& M, bool apply);
    virtual void sculpt(std::deque<Sculptor*>& sculptors);
    virtual void cancel_sculpt();
    virtual unsigned BlockId() const = 0;
    virtual int DataSize() const;
    // `ids` numbers the elements of the file being written, for kinds that refer to others.
    virtual void DataWrite(OFile& out, std::unordered_map<Element*, int>& ids);
    virtual void DataRead(IFile& in);
    virtual bool load(std::string const& path);
    virtual bool save(std::string const& path);
    virtual bool hasChanged() const;
    virtual void setChanged(bool on);

    // For changes that may affect geometry made outside an element's own update() (a tool
    // given another element, an undo): every element's next ready() looks at its parts.
    static void advanceUpdate();

    // ---- factories ----
    // The element as a mesh: itself or a new one (compare with e to tell).
    static Mesh* CreateMesh(Element* e);
    // Always a new mesh the caller owns; null when e does not convert.
    static Mesh* CreateNewMesh(Element* e);
    // A new Clay or Cloth made from e's mesh, owned by the caller; null for an element that
    // does not convert. Cloth is not part of this build yet: it logs a warning and gives null.
    static Clay* CreateClay(Element* e);
    static Cloth* CreateCloth(Element* e);

protected:
    // A copy is a new element: a fresh id, its own (empty) machine, the geometry fields.
    Element(Element const& other);
    // Takes the geometry fields; keeps id and machine.
    Element& operator=(Element const& other);
};

} // namespace vel
