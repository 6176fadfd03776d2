#include "OpenGL/ShaderCode.h"

#include "Core/Assert.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderIncludeManager.h"
#include "OpenGL/ShaderManager.h"
#include "OpenGL/Texture.h"

#include <glad/gl.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <unordered_set>

namespace vel {

std::unordered_map<std::string, std::unordered_map<int, std::string>> ShaderCode::error_messages;
int ShaderCode::mouse_update = 0;
float ShaderCode::mouse_normalized[2] = {0, 0};

namespace {

constexpr int MAX_INCLUDE_DEPTH = 16;        // nesting depth of includes
constexpr size_t MAX_EXPANDED_LINES = 1 << 20; // a listing never grows past this

std::vector<std::string> SplitLines(std::string const& text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        lines.push_back(std::move(line));
    }
    return lines;
}

} // namespace

// ------------------------------------------------------------------------------------------
// Listings
// ------------------------------------------------------------------------------------------

void CodeListing::generated(std::string const& text)
{
    for (std::string& line : SplitLines(text)) {
        lines.push_back(std::move(line));
        origins.push_back({});
    }
}

void CodeListing::user(std::string const& text, int file)
{
    int number = 1;
    for (std::string& line : SplitLines(SimplifyText(text))) {
        lines.push_back(std::move(line));
        origins.push_back({file, number, number, false});
        ++number;
    }
}

std::string CodeListing::text() const
{
    std::string out;
    for (std::string const& line : lines) {
        out += line;
        out += '\n';
    }
    return out;
}

// ------------------------------------------------------------------------------------------
// SimplifyText, ExpandIncludes, IncludesText
// ------------------------------------------------------------------------------------------

std::string SimplifyText(std::string const& text)
{
    std::string out;
    out.reserve(text.size());
    enum { Code, Line, Block, Quote } state = Code;
    for (size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        char next = i + 1 < text.size() ? text[i + 1] : '\0';
        switch (state) {
        case Code:
            if (c == '/' && next == '/') {
                state = Line;
                ++i;
                continue;
            }
            if (c == '/' && next == '*') {
                state = Block;
                out += ' ';
                ++i;
                continue;
            }
            if (c == '"')
                state = Quote;
            break;
        case Quote:
            if (c == '"' || c == '\n')
                state = Code;
            break;
        case Line:
            if (c != '\n')
                continue;
            state = Code;
            break;
        case Block:
            if (c == '*' && next == '/') {
                state = Code;
                ++i;
            }
            // The line breaks of a block comment stay, so that later lines keep their number.
            if (c != '\n')
                continue;
            break;
        }
        if (c == '\n' || c == '\r')
            while (!out.empty() && (out.back() == ' ' || out.back() == '\t'))
                out.pop_back();
        out += c;
    }
    while (!out.empty() && (out.back() == ' ' || out.back() == '\t'))
        out.pop_back();
    return out;
}

namespace {

// Depth first, so that an include's own includes come before the rest of its text.
void ExpandInto(CodeListing& out, std::vector<std::string> const& lines, std::vector<CodeLine> const& origins,
                std::unordered_set<std::string>& seen, std::vector<std::string>* missing, int depth)
{
    for (size_t i = 0; i < lines.size() && out.lines.size() < MAX_EXPANDED_LINES; ++i) {
        std::string const& line = lines[i];
        CodeLine const origin = origins[i];
        size_t at = line.find("#include");
        if (at == std::string::npos || depth >= MAX_INCLUDE_DEPTH) {
            out.lines.push_back(line); // too deep: left for the compiler to reject
            out.origins.push_back(origin);
            continue;
        }
        size_t open = line.find('"', at);
        size_t close = open == std::string::npos ? open : line.find('"', open + 1);
        std::string name = close == std::string::npos ? std::string() : line.substr(open + 1, close - open - 1);
        if (!seen.insert(name).second) {
            out.lines.emplace_back(); // once per listing: the line stays, the text doesn't
            out.origins.push_back(origin);
            continue;
        }
        std::string text = ShaderIncludeManager::instance().AddFile(name);
        if (text.empty()) {
            out.lines.push_back("#error missing include " + (name.empty() ? std::string("(no name)") : name));
            out.origins.push_back(origin);
            if (missing)
                missing->push_back(name);
            continue;
        }
        CodeListing included;
        included.user(text, int(out.files.size()));
        out.files.push_back(name);
        for (CodeLine& o : included.origins) {
            o.user = origin.user;
            o.include = true;
        }
        ExpandInto(out, included.lines, included.origins, seen, missing, depth + 1);
    }
}

} // namespace

void ExpandIncludes(CodeListing& listing, std::vector<std::string>* missing)
{
    std::unordered_set<std::string> seen;
    CodeListing out;
    out.files = listing.files;
    ExpandInto(out, listing.lines, listing.origins, seen, missing, 0);
    listing = std::move(out);
}

std::string IncludesText(std::vector<std::string> const& names)
{
    std::string out;
    for (std::string const& name : names)
        out += "#include \"" + name + "\"\n";
    return out;
}

// ------------------------------------------------------------------------------------------
// Mapping the compiler's log
// ------------------------------------------------------------------------------------------

namespace {

// Drivers name a place in a log as "name:LINE(COLUMN)" (Mesa) or "name(LINE)" (NVIDIA). The
// line number, 0 where the log line names no place in `name`; `rest` gets what follows it.
long LogPlace(std::string const& line, std::string const& name, std::string* rest = nullptr)
{
    if (line.size() <= name.size() || line.compare(0, name.size(), name) != 0)
        return 0;
    char const mark = line[name.size()];
    if (mark != ':' && mark != '(')
        return 0;
    char* end = nullptr;
    long const number = std::strtol(line.c_str() + name.size() + 1, &end, 10);
    if (end == line.c_str() + name.size() + 1 || (mark == '(' && *end != ')'))
        return 0;
    if (rest)
        *rest = end + (mark == '(' ? 1 : 0);
    return number;
}

} // namespace

std::vector<CodeError> MapCompileLog(std::string const& log, int stage, std::string const& shaderName,
                                     CodeListing const& listing)
{
    std::vector<CodeError> result;
    for (std::string const& line : SplitLines(log)) {
        if (line.empty())
            continue;
        CodeError error;
        error.stage = stage;
        error.message = line;
        std::string rest;
        long number = LogPlace(line, shaderName, &rest);
        // NVIDIA puts a fault at the end of the text (a missing brace) at line 0, unnamed:
        // past the end, it stands for the last user line.
        if (number == 0 && (line.rfind("(0) ", 0) == 0 || line.rfind(shaderName + "(0) ", 0) == 0)) {
            number = long(listing.origins.size()) + 1;
            rest = line.substr(line.find(')') + 1);
        }
        if (number != 0) {
            long const count = long(listing.origins.size());
            // A place in generated code (or past the end) stands for the user's line before it.
            long index = std::min(number, count) - 1;
            while (index >= 0 && listing.origins[size_t(index)].user == 0)
                --index;
            if (index < 0)
                for (index = 0; index < count && listing.origins[size_t(index)].user == 0;)
                    ++index;
            if (index >= 0 && index < count) {
                CodeLine const& origin = listing.origins[size_t(index)];
                bool exact = index == number - 1 && origin.file >= 0;
                error.file = origin.file;
                error.line = origin.user;
                int shown = exact ? origin.line : origin.user;
                if (!exact && origin.include)
                    error.file = 0; // a user line: the file of the include is not the place
                error.message = listing.files[size_t(error.file)] + ":" + std::to_string(shown) + rest;
                if (exact && origin.include)
                    error.message += " (included at line " + std::to_string(origin.user) + ")";
            }
        }
        result.push_back(std::move(error));
    }
    return result;
}

// ------------------------------------------------------------------------------------------
// ShaderCode
// ------------------------------------------------------------------------------------------

ShaderCode::ShaderCode() = default;
ShaderCode::~ShaderCode() = default;

// A copy takes the code, never the programs: it compiles its own at its first use.
ShaderCode::ShaderCode(ShaderCode const& other)
    : text(other.text)
    , includes(other.includes)
    , samplers(other.samplers)
    , active(other.active)
    , autoCompile(other.autoCompile)
{
}

ShaderCode& ShaderCode::operator=(ShaderCode const& other)
{
    if (this == &other)
        return *this;
    shaders.clear();
    requested.clear();
    errors.clear();
    text = other.text;
    includes = other.includes;
    samplers = other.samplers;
    active = other.active;
    autoCompile = other.autoCompile;
    dirty = true;
    return *this;
}

void ShaderCode::set_sampler(int slot, Shared<Texture> const& texture)
{
    VEL_ASSERT(0 <= slot && slot < SAMPLERS);
    samplers[size_t(slot)] = texture;
    dirty = true;
}

bool ShaderCode::has_samplers() const
{
    for (Shared<Texture> const& s : samplers)
        if (s)
            return true;
    return false;
}

std::string ShaderCode::SamplerLines() const
{
    std::string out;
    for (int i = 0; i < SAMPLERS; ++i) {
        Texture* t = samplers[size_t(i)].get();
        if (!t)
            continue;
        int target = t->Target();
        std::string line = target == GL_TEXTURE_3D         ? "uniform sampler3D"
                           : target == GL_TEXTURE_CUBE_MAP ? "uniform samplerCube"
                                                            : "uniform sampler2D";
        line += " iTex" + std::to_string(i) + ";\n";
        out += line;
    }
    return out;
}

namespace {

char const* const LISTING_NAME = "@code"; // stands for the listing in the compiler's log
constexpr int MAX_RESUMES = 8;            // compiles past syntax errors, per build

// Compiles the listing as it is, unsimplified, so that log lines are listing lines; the
// messages of the three stages, mapped, and the listing lines of user text that the compiler
// found a syntax error in. True when the program linked.
bool CompileMapped(CodeListing const& listing, Shared<Shader>& shader, std::vector<CodeError>& found,
                   std::vector<size_t>& syntax)
{
    shader = Shared<Shader>(new Shader(listing.text(), {}, {}, LISTING_NAME));
    std::unordered_map<int, std::string> logs;
    bool const ok = shader->compile(logs);
    found.clear();
    syntax.clear();
    for (int stage : {0, 1, 2}) {
        std::vector<CodeError> mapped = MapCompileLog(logs[stage], stage, LISTING_NAME, listing);
        found.insert(found.end(), mapped.begin(), mapped.end());
        for (std::string const& line : SplitLines(logs[stage])) {
            long const number = LogPlace(line, LISTING_NAME);
            if (number == 0 || line.find("syntax error") == std::string::npos)
                continue;
            if (number >= 1 && number <= long(listing.lines.size()) && listing.origins[size_t(number - 1)].file >= 0)
                syntax.push_back(size_t(number - 1));
        }
    }
    return ok;
}

} // namespace

Shared<Shader> ShaderCode::build(std::string const& key, CodeListing listing)
{
    ExpandIncludes(listing);
    Shared<Shader> shader;
    std::vector<CodeError> found;
    std::vector<size_t> syntax;
    bool const ok = CompileMapped(listing, shader, found, syntax);
    errors = found;
    // A syntax error ends the compiler's work at its first fault. To list the faults after it
    // as well, that line is left out and the text compiled again, a few times; what is new is
    // added, with a note that it was found so.
    for (int round = 0; !ok && round < MAX_RESUMES; ++round) {
        auto line = std::find_if(syntax.begin(), syntax.end(), [&](size_t at) { return !listing.lines[at].empty(); });
        if (line == syntax.end())
            break;
        std::string const note = " (found with line " + std::to_string(listing.origins[*line].user) + " left out)";
        listing.lines[*line].clear();
        Shared<Shader> probe;
        CompileMapped(listing, probe, found, syntax);
        for (CodeError const& e : found) {
            bool known = e.line == 0 || std::any_of(errors.begin(), errors.end(), [&](CodeError const& k) {
                return k.stage == e.stage && k.file == e.file && k.line == e.line;
            });
            if (!known) {
                errors.push_back(e);
                errors.back().message += note;
            }
        }
    }
    std::unordered_map<int, std::string>& mapped = error_messages[key];
    mapped.clear();
    for (int stage : {0, 1, 2})
        mapped[stage].clear();
    for (CodeError const& e : errors)
        mapped[e.stage] += e.message + "\n";
    if (!ok)
        return {};
    return ShaderManager::instance().Share(shader);
}

} // namespace vel
