// Animation: the ordered list of camera keyframes, saved with the scene.
//
// This holds the list and its file block; playback (Update, Jump and the view it moves) comes
// with the viewport's camera.
//
// File block, little-endian raw values: int current; double time; bool playing; bool loop;
// int count; then per key: position (3 doubles), rotation (9 doubles), double distance,
// double time, int transition, int n, n records of 4 floats. Files of version 20230528 carry
// 4 stray bytes at the start of every key.
#pragma once

#include "Animation/Keyframe.h"
#include "Memory/Singleton.h"

#include <deque>
#include <istream>
#include <ostream>

namespace vel {

class Animation : public Singleton<Animation> {
    friend class Singleton<Animation>;

public:
    std::deque<Keyframe> keyframes;
    int current = -1;     // the key in play; -1 before the first
    double time = 0;      // seconds since the current key began
    bool playing = false;
    bool loop = false;

    // Writes the block's payload; a null stream writes nothing.
    void Save(std::ostream* out) const;
    // Reads a payload written by Save in a file of `version`. Without `append` the list is
    // replaced, with it the keys are added. A null stream does nothing. A damaged payload
    // changes nothing, logs why and returns false.
    bool Load(std::istream* in, bool append, int version);
    void clear();

private:
    Animation() = default;
};

} // namespace vel
