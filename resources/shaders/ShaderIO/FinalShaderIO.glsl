// Layers of the groups after the composite: iImage is the picture so far.
#include ":/shaders/ShaderIO/Uniforms.glsl"
uniform sampler2D iImage;
layout(location = 0) out vec4 oColor;
