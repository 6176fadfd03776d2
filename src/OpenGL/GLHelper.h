// GLHelper<16>: an empty base of two virtual steps, Build() and Draw(), kept for helpers that
// prepare and draw their own geometry. Only GLHelper<16> exists.
#pragma once

namespace vel {

template <int N>
class GLHelper {
public:
    virtual ~GLHelper() = default;
    virtual void Build() {}
    virtual void Draw() {}
};

} // namespace vel
