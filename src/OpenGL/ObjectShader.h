// ObjectShader: the user's GLSL attached to one object, the base of every Tool.
//
// The user writes five fragments (Titles); the program around them is generated once for
// each kind of draw (ShaderCodeKey): with or without materials, normals, the fast mode, bent
// along a chain. use(key) compiles on demand and gives the program, or null, and the object
// is then drawn with the built-in program of its kind: when ObjectShadersActive is off, the
// shader is off, has no code, or never compiled. A failed compile keeps the last good program
// of the key. Errors are mapped to the fragment and line they come from (ShaderCode).
//
// Index (ObjectShader.cpp)
// - keys and class-wide state
// - program generation (GenerateCustomShaderFullCode)
// - compile and use
// - file record
//
// This header stays free of GL and Qt: the scene model includes it through Tool.
#pragma once

#include "OpenGL/ShaderCode.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace vel {

class IFile;
class OFile;
struct TRenderState;

// What selects a generated program.
struct ShaderCodeKey {
    int kind = 0;      // the render kind of the draw (TRenderState)
    int dataType = 0;  // the element's: 0 plain, 1 per-corner materials
    int style = 0;     // Rendering's composite style
    bool SKIN_SNAKE = false; // bent along a chain (where snakes exist)
    bool RENDER_FAST = false;
    bool USE_NORMAL = true;

    bool operator<(ShaderCodeKey const& o) const;
    bool operator==(ShaderCodeKey const& o) const { return !(*this < o) && !(o < *this); }
};

class ObjectShader : public ShaderCode {
public:
    // The five fragment titles, in the order of the editor and the files.
    static std::vector<std::string> const Titles;
    static bool ActiveAll; // "ObjectShadersActive": off draws every object with its built-in shader
    // What the last object shader file held, for the editor to apply.
    static std::map<std::string, std::string> Loaded;
    static std::vector<int> LoadedfIncludes;
    static std::vector<int> LoadedvIncludes;

    std::map<std::string, std::string> code; // title to fragment; missing means empty
    std::vector<int> vIncludes;              // common include indices of the vertex stage
    std::vector<int> fIncludes;              // common include indices of the fragment stage
    std::map<ShaderCodeKey, Shared<Shader>> programs; // compiled, by key
    std::vector<ShaderCodeKey> keys;         // asked for, in order (kept in files), at most 64
    std::set<ShaderCodeKey> tried;           // compiled since the code last changed
    std::vector<std::pair<int, std::string>> samplerPaths; // read from a file, opened at the next compile

    ObjectShader();
    ObjectShader(ObjectShader const& other);
    // The code, includes, samplers and flags; programs are made anew for the copy.
    ObjectShader& operator=(ObjectShader const& other);
    ~ObjectShader() override;

    // The key of a draw of an element with `dataType`; false for a draw that object shaders
    // don't take (depth, paint, vertex colour: only the G-buffer passes do).
    static bool KeyFor(TRenderState const& state, int dataType, ShaderCodeKey& key);
    // Some fragment holds code.
    bool hasCode() const;
    void setCode(std::string const& title, std::string const& text);

    // One stage of the program for `key`, as a listing whose user lines are those of the
    // fragments (listing files named by their titles).
    CodeListing GenerateCustomShaderFullCode(bool vertex, ShaderCodeKey const& key) const;
    // Both stages in the source format of Shader ("##VERTEX", "##FRAGMENT").
    CodeListing FullCode(ShaderCodeKey const& key) const;
    bool compile(ShaderCodeKey const& key);
    // Compiles when dirty or for a new key; the program, or null (draw with the built-in).
    Shader* use(ShaderCodeKey const& key);
    // The program use() gave for `key`, without compiling: null when none or when off.
    Shader* program(ShaderCodeKey const& key) const;

    // The part of a tool's file record (after the tool's own fields): int format (1); int
    // count of key words and the words, four for each key (kind, data type, style, bits of
    // SKIN_SNAKE 1, RENDER_FAST 2, USE_NORMAL 4); the five fragments by Titles, each a
    // string; bool active; the vertex, then the fragment include list, each an int count and
    // ints; int count of sampler references, each an int slot and a path string.
    // DataSize is exact.
    int DataSize() const;
    void DataWrite(OFile& out) const;
    // False on a record that cannot be this data (the stream is then somewhere inside it).
    bool DataRead(IFile& in);
};

} // namespace vel
