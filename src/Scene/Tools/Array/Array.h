// Array: repeats its item along its axis curve, one instance on each vertex (edge mode 0)
// or on the middle of each edge (edge mode 1). The instances are only matrices, made anew
// each time the array is listed, until Explode turns them into objects.
//
// Kinds: array type 0 "Array", 1 "Chain" (every odd instance a quarter turn about the axis),
// 2 "Zipper" (every odd instance mirrored in y), 3 mirrored in z, 4 the odd matrix given.
// A closed chain with an odd count cannot alternate all the way round: for types 1 and 2 a
// twist is spread over the ring instead.
#pragma once

#include "Scene/Tools/Array/ToolItemAxis.h"

#include <deque>
#include <vector>

namespace vel {

class IFile;

class Array : public ToolItemAxis {
public:
    Matrix34<double> oddMatrix;    // applied before the frame of every odd instance
    unsigned char arrayType = 0;
    unsigned char edgeMode = 1;    // 1 on edge middles, 0 on vertices; not saved

    // The odd matrix of an array (or snake) type; `given` for type 4, identity past it.
    static Matrix34<double> OddMatrix(int type, Matrix34<double> const& given = Matrix34<double>());

    Array(Shared<Element> const& axis, int type, Matrix34<double> const& odd = Matrix34<double>(),
          Matrix34<double> const& object = Matrix34<double>(), Matrix34<double> const& pivot = Matrix34<double>(),
          Material const& material = Material());
    // Reads a record after its header; fileRefs->failed tells a damaged one.
    Array(IFile& in, int payload);

    int ToolType() const override { return 3; }
    Tool* SimpleClone(bool asObject, Matrix34<double> const& object, Matrix34<double> const& pivot) override;
    using ToolItem::toList;
    void toList(ToolList& list, Matrix34<double> const& parentWorld, int parentEntry, int index,
                bool skipSelected) override;
    // The group of objects that replaces the array (one "Add Objects" step per chain); empty
    // when the axis has no vertex or there is no item.
    std::deque<Tool*> Explode() override;

    // The instance frames in the axis' own coordinates, the chains one after another;
    // `chainEnds` receives where each chain's frames end. `forExplode` takes the vertex
    // frames unscaled by radius and scales them by the edge length instead.
    void instanceFrames(bool forExplode, std::vector<Matrix34<double>>& frames, std::vector<int>& chainEnds);

    int DataSize() const override;
    void Data(OFile& out, std::unordered_map<Element*, int>& ids) override;
    void DataWrite(OFile& out, std::unordered_map<Element*, int>& ids) override;
    bool DataRead(IFile& in, int payload) override;
    bool DataReadOld(IFile& in) override;

private:
    // Kept between frames, so that a steady listing allocates nothing.
    std::vector<Matrix34<double>> frames;
    std::vector<int> chainEnds;
};

} // namespace vel
