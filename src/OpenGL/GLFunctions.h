// The free functions every pass uses: a state reset and the two vertex-less draws.
//
// Full-screen passes have no vertex buffer: their vertex shaders build the quad from
// gl_VertexID (xy = (id >> 1, id & 1), position 2 xy - 1), with the one vertex array object
// that the GL widget binds at start-up bound all the time.
#pragma once

namespace vel {

class Shader;
class Texture2D;

// Depth test on, culling and stencil off (through the GLState mirrors), depth writes on with
// GL_LESS, no multisampling, no blending, seamless cube maps.
void GLInit();
// A full-screen quad: four vertices as a triangle strip, culling off.
void GLFill();
// One line: two vertices.
void GLSegment();
// `source` over the whole framebuffer bound for drawing, through the built-in "Copy"; the
// blending in force applies.
void GLCopy(Texture2D* source);
// `shader` over `source` into `target`'s attachment (GL_COLOR_ATTACHMENT0 when null); the
// framebuffer must already be bound for drawing. The sampler is the uniform "Image".
void GLSimpleFilter(Shader* shader, Texture2D* source, Texture2D* target);
// glDrawBuffer of `target`'s attachment, GL_COLOR_ATTACHMENT0 when null; the target must be
// attached to a framebuffer.
void BindDrawBuffer(Texture2D* target);

} // namespace vel
