// XYZSphere: the small axis sphere of the "Navigation" panel, drawn into the widget's
// `navigation` framebuffer each frame with the camera's rotation.
//
// The geometry is a mesh sphere (the cube handle subdivided three times); only its triangles
// are kept, on the GPU, so no element outlives the window through this singleton.
#pragma once

#include "Math/Matrix3.h"
#include "Math/Matrix4.h"
#include "Memory/Singleton.h"
#include "OpenGL/Shader.h"
#include "OpenGL/VertexBuffer.h"

#include <memory>

namespace vel {

class XYZSphere : public Singleton<XYZSphere> {
    friend class Singleton<XYZSphere>;

public:
    std::unique_ptr<VertexBuffer> positions; // three floats per vertex, three per triangle
    int vertices = 0;

    // Compiles what is missing and makes the shader current; false when it cannot.
    bool enableShader();
    // The camera's rotation rows scaled to fill the picture, pushed back by one unit.
    static Matrix4<double> Transform(Matrix3<double> const& rotation);
    // Draws with the shader's current transform (Shader::ProjectionModelViewMatrix).
    void render();
    // Drops the buffer: call with the context current, before it goes. The shader belongs
    // to the ShaderManager.
    void clear();

private:
    XYZSphere() = default;
};

} // namespace vel
