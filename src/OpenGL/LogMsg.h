// logmsg: the one sink of GL error text ("ERROR Shader::compile ...", "ERROR Texture2D::load ...").
//
// The product drops every message: a failed built-in resource shows itself through the
// assertion of the pass that needed it, never through a log. A development build, a test or
// a diagnostic tool may install a sink to see the texts; none is installed by default.
#pragma once

#include <string>

namespace vel {

using LogMsgSink = void (*)(std::string const& text, bool newline);

// Null by default: messages are composed and dropped.
extern LogMsgSink gLogMsgSink;

void logmsg(std::string const& text, bool newline = true);

} // namespace vel
