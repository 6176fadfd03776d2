#include "OpenGL/Shader.h"

#include "Core/Assert.h"
#include "OpenGL/LogMsg.h"
#include "OpenGL/ShaderIncludeManager.h"

#include <glad/gl.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <sstream>

namespace vel {

unsigned Shader::id = 0;
Shader* Shader::Current = nullptr;
int Shader::COUNT = 0;

Matrix4<double> Shader::ProjectionMatrix;
Matrix4<double> Shader::ProjectionMatrixInv;
Matrix4<double> Shader::ProjectionModelViewMatrix;
Matrix4<double> Shader::ProjectionModelViewMatrixInv;
Matrix4<double> Shader::ProjectionOffset;
Matrix4<double> Shader::ProjectionOffsetMatrix;
Matrix4<double> Shader::ProjectionOffsetModelViewMatrix;
Matrix34<double> Shader::ModelMatrix;
Matrix34<double> Shader::ModelViewMatrix;
Matrix34<double> Shader::ModelViewMatrixInv;
Matrix3<double> Shader::NormalMatrix;
Matrix3<double> Shader::NormalMatrixInv;
float Shader::ViewSize = 1.0f;
float Shader::Lens = 1.0f;
float Shader::PMVSign = 1.0f;

// ------------------------------------------------------------------------------------------
// Source format
// ------------------------------------------------------------------------------------------

namespace {

bool Contains(std::string const& line, char const* word)
{
    return line.find(word) != std::string::npos;
}

// The text between the first and the last double quote, or "" when there are not two.
std::string IncludePath(std::string const& line)
{
    size_t first = line.find('"');
    size_t last = line.rfind('"');
    if (first == std::string::npos || last <= first)
        return {};
    return line.substr(first + 1, last - first - 1);
}

// The name an `out` line of the vertex stage declares: behind the last blank, less the ';'.
std::string OutputName(std::string line)
{
    while (!line.empty() && (line.back() == ' ' || line.back() == '\t'))
        line.pop_back();
    size_t blank = line.find_last_of(" \t");
    if (blank == std::string::npos || line.size() - blank < 3)
        return {};
    return line.substr(blank + 1, line.size() - blank - 2);
}

// A stage as it is built: its text and the origin of each of its lines.
struct StageBuilder {
    std::string text;
    std::vector<Shader::Origin> lines;

    void add(std::string const& line, Shader::Origin origin)
    {
        text += line;
        text += '\n';
        lines.push_back(origin);
    }
};

bool IsVersionLine(std::string const& line)
{
    size_t first = line.find_first_not_of(" \t");
    return first != std::string::npos && line.compare(first, 8, "#version") == 0;
}

// The stage with its version line first ("#version 330 core" when it has none), then the
// defines, then the rest in order.
void Finish(StageBuilder& stage, std::string const& defines, std::string& text, std::vector<Shader::Origin>& lines)
{
    StageBuilder result;
    size_t version = stage.lines.size();
    std::istringstream body(stage.text);
    std::vector<std::string> bodyLines;
    for (std::string line; std::getline(body, line);) {
        if (version == stage.lines.size() && IsVersionLine(line))
            version = bodyLines.size();
        bodyLines.push_back(line);
    }
    if (version < bodyLines.size())
        result.add(bodyLines[version], stage.lines[version]);
    else
        result.add("#version 330 core", {-1, 0});
    std::istringstream defineLines(defines);
    for (std::string line; std::getline(defineLines, line);)
        result.add(line, {-1, 0});
    for (size_t i = 0; i < bodyLines.size(); ++i)
        if (i != version)
            result.add(bodyLines[i], stage.lines[i]);
    text = std::move(result.text);
    lines = std::move(result.lines);
}

} // namespace

std::string Shader::Defines(std::string const& list)
{
    std::string result;
    std::istringstream tokens(list);
    std::string token;
    while (tokens >> token)
        result += "#define " + token + "\n";
    return result;
}

Shader::Stages Shader::Parse(std::string const& text, std::string const& vertexDefines,
                             std::string const& fragmentDefines, std::string const& name)
{
    enum { None, Vertex, Fragment } stage = None;
    Stages result;
    result.files.push_back(name.empty() ? "source" : name);
    StageBuilder vertex, fragment;
    std::istringstream lines(text);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (Contains(line, "##VERTEX")) {
            stage = Vertex;
            continue;
        }
        if (Contains(line, "##FRAGMENT")) {
            stage = Fragment;
            continue;
        }
        if (stage == None)
            continue;
        StageBuilder& buffer = stage == Vertex ? vertex : fragment;
        std::string content;
        std::string path = IncludePath(line);
        if (Contains(line, "#include") && ShaderIncludeManager::instance().ReadInclude(path, content)) {
            int file = int(result.files.size());
            result.files.push_back(path);
            std::istringstream included(content + "\n");
            int includedNumber = 1;
            for (std::string includedLine; std::getline(included, includedLine); ++includedNumber)
                buffer.add(includedLine, {file, includedNumber});
            continue;
        }
        // A refused or missing include stays, for the GLSL compiler to reject.
        buffer.add(line, {0, number});
        if (stage == Vertex && line.compare(0, 4, "out ") == 0) {
            std::string output = OutputName(line);
            if (!output.empty())
                result.outputs.push_back(output);
        }
    }
    Finish(vertex, Defines(vertexDefines), result.vertex, result.vertexLines);
    if (!fragment.text.empty())
        Finish(fragment, Defines(fragmentDefines), result.fragment, result.fragmentLines);
    return result;
}

namespace {

// The place a GL log line starts with: "0:12(5): error" (Mesa) or "0(12) : error" (NVIDIA).
// `begin` and `end` delimit the line number; false when the line has no such place.
bool LogPlace(std::string const& line, size_t& begin, size_t& end)
{
    size_t at = line.find_first_not_of("0123456789");
    if (at == 0 || at == std::string::npos || (line[at] != ':' && line[at] != '('))
        return false;
    begin = at + 1;
    end = line.find_first_not_of("0123456789", begin);
    return end != std::string::npos && end > begin;
}

// The origin of the 1-based stage line `number`, or null.
Shader::Origin const* OriginOf(std::vector<Shader::Origin> const& lines, long number)
{
    return number >= 1 && number <= long(lines.size()) ? &lines[size_t(number - 1)] : nullptr;
}

std::string Place(std::vector<std::string> const& files, Shader::Origin const& origin)
{
    if (origin.file < 0)
        return "(inserted)";
    return files[size_t(origin.file)] + ":" + std::to_string(origin.line);
}

} // namespace

std::string Shader::Stages::mapLog(std::string const& log, std::vector<Origin> const& lines) const
{
    std::string out;
    std::istringstream logLines(log);
    for (std::string line; std::getline(logLines, line);) {
        size_t begin = 0, end = 0;
        Origin const* origin = nullptr;
        if (LogPlace(line, begin, end))
            origin = OriginOf(lines, std::strtol(line.c_str() + begin, nullptr, 10));
        if (origin && origin->file >= 0) {
            std::string const& file = files[size_t(origin->file)];
            bool nvidia = line[begin - 1] == '(';
            out += file + (nvidia ? "(" : ":") + std::to_string(origin->line) + line.substr(end);
        } else {
            out += line;
        }
        out += '\n';
    }
    return out;
}

std::string Shader::Stages::listing(std::string const& source, std::vector<Origin> const& lines,
                                    std::string const& log) const
{
    std::multimap<long, std::string> notes;
    std::istringstream logLines(log);
    for (std::string line; std::getline(logLines, line);) {
        if (line.empty())
            continue;
        size_t begin = 0, end = 0;
        long number = LogPlace(line, begin, end) ? std::strtol(line.c_str() + begin, nullptr, 10) : -1;
        notes.emplace(OriginOf(lines, number) ? number : -1, mapLog(line, lines));
    }
    std::string out;
    std::istringstream sourceLines(source);
    std::string line;
    for (long number = 1; std::getline(sourceLines, line); ++number) {
        Origin const* origin = OriginOf(lines, number);
        out += (origin ? Place(files, *origin) : std::string("?")) + "\t" + line + "\n";
        auto range = notes.equal_range(number);
        for (auto i = range.first; i != range.second; ++i)
            out += "  >>> " + i->second;
        notes.erase(range.first, range.second);
    }
    for (auto const& note : notes)
        out += note.second;
    return out;
}

// ------------------------------------------------------------------------------------------
// Life cycle
// ------------------------------------------------------------------------------------------

Shader::Shader(std::string text, std::string vertexDefines, std::string fragmentDefines, std::string name)
    : name(std::move(name))
    , text(std::move(text))
    , vertexDefines(std::move(vertexDefines))
    , fragmentDefines(std::move(fragmentDefines))
{
    ++COUNT;
}

Shader::~Shader()
{
    if (Current == this)
        Current = nullptr;
    if (program != 0) {
        for (unsigned shader : shaders) {
            glDetachShader(program, shader);
            glDeleteShader(shader);
        }
        // GL recycles names: a mirror that kept this id would skip binding a newcomer.
        if (id == program)
            id = 0;
        glDeleteProgram(program);
    }
    --COUNT;
}

bool Shader::compile()
{
    return compile(true);
}

bool Shader::compile(bool report)
{
    return build(report, nullptr);
}

bool Shader::compile(std::unordered_map<int, std::string>& errors)
{
    return build(false, &errors);
}

namespace {

std::string ShaderLog(unsigned shader)
{
    GLint length = 0;
    glGetShaderiv(shader, GL_INFO_LOG_LENGTH, &length);
    std::string log(size_t(std::max(length, 0)), '\0');
    if (length > 0)
        glGetShaderInfoLog(shader, length, nullptr, log.data());
    while (!log.empty() && log.back() == '\0')
        log.pop_back();
    return log;
}

std::string ProgramLog(unsigned program)
{
    GLint length = 0;
    glGetProgramiv(program, GL_INFO_LOG_LENGTH, &length);
    std::string log(size_t(std::max(length, 0)), '\0');
    if (length > 0)
        glGetProgramInfoLog(program, length, nullptr, log.data());
    while (!log.empty() && log.back() == '\0')
        log.pop_back();
    return log;
}

} // namespace

bool Shader::buildStage(unsigned type, Stages const& stages, bool report,
                        std::unordered_map<int, std::string>* errors)
{
    bool vertex = type == GL_VERTEX_SHADER;
    std::string const& source = vertex ? stages.vertex : stages.fragment;
    std::vector<Origin> const& lines = vertex ? stages.vertexLines : stages.fragmentLines;
    GLuint shader = glCreateShader(type);
    VEL_ASSERT(shader != 0);
    char const* sources[] = {source.c_str()};
    glShaderSource(shader, 1, sources, nullptr);
    glCompileShader(shader);
    GLint status = GL_FALSE;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &status);
    if (status == GL_TRUE) {
        glAttachShader(program, shader);
        shaders.push_back(shader);
        return true;
    }
    std::string log = ShaderLog(shader);
    if (report)
        logmsg("ERROR " + name + (vertex ? " vertex\n" : " fragment\n") + stages.listing(source, lines, log));
    if (errors)
        (*errors)[vertex ? 0 : 1] = stages.mapLog(log, lines);
    glDeleteShader(shader); // never attached: nothing else refers to it
    return false;
}

bool Shader::build(bool report, std::unordered_map<int, std::string>* errors)
{
    // A map the editor reuses must not show the logs of an earlier attempt.
    if (errors)
        for (int slot : {0, 1, 2})
            errors->erase(slot);
    if (Compiled)
        return true;
    // A user's text may come out of simplification empty (only comments): that is a failed
    // compile, never an end of the program.
    if (text.empty()) {
        if (errors)
            (*errors)[0] = "The shader source holds no code.";
        logmsg("ERROR Shader::compile " + name + ": the source holds no code");
        return false;
    }
    glGetError();
    // A program left from an earlier failed attempt is of no use: drop it with its objects.
    if (program != 0) {
        for (unsigned shader : shaders)
            glDeleteShader(shader);
        glDeleteProgram(program);
    }
    shaders.clear();
    program = glCreateProgram();
    VEL_ASSERT(program != 0);

    Stages stages = Parse(text, vertexDefines, fragmentDefines, name);
    bool failed = !buildStage(GL_VERTEX_SHADER, stages, report, errors);
    if (!stages.fragment.empty()) {
        failed = !buildStage(GL_FRAGMENT_SHADER, stages, report, errors) || failed;
    } else {
        std::vector<char const*> names;
        for (std::string const& output : stages.outputs)
            names.push_back(output.c_str());
        glTransformFeedbackVaryings(program, GLsizei(names.size()), names.data(), GL_SEPARATE_ATTRIBS);
    }
    if (failed)
        return false;

    glLinkProgram(program);
    GLint linked = GL_FALSE;
    glGetProgramiv(program, GL_LINK_STATUS, &linked);
    if (linked == GL_TRUE) {
        Compiled = glGetError() == GL_NO_ERROR;
        if (errors)
            (*errors)[2] = std::string();
    } else {
        std::string log = ProgramLog(program);
        if (errors)
            (*errors)[2] = log;
        if (!log.empty())
            log.pop_back();
        logmsg(name + " " + log);
    }
    if (!Compiled)
        logmsg("ERROR Shader::compile " + name);
    return Compiled;
}

bool Shader::enable()
{
    // Current is part of the test: after a resync it may be gone while id still names us.
    if (id != 0 && id == program && Current == this)
        return true;
    if (!compile())
        return false;
    if (Current)
        Current->learning = false;
    Current = this;
    id = program;
    glUseProgram(program);
    return true;
}

void Shader::disable()
{
    learning = false;
}

// ------------------------------------------------------------------------------------------
// Transforms
// ------------------------------------------------------------------------------------------

namespace {

// The transforms in the order of a saved record; `Visit` gets each as bytes.
template <class Visit>
void EachTransform(Visit visit)
{
    visit(&Shader::ProjectionMatrix, sizeof(Shader::ProjectionMatrix));
    visit(&Shader::ProjectionModelViewMatrix, sizeof(Shader::ProjectionModelViewMatrix));
    visit(&Shader::ProjectionMatrixInv, sizeof(Shader::ProjectionMatrixInv));
    visit(&Shader::ProjectionModelViewMatrixInv, sizeof(Shader::ProjectionModelViewMatrixInv));
    visit(&Shader::ProjectionOffsetMatrix, sizeof(Shader::ProjectionOffsetMatrix));
    visit(&Shader::ProjectionOffsetModelViewMatrix, sizeof(Shader::ProjectionOffsetModelViewMatrix));
    visit(&Shader::ModelMatrix, sizeof(Shader::ModelMatrix));
    visit(&Shader::ModelViewMatrix, sizeof(Shader::ModelViewMatrix));
    visit(&Shader::ModelViewMatrixInv, sizeof(Shader::ModelViewMatrixInv));
    visit(&Shader::NormalMatrix, sizeof(Shader::NormalMatrix));
    visit(&Shader::NormalMatrixInv, sizeof(Shader::NormalMatrixInv));
    visit(&Shader::Lens, sizeof(Shader::Lens));
    visit(&Shader::ViewSize, sizeof(Shader::ViewSize));
    visit(&Shader::PMVSign, sizeof(Shader::PMVSign));
}

size_t TransformBytes()
{
    size_t bytes = 0;
    EachTransform([&](void*, size_t size) { bytes += size; });
    return bytes;
}

} // namespace

void Shader::Push(std::vector<unsigned char>& buffer)
{
    EachTransform([&](void* value, size_t size) {
        unsigned char const* bytes = static_cast<unsigned char const*>(value);
        buffer.insert(buffer.end(), bytes, bytes + size);
    });
}

void Shader::Pop(std::vector<unsigned char>& buffer)
{
    size_t bytes = TransformBytes();
    VEL_ASSERT_MSG(buffer.size() >= bytes, "Shader::Pop without a matching Push");
    size_t at = buffer.size() - bytes;
    EachTransform([&](void* value, size_t size) {
        std::memcpy(value, buffer.data() + at, size);
        at += size;
    });
    buffer.resize(buffer.size() - bytes);
}

// ------------------------------------------------------------------------------------------
// Uniform cache
// ------------------------------------------------------------------------------------------

int Shader::getUniformLocation(std::string const& uniform)
{
    auto entry = uniforms.try_emplace(uniform, -1).first;
    if (learning)
        entry->second = glGetUniformLocation(program, uniform.c_str());
    return entry->second;
}

int Shader::Location(std::string const& uniform)
{
    VEL_ASSERT_MSG(Current, "a uniform is set with no shader enabled");
    return Current->getUniformLocation(uniform);
}

void Shader::setUniform(std::string const& uniform, int value)
{
    int location = Location(uniform);
    if (location >= 0)
        glUniform1i(location, value);
}

void Shader::setUniform(std::string const& uniform, unsigned value)
{
    int location = Location(uniform);
    if (location >= 0)
        glUniform1ui(location, value);
}

void Shader::setUniform(std::string const& uniform, float value)
{
    int location = Location(uniform);
    if (location >= 0)
        glUniform1f(location, value);
}

void Shader::setUniform(std::string const& uniform, float x, float y)
{
    int location = Location(uniform);
    if (location >= 0)
        glUniform2f(location, x, y);
}

void Shader::setUniform(std::string const& uniform, float x, float y, float z)
{
    int location = Location(uniform);
    if (location >= 0)
        glUniform3f(location, x, y, z);
}

void Shader::setUniform(std::string const& uniform, float x, float y, float z, float w)
{
    int location = Location(uniform);
    if (location >= 0)
        glUniform4f(location, x, y, z, w);
}

void Shader::setUniform(std::string const& uniform, int x, int y, int z, int w)
{
    int location = Location(uniform);
    if (location >= 0)
        glUniform4i(location, x, y, z, w);
}

void Shader::setUniform(std::string const& uniform, unsigned x, unsigned y, unsigned z, unsigned w)
{
    int location = Location(uniform);
    if (location >= 0)
        glUniform4ui(location, x, y, z, w);
}

void Shader::setUniform(std::string const& uniform, Vector2<float> const& v)
{
    setUniform(uniform, v.x, v.y);
}

void Shader::setUniform(std::string const& uniform, Vector3<float> const& v)
{
    setUniform(uniform, v.x, v.y, v.z);
}

void Shader::setUniform(std::string const& uniform, Vector4<float> const& v)
{
    setUniform(uniform, v.x, v.y, v.z, v.w);
}

void Shader::setUniform(std::string const& uniform, Matrix3<float> const& m)
{
    setUniformMatrix3(uniform, m.m);
}

void Shader::setUniform(std::string const& uniform, Matrix3<double> const& m)
{
    setUniform(uniform, Matrix3<float>(m));
}

void Shader::setUniform(std::string const& uniform, Matrix34<float> const& m)
{
    setUniformMatrix34(uniform, m.m);
}

void Shader::setUniform(std::string const& uniform, Matrix34<double> const& m)
{
    setUniform(uniform, Matrix34<float>(m));
}

void Shader::setUniform(std::string const& uniform, Matrix4<float> const& m)
{
    setUniformMatrix4(uniform, m.m);
}

void Shader::setUniform(std::string const& uniform, Matrix4<double> const& m)
{
    setUniform(uniform, Matrix4<float>(m));
}

void Shader::setUniform(std::string const& uniform, Pbr const& pbr)
{
    setUniform(uniform, pbr.w[0], pbr.w[1], pbr.w[2], pbr.w[3]);
}

void Shader::setUniformArray(std::string const& uniform, int components, float const* values, int count)
{
    VEL_ASSERT(components >= 1 && components <= 4);
    int location = Location(uniform);
    if (location < 0)
        return;
    switch (components) {
    case 1: glUniform1fv(location, count, values); break;
    case 2: glUniform2fv(location, count, values); break;
    case 3: glUniform3fv(location, count, values); break;
    default: glUniform4fv(location, count, values); break;
    }
}

void Shader::setUniformArray(std::string const& uniform, int components, int const* values, int count)
{
    VEL_ASSERT(components >= 1 && components <= 4);
    int location = Location(uniform);
    if (location < 0)
        return;
    switch (components) {
    case 1: glUniform1iv(location, count, values); break;
    case 2: glUniform2iv(location, count, values); break;
    case 3: glUniform3iv(location, count, values); break;
    default: glUniform4iv(location, count, values); break;
    }
}

void Shader::setUniformMatrix3(std::string const& uniform, float const* values, int count)
{
    int location = Location(uniform);
    if (location >= 0)
        glUniformMatrix3fv(location, count, GL_FALSE, values);
}

void Shader::setUniformMatrix34(std::string const& uniform, float const* values, int count)
{
    int location = Location(uniform);
    if (location >= 0)
        glUniformMatrix4x3fv(location, count, GL_FALSE, values);
}

void Shader::setUniformMatrix4(std::string const& uniform, float const* values, int count)
{
    int location = Location(uniform);
    if (location >= 0)
        glUniformMatrix4fv(location, count, GL_FALSE, values);
}

} // namespace vel
