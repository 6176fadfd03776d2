// ContourSelection: selection feedback from the id targets alone, blended over the picture.
// A pixel is marked when its ids pass the masks: (ids & OIEMask) == OIEIds, and likewise
// for the component ids; a zero OIEMask marks nothing. The hovered object (HoverId, the id
// word without its selection bit; 0 for none) is marked too. Marked pixels with a
// neighbour of another object are the contour; inner ones take their tint.
// With CeilingPass the same pixels are only marked with Ceiling, drawn with a MIN blend
// before the tint: an over-exposed surface would otherwise stay white under it.
##VERTEX
#include ":/shaders/Include/FullScreen.glsl"
##FRAGMENT
uniform isampler2D ObjectItemsElement;
uniform isampler2D ComponentPatchFaces;
uniform ivec4 OIEMask;
uniform ivec4 OIEIds;
uniform ivec4 CPFMask;
uniform ivec4 CPFIds;
uniform int HoverId;
uniform vec4 Selection; // tint of selected pixels
uniform vec4 Hover;     // tint of hovered pixels
uniform vec4 Contour;
uniform bool CeilingPass;
uniform vec4 Ceiling;
out vec4 oColor;

const int ID_BITS = 0x7fffffff; // the id word without the selection bit

int objectAt(ivec2 p)
{
    return texelFetch(ObjectItemsElement, p, 0).x;
}

// The component ids are read only where the object ids pass: most pixels need one fetch.
bool isSelected(ivec4 oie, ivec2 p)
{
    if (oie.x == 0 || OIEMask == ivec4(0) || (oie & OIEMask) != OIEIds)
        return false;
    return CPFMask == ivec4(0) || (texelFetch(ComponentPatchFaces, p, 0) & CPFMask) == CPFIds;
}

void main()
{
    ivec2 p = ivec2(gl_FragCoord.xy);
    ivec4 oie = texelFetch(ObjectItemsElement, p, 0);
    bool selected = isSelected(oie, p);
    bool hovered = HoverId != 0 && (oie.x & ID_BITS) == HoverId;
    if (!selected && !hovered)
        discard;
    ivec2 size = textureSize(ObjectItemsElement, 0);
    int id = oie.x & ID_BITS;
    bool edge = false;
    ivec2 around[4] = ivec2[4](ivec2(1, 0), ivec2(-1, 0), ivec2(0, 1), ivec2(0, -1));
    for (int i = 0; i < 4; ++i) {
        ivec2 q = clamp(p + around[i], ivec2(0), size - 1);
        edge = edge || (objectAt(q) & ID_BITS) != id;
    }
    if (CeilingPass) {
        if (edge || !selected)
            discard;
        oColor = Ceiling;
        return;
    }
    oColor = edge ? Contour : (selected ? Selection : Hover);
}
