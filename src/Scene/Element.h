// Element: the geometry an object shows, shared by the tools that show it.
//
// So far only what a Tool asks of its element: the kind, the size mapping, the timer and
// the queries of the selection, borders and helpers. Geometry, buffers and files join it
// with the element kinds.
#pragma once

#include "Math/Matrix34.h"
#include "Math/Vector3.h"

#include <vector>

namespace vel {

class Element {
public:
    Vector3<float> center; // own coordinates of the unit shape's centre
    float scale = 1.0f;    // own length of the unit shape's size

    Element() = default;
    Element(Element const&) = delete;
    Element& operator=(Element const&) = delete;
    virtual ~Element();

    virtual int Type() const = 0;
    // From own coordinates to a shape of size f about the origin.
    virtual Matrix34<double> Transform(float f) const;
    virtual void clearSelection();
    // Appends itself; composite elements then append their parts.
    virtual void elements(std::vector<Element*>& out);
    // Advances every part after the first to time t; true if any of them changed.
    virtual bool timer(double t);
    virtual bool hasBorders();
    virtual bool hasHelpers();
};

} // namespace vel
