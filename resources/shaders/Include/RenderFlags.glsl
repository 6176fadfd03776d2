// RenderFlags: the bits of the render flag word, as the program writes them (uniform
// "RenderFlags", carried in float bits, and the alpha channel of the normal target).
// The values must agree with the C++ side bit for bit; a test checks them.
#ifndef VEL_RENDER_FLAGS
#define VEL_RENDER_FLAGS

#define FLAG_LIT          (1 << 0)
#define FLAG_COLOR_GLOWS  (1 << 1)
#define FLAG_CONTOURS     (1 << 2)
#define FLAG_FEATURES     (1 << 3)
#define FLAG_FLIPPED      (1 << 4)
#define FLAG_LUMINARY     (1 << 5)
// Set on every written pixel; keeps the integer from reading as a denormal float.
#define FLAG_NON_EMPTY    (1 << 29)

// The object type: three bits at 26..28.
#define FLAGS_OBJ_TYPE_SHIFT 26
#define FLAGS_OBJ_TYPE    (7 << FLAGS_OBJ_TYPE_SHIFT)
#define VALUE_CURVE       1
#define VALUE_BONE        2
#define VALUE_RB_STATIC   3
#define VALUE_RB_DYNAMIC  4

// The flag word carried in the bits of a float (uniform "RenderFlags" is a vec2 of them).
int RenderFlagsFromFloat(float carrier)
{
    return floatBitsToInt(carrier);
}

bool HasRenderFlag(int flags, int flag)
{
    return (flags & flag) != 0;
}

// One of the VALUE_ numbers, 0 for an ordinary object.
int RenderObjectType(int flags)
{
    return (flags & FLAGS_OBJ_TYPE) >> FLAGS_OBJ_TYPE_SHIFT;
}

#endif
