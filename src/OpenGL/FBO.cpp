#include "OpenGL/FBO.h"

#include "Core/Assert.h"

#include <algorithm>

namespace vel {

unsigned FBO::DRAW_ID = 0;
unsigned FBO::READ_ID = 0;

FBO::FBO(TDepthStencilType type, int width, int height, unsigned char samples)
    : DepthStencilType(type)
    , samples(samples)
    , width(std::max(width, 1))
    , height(std::max(height, 1))
{
    int const w = this->width, h = this->height;
    if (type == dsDepth)
        attachments.emplace_back(new Texture2D(w, h, GL_DEPTH_COMPONENT24, GL_DEPTH_COMPONENT, GL_FLOAT,
                                               GL_CLAMP_TO_EDGE, GL_NEAREST));
    else if (type == dsDepthStencil)
        attachments.emplace_back(new Texture2D(w, h, GL_DEPTH32F_STENCIL8, GL_DEPTH_STENCIL,
                                               GL_FLOAT_32_UNSIGNED_INT_24_8_REV, GL_CLAMP_TO_EDGE, GL_NEAREST));
}

FBO::FBO(FBO* other, bool depth_only)
    : DepthStencilType(other->DepthStencilType)
    , samples(other->samples)
    , width(other->width)
    , height(other->height)
{
    if (depth_only) {
        VEL_ASSERT(DepthStencilType != dsNone);
        attachments.push_back(other->attachments.front());
    } else {
        attachments = other->attachments;
    }
}

Shared<FBO> FBO::ColorsOf(FBO* other)
{
    Shared<FBO> colors(new FBO(dsNone, other->width, other->height, other->samples));
    for (size_t i = other->DepthStencilType != dsNone ? 1 : 0; i < other->attachments.size(); ++i)
        colors->attachments.push_back(other->attachments[i]);
    return colors;
}

FBO::~FBO()
{
    if (framebuffer != 0) {
        if (DRAW_ID == framebuffer)
            DRAW_ID = 0;
        if (READ_ID == framebuffer)
            READ_ID = 0;
        glDeleteFramebuffers(1, &framebuffer);
    }
}

Texture2D* FBO::DepthStencil() const
{
    return DepthStencilType != dsNone && !attachments.empty() ? attachments.front().get() : nullptr;
}

Texture2D* FBO::addColor(int internalFormat, int format, int type, int wrap, int filter)
{
    attachments.emplace_back(new Texture2D(width, height, internalFormat, format, type, wrap, filter));
    return attachments.back().get();
}

Texture2D* FBO::color(int n) const
{
    size_t index = size_t(n) + (DepthStencilType != dsNone ? 1 : 0);
    VEL_ASSERT(n >= 0 && index < attachments.size());
    return attachments[index].get();
}

bool FBO::stale() const
{
    if (attached.size() != attachments.size())
        return true;
    for (size_t i = 0; i < attachments.size(); ++i)
        if (!attachments[i]->Compiled || attachments[i]->nameStamp != attached[i])
            return true;
    return false;
}

bool FBO::compile()
{
    if (Compiled && !stale())
        return true;
    // Attached anew below: a sharer's resize may have remade an attachment.
    Compiled = false;
    for (Shared<Texture2D> const& i : attachments)
        VEL_ASSERT(i->compile());
    if (framebuffer == 0)
        glGenFramebuffers(1, &framebuffer);
    VEL_ASSERT(framebuffer != 0);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    size_t first = 0;
    if (DepthStencilType != dsNone) {
        GLenum point = DepthStencilType == dsDepth ? GL_DEPTH_ATTACHMENT : GL_DEPTH_STENCIL_ATTACHMENT;
        glFramebufferTexture2D(GL_FRAMEBUFFER, point, GL_TEXTURE_2D, attachments.front()->textureId, 0);
        first = 1;
    }
    for (size_t i = first; i < attachments.size(); ++i) {
        int point = GL_COLOR_ATTACHMENT0 + int(i - first);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GLenum(point), GL_TEXTURE_2D, attachments[i]->textureId, 0);
        attachments[i]->attachment = point;
    }
    attached.clear();
    for (Shared<Texture2D> const& i : attachments)
        attached.push_back(i->nameStamp);
    Compiled = glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
    // Give the caller's bindings back: compiling may happen while another FBO is in use.
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, DRAW_ID);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, READ_ID);
    VEL_ASSERT(Compiled);
    return Compiled;
}

bool FBO::enable(TFrameBufferType type)
{
    if (!compile())
        return false;
    switch (type) {
    case fbDraw:
        if (DRAW_ID != framebuffer) {
            glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffer);
            DRAW_ID = framebuffer;
        }
        break;
    case fbRead:
        if (READ_ID != framebuffer) {
            glBindFramebuffer(GL_READ_FRAMEBUFFER, framebuffer);
            READ_ID = framebuffer;
        }
        break;
    default:
        if (DRAW_ID != framebuffer || READ_ID != framebuffer) {
            glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
            DRAW_ID = READ_ID = framebuffer;
        }
        break;
    }
    return true;
}

void FBO::disable(int type)
{
    if (type == fbDraw || type == fbBoth) {
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
        DRAW_ID = 0;
    }
    if (type == fbRead || type == fbBoth) {
        glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
        READ_ID = 0;
    }
}

void FBO::clear()
{
    if (!Compiled)
        return;
    for (Shared<Texture2D> const& i : attachments)
        i->clear();
    if (DRAW_ID == framebuffer)
        disable(fbDraw);
    if (READ_ID == framebuffer)
        disable(fbRead);
    glDeleteFramebuffers(1, &framebuffer);
    framebuffer = 0;
    Compiled = false;
}

bool FBO::resize(int newWidth, int newHeight)
{
    newWidth = std::max(newWidth, 1);
    newHeight = std::max(newHeight, 1);
    // A shared attachment may have been resized through another FBO already.
    bool unchanged = newWidth == width && newHeight == height;
    for (Shared<Texture2D> const& i : attachments)
        unchanged = unchanged && i->width() == newWidth && i->height() == newHeight;
    if (unchanged)
        return false;
    clear();
    width = newWidth;
    height = newHeight;
    for (Shared<Texture2D> const& i : attachments)
        i->resize(width, height);
    return true;
}

} // namespace vel
