// Texture: the common part of every GL texture kind (2D, 3D, 2D array, cube).
//
// Life cycle (see GLAtom): a texture is described by its formats, dimensions and optional CPU
// pixels; compile() uploads them and, unless `keepData` is set, drops the CPU copy. copy(),
// clear(), a resize or a new load make it *described* again, so the next enable() uploads anew.
//
// Texture units are handed out as a stack: enable() takes the unit in GLActiveTexture, one
// above every unit in use, and disable() gives it back. With GLMachine's reverse-order
// disabling, the units of one draw are 0, 1, 2 ... in the order the textures were listed.
// A texture disabled out of order frees its unit, but GLActiveTexture only comes down to one
// above the highest unit still held, so no held unit is ever handed out twice. A sampler
// uniform is set from activeTexture().
#pragma once

#include "Math/Vector2.h"
#include "OpenGL/GLAtom.h"

#include <glad/gl.h>

#include <string>
#include <vector>

namespace vel {

class OFile;

class Texture : public GLAtom {
public:
    // Scene blocks that reference a texture by path.
    static constexpr unsigned TEXTURE_2D_BLOCK = 0xc0000020u;
    static constexpr unsigned TEXTURE_OTHER_BLOCK = 0xc0000030u;

    bool loadFailed = false;             // set by a failed load
    std::string name;                    // the path or key
    bool Compiled = false;               // the GL texture holds the described content
    bool bound = false;                  // between enable() and disable()
    bool keepData = false;               // keep the CPU pixels after upload
    bool mipmaps = false;
    unsigned textureId = 0;              // GL name; may outlive Compiled (re-specified on compile)
    int unit = 0;                        // texture unit, given at enable()
    int internalFormat = GL_RGBA8;
    int format = GL_RGBA;                // pixel format of the CPU pixels and of read-back
    int type = GL_UNSIGNED_BYTE;         // pixel type of the CPU pixels and of read-back
    int wrap = GL_CLAMP_TO_EDGE;
    int filter = GL_LINEAR;
    int attachment = -1;                 // GL_COLOR_ATTACHMENT0 + n once an FBO attaches it
    std::vector<unsigned char> data;     // CPU pixels, rows bottom first; size() is the write position
    std::vector<int> dimensions;         // width, height[, depth]
    // A new number whenever a new GL name is made: GL recycles names, so a holder of the
    // texture (an FBO attachment) tells by this, not by the name, that its object is gone.
    unsigned nameStamp = 0;

    static int GLActiveTexture; // the next free texture unit
    static constexpr int MaxUnits = 64;
    static Texture* UnitHolder[MaxUnits]; // the texture enable() bound at each unit, or null

    // One above the highest unit held (0 when none): what GLActiveTexture comes down to.
    static int HeldUnits();
    // Reads GL's binding of every held unit back: a texture whose unit foreign code rebound
    // is no longer bound, and its unit is free. GL state is left as it was.
    static void ResyncUnits();

    Texture() = default;
    Texture(Texture const&) = delete;
    Texture& operator=(Texture const&) = delete;
    ~Texture() override;

    bool enable() override;
    void disable() override;

    virtual int Target() const = 0;
    // The CPU pixels become exactly `size` bytes of `pixels`; uploaded at the next enable().
    virtual void copy(void const* pixels, int size);
    // Unbinds, deletes the GL texture, drops the CPU pixels.
    virtual void clear();
    // The unit after enabling, ~0 when the texture can't be enabled.
    virtual int activeTexture();
    // The GL name after compiling, 0 when compiling fails.
    virtual unsigned id();
    virtual bool load(std::string const& path) = 0;
    // Bytes of the scene block that references this texture by path.
    virtual int DataSize() const;
    virtual void DataWrite(OFile& file);
    // Level 0 read back from GL in the texture's own format and type.
    virtual void getData(std::vector<unsigned char>& out);
    virtual void getUnstructuredData(void* out);
    virtual int width() const;  // 0 without dimensions
    virtual int height() const; // 0 with fewer than two dimensions
    virtual int depth() const;  // 0 with fewer than three dimensions
    // Bytes of one texel in the internal format; 0 for a format not known here.
    virtual int bytesPerPixel() const;
    // Bytes of level 0 in the format and type of `data` and read-back.
    virtual int byteCount() const;
    // The value that stands for 1.0 in the pixel type (1 for floats).
    virtual float dataMaxValue() const;
    // The first channel of a texel of the CPU pixels, in the units of the pixel type.
    virtual float getFloat(Vector2<int> const& texel);
    virtual float getFloat(int index);
    // Bilinear in texel units (texel centres at integers), coordinates clamped to the image.
    virtual float getInterpolatedFloat(Vector2<float> const& position);

    // Bytes of one texel of `data`: the channels of `format` times the size of `type`.
    int pixelBytes() const;
    // Texels of level 0 (depth counted when present).
    int texelCount() const;
    // Drops the CPU pixels unless they are to be kept; capacity stays for the next copy.
    void dropData();

protected:
    // Sets the five format fields at once.
    void describe(int internalFormat, int format, int type, int wrap, int filter);
    // Start of every upload: clears the GL error state, makes the GL name if there is none,
    // binds it at the next free unit (so that no bound texture is disturbed), and sets the
    // filters (`minFilter` for minification; nearest for an integer format, which can't be
    // filtered), the S and T wrap and tight unpacking. Returns what was bound at that unit.
    unsigned beginUpload(int minFilter);
    // Binds the GL name at the next free unit, for an upload; returns what was bound there.
    unsigned bindForUpload();
    // End of an upload: gives the unit back its binding from before, ours or not.
    void endUpload(unsigned previous);
    // After compile: Compiled from glGetError, and the message on failure.
    bool finishCompile(char const* what);
};

// The glGet name of the binding of a texture target (GL_TEXTURE_2D: GL_TEXTURE_BINDING_2D).
GLenum BindingOf(int target);
// True for the pixel formats of integer textures (GL_RGBA_INTEGER ...).
bool IsIntegerFormat(int format);
// Channels of a pixel format (GL_RGB: 3), and bytes of a pixel type (GL_FLOAT: 4).
int FormatChannels(int format);
int TypeBytes(int type);

} // namespace vel
