// SDFRemoval: hands the brackets of a leaving subtree to the tools that stay.
//
// Made while the leaving tool is still a member; it keeps the tree's order and its pairs
// of brackets as they were. ProcessRemoval, run once the subtree has left, looks at every
// pair with one end leaving: the leaving end's bracket goes to the nearest remaining tool
// between the two ends, searched from the leaving end; with none between them, the pair
// is dropped. Only remaining tools are touched, so leaving tools may already be gone.
#pragma once

#include <map>
#include <set>
#include <vector>

namespace vel {

class SDFTool;

class SDFRemoval {
public:
    SDFTool* top;
    std::set<SDFTool*> all;          // the tree as it was
    std::vector<SDFTool*> order;     // its priority order
    std::multimap<SDFTool*, SDFTool*> matches;
    std::set<SDFTool*> leaving;      // the subtree that leaves

    explicit SDFRemoval(SDFTool* tool);
    void ProcessRemoval();
};

} // namespace vel
