// Snake: the instanced draw on bones and the file record.
#include "Scene/Tools/Array/Snake.h"

#include "OpenGL/Shader.h"
#include "OpenGL/Texture2D.h"
#include "Scene/Elements/Curve/Curve.h"
#include "Scene/Elements/Mesh/Mesh.h"
#include "Scene/IFile.h"
#include "Scene/OFile.h"
#include "Scene/SceneFile.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tools/Array/Array.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace vel {

Snake::Snake(Shared<Element> const& axis, int type, int mode, Matrix34<double> const& odd,
             Matrix34<double> const& object, Matrix34<double> const& pivot, Material const& material)
    : ToolItemAxis(axis, object, pivot, material)
    , oddMatrix(Array::OddMatrix(type, odd))
    , snakeType(static_cast<unsigned char>(type))
    , itemsMode(static_cast<unsigned char>(mode))
{
}

Snake::Snake(IFile& in, int payload)
    : ToolItemAxis(Unrecorded{})
{
    if (!DataRead(in, payload)) {
        if (!fileRefs)
            fileRefs = std::make_unique<FileRefs>();
        fileRefs->failed = true;
    }
}

Element* Snake::RenderElement() const
{
    return item ? item->element.get() : nullptr;
}

Tool* Snake::SimpleClone(bool asObject, Matrix34<double> const& object, Matrix34<double> const& pivot)
{
    auto* copy = new Snake(element, 4, itemsMode, oddMatrix, object, pivot, material);
    copy->snakeType = snakeType;
    copy->itemsCount = itemsCount;
    CloneInfo(asObject, copy, true);
    return copy;
}

bool Snake::closedAxis() const
{
    Curve* c = axis();
    return c && c->activeEdges() > 0 && c->activeEdges() == c->activeVerts();
}

bool Snake::instancing(int& instances, float& multiplier)
{
    Curve* c = axis();
    int frames = c ? c->activeVerts() : 0;
    if (frames < 2 || c->activeEdges() == 0)
        return false;
    if (itemsMode == 0)
        itemsCount = 1;
    else if (itemsMode == 1)
        itemsCount = frames - 1;
    else if (itemsCount < 1)
        itemsCount = 1;
    multiplier = itemsMode == 1 ? 1.0f : float(frames - 1) / float(itemsCount);
    instances = itemsCount + (closedAxis() ? 1 : 0);
    return true;
}

Shader* Snake::renderShader(Element* e, TRenderState const& state)
{
    return e ? e->renderSnakeShader(state) : nullptr;
}

void Snake::prepareRender(Element* e)
{
    if (Curve* c = axis())
        c->buildGPUVertsFrames();
    if (e)
        e->prepareRender();
}

bool Snake::renderBegin(Element* e, TRenderState const& state)
{
    Curve* c = axis();
    int instances = 0;
    float multiplier = 1;
    if (!e || !c || !instancing(instances, multiplier) || !c->buildGPUVertsFrames() || !c->bonesTexture)
        return false;
    if (!e->renderBegin(state, true))
        return false;
    if (!c->bonesTexture->enable()) {
        e->renderEnd();
        return false;
    }
    bonesBound = true;
    bool closed = closedAxis();
    Shader::setUniform("BonesMax", c->activeVerts() - 1 + (closed ? 1 : 0));
    Shader::setUniform("Closed", closed ? 1 : 0);
    Shader::setUniform("BonesMatrices", c->bonesTexture->unit);
    Shader::setUniform("InstancesMul", multiplier);
    return true;
}

void Snake::render(Element* e, TRenderState const& state, Matrix34<double> const& M, Matrix34<double> const&,
                   int objectId, int items, int elementId, int)
{
    if (!item || !renderBegin(e, state))
        return;
    int instances = 0;
    float multiplier = 1;
    instancing(instances, multiplier);
    bool hasOdd = oddMatrix != Matrix34<double>();
    float drawTime = speed * (delay + float(time));
    // The item in bone units: its element's size mapping, then its own placement.
    Matrix34<double> itemMatrix = item->element ? item->element->Transform(1.0f) * item->transform() : item->transform();
    Matrix34<double> both[2] = {itemMatrix, hasOdd ? itemMatrix * oddMatrix : itemMatrix};
    float matrices[24], normals[18];
    for (int k = 0; k < 2; ++k) {
        for (int i = 0; i < 12; ++i)
            matrices[k * 12 + i] = float(both[k].m[i]);
        // The inverse transpose at unit volume: a scaled item keeps unit normals.
        Matrix3<double> L = both[k].linear();
        double volume = std::cbrt(std::fabs(L.determinant()));
        Matrix3<double> N = L.invertible() ? inv(L).transposed() * volume : Matrix3<double>();
        for (int i = 0; i < 9; ++i)
            normals[k * 9 + i] = float(N.m[i]);
    }
    Shader::setUniformMatrix34("ItemMatrix", matrices, 2);
    Shader::setUniformMatrix3("ItemNormalMatrix", normals, 2);
    e->renderSnake(state, M, objectId, items, elementId, instances, material, renderFlags(), drawTime);
    e->renderEnd();
    if (bonesBound)
        axis()->bonesTexture->disable();
    bonesBound = false;
}

// ---- Explode -------------------------------------------------------------------------------

namespace {

Vector3<double> Skin(CurveBone const& b, Vector3<double> const& p, double u, double mul)
{
    Vector3<double> local(p.x * mul, p.y * mul, u);
    return {local.x * b[0] + local.y * b[3] + local.z * b[6] + b[9],
            local.x * b[1] + local.y * b[4] + local.z * b[7] + b[10],
            local.x * b[2] + local.y * b[5] + local.z * b[8] + b[11]};
}

// Steps 2 to 7 of the snake vertex stage for point p (after the item matrix).
Vector3<double> Bend(std::deque<CurveBone> const& bones, Vector3<double> p, int instance, double mul, int bonesMax,
                     bool closed)
{
    p.z = (p.z + 0.5 + instance) * mul;
    double k = std::floor(float(p.z));
    int k0, k1;
    double u;
    if (closed) {
        k0 = int(std::fmod(k + 1, bonesMax));
        k0 += k0 < 0 ? bonesMax : 0;
        k1 = (k0 + 1) % bonesMax;
        u = p.z - k;
    } else {
        k0 = int(std::clamp(k, 0.0, double(bonesMax)));
        k1 = int(std::clamp(k + 1, 0.0, double(bonesMax)));
        u = p.z - k0;
    }
    CurveBone const& b0 = bones[size_t(std::min(k0, int(bones.size()) - 1))];
    if (k0 == k1)
        return Skin(b0, p, u, mul);
    CurveBone const& b1 = bones[size_t(std::min(k1, int(bones.size()) - 1))];
    return Skin(b0, p, u, mul) * (1 - u) + Skin(b1, p, u - 1, mul) * u;
}

} // namespace

std::deque<Tool*> Snake::Explode()
{
    Curve* c = axis();
    int instances = 0;
    float multiplier = 1;
    if (!item || !item->element || !c || !instancing(instances, multiplier) || !c->buildVertsFrames())
        return {};
    std::unique_ptr<Mesh> source(Element::CreateNewMesh(item->element.get()));
    if (!source)
        return {};
    bool closed = closedAxis();
    int bonesMax = c->activeVerts() - 1 + (closed ? 1 : 0);
    Matrix34<double> itemMatrix = item->element->Transform(1.0f) * item->transform();
    bool hasOdd = oddMatrix != Matrix34<double>();
    Tool* group = explodeGroup();
    History& history = History::instance();
    history.superBegin("Add Objects", false);
    for (int i = 0; i < instances; ++i) {
        Matrix34<double> M = (i & 1) && hasOdd ? itemMatrix * oddMatrix : itemMatrix;
        auto* mesh = new Mesh(*source);
        for (size_t k = 0; k < mesh->verts.size(); ++k) {
            Vector3<float>& v = mesh->verts[k].position;
            v = Vector3<float>(Bend(c->bones, Vector3<double>(v) * M, i, double(multiplier), bonesMax, closed));
        }
        mesh->initialize(0);
        (new Tool(Shared<Element>(mesh), c->Transform(1.0f), Matrix34<double>(), material))->addToParent(group);
    }
    history.superEnd();
    return {explodeFinish(group)};
}

// ---- file record ---------------------------------------------------------------------------

int Snake::DataSize() const
{
    return ToolItem::DataSize() + 102;
}

void Snake::Data(OFile& out, std::unordered_map<Element*, int>& ids)
{
    ToolItem::Data(out, ids);
    out.writeValue(oddMatrix);
    out.writeValue(snakeType);
    out.writeValue(itemsMode);
    out.writeValue(itemsCount);
}

void Snake::DataWrite(OFile& out, std::unordered_map<Element*, int>& ids)
{
    out.writeValue(SNAKE_DATA);
    out.writeValue(unsigned(DataSize()));
    Data(out, ids);
}

bool Snake::DataRead(IFile& in, int payload)
{
    return ToolItem::DataRead(in, payload) && in.readValue(oddMatrix) && in.readValue(snakeType) &&
           in.readValue(itemsMode) && in.readValue(itemsCount);
}

} // namespace vel
