// FBOTexture: a plain render target built around an existing texture (no depth).
#pragma once

#include "OpenGL/FBO.h"

namespace vel {

class FBOTexture : public FBO {
public:
    explicit FBOTexture(Shared<Texture2D> const& texture);

    Texture2D* texture() const { return attachments.front().get(); }
};

} // namespace vel
