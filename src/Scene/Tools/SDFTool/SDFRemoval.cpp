#include "Scene/Tools/SDFTool/SDFRemoval.h"

#include "Scene/Tools/SDFTool/SDFTool.h"

namespace vel {

SDFRemoval::SDFRemoval(SDFTool* tool)
    : top(tool->treeTop())
{
    all = top->findAll();
    for (auto& entry : top->findOrder())
        order.push_back(entry.second);
    matches = top->findMatchingBrackets();
    leaving = tool->findAll();
}

void SDFRemoval::ProcessRemoval()
{
    int const count = int(order.size());
    for (int i = 0; i < count; ++i) {
        SDFTool* stays = order[i];
        if (leaving.count(stays))
            continue;
        auto range = matches.equal_range(stays);
        for (auto m = range.first; m != range.second; ++m) {
            if (!leaving.count(m->second))
                continue;
            int j = 0;
            while (j < count && order[j] != m->second)
                ++j;
            // An end before its partner opens, so the leaving end closes, and the other way.
            int sign = i < j ? -1 : 1;
            int dir = i > j ? 1 : -1;
            SDFTool* heir = nullptr;
            for (int k = j + dir; k != i; k += dir)
                if (!leaving.count(order[k])) {
                    heir = order[k];
                    break;
                }
            if (heir)
                heir->setPriorityBracket(heir->sdf.priority, int16_t(heir->sdf.bracket + sign));
            else
                stays->setPriorityBracket(stays->sdf.priority, int16_t(stays->sdf.bracket + sign));
        }
    }
}

} // namespace vel
