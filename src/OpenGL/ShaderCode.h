// ShaderCode: user GLSL, the common part of shader layers and object shaders.
//
// Index (ShaderCode.cpp)
// - listings: generated code with the origin of every line
// - SimplifyText, ExpandIncludes, IncludesText
// - compiling and mapping the compiler's log back to the user's lines
// - ShaderCode itself
//
// A program is assembled as a CodeListing: generated lines (headers, declarations, the fixed
// vertex stage) carry no user origin, the user's lines carry their number, and the lines an
// include brings in carry the include's file and line plus the user line that asked for it.
// The compiler's log is then rewritten line by line through that table, so every message
// names a user line: its own, the line of the #include that brought the faulty text in, or,
// for a fault the compiler reports in generated code (a missing brace found at the end of
// the text), the last user line before it. Every message of the log is kept, not only the
// first.
//
// User GLSL that never ends (an endless loop in a fragment shader) cannot be stopped from
// here: GL has no way to abort a draw. On llvmpipe the frame's draw call, and with it the
// application, hangs until the loop ends; on hardware drivers the kernel's watchdog resets
// the context after a few seconds and the application sees a lost context. Shader layers and
// object shaders are the user's own code and run with the user's trust, like a script.
#pragma once

#include "Memory/Shared.h"

#include <array>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace vel {

class Shader;
class Texture;

// Where one line of a listing comes from.
struct CodeLine {
    int file = -1; // index into CodeListing::files: 0 the user's text; -1 generated
    int line = 0;  // 1-based line in that file
    int user = 0;  // the user's line it stands for (itself, or the #include that brought it); 0 none
    bool include = false; // brought in by an #include
};

// One message of the compiler, placed in the user's text.
struct CodeError {
    int stage = 1;       // 0 vertex, 1 fragment, 2 link
    int file = 0;        // index into the listing's files: the user's text, or an include
    int line = 0;        // the user's line (CodeLine::user), 0 when none is known
    std::string message; // the whole mapped message, e.g. "Fragment_Shader:7(3): error: ..."
};

struct CodeListing {
    std::vector<std::string> files{"user"}; // names of the user's texts (from 0) and of the includes
    std::vector<std::string> lines;
    std::vector<CodeLine> origins; // one for each line

    // Each line of `text` as generated code.
    void generated(std::string const& text);
    // Each line of `text` as lines 1.. of the user's text `file`, comments stripped.
    void user(std::string const& text, int file = 0);
    std::string text() const;
};

// Comments removed, trailing blanks removed, the line count kept: a line stays where it was.
std::string SimplifyText(std::string const& text);

// Replaces each line holding `#include "name"` by the text of the name (ShaderIncludeManager,
// "?Common n" for a common include), until none is left. A name is expanded once per listing:
// a later include of it yields an empty line. An include whose text can't be found becomes an
// #error line at the same place, and its name is appended to `missing` when given.
void ExpandIncludes(CodeListing& listing, std::vector<std::string>* missing = nullptr);

// `#include "name"` lines for a list of names.
std::string IncludesText(std::vector<std::string> const& names);

// Each "<shader name>:N" place of a mapped log (Shader::compile(errors)) rewritten as the
// user's file and line of listing line N.
std::vector<CodeError> MapCompileLog(std::string const& log, int stage, std::string const& shaderName,
                                     CodeListing const& listing);

class ShaderCode {
public:
    static constexpr int SAMPLERS = 8; // iTex0 to iTex7
    // The compile logs of every user shader by its key: stage 0 vertex, 1 fragment, 2 link,
    // each message mapped to the user's file and line.
    static std::unordered_map<std::string, std::unordered_map<int, std::string>> error_messages;
    // Pointer rows follow the mouse only while a button is held (1) or always (0); kept in
    // scene files with the last position, normalised to the view.
    static int mouse_update;
    static float mouse_normalized[2];

    std::unordered_map<int, Shared<Shader>> shaders; // render style -> program
    std::set<int> requested;                         // styles for which a compile was asked
    std::string text;                                // the editable code
    std::vector<std::string> includes;               // include names (paths or "?Common n")
    std::array<Shared<Texture>, SAMPLERS> samplers;  // iTex0 to iTex7
    std::vector<CodeError> errors;                   // of the last compile, for the editor
    bool active = true;
    bool autoCompile = true; // an edit compiles at the next use
    bool dirty = true;       // the code changed since the last compile

    ShaderCode();
    ShaderCode(ShaderCode const& other);
    ShaderCode& operator=(ShaderCode const& other);
    virtual ~ShaderCode();

    virtual void set_sampler(int slot, Shared<Texture> const& texture);
    bool has_samplers() const;
    // "uniform sampler2D iTex0;\n" (sampler3D, samplerCube by the texture's kind) for each
    // slot in use.
    std::string SamplerLines() const;

protected:
    // Expands the includes of `listing`, compiles it (vertex and fragment stage in the source
    // format of Shader) and records the mapped logs under `key` and in `errors`. The program,
    // shared through the ShaderManager when the same code was compiled before, or null.
    Shared<Shader> build(std::string const& key, CodeListing listing);
};

} // namespace vel
