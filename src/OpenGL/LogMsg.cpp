#include "OpenGL/LogMsg.h"

namespace vel {

LogMsgSink gLogMsgSink = nullptr;

void logmsg(std::string const& text, bool newline)
{
    if (gLogMsgSink)
        gLogMsgSink(text, newline);
}

} // namespace vel
