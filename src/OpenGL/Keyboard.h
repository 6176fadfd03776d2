// Keyboard: the keys the viewport and the brushes read as held state, polled once a frame,
// and the per-frame edges of keys that Qt reported pressed.
//
// Held state comes from SFML, which asks the X server directly and so is not fooled by focus
// or auto-repeat. SFML ends the process when it finds no display: `read` asks it only when
// Qt itself runs on X, and otherwise leaves every key released.
#pragma once

#include <vector>

namespace vel {

class Keyboard {
public:
    enum Key { Shift, Control, Alt, Space, Digit1, Digit2, Digit3, Digit4, Digit5, L, P, COUNT };
    static constexpr int WENT_DOWN = 1; // bits of read()'s answer
    static constexpr int WENT_UP = 2;

    bool down[COUNT] = {};     // held now
    bool previous[COUNT] = {}; // held in the frame before
    std::vector<int> edges;    // Qt key codes pressed since the last frame ended

    // Polls the held keys (previous := down first); WENT_DOWN when a key went down since
    // the last read, WENT_UP when one went up.
    int read();
    // Everything released and no edges: nothing stays pressed across a blocked phase.
    void reset();
    // Ends a frame's edges.
    void clearEdges() { edges.clear(); }
    void press(int qtKey) { edges.push_back(qtKey); }
    bool pressed(int qtKey) const;

    bool shift() const { return down[Shift]; }
    bool control() const { return down[Control]; }
    bool alt() const { return down[Alt]; }
    bool digit(int n) const { return n >= 1 && n <= 5 && down[Digit1 + n - 1]; }

    // Whether held keys can be polled in this process at all.
    static bool Pollable();
};

extern Keyboard keys;

} // namespace vel
