// SimplifiedString: the canonical form of shader source that the shader cache keys on and
// that Shader::compile parses: no comments, no empty lines, single blanks only, every line
// ended by "\n". Two sources that differ only by comments or white space simplify alike.
#pragma once

#include <QString>

#include <string>

namespace vel {

// Removes the first section from `start` up to and including the next `end` at or after
// position `from`; an unterminated section runs to the end of the text. Returns the position
// where the section began, or -1 when `start` does not occur.
int RemoveSection(QString& text, QString const& start, QString const& end, int from = 0);

// RemoveSection repeated until `start` no longer occurs.
void RemoveSections(QString& text, QString const& start, QString const& end);

// One pass over the text, aware of both comment kinds at once: a "//" inside a block comment
// or a "/*" inside a line comment is comment text, not a marker. A line comment ends at "\n",
// "\r" or "\r\n" and leaves the line break; a block comment stands for one blank. Markers
// inside double quotes (an include path) are text.
std::string SimplifiedString(std::string const& text);

} // namespace vel
