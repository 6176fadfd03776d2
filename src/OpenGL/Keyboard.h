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
    enum Key { Shift, Control, Alt, Space, COUNT };

    bool down[COUNT] = {};     // held now
    bool previous[COUNT] = {}; // held in the frame before
    std::vector<int> edges;    // Qt key codes pressed since the last frame ended

    // Polls the held keys (previous := down first).
    void read();
    // Everything released and no edges: nothing stays pressed across a blocked phase.
    void reset();
    // Ends a frame's edges.
    void clearEdges() { edges.clear(); }
    void press(int qtKey) { edges.push_back(qtKey); }
    bool pressed(int qtKey) const;

    bool shift() const { return down[Shift]; }
    bool control() const { return down[Control]; }
    bool alt() const { return down[Alt]; }

    // Whether held keys can be polled in this process at all.
    static bool Pollable();
};

extern Keyboard keys;

} // namespace vel
