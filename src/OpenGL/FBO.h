// FBO: a framebuffer with its attachments, each a Texture2D.
//
// When the depth-stencil type is not dsNone, the first attachment is the depth (or
// depth-stencil) texture and DepthStencil() returns it; every other attachment is a colour
// target, GL_COLOR_ATTACHMENT0 + n in deque order. Owners push their colour targets after
// construction. Attachments are held by Shared, so two FBOs may share one (a new set of colour
// targets over the depth of another); a resize of either then resizes the shared texture.
// A resize deletes the shared texture's GL object, which the other framebuffer still names:
// each FBO remembers the GL texture it attached (Texture::nameStamp) and attaches anew at its
// next enable() when an attachment was remade or is not compiled, in whatever order the
// sharers are resized and enabled.
//
// Sizes below 1 are taken as 1: a minimised window or a tiny view keeps a complete target.
//
// Bindings go through the mirrors DRAW_ID and READ_ID, so enabling an FBO that is already
// bound costs no GL call.
#pragma once

#include "Memory/Shared.h"
#include "OpenGL/GLAtom.h"
#include "OpenGL/Texture2D.h"

#include <deque>
#include <vector>

namespace vel {

enum TDepthStencilType { dsNone = 0, dsDepth = 1, dsDepthStencil = 2 };
enum TFrameBufferType { fbDraw = 0, fbRead = 1, fbBoth = 2 };

class FBO : public GLAtom {
public:
    TDepthStencilType DepthStencilType = dsNone;
    unsigned char samples = 1; // given at construction, 1 everywhere
    int width = 0;
    int height = 0;
    bool Compiled = false;
    unsigned framebuffer = 0;
    std::deque<Shared<Texture2D>> attachments; // depth first when DepthStencilType != dsNone

    static unsigned DRAW_ID; // the framebuffer bound for drawing
    static unsigned READ_ID; // the framebuffer bound for reading

    FBO(TDepthStencilType type, int width, int height, unsigned char samples = 1);
    // Same size and depth type as `other`; shares its depth only, or all its attachments.
    FBO(FBO* other, bool depth_only);
    // A framebuffer over the colour targets of `other`, at the same attachment points (so that
    // a texture's `attachment` holds in both), without its depth: the target of the passes that
    // sample that depth, which GL leaves undefined while the depth is attached. Resize it after
    // `other`.
    static Shared<FBO> ColorsOf(FBO* other);
    FBO(FBO const&) = delete;
    FBO& operator=(FBO const&) = delete;
    ~FBO() override;

    bool compile() override;
    bool enable() override { return enable(fbBoth); }
    void disable() override { disable(fbBoth); }
    virtual bool enable(TFrameBufferType type);
    // New size for the framebuffer and every attachment; false when unchanged.
    virtual bool resize(int width, int height);

    bool enableDraw() { return enable(fbDraw); }
    bool enableRead() { return enable(fbRead); }
    // Binds 0 on the chosen target or targets, whatever the mirrors say.
    static void disable(int type);

    // Deletes the framebuffer and the attachments' GL textures; rebuilt at the next enable().
    void clear();
    Texture2D* DepthStencil() const;
    // Pushes a new colour target of the FBO's size and returns it.
    Texture2D* addColor(int internalFormat, int format, int type, int wrap = GL_CLAMP_TO_EDGE, int filter = GL_LINEAR);
    // The n-th colour target (after the depth attachment, if any).
    Texture2D* color(int n) const;

private:
    // True when an attachment is not compiled or is not the GL texture attached last.
    bool stale() const;
    std::vector<unsigned> attached; // Texture::nameStamp of each attachment when attached
};

} // namespace vel
