// Ender: one instance of its item at each free end of its axis curve, pointing outward.
#pragma once

#include "Scene/Tools/Array/ToolItemAxis.h"

#include <deque>
#include <vector>

namespace vel {

class IFile;

class Ender : public ToolItemAxis {
public:
    explicit Ender(Shared<Element> const& axis, Matrix34<double> const& object = Matrix34<double>(),
                   Matrix34<double> const& pivot = Matrix34<double>(), Material const& material = Material());
    Ender(IFile& in, int payload);

    int ToolType() const override { return 5; }
    Tool* SimpleClone(bool asObject, Matrix34<double> const& object, Matrix34<double> const& pivot) override;
    using ToolItem::toList;
    void toList(ToolList& list, Matrix34<double> const& parentWorld, int parentEntry, int index,
                bool skipSelected) override;
    std::deque<Tool*> Explode() override;

    // One frame per free end, in the axis' placement (its Transform(1) applied).
    void endFrames(std::vector<Matrix34<double>>& out);

    void DataWrite(OFile& out, std::unordered_map<Element*, int>& ids) override;
    bool DataRead(IFile& in, int payload) override;
    bool DataReadOld(IFile& in) override;

private:
    std::vector<Matrix34<double>> frames; // kept between frames
};

} // namespace vel
