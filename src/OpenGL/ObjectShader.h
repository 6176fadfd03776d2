// ObjectShader: the user's GLSL attached to one object, the base of every Tool.
//
// Five fragments of code, kept by title, two include lists and the flags of the editor.
// The program generation and the compiled programs per key come with the shader code
// itself; so far this holds the state that travels with an object when it is cloned.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace vel {

class IFile;
class OFile;

class ObjectShader {
public:
    // The five fragment titles, in the order of the editor and the files.
    static std::vector<std::string> const Titles;
    static bool ActiveAll; // "ObjectShadersActive": off draws every object with its built-in shader
    // What the last object shader file held, for the editor to apply.
    static std::map<std::string, std::string> Loaded;
    static std::vector<int> LoadedfIncludes;
    static std::vector<int> LoadedvIncludes;

    std::map<std::string, std::string> code; // title to fragment; missing means empty
    std::vector<int> vIncludes;              // include indices of the vertex stage
    std::vector<int> fIncludes;              // include indices of the fragment stage
    bool active = false;                     // the object draws with its own program
    bool autoCompile = false;                // recompile on every edit
    bool dirty = true;                       // the code changed since the last compile

    ObjectShader() = default;
    ObjectShader(ObjectShader const&) = default;
    ObjectShader& operator=(ObjectShader const&) = default;
    virtual ~ObjectShader();

    // The part of a tool's file record (after the tool's own fields): int format (1); int
    // count and that many program keys (none are kept yet); the five fragments by Titles,
    // each a string; bool active; the vertex, then the fragment include list, each an int
    // count and ints; int count of sampler references, each an int unit and a path string.
    // DataSize is exact.
    int DataSize() const;
    void DataWrite(OFile& out) const;
    // False on a record that cannot be this data (the stream is then somewhere inside it).
    bool DataRead(IFile& in);
};

} // namespace vel
