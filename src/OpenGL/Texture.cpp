#include "OpenGL/Texture.h"

#include "Core/Assert.h"
#include "Math/HFloat.h"
#include "OpenGL/LogMsg.h"
#include "OpenGL/TextureManager.h"
#include "Scene/OFile.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vel {

int Texture::GLActiveTexture = 0;
Texture* Texture::UnitHolder[Texture::MaxUnits] = {};

GLenum BindingOf(int target)
{
    switch (target) {
    case GL_TEXTURE_3D:
        return GL_TEXTURE_BINDING_3D;
    case GL_TEXTURE_2D_ARRAY:
        return GL_TEXTURE_BINDING_2D_ARRAY;
    case GL_TEXTURE_CUBE_MAP:
        return GL_TEXTURE_BINDING_CUBE_MAP;
    default:
        return GL_TEXTURE_BINDING_2D;
    }
}

bool IsIntegerFormat(int format)
{
    switch (format) {
    case GL_RED_INTEGER:
    case GL_RG_INTEGER:
    case GL_RGB_INTEGER:
    case GL_BGR_INTEGER:
    case GL_RGBA_INTEGER:
    case GL_BGRA_INTEGER:
        return true;
    default:
        return false;
    }
}

int FormatChannels(int format)
{
    switch (format) {
    case GL_RED:
    case GL_RED_INTEGER:
    case GL_DEPTH_COMPONENT:
    case GL_DEPTH_STENCIL: // one packed value (TypeBytes gives its size)
        return 1;
    case GL_RG:
    case GL_RG_INTEGER:
        return 2;
    case GL_RGB:
    case GL_BGR:
    case GL_RGB_INTEGER:
        return 3;
    default:
        return 4;
    }
}

int TypeBytes(int type)
{
    switch (type) {
    case GL_UNSIGNED_BYTE:
    case GL_BYTE:
        return 1;
    case GL_UNSIGNED_SHORT:
    case GL_SHORT:
    case GL_HALF_FLOAT:
        return 2;
    case GL_FLOAT_32_UNSIGNED_INT_24_8_REV:
        return 8;
    default: // GL_FLOAT, GL_INT, GL_UNSIGNED_INT, GL_UNSIGNED_INT_24_8
        return 4;
    }
}

Texture::~Texture()
{
    if (bound && UnitHolder[unit] == this) {
        UnitHolder[unit] = nullptr;
        GLActiveTexture = HeldUnits();
    }
    if (textureId != 0)
        glDeleteTextures(1, &textureId);
}

int Texture::HeldUnits()
{
    int top = MaxUnits;
    while (top > 0 && !UnitHolder[top - 1])
        --top;
    return top;
}

void Texture::ResyncUnits()
{
    GLint active = GL_TEXTURE0;
    glGetIntegerv(GL_ACTIVE_TEXTURE, &active);
    for (int u = 0; u < MaxUnits; ++u) {
        Texture* holder = UnitHolder[u];
        if (!holder)
            continue;
        GLint name = 0;
        glActiveTexture(GLenum(GL_TEXTURE0 + u));
        glGetIntegerv(BindingOf(holder->Target()), &name);
        if (unsigned(name) != holder->textureId) {
            holder->bound = false;
            UnitHolder[u] = nullptr;
        }
    }
    glActiveTexture(GLenum(active));
    GLActiveTexture = HeldUnits();
}

bool Texture::enable()
{
    if (!compile())
        return false;
    if (bound)
        return true;
    unit = GLActiveTexture;
    VEL_ASSERT_MSG(unit >= 0 && unit < MaxUnits, "more textures enabled at once than there are units");
    glActiveTexture(GLenum(GL_TEXTURE0 + unit));
    glBindTexture(GLenum(Target()), textureId);
    UnitHolder[unit] = this;
    GLActiveTexture = unit + 1;
    bound = true;
    return true;
}

void Texture::disable()
{
    if (!bound)
        return;
    glActiveTexture(GLenum(GL_TEXTURE0 + unit));
    glBindTexture(GLenum(Target()), 0);
    if (UnitHolder[unit] == this)
        UnitHolder[unit] = nullptr;
    GLActiveTexture = HeldUnits();
    bound = false;
}

void Texture::copy(void const* pixels, int size)
{
    VEL_ASSERT(size >= 0);
    data.resize(size_t(size));
    if (size > 0)
        std::memcpy(data.data(), pixels, size_t(size));
    Compiled = false;
}

void Texture::clear()
{
    disable();
    if (textureId != 0) {
        glDeleteTextures(1, &textureId);
        textureId = 0;
    }
    Compiled = false;
    data.clear();
}

int Texture::activeTexture()
{
    if (!enable())
        return ~0;
    return unit;
}

unsigned Texture::id()
{
    return compile() ? textureId : 0;
}

// ---- scene reference

int Texture::DataSize() const
{
    // Header (id, size), then the path as a length and its bytes.
    return 8 + 4 + int(TextureManager::instance().ScenePath(this).size());
}

void Texture::DataWrite(OFile& file)
{
    file.writeValue<unsigned>(Target() == GL_TEXTURE_2D ? TEXTURE_2D_BLOCK : TEXTURE_OTHER_BLOCK);
    file.writeValue<unsigned>(unsigned(DataSize()));
    file.writeString(TextureManager::instance().ScenePath(this));
}

// ---- read-back

void Texture::getData(std::vector<unsigned char>& out)
{
    out.resize(size_t(byteCount()));
    getUnstructuredData(out.data());
}

void Texture::getUnstructuredData(void* out)
{
    bool wasBound = bound;
    VEL_ASSERT(enable());
    glActiveTexture(GLenum(GL_TEXTURE0 + unit));
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glGetTexImage(GLenum(Target()), 0, GLenum(format), GLenum(type), out);
    if (!wasBound)
        disable();
}

// ---- dimensions and formats

int Texture::width() const
{
    return dimensions.empty() ? 0 : dimensions[0];
}

int Texture::height() const
{
    return dimensions.size() < 2 ? 0 : dimensions[1];
}

int Texture::depth() const
{
    return dimensions.size() < 3 ? 0 : dimensions[2];
}

int Texture::bytesPerPixel() const
{
    switch (internalFormat) {
    case GL_R8: case GL_R8I: case GL_R8UI: case GL_STENCIL_INDEX8:
        return 1;
    case GL_RG8: case GL_R16: case GL_R16F: case GL_R16I: case GL_R16UI: case GL_RG8I: case GL_RG8UI:
    case GL_DEPTH_COMPONENT16:
        return 2;
    case GL_RGB8: case GL_SRGB8: case GL_RGB8I: case GL_RGB8UI: case GL_DEPTH_COMPONENT24:
        return 3;
    case GL_RGBA8: case GL_SRGB8_ALPHA8: case GL_RGBA8I: case GL_RGBA8UI: case GL_RG16: case GL_RG16F:
    case GL_RG16I: case GL_RG16UI: case GL_R32F: case GL_R32I: case GL_R32UI: case GL_RGB10_A2:
    case GL_R11F_G11F_B10F: case GL_DEPTH_COMPONENT32: case GL_DEPTH_COMPONENT32F: case GL_DEPTH24_STENCIL8:
        return 4;
    case GL_RGB16: case GL_RGB16F: case GL_RGB16I: case GL_RGB16UI:
        return 6;
    case GL_RGBA16: case GL_RGBA16F: case GL_RGBA16I: case GL_RGBA16UI: case GL_RG32F: case GL_RG32I:
    case GL_RG32UI: case GL_DEPTH32F_STENCIL8:
        return 8;
    case GL_RGB32F: case GL_RGB32I: case GL_RGB32UI:
        return 12;
    case GL_RGBA32F: case GL_RGBA32I: case GL_RGBA32UI:
        return 16;
    default:
        return 0;
    }
}

int Texture::pixelBytes() const
{
    return FormatChannels(format) * TypeBytes(type);
}

int Texture::texelCount() const
{
    return width() * std::max(height(), 1) * std::max(depth(), 1);
}

int Texture::byteCount() const
{
    return texelCount() * pixelBytes();
}

float Texture::dataMaxValue() const
{
    switch (type) {
    case GL_UNSIGNED_BYTE:
        return 255.0f;
    case GL_BYTE:
        return 127.0f;
    case GL_UNSIGNED_SHORT:
        return 65535.0f;
    case GL_SHORT:
        return 32767.0f;
    case GL_INT:
    case GL_UNSIGNED_INT:
        return 2147483648.0f;
    default:
        return 1.0f;
    }
}

// ---- CPU reads

float Texture::getFloat(Vector2<int> const& texel)
{
    return getFloat(texel.x + texel.y * width());
}

float Texture::getFloat(int index)
{
    size_t stride = size_t(pixelBytes());
    VEL_ASSERT_MSG(index >= 0 && (size_t(index) + 1) * stride <= data.size(), "texel outside the CPU pixels");
    unsigned char const* p = data.data() + size_t(index) * stride;
    switch (type) {
    case GL_UNSIGNED_BYTE:
        return float(*p);
    case GL_BYTE:
        return float(*reinterpret_cast<signed char const*>(p));
    case GL_UNSIGNED_SHORT: {
        unsigned short v;
        std::memcpy(&v, p, 2);
        return float(v);
    }
    case GL_SHORT: {
        short v;
        std::memcpy(&v, p, 2);
        return float(v);
    }
    case GL_HALF_FLOAT: {
        unsigned short v;
        std::memcpy(&v, p, 2);
        return HFloat::decompress(v);
    }
    case GL_INT: {
        int v;
        std::memcpy(&v, p, 4);
        return float(v);
    }
    case GL_UNSIGNED_INT: {
        unsigned v;
        std::memcpy(&v, p, 4);
        return float(v);
    }
    default: { // GL_FLOAT, and the depth part of packed depth-stencil
        float v;
        std::memcpy(&v, p, 4);
        return v;
    }
    }
}

float Texture::getInterpolatedFloat(Vector2<float> const& position)
{
    int w = width(), h = std::max(height(), 1);
    VEL_ASSERT(w > 0);
    float x = std::clamp(position.x, 0.0f, float(w - 1));
    float y = std::clamp(position.y, 0.0f, float(h - 1));
    int x0 = int(std::floor(x)), y0 = int(std::floor(y));
    int x1 = std::min(x0 + 1, w - 1), y1 = std::min(y0 + 1, h - 1);
    float fx = x - float(x0), fy = y - float(y0);
    float bottom = getFloat(x0 + y0 * w) * (1 - fx) + getFloat(x1 + y0 * w) * fx;
    float top = getFloat(x0 + y1 * w) * (1 - fx) + getFloat(x1 + y1 * w) * fx;
    return bottom * (1 - fy) + top * fy;
}

void Texture::dropData()
{
    if (!keepData)
        data.clear();
}

void Texture::describe(int internal, int pixelFormat, int pixelType, int wrapMode, int filterMode)
{
    internalFormat = internal;
    format = pixelFormat;
    type = pixelType;
    wrap = wrapMode;
    filter = filterMode;
}

unsigned Texture::beginUpload(int minFilter)
{
    glGetError();
    if (textureId == 0) {
        static unsigned stamps = 0;
        glGenTextures(1, &textureId);
        nameStamp = ++stamps;
    }
    GLenum target = GLenum(Target());
    unsigned previous = bindForUpload();
    // A linear filter leaves an integer texture incomplete: every fetch would read 0.
    bool integer = IsIntegerFormat(format);
    glTexParameteri(target, GL_TEXTURE_MIN_FILTER, integer ? GL_NEAREST : minFilter);
    glTexParameteri(target, GL_TEXTURE_MAG_FILTER, integer ? GL_NEAREST : filter);
    glTexParameteri(target, GL_TEXTURE_WRAP_S, wrap);
    glTexParameteri(target, GL_TEXTURE_WRAP_T, wrap);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1); // RGB rows of any width are tightly packed
    return previous;
}

unsigned Texture::bindForUpload()
{
    GLint previous = 0;
    glActiveTexture(GLenum(GL_TEXTURE0 + GLActiveTexture));
    glGetIntegerv(BindingOf(Target()), &previous);
    glBindTexture(GLenum(Target()), textureId);
    return unsigned(previous);
}

void Texture::endUpload(unsigned previous)
{
    glBindTexture(GLenum(Target()), previous);
}

bool Texture::finishCompile(char const* what)
{
    GLenum error = glGetError();
    Compiled = error == GL_NO_ERROR;
    if (!Compiled)
        logmsg(std::string("ERROR ") + what + " " + name);
    return Compiled;
}

} // namespace vel
