// Root: the top of the tree, owned by the scene.
//
// It has no parent and no placement of its own and is not an object: listing and searching
// walk its children and skip it. Its creation is never a step of the history.
#pragma once

#include "Scene/Tool.h"

namespace vel {

class Root : public Tool {
public:
    static constexpr int TYPE = 7;

    Root();

    int ToolType() const override;
    void remove() override;
    void addToParent(Tool* P) override;
    void toMap(std::unordered_map<int, Tool*>& map) override;
    void toList(std::vector<Tool*>& list) override;
    void inList(Tool* T, bool& found) override;
    Matrix34<double> transform() const override;
    void setObject(bool on) override;
    bool isObject() const override;
};

} // namespace vel
