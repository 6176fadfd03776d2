// Layers of the groups after the composite that draw into a buffer of their own.
#include ":/shaders/ShaderIO/Uniforms.glsl"
uniform sampler2D iImage;
layout(location = 0) out vec4 oColor;
