#include "Scene/Tools/Array/Ender.h"

#include "Scene/Elements/Curve/Curve.h"
#include "Scene/IFile.h"
#include "Scene/OFile.h"
#include "Scene/SceneFile.h"
#include "Scene/ToolList.h"

#include <cstdlib>

namespace vel {

namespace {

constexpr int V_ITEM_RECORD = 20181220;  // after: the ToolItem record
constexpr int V_NO_FIELDS = 20160914;    // after (to the above): nothing of its own

} // namespace

Ender::Ender(Shared<Element> const& axis, Matrix34<double> const& object, Matrix34<double> const& pivot,
             Material const& material)
    : ToolItemAxis(axis, object, pivot, material)
{
}

Ender::Ender(IFile& in, int payload)
    : ToolItemAxis(Unrecorded{})
{
    if (!DataRead(in, payload)) {
        if (!fileRefs)
            fileRefs = std::make_unique<FileRefs>();
        fileRefs->failed = true;
    }
}

Tool* Ender::SimpleClone(bool asObject, Matrix34<double> const& object, Matrix34<double> const& pivot)
{
    auto* copy = new Ender(element, object, pivot, material);
    CloneInfo(asObject, copy, true);
    return copy;
}

void Ender::endFrames(std::vector<Matrix34<double>>& out)
{
    out.clear();
    Curve* c = axis();
    if (!c)
        return;
    c->ready();
    c->calculateFrames(false);
    c->updateBords();
    Matrix34<double> T = c->Transform(1.0f);
    for (CurveBord const& b : c->bords) {
        int v = std::abs(b.vertex) - 1;
        Matrix34<double> F = b.frame;
        // At a chain's start the tangent points inward: turned, the item points outward.
        Matrix3<double> L = F.linear();
        if (b.vertex > 0)
            for (int i = 6; i < 9; ++i)
                L.m[i] = -L.m[i];
        F.setLinear(L * double(c->radius(v)));
        out.push_back(F * T);
    }
}

void Ender::toList(ToolList& list, Matrix34<double> const& parentWorld, int parentEntry, int index,
                   bool skipSelected)
{
    int self = list.count();
    Tool::toList(list, parentWorld, parentEntry, index, skipSelected);
    if (!item)
        return;
    endFrames(frames);
    Matrix34<double> W = list.matrices[size_t(self)];
    listInstances(list, frames, W, self, index, skipSelected);
}

std::deque<Tool*> Ender::Explode()
{
    if (!item)
        return {};
    endFrames(frames);
    if (frames.empty())
        return {};
    return {explodeInto({frames})};
}

void Ender::DataWrite(OFile& out, std::unordered_map<Element*, int>& ids)
{
    out.writeValue(ENDER_DATA);
    out.writeValue(unsigned(DataSize()));
    Data(out, ids);
}

bool Ender::DataRead(IFile& in, int payload)
{
    if (FILE_VERSION > V_ITEM_RECORD)
        return ToolItem::DataRead(in, payload);
    if (FILE_VERSION > V_NO_FIELDS)
        return Tool::DataRead(in, payload);
    return DataReadOld(in);
}

bool Ender::DataReadOld(IFile& in)
{
    return Tool::DataReadOld(in);
}

} // namespace vel
