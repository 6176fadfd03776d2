// The fragment stage of meshes (and primitives, clay, chains) in the G-buffer passes.
//   (none)       ids, component-patch-face and normal with flags: three draw buffers
//   RENDER_PBR   also rough-metal, colour-alpha, light-thickness: six draw buffers
//   RENDER_FAST  no normal: only oNormal.w, the flags, is meaningful (the list masks xyz)
// oNormal.w carries the bits of the flag word, bit 29 always set: a cleared texel is empty.
##FRAGMENT
uniform ivec4 ObjectItemsElement;
uniform vec2 RenderFlags; // float carriers of the flag words of front and back faces
flat in ivec3 vComponentPatchFace;
#ifndef RENDER_FAST
smooth in vec3 vNormal;
#endif
#ifdef RENDER_PBR
smooth in vec4 vColorAlpha;
smooth in vec4 vLightThick;
smooth in vec2 vRoughMetal;
#endif
layout(location = 0) out ivec4 oObjectItemsElement;
layout(location = 1) out ivec3 oComponentPatchFaces;
layout(location = 2) out vec4 oNormal;
#ifdef RENDER_PBR
layout(location = 3) out vec2 oRoughMetal;
layout(location = 4) out vec4 oColorAlpha;
layout(location = 5) out vec4 oLightThick;
#endif
void main()
{
    oObjectItemsElement = ObjectItemsElement;
    oComponentPatchFaces = vComponentPatchFace;
    float flags = gl_FrontFacing ? RenderFlags.x : RenderFlags.y;
#ifdef RENDER_FAST
    oNormal = vec4(0.0, 0.0, 0.0, flags);
#else
    vec3 n = normalize(vNormal);
    oNormal = vec4(gl_FrontFacing ? n : -n, flags);
#endif
#ifdef RENDER_PBR
    oRoughMetal = clamp(vRoughMetal, 0.0, 1.0);
    oColorAlpha = vColorAlpha;
    oLightThick = vLightThick;
#endif
}
