// The fragment stage of curve elements: the ids, a normal towards the viewer and the front
// flag word; with RENDER_PBR the object's material.
##FRAGMENT
uniform ivec4 ObjectItemsElement;
uniform vec2 RenderFlags;
uniform vec4 ObjectColorAlpha;
uniform vec4 ObjectLightThick;
uniform vec2 ObjectRoughMetal;
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
    oComponentPatchFaces = ivec3(0);
    // Lines have no facing: always the front word.
    oNormal = vec4(0.0, 0.0, 1.0, RenderFlags.x);
#ifdef RENDER_PBR
    oRoughMetal = clamp(ObjectRoughMetal * 0.5 + 0.5, 0.0, 1.0);
    oColorAlpha = ObjectColorAlpha;
    oLightThick = ObjectLightThick;
#endif
}
