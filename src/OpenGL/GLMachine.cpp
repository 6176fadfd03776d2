#include "OpenGL/GLMachine.h"

#include "OpenGL/Texture.h"

#include <glad/gl.h>

#include <vector>

namespace vel {

bool GLMachine::checkFeedback = false;
int GLMachine::feedbackLoops = 0;
std::string GLMachine::feedbackReport;

namespace {

// The GL names of the textures the bound draw framebuffer may write or test: depth, stencil,
// and the colour attachments that a draw buffer selects. Empty for the default framebuffer.
std::vector<unsigned> DrawnTextures()
{
    std::vector<unsigned> names;
    int framebuffer = 0;
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &framebuffer);
    if (framebuffer == 0)
        return names;
    auto add = [&](GLenum point) {
        int type = GL_NONE, name = 0;
        glGetFramebufferAttachmentParameteriv(GL_DRAW_FRAMEBUFFER, point, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE, &type);
        if (type != GL_TEXTURE)
            return;
        glGetFramebufferAttachmentParameteriv(GL_DRAW_FRAMEBUFFER, point, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME, &name);
        names.push_back(unsigned(name));
    };
    add(GL_DEPTH_ATTACHMENT);
    add(GL_STENCIL_ATTACHMENT);
    int buffers = 0;
    glGetIntegerv(GL_MAX_DRAW_BUFFERS, &buffers);
    for (int i = 0; i < buffers; ++i) {
        int point = GL_NONE;
        glGetIntegerv(GL_DRAW_BUFFER0 + GLenum(i), &point);
        if (point != GL_NONE)
            add(GLenum(point));
    }
    return names;
}

void CheckFeedback(std::deque<GLAtom*> const& atoms)
{
    std::vector<unsigned> const drawn = DrawnTextures();
    for (GLAtom* atom : atoms) {
        auto* texture = dynamic_cast<Texture*>(atom);
        if (!texture || texture->textureId == 0)
            continue;
        for (unsigned name : drawn)
            if (name == texture->textureId) {
                ++GLMachine::feedbackLoops;
                GLMachine::feedbackReport = "texture '" + texture->name + "' (GL name " + std::to_string(name) +
                                            ") is sampled while attached to the draw framebuffer";
            }
    }
}

} // namespace

GLMachine::GLMachine(std::initializer_list<GLAtom*> list)
    : atoms(list)
{
}

GLMachine::~GLMachine()
{
    if (enabled)
        disable();
}

bool GLMachine::enable()
{
    if (enabled)
        return true;
    for (GLAtom* atom : atoms)
        if (atom && !atom->compile())
            return false;
    for (size_t i = 0; i < atoms.size(); ++i) {
        if (!atoms[i] || atoms[i]->enable())
            continue;
        for (size_t j = i; j-- > 0;)
            if (atoms[j])
                atoms[j]->disable();
        return false;
    }
    enabled = true;
    if (checkFeedback)
        CheckFeedback(atoms);
    return true;
}

void GLMachine::disable()
{
    for (auto i = atoms.rbegin(); i != atoms.rend(); ++i)
        if (*i)
            (*i)->disable();
    enabled = false;
}

} // namespace vel
