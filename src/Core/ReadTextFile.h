#pragma once

#include <QString>

namespace vel {

// The whole content of a text file or a ":/" resource; empty when it cannot be read.
QString ReadTextFile(QString const& path);

} // namespace vel
