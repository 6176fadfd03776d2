// BrushProperties: strength, falloff and elevation of a sculpt action, with the defaults they
// return to. Opposite brushes (Add and Sub, Grow and Pinch...) share one object, so tuning
// one tunes its partner.
#pragma once

#include <unordered_map>
#include <vector>

#include "Math/Pbr.h"
#include "Memory/Shared.h"

namespace vel {

struct BrushProperties {
    float defaultStrength = 1.0f;
    float defaultFalloff = 0.0f;
    float defaultElevation = 0.0f;
    float strength = 1.0f;
    float falloff = 0.0f;
    float elevation = 0.0f;
};

using Brushes = std::unordered_map<int, Shared<BrushProperties>>;

// The paint brush: the material laid by actions 41 to 43, and which of its parts are taken
// (1 colour, 2 alpha, 4 light, 8 thickness, 16 roughness, 32 metalness).
extern Pbr BrushMaterial;
extern int BrushMaterialMask;

// The brushes of every action, filled with the defaults at start-up.
Brushes& GetBrushes();
// When any of `actions` already has properties, all of them share that object and the values
// are dropped; otherwise one new object with these values is shared by all.
void AddBrushProperties(Brushes& brushes, std::vector<int> const& actions, float strength, float falloff,
                        float elevation);
// The start-up table, then (1, 0, 0) for every action from 0 to 81 that has none yet.
void InitBrushes(Brushes& brushes);

} // namespace vel
