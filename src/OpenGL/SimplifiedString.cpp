#include "OpenGL/SimplifiedString.h"

#include <algorithm>

namespace vel {

int RemoveSection(QString& text, QString const& start, QString const& end, int from)
{
    int begin = text.indexOf(start, from);
    if (begin < 0)
        return -1;
    int stop = text.indexOf(end, begin + start.size());
    if (stop < 0)
        text.truncate(begin);
    else
        text.remove(begin, stop + end.size() - begin);
    return begin;
}

void RemoveSections(QString& text, QString const& start, QString const& end)
{
    // Text ahead of a removed section holds no start marker, but the removal may join a
    // marker across the seam: resume just before it.
    int from = 0;
    while ((from = RemoveSection(text, start, end, from)) >= 0)
        from = std::max(0, from - int(start.size()) + 1);
}

namespace {

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\v' || c == '\f';
}

// Appends the code of one line, blanks collapsed and trimmed, to `out` unless it is empty.
class LineWriter {
public:
    explicit LineWriter(std::string& out)
        : out(out)
        , lineStart(out.size())
    {
    }
    void code(char c)
    {
        if (IsBlank(c)) {
            pendingBlank = out.size() > lineStart;
            return;
        }
        if (pendingBlank)
            out += ' ';
        pendingBlank = false;
        out += c;
    }
    void blank()
    {
        pendingBlank = out.size() > lineStart;
    }
    void endLine()
    {
        if (out.size() > lineStart)
            out += '\n';
        lineStart = out.size();
        pendingBlank = false;
    }

private:
    std::string& out;
    size_t lineStart;
    bool pendingBlank = false;
};

} // namespace

std::string SimplifiedString(std::string const& source)
{
    enum { Code, Quoted, LineComment, BlockComment } state = Code;
    std::string result;
    result.reserve(source.size());
    LineWriter line(result);
    size_t const n = source.size();
    for (size_t i = 0; i < n; ++i) {
        char c = source[i];
        if ((c == '\n' || c == '\r') && state != BlockComment) {
            if (c == '\r' && i + 1 < n && source[i + 1] == '\n')
                ++i;
            state = Code;
            line.endLine();
            continue;
        }
        char next = i + 1 < n ? source[i + 1] : '\0';
        switch (state) {
        case Code:
            if (c == '/' && next == '/') {
                state = LineComment;
                ++i;
            } else if (c == '/' && next == '*') {
                state = BlockComment;
                ++i;
            } else {
                if (c == '"')
                    state = Quoted;
                line.code(c);
            }
            break;
        case Quoted:
            if (c == '"')
                state = Code;
            line.code(c);
            break;
        case LineComment:
            break;
        case BlockComment:
            // Line breaks inside stay comment: the comment is one blank, as the preprocessor
            // sees it, so a directive around it keeps its one line.
            if (c == '*' && next == '/') {
                state = Code;
                ++i;
                line.blank();
            }
            break;
        }
    }
    line.endLine();
    return result;
}

} // namespace vel
