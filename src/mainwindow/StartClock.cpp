#include "mainwindow/StartClock.h"

#include <fstream>
#include <sstream>
#include <string>

#include <time.h>
#include <unistd.h>

namespace vel {

long StartClock::Elapsed()
{
    // Field 22 of /proc/self/stat is the start in clock ticks after boot; the command name
    // (field 2) may hold blanks, so count from its closing parenthesis.
    std::ifstream in("/proc/self/stat");
    std::string stat((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::size_t close = stat.rfind(')');
    if (close == std::string::npos)
        return -1;
    std::istringstream fields(stat.substr(close + 2));
    std::string field;
    for (int i = 3; i < 22 && fields >> field; ++i) {
    }
    unsigned long long ticks = 0;
    if (!(fields >> ticks))
        return -1;
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    double started = double(ticks) / double(sysconf(_SC_CLK_TCK));
    return long((double(now.tv_sec) + now.tv_nsec * 1e-9 - started) * 1000.0);
}

} // namespace vel
