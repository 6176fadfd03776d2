// UCurve: a curve that follows another curve at uniform spacing. It owns no shape of its own:
// update() resamples the base, and a sculpt stroke goes to the base.
#pragma once

#include "Memory/Shared.h"
#include "Scene/Elements/Curve/Curve.h"

namespace vel {

class UCurve : public Curve {
public:
    Shared<Element> base; // a Curve; null until identify when read from a file
    float spacing = 0;    // 0: derived from the base's length
    std::deque<float> params; // where each sample fell on the base: edge + fraction
    int baseId = -1;          // the file's element number of the base, until identify

    UCurve() = default;
    UCurve(Shared<Element> const& base, float spacing);

    int Type() const override { return 7; }
    unsigned BlockId() const override { return 0xe1000007u; }
    int CurveType() const override { return 2; }
    Curve* BaseCurve() override;
    Element* clone() override;
    void update() override;
    int64_t ready() override;
    void elements(std::vector<Element*>& out) override;
    void identify(std::vector<Shared<Element>> const& elements) override;
    void sculpt(std::deque<Sculptor*>& sculptors) override;
    int DataSize() const override { return 16; }
    void DataWrite(OFile& out, std::unordered_map<Element*, int>& ids) override;
    // Spacing and the base's number; false when cut short.
    bool DataReadU(IFile& in, int version);
};

} // namespace vel
