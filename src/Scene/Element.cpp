#include "Scene/Element.h"

#include "Core/Assert.h"
#include "Core/Communicate.h"
#include "Scene/Elements/Mesh/Clay.h"
#include "Scene/Elements/Mesh/Mesh.h"

#include <algorithm>

namespace vel {

int Element::GlobalID = 0;
int Element::COUNT = 0;
int64_t Element::GlobalUpdate = 1;

// ---- construction, identity, factories -------------------------------------------------

Element::Element()
    : id(GlobalID++)
{
    ++COUNT;
}

Element::Element(Element const& other)
    : id(GlobalID++)
    , updateStamp(other.updateStamp)
    , invalid(other.invalid)
    , transparent(other.transparent)
    , aabb(other.aabb)
    , center(other.center)
    , scale(other.scale)
    , changed(other.changed)
{
    ++COUNT;
}

Element& Element::operator=(Element const& other)
{
    updateStamp = other.updateStamp;
    invalid = other.invalid;
    transparent = other.transparent;
    aabb = other.aabb;
    center = other.center;
    scale = other.scale;
    changed = other.changed;
    return *this;
}

// The machine's own destructor disables it if a draw left it enabled.
Element::~Element()
{
    --COUNT;
}

Mesh* Element::CreateMesh(Element* e)
{
    VEL_ASSERT(e);
    return e->ToMesh();
}

Mesh* Element::CreateNewMesh(Element* e)
{
    VEL_ASSERT(e);
    if (!e->ConvertibleToMesh())
        return nullptr;
    Mesh* mesh = e->ToMesh();
    if (static_cast<Element*>(mesh) != e)
        return mesh;
    Element* copy = e->clone();
    VEL_ASSERT_MSG(copy != e, "a kind that answers ToMesh with itself copies itself in clone");
    return static_cast<Mesh*>(copy);
}

Clay* Element::CreateClay(Element* e)
{
    VEL_ASSERT(e);
    Mesh* mesh = e->ConvertibleToMesh() ? e->ToMesh() : nullptr;
    if (!mesh)
        return nullptr;
    auto* clay = new Clay(mesh);
    if (static_cast<Element*>(mesh) != e)
        delete mesh;
    return clay;
}

Cloth* Element::CreateCloth(Element* e)
{
    VEL_ASSERT(e);
    LogInfo("Conversion to cloth is not available in this version", 1);
    return nullptr;
}

int Element::getDataType() const
{
    return -1;
}

int Element::CreateType() const
{
    return Type();
}

bool Element::empty() const
{
    return false;
}

// ---- size and transform family ---------------------------------------------------------

void Element::calculateAABB(Matrix34<double> const&)
{
    aabb = AABB();
    aabb.add(Vector3<double>(-0.5, -0.5, -0.5));
    aabb.add(Vector3<double>(0.5, 0.5, 0.5));
}

Vector3<float> Element::ScaleCenter(Vector3<float> const& v) const
{
    return v * scale + center;
}

Vector3<float> Element::InvScaleCenter(Vector3<float> const& v) const
{
    return (v - center) / scale;
}

float Element::Scale(float x) const
{
    return x * scale;
}

float Element::InvScale(float x) const
{
    return x / scale;
}

Matrix34<double> Element::Transform(float f) const
{
    double factor = double(f) / double(scale);
    return Matrix34<double>(Matrix3<double>::Scale(factor), Vector3<double>(center) * -factor);
}

Matrix34<double> Element::InvTransform() const
{
    return Matrix34<double>(Matrix3<double>::Scale(double(scale)), Vector3<double>(center));
}

Matrix34<double> Element::TransformSculpt(Vector3<float>&, int, int)
{
    return Matrix34<double>(Matrix3<double>::Scale(1.0 / double(scale)), Vector3<double>());
}

int Element::pickCurve(Vector3<float> const&, int, int)
{
    return -1;
}

void Element::initialize(TResizeStyle)
{
    update();
}

void Element::reset_clone(Element* other)
{
    VEL_ASSERT(other);
    center = other->center;
    scale = other->scale;
}

Element* Element::clone()
{
    return this;
}

std::deque<Vector3<double>> Element::Points(Matrix34<double> const&) const
{
    return {};
}

// ---- update protocol and time ----------------------------------------------------------

// An update is itself a change of geometry for whatever is built from this element: the
// stamp moves on, so that the composites holding it rebuild in their next ready().
void Element::update()
{
    updateStamp = ++GlobalUpdate;
}

void Element::advanceUpdate()
{
    ++GlobalUpdate;
}

int64_t Element::ready()
{
    if (updateStamp == GlobalUpdate)
        return updateStamp;
    std::vector<Element*> parts;
    elements(parts);
    int64_t newest = 1;
    for (size_t i = 1; i < parts.size(); ++i)
        newest = std::max(newest, parts[i]->ready());
    if (updateStamp < newest)
        update();
    return updateStamp;
}

bool Element::timer(double t)
{
    std::vector<Element*> parts;
    elements(parts);
    bool changed = false;
    for (size_t i = 1; i < parts.size(); ++i)
        changed = parts[i]->timer(t) || changed;
    return changed;
}

void Element::elements(std::vector<Element*>& out)
{
    out.push_back(this);
}

void Element::identify(std::vector<Shared<Element>> const&)
{
}

void Element::cancel_sculpt()
{
    update();
}

void Element::sculpt(std::deque<Sculptor*>&)
{
}

// ---- parts and conversion --------------------------------------------------------------

Element* Element::Part(Vector3<float> const&, int&, int)
{
    return nullptr;
}

Element* Element::Component(Vector3<float> const& position, int& index)
{
    return Part(position, index, 3);
}

Element* Element::DetachComponent(int)
{
    return nullptr;
}

Element* Element::Patch(Vector3<float> const& position, int& index)
{
    return Part(position, index, 1);
}

bool Element::ConvertibleToMesh() const
{
    return false;
}

Mesh* Element::ToMesh()
{
    return nullptr;
}

std::deque<float> Element::ClothLengths()
{
    return {};
}

void Element::subdivide(bool)
{
}

void Element::clearSelection()
{
}

std::deque<Element::SubElement> Element::subelements(bool)
{
    return {SubElement{this, Matrix34<double>(), Pbr()}};
}

// ---- drawing ---------------------------------------------------------------------------

void Element::prepareSave()
{
}

void Element::prepareRender()
{
    buildGPUData();
}

bool Element::buildGPUData()
{
    return true;
}

void Element::deleteGPUData()
{
}

bool Element::enableGPUData(TRenderState const&, bool)
{
    return true;
}

void Element::disableGPUData()
{
}

Shader* Element::renderSnakeShader(TRenderState const&) const
{
    return nullptr;
}

void Element::renderBuffers(TRenderState const&)
{
}

bool Element::renderBegin(TRenderState const& state, bool snake)
{
    if (!enableGPUData(state, snake))
        return false;
    renderBuffers(state);
    return machine.enable();
}

// The atoms are collected anew by the next renderBuffers, also after a begin that failed:
// kept, they would be listed twice.
void Element::renderEnd()
{
    disableGPUData();
    if (machine.enabled)
        machine.disable();
    machine.atoms.clear();
}

void Element::render(TRenderState const&, Matrix34<double> const&, int, int, int, int, Material const&, int, float)
{
}

void Element::renderCustom(TRenderState const&, Matrix34<double> const&, int, int, int, int, Material const&, int,
                           float)
{
}

void Element::renderSnake(TRenderState const&, Matrix34<double> const&, int, int, int, int, Material const&, int,
                          float)
{
}

bool Element::hasBorders()
{
    return false;
}

void Element::renderBorders(Matrix34<double> const&, bvec4 const&)
{
}

bool Element::hasHelpers()
{
    return false;
}

void Element::renderHelpers(Matrix34<double> const&, bvec4 const&)
{
}

Matrix34<double> Element::transformHelpers(Matrix34<double> const& M, bool)
{
    return M;
}

// ---- files and flags -------------------------------------------------------------------

int Element::DataSize() const
{
    return 0;
}

void Element::DataWrite(OFile&, std::unordered_map<Element*, int>&)
{
}

void Element::DataRead(IFile&)
{
}

bool Element::load(std::string const&)
{
    return true;
}

bool Element::save(std::string const&)
{
    return true;
}

bool Element::hasChanged() const
{
    return changed;
}

void Element::setChanged(bool on)
{
    changed = on;
}

} // namespace vel
