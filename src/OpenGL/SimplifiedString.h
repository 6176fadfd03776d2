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

std::string SimplifiedString(std::string const& text);

} // namespace vel
