// StartClock: milliseconds since the process began, from the kernel's record of its start,
// so that the figure includes loading the program and its libraries.
#pragma once

namespace vel {

class StartClock {
public:
    // Milliseconds since the process was started; -1 where the system cannot tell.
    static long Elapsed();
};

} // namespace vel
