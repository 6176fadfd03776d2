// Gesture: the life of one press-drag-release, common to sculpt strokes and drawn strokes.
// The phase tells a step whether it opens, continues or closes the gesture.
#pragma once

namespace vel {

class Gesture {
public:
    enum Phase { NONE = 0, BEGIN = 1, PROGRESS = 2, END = 3 };

    virtual ~Gesture() = default;

    virtual void clear(bool all);
    virtual void _begin();
    virtual void _progress();
    virtual void _end();

    bool Begin() const { return phase == BEGIN; }
    bool Progress() const { return phase == PROGRESS; }
    bool End() const { return phase == END; }

    int phase = NONE;
};

} // namespace vel
