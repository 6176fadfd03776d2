// SDFStruct: one entry of an SDF tree's gathered list.
//
// Entries made by listing stand for their tool and read priority and bracket from it;
// temporary entries (previews, such as a tool being dragged into a tree) carry their own.
#pragma once

#include "Math/Matrix34.h"

#include <cstdint>

namespace vel {

class SDFTool;

struct SDFStruct {
    SDFTool* tool = nullptr;
    Matrix34<double> world; // the tool's world matrix when listed
    int32_t selection = 0;  // index of the tool in the scene's flat list
    int16_t priority = 0;   // used only by temporary entries
    int16_t bracketCount = 0;   // used only by temporary entries
    bool temporary = false;

    bool is_temp() const;
    int16_t prio() const;
    int16_t bracket() const;
    // selection + 1, with the top bit set while the tool is selected.
    int32_t SelectionID() const;
};

} // namespace vel
