// Mouse: one snapshot of the pointer as the frame loop sees it.
//
// `mouseRead` is written only by the frame loop; `mouse` is the copy the viewport consumes;
// `mouseui` is `mouse` in the interface framebuffer's pixels. Positions are device pixels
// times the view's scale.
#pragma once

namespace vel {

struct Mouse {
    float px = 0, py = 0; // position in the frame before
    float x = 0, y = 0;
    float dx = 0, dy = 0; // x - px, y - py
    bool pleft = false, left = false; // (previous, current) per button
    bool pmiddle = false, middle = false;
    bool pright = false, right = false;
    float wheel = 0; // counted wheel of this frame
    float pressure = 1; // the pen's, 0..1; 1 for a mouse

    bool anyPressed() const { return (left && !pleft) || (middle && !pmiddle) || (right && !pright); }
    bool anyReleased() const { return (!left && pleft) || (!middle && pmiddle) || (!right && pright); }
    bool anyHeld() const { return (left && pleft) || (middle && pmiddle) || (right && pright); }
    // The next frame's position: the present one becomes the previous.
    void moveTo(float nx, float ny)
    {
        px = x;
        py = y;
        x = nx;
        y = ny;
        dx = x - px;
        dy = y - py;
    }
    // Button edges of this frame gone: both slots take the current state.
    void clearEdges()
    {
        pleft = left;
        pmiddle = middle;
        pright = right;
    }
};

extern Mouse mouseRead;
extern Mouse mouse;
extern Mouse mouseui;

} // namespace vel
