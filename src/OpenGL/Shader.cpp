#include "OpenGL/Shader.h"

#include "Core/Assert.h"
#include "OpenGL/LogMsg.h"

#include <glad/gl.h>

#include <QFile>

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

bool ReadWholeFile(std::string const& path, std::string& content)
{
    if (path.empty())
        return false;
    QFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return false;
    content = file.readAll().toStdString();
    return true;
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

void AddVersion(std::string& stage)
{
    if (!Contains(stage, "#version"))
        stage.insert(0, "#version 330 core\n");
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
                             std::string const& fragmentDefines)
{
    enum { None, Vertex, Fragment } stage = None;
    Stages result;
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
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
        std::string& buffer = stage == Vertex ? result.vertex : result.fragment;
        if (Contains(line, "#include")) {
            std::string content;
            if (ReadWholeFile(IncludePath(line), content))
                buffer += content + "\n";
            else
                buffer += line + "\n"; // left for the GLSL compiler to reject
            continue;
        }
        buffer += line + "\n";
        if (stage == Vertex && line.compare(0, 4, "out ") == 0) {
            std::string output = OutputName(line);
            if (!output.empty())
                result.outputs.push_back(output);
        }
    }
    result.vertex.insert(0, Defines(vertexDefines));
    AddVersion(result.vertex);
    if (!result.fragment.empty()) {
        result.fragment.insert(0, Defines(fragmentDefines));
        AddVersion(result.fragment);
    }
    return result;
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

// The source line a log line speaks of: "0:12(5): error" (Mesa) or "0(12) : error" (NVIDIA).
int LogLineNumber(std::string const& line)
{
    size_t at = line.find_first_of(":(");
    if (at == std::string::npos || at == 0 || line.find_first_not_of("0123456789") != at)
        return -1;
    int number = 0;
    size_t i = at + 1;
    if (i >= line.size() || !isdigit(static_cast<unsigned char>(line[i])))
        return -1;
    for (; i < line.size() && isdigit(static_cast<unsigned char>(line[i])); ++i)
        number = number * 10 + (line[i] - '0');
    return number;
}

// The numbered source with each log line placed under the line it names.
std::string Listing(std::string const& source, std::string const& log)
{
    std::multimap<int, std::string> notes;
    std::istringstream logLines(log);
    std::string line;
    while (std::getline(logLines, line))
        if (!line.empty())
            notes.emplace(LogLineNumber(line), line);
    std::string out;
    std::istringstream sourceLines(source);
    for (int number = 1; std::getline(sourceLines, line); ++number) {
        out += std::to_string(number) + "\t" + line + "\n";
        auto range = notes.equal_range(number);
        for (auto i = range.first; i != range.second; ++i)
            out += "  >>> " + i->second + "\n";
        notes.erase(range.first, range.second);
    }
    for (auto const& note : notes)
        out += note.second + "\n";
    return out;
}

} // namespace

bool Shader::buildStage(unsigned type, std::string const& source, bool report,
                        std::unordered_map<int, std::string>* errors, int errorSlot)
{
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
        logmsg("ERROR " + name + (type == GL_VERTEX_SHADER ? " vertex\n" : " fragment\n") + Listing(source, log));
    if (errors)
        (*errors)[errorSlot] = log;
    glDeleteShader(shader); // never attached: nothing else refers to it
    return false;
}

bool Shader::build(bool report, std::unordered_map<int, std::string>* errors)
{
    if (Compiled)
        return true;
    VEL_ASSERT(!text.empty());
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

    Stages stages = Parse(text, vertexDefines, fragmentDefines);
    bool failed = !buildStage(GL_VERTEX_SHADER, stages.vertex, report, errors, 0);
    if (!stages.fragment.empty()) {
        failed = !buildStage(GL_FRAGMENT_SHADER, stages.fragment, report, errors, 1) || failed;
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
    if (id != 0 && id == program)
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
