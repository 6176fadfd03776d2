// The render flag word as shaders see it (uniform "RenderFlags", and the alpha channel of the
// normal target as raw integer bits). The GLSL header "RenderFlags" must hold the same values.
#pragma once

namespace vel {

constexpr int FLAG_LIT = 1 << 0;
constexpr int FLAG_COLOR_GLOWS = 1 << 1;
constexpr int FLAG_CONTOURS = 1 << 2;
constexpr int FLAG_FEATURES = 1 << 3;
constexpr int FLAG_FLIPPED = 1 << 4;
constexpr int FLAG_LUMINARY = 1 << 5;
// Set on every written pixel: keeps the integer from reading as a denormal float.
constexpr int FLAG_NON_EMPTY = 1 << 29;

// A three-bit object type in bits 26 to 28.
constexpr int FLAGS_OBJ_TYPE_SHIFT = 26;
constexpr int FLAGS_OBJ_TYPE = 7 << FLAGS_OBJ_TYPE_SHIFT;
constexpr int VALUE_CURVE = 1;
constexpr int VALUE_BONE = 2;
constexpr int VALUE_RB_STATIC = 3;
constexpr int VALUE_RB_DYNAMIC = 4;

} // namespace vel
