#include "Deformers/BrushProperties.h"

namespace vel {

Pbr BrushMaterial;
int BrushMaterialMask = 63;

Brushes& GetBrushes()
{
    static Brushes brushes = [] {
        Brushes made;
        InitBrushes(made);
        return made;
    }();
    return brushes;
}

void AddBrushProperties(Brushes& brushes, std::vector<int> const& actions, float strength, float falloff,
                        float elevation)
{
    Shared<BrushProperties> shared;
    for (int action : actions) {
        auto found = brushes.find(action);
        if (found != brushes.end()) {
            shared = found->second;
            break;
        }
    }
    if (!shared.object)
        shared = Shared<BrushProperties>(
            new BrushProperties{strength, falloff, elevation, strength, falloff, elevation});
    for (int action : actions)
        brushes[action] = shared;
}

void InitBrushes(Brushes& brushes)
{
    struct Row {
        std::vector<int> actions;
        float strength, falloff, elevation;
    };
    // Order matters: a later row naming an action that has properties only joins them.
    static Row const rows[] = {
        {{25, 26}, 0.1f, 0.0f, 0.0f},         {{29, 30}, 1.0f, 0.0f, 0.0f},
        {{27, 28}, 1.0f, 0.5f, 0.1f},         {{17, 18}, 1.0f, 0.7f, 0.3f},
        {{19, 20}, 0.03f, 0.0f, 0.0f},        {{36, 37}, 0.3f, 0.0f, 0.0f},
        {{36, 37}, 0.1f, 0.0f, 0.0f},         {{21, 22, 23, 24}, 0.1f, 0.0f, 0.0f},
        {{39}, 1.0f, 0.5f, 0.05f},            {{81}, 1.0f, 0.0f, 0.0f},
    };
    for (Row const& row : rows)
        AddBrushProperties(brushes, row.actions, row.strength, row.falloff, row.elevation);
    for (int action = 0; action <= 81; ++action)
        AddBrushProperties(brushes, {action}, 1.0f, 0.0f, 0.0f);
}

} // namespace vel
