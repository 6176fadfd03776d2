// Shader: a GLSL program in the system's one source format.
//
// Index
// - source format
// - the uniform cache
// - class-wide state: the program in use and the frame's transforms
//
// Source format. One text holds both stages: a line containing "##VERTEX" starts the vertex
// stage, one containing "##FRAGMENT" the fragment stage; text ahead of the first marker is
// ignored. A line containing `#include "path"` is replaced by the whole file (":/" resources
// and the include folders only, see ShaderIncludeManager; one level only, an include inside
// an included file stays as it is). A stage begins with its own "#version" line, moved to the
// front, or "#version 330 core"; the defines, bare macro names written as "#define NAME",
// follow it (GLSL wants the version first). A line map keeps where each line came from, so
// that compile logs name the file and line of the user's text or of the include. A text without a
// fragment stage is a transform-feedback program: the vertex stage's lines that begin with
// exactly "out " name its outputs, captured in line order into separate buffers.
//
// Uniform cache. Every uniform write goes by name through the cache of Shader::Current. While
// a shader is *learning* (from creation until its first disable(), or until another shader
// becomes current) the location is asked of GL and stored; afterwards the stored location is
// used, so a steady frame asks GL nothing. A name first set after the first use keeps
// location -1 and is ignored for the life of the shader: passes set all their uniforms at
// every use.
//
// Matrices are uploaded as stored (row-major, row-vector convention, p' = p M) without
// transposition: GLSL then sees the transposed matrix, so a shader writes `M * v` for p M.
// Matrix34 goes to a mat4x3.
#pragma once

#include "Math/Matrix4.h"
#include "Math/Pbr.h"
#include "Math/Vector2.h"
#include "OpenGL/GLAtom.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace vel {

class Shader : public GLAtom {
public:
    // ---- source format
    // Where a line of a stage source comes from: line `line` (from 1) of `Stages::files[file]`,
    // or, with `file` -1, a line the parse inserted ("#version", a define).
    struct Origin {
        int file;
        int line;
    };
    struct Stages {
        std::string vertex;               // complete vertex source: "#version", defines, text
        std::string fragment;             // empty for a transform-feedback program
        std::vector<std::string> outputs; // transform-feedback varyings, in line order
        std::vector<std::string> files;   // the shader's own text (its name), then each include
        std::vector<Origin> vertexLines;  // the origin of each line of `vertex`
        std::vector<Origin> fragmentLines;

        // Each "0:12(5)" (Mesa) or "0(12)" (NVIDIA) place of a GL info log of a stage written
        // as the file and line it names, e.g. "Math.glsl:3(5)".
        std::string mapLog(std::string const& log, std::vector<Origin> const& lines) const;
        // The stage's lines, each behind its place, with each mapped log note right under
        // the line it speaks of; notes without a line come last.
        std::string listing(std::string const& source, std::vector<Origin> const& lines,
                            std::string const& log) const;
    };

    // The stage sources of `text` as compile() hands them to GL; makes no GL call. `name`
    // stands for the text itself in the line map.
    static Stages Parse(std::string const& text, std::string const& vertexDefines,
                        std::string const& fragmentDefines, std::string const& name = {});
    // "#define TOKEN\n" for each blank-separated token of `list`.
    static std::string Defines(std::string const& list);

    // ---- fields
    std::unordered_map<std::string, int> uniforms; // uniform cache: name -> location, -1 unknown
    std::string name;                              // for messages only
    std::string text;                              // the source (simplified by ShaderManager)
    std::string vertexDefines;                     // blank-separated macro names
    std::string fragmentDefines;                   // blank-separated macro names
    std::vector<unsigned> shaders;                 // shader objects attached to `program`
    unsigned program = 0;                          // 0 until compiled
    bool Compiled = false;
    bool learning = true; // uniform locations are still being learned

    // ---- class-wide state
    static unsigned id;       // the program in use, 0 for none
    static Shader* Current;   // the Shader in use, owner of the uniform cache that writes go to
    static int COUNT;         // live instances; 0 at close

    // The frame's current transforms, set by the frame pipeline and read by element drawing.
    static Matrix4<double> ProjectionMatrix;
    static Matrix4<double> ProjectionMatrixInv;
    static Matrix4<double> ProjectionModelViewMatrix;
    static Matrix4<double> ProjectionModelViewMatrixInv;
    static Matrix4<double> ProjectionOffset; // not saved by Push
    static Matrix4<double> ProjectionOffsetMatrix;
    static Matrix4<double> ProjectionOffsetModelViewMatrix;
    static Matrix34<double> ModelMatrix;
    static Matrix34<double> ModelViewMatrix;
    static Matrix34<double> ModelViewMatrixInv;
    static Matrix3<double> NormalMatrix;
    static Matrix3<double> NormalMatrixInv;
    static float ViewSize;
    static float Lens;
    static float PMVSign;

    // Appends the transforms (all but ProjectionOffset) to `buffer`, so that a nested render
    // (a shadow map, a thumbnail) can set its own and Pop the frame's back.
    static void Push(std::vector<unsigned char>& buffer);
    // Takes the record Push appended last off the end of `buffer` and restores it.
    static void Pop(std::vector<unsigned char>& buffer);

    Shader(std::string text, std::string vertexDefines = {}, std::string fragmentDefines = {},
           std::string name = {});
    Shader(Shader const&) = delete;
    Shader& operator=(Shader const&) = delete;
    ~Shader() override;

    bool compile() override;
    // glUseProgram unless this program is already in use; false when it does not compile.
    bool enable() override;
    // Ends the learning of uniform locations; the program stays in use.
    void disable() override;
    // `report` adds the stage info logs, beside the source lines, to logmsg.
    virtual bool compile(bool report);
    // For the shader editors: errors[0] vertex log, errors[1] fragment log, each place mapped to
    // its file and line, errors[2] link log ("" after a successful link). Earlier entries of
    // the three slots are dropped first. A failed stage skips linking.
    virtual bool compile(std::unordered_map<int, std::string>& errors);

    // The cached location of `uniform`; asks GL while learning.
    int getUniformLocation(std::string const& uniform);

    // ---- uniform writes, through Shader::Current (asserted)
    static void setUniform(std::string const& uniform, int value);
    static void setUniform(std::string const& uniform, unsigned value);
    static void setUniform(std::string const& uniform, float value);
    static void setUniform(std::string const& uniform, float x, float y);
    static void setUniform(std::string const& uniform, float x, float y, float z);
    static void setUniform(std::string const& uniform, float x, float y, float z, float w);
    static void setUniform(std::string const& uniform, int x, int y, int z, int w);
    static void setUniform(std::string const& uniform, unsigned x, unsigned y, unsigned z, unsigned w);
    static void setUniform(std::string const& uniform, Vector2<float> const& v);
    static void setUniform(std::string const& uniform, Vector3<float> const& v);
    static void setUniform(std::string const& uniform, Vector4<float> const& v);
    static void setUniform(std::string const& uniform, Matrix3<float> const& m);
    static void setUniform(std::string const& uniform, Matrix3<double> const& m);
    static void setUniform(std::string const& uniform, Matrix34<float> const& m);
    static void setUniform(std::string const& uniform, Matrix34<double> const& m);
    static void setUniform(std::string const& uniform, Matrix4<float> const& m);
    static void setUniform(std::string const& uniform, Matrix4<double> const& m);
    // A packed material as its uvec4.
    static void setUniform(std::string const& uniform, Pbr const& pbr);
    // Arrays: `count` elements of 1, 2, 3 or 4 components.
    static void setUniformArray(std::string const& uniform, int components, float const* values, int count);
    static void setUniformArray(std::string const& uniform, int components, int const* values, int count);
    // `count` row-major matrices of 3x3, 4x3 (Matrix34) or 4x4 floats.
    static void setUniformMatrix3(std::string const& uniform, float const* values, int count = 1);
    static void setUniformMatrix34(std::string const& uniform, float const* values, int count = 1);
    static void setUniformMatrix4(std::string const& uniform, float const* values, int count = 1);

private:
    // The one build path of both compile() forms; `errors` may be null.
    bool build(bool report, std::unordered_map<int, std::string>* errors);
    // Compiles one stage; attaches it on success. False on failure.
    bool buildStage(unsigned type, Stages const& stages, bool report,
                    std::unordered_map<int, std::string>* errors);
    // Location for a write, or -1 when the name is unknown to the current program.
    static int Location(std::string const& uniform);
};

} // namespace vel
