#include "OpenGL/FBOTexture.h"

namespace vel {

FBOTexture::FBOTexture(Shared<Texture2D> const& texture)
    : FBO(dsNone, texture->width(), texture->height())
{
    attachments.push_back(texture);
}

} // namespace vel
