// ToolItem: an object that shows another object, its item, instead of geometry of its own.
//
// Ownership: the item's Parent is this tool, although the item is not among the children;
// this tool destroys it with itself. There is exactly one item, or none. Every tree-wide
// operation (marking, listing, cloning, unlinking) goes on to the item after the tool.
#pragma once

#include "Scene/Tool.h"

#include <vector>

namespace vel {

class ToolItem : public Tool {
public:
    Tool* item = nullptr;

    explicit ToolItem(Shared<Element> const& element = Shared<Element>(),
                      Matrix34<double> const& object = Matrix34<double>(),
                      Matrix34<double> const& pivot = Matrix34<double>(), Material const& material = Material());
    ~ToolItem() override;

    int ToolType() const override { return 1; }
    void remove() override;
    void CloneInfo(bool asObject, Tool* copy, bool withLinks) override;
    Tool* SimpleClone(bool asObject, Matrix34<double> const& object, Matrix34<double> const& pivot) override;
    void Mark(bool on) override;
    void toElements(std::set<Element*>& out) override;
    void toMap(std::unordered_map<int, Tool*>& map) override;
    using Tool::toList;
    void toList(std::vector<Tool*>& list) override;
    void unlink(bool recursive) override;
    void setObject(bool on) override;
    bool isGroup() const override { return true; }
    bool hasItem() const override { return true; }
    bool hasItem(Tool* T) const override { return T && T == item; }
    Tool* itemSlot() const override { return item; }
    void setItemSlot(Tool* t) override { item = t; }
    bool timer() override;

    // Replaces the item: the present one is removed first; a null argument stops there. The
    // placement is one CommandObjectSetItem step.
    void setItem(Tool* newItem);

    // ---- file record: the base's, then the item's number ----
    int DataSize() const override;
    void Data(OFile& out, std::unordered_map<Element*, int>& ids) override;
    bool DataRead(IFile& in, int payload) override;
    void identify(std::vector<Tool*> const& tools, std::vector<Shared<Element>> const& elements) override;

protected:
    explicit ToolItem(Unrecorded);
    // The plain group that replaces this tool when it explodes: its parent, matrices and
    // material, with the instances added under it by "Add Objects" steps, one for each
    // entry of `batches` (frames in this tool's own frame).
    Tool* explodeInto(std::vector<std::vector<Matrix34<double>>> const& batches);
    // The two halves of that: the group placed where this tool is, and this tool's children
    // moved under it (the group returned).
    Tool* explodeGroup();
    Tool* explodeFinish(Tool* group);
    // Lists the item once per frame (frame i times W), numbered as instances, under entry
    // `self` of `list`.
    void listInstances(ToolList& list, std::vector<Matrix34<double>> const& frames, Matrix34<double> const& W,
                       int self, int index, bool skipSelected);
    int fileItem = -1; // the item's number in the file, until identify
};

} // namespace vel
