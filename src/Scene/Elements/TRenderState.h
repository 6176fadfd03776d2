// TRenderState: what one draw is for. Passed by const reference from the frame down to the
// element that draws; elements pick their shader and vertex layout by `kind`.
//
// Kinds: 0 opaque G-buffer pass with materials, 1 transparent pass with materials, 3 and 4
// paint into textures, 6 G-buffer pass without materials, 7 vertex colour, 8 depth peeling
// (rtDEPTHPEEL), 9 depth only (rtDEPTH), 10 component depth peeling.
#pragma once

namespace vel {

constexpr int rtDEPTHPEEL = 8;
constexpr int rtDEPTH = 9;

struct TRenderState {
    int kind = 0;
    bool twoSided = false; // no face culling
    bool plain = false;    // flat-material mode: the draw leaves out the render flags
    bool third = false;    // the third argument of the frame's object pass, passed through
};

} // namespace vel
