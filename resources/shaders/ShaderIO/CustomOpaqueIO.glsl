// Layers of the groups before the composite that draw into a buffer of their own.
#include ":/shaders/ShaderIO/Uniforms.glsl"
#ifdef RENDER_PBR
uniform sampler2D iRoughMetal;
uniform sampler2D iColorAlpha;
uniform sampler2D iLightThick;
#endif
layout(location = 0) out vec4 oColor;
