// Composit: what the composites share: the pixel's render flags (the w of the G-buffer's
// normal target "Flags"), its unit view normal ("Normal"), and the light of the lit styles.
// Include after RenderFlags.
uniform sampler2D Flags;
uniform sampler2D Normal;
uniform vec3 LightDirection; // towards the light, in view space, unit length
uniform float Ambient;       // the light floor
out vec4 oColor;

int PixelFlags()
{
    return RenderFlagsFromFloat(texelFetch(Flags, ivec2(gl_FragCoord.xy), 0).w);
}

vec3 PixelNormal()
{
    return texelFetch(Normal, ivec2(gl_FragCoord.xy), 0).xyz;
}

// Nothing was drawn at the pixel.
bool IsEmpty(int flags)
{
    return !HasRenderFlag(flags, FLAG_NON_EMPTY);
}

bool IsBack(int flags)
{
    return HasRenderFlag(flags, FLAG_FLIPPED);
}

// Diffuse light from the camera's side: back faces are lit as seen.
float Lighting(vec3 n)
{
    return Ambient + (1.0 - Ambient) * abs(dot(n, LightDirection));
}

// The front-face passes: true for a front face to colour; otherwise the pixel gets
// `background` where nothing was drawn, and a back face is left for the back-face pass.
bool FrontFace(vec4 background)
{
    int flags = PixelFlags();
    if (IsEmpty(flags)) {
        oColor = background;
        return false;
    }
    if (IsBack(flags))
        discard;
    return true;
}

// The back-face passes: true for a back face; every other pixel stays as it was.
bool BackFace()
{
    int flags = PixelFlags();
    if (IsEmpty(flags) || !IsBack(flags))
        discard;
    return true;
}

// The material styles: "Color" holds the albedo, or the background where nothing was drawn,
// which the opaque composite keeps and the transparent one ("Opaque" false) makes empty, so
// that the mix with the opaque picture leaves it alone. True for a drawn pixel.
uniform sampler2D Color;
uniform bool Opaque;
bool MaterialPixel(int flags, out vec4 albedo)
{
    albedo = texelFetch(Color, ivec2(gl_FragCoord.xy), 0);
    if (!IsEmpty(flags))
        return true;
    oColor = Opaque ? albedo : vec4(0.0);
    return false;
}
