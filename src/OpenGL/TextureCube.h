// TextureCube: a cube map, made on the CPU from an equirectangular panorama, or an empty
// cube (render target, depth cube) described by size and formats.
//
// The panorama (LDR through QImage, HDR through stb) is kept as CPU pixels, rows bottom first,
// until compile() resamples it into the six faces. The mapping from a direction d to the
// panorama: longitude atan2(d.z, -d.x), latitude atan2(-d.y, |d.xz|), then
//   x = w (0.25 - longitude / 2 pi),  y = h (0.5 - latitude / pi),
// sampled bilinearly, x wrapped around and y clamped at the poles. As rows run bottom-up after the flip at load, the top of
// the picture lies towards +Y, the middle column towards -Z (the default view direction),
// +X to its right, -X to its left, and +Z at the seam.
#pragma once

#include "Math/Vector3.h"
#include "OpenGL/Texture.h"

#include <string>

namespace vel {

class TextureCube : public Texture {
public:
    int panoramaWidth = 0;  // of the source panorama, 0 when none
    int panoramaHeight = 0;

    // An empty cube of faces size x size.
    TextureCube(int size, int internalFormat, int format, int type, int wrap = GL_CLAMP_TO_EDGE,
                int filter = GL_LINEAR);
    // From a panorama file (".hdr" through loadhdr); `size` 0 takes a quarter of its width.
    explicit TextureCube(std::string const& path, int size = 0);

    int Target() const override { return GL_TEXTURE_CUBE_MAP; }
    bool compile() override;
    // An LDR panorama through QImage: RGBA8 with alpha, else RGB8.
    bool load(std::string const& path) override;
    // A Radiance HDR panorama through stb: RGB floats.
    bool loadhdr(std::string const& path);

    // All six faces.
    int byteCount() const override;
    void getUnstructuredData(void* out) override;
    // The faces as path + face index + ".png", each at quality 100.
    bool save(std::string const& path, int quality);

    // The panorama position (x, y in pixels) that direction `d` maps to, before wrapping.
    static void PanoramaPosition(Vector3<double> const& d, int width, int height, double& x, double& y);
    // The direction through the centre of texel (i, j) of cube face `face` of `size` texels.
    static Vector3<double> FaceDirection(int face, int i, int j, int size);

private:
    int faceSize = 0; // from the constructor; 0: a quarter of the panorama's width
    // Fixes the face size once a panorama is known.
    void setPanorama(int width, int height);
    // The decoder's top-first float rows become the CPU pixels, bottom first; frees `pixels`.
    void TakeRowsBottomFirst(float* pixels, int width, int height);
};

} // namespace vel
