#include "Scene/Element.h"

namespace vel {

Element::~Element() = default;

Matrix34<double> Element::Transform(float f) const
{
    double factor = double(f) / double(scale);
    return Matrix34<double>(Matrix3<double>::Scale(factor), Vector3<double>(center) * -factor);
}

void Element::clearSelection()
{
}

void Element::elements(std::vector<Element*>& out)
{
    out.push_back(this);
}

bool Element::timer(double t)
{
    std::vector<Element*> parts;
    elements(parts);
    bool changed = false;
    for (size_t i = 1; i < parts.size(); ++i)
        changed = parts[i]->timer(t) || changed;
    return changed;
}

bool Element::hasBorders()
{
    return false;
}

bool Element::hasHelpers()
{
    return false;
}

} // namespace vel
