// What every shader layer may read; the frame sets these before each run of a layer.
// iMouse rows: 0 the viewport's pointer, 1 the pointer as last read, 2 the pointer over the
// interface; each (x, y) in target pixels from the bottom left, z the buttons held (1 left,
// 2 middle, 4 right), w the wheel of this frame.
uniform sampler2D iDepth;
uniform sampler2D iNormal;
uniform isampler2D iObjectItemsElement;
uniform isampler2D iComponentPatchFace;
uniform sampler2D iNoise;
uniform samplerCube iCubeMap;
uniform float iTime;
uniform int iFrame;
uniform vec2 iResolution;
uniform vec4 iMouse[3];
uniform vec2 iFOVLens;
uniform mat4 iViewToScreen;
uniform mat4 iScreenToView;
uniform mat4 iWorldToScreen;
uniform mat4 iScreenToWorld;
uniform mat3 iWorldToScreenRotation;
uniform mat3 iScreenToWorldRotation;
#define RENDER_LIT 1
