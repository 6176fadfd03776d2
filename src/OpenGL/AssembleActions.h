// The release and press columns of the assemble actions that change fields of objects
// rather than move them: material, constraints, speed, delay, normals, parent and links.
// Each makes its change first and records it after, as one step of the history; a call
// with no target changes nothing and records nothing. No GL here.
#pragma once

#include "Math/Vector3.h"

#include <vector>

namespace vel {

class Tool;
struct Material;

namespace AssembleActions {

// The fields of `mask` (Material::set) from `source`.
bool ApplyMaterial(std::vector<Tool*> const& targets, Material const& source, int mask);
// A zero axis removes the constraint.
bool ConstrainRotation(std::vector<Tool*> const& targets, Vector3<float> const& axis);
bool ConstrainTranslation(std::vector<Tool*> const& targets, Vector3<float> const& axis);
bool SetSpeed(std::vector<Tool*> const& targets, float speed);
bool SetDelay(std::vector<Tool*> const& targets, float delay);
bool FlipNormals(std::vector<Tool*> const& targets);
// The targets go under `parent`, keeping their place in the world. Refused (false, nothing
// changed) for a target that is `parent` or one of its ancestors.
bool SetParent(std::vector<Tool*> const& targets, Tool* parent);
// Deletes `target` as one step: with `hierarchy` its children go too, otherwise they move
// up to its parent and keep their place in the world. False for no target or the root.
bool Delete(Tool* target, bool hierarchy);
// Joins the rings of `a` and `b`; false when they are one ring already.
bool Link(Tool* a, Tool* b);
// Each target leaves its ring.
bool Unlink(std::vector<Tool*> const& targets);

} // namespace AssembleActions
} // namespace vel
