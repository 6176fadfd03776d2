#include "OpenGL/GLPrimitives.h"

#include "Core/Assert.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderManager.h"

#include <glad/gl.h>

namespace vel {

namespace {

Vector3<float> F(Vector3<double> const& v)
{
    return {float(v.x), float(v.y), float(v.z)};
}

// Binds `shader` with the frame's transform.
void Begin(Shader* shader)
{
    VEL_ASSERT(shader && shader->enable());
    Shader::setUniform("ProjectionModelViewMatrix", Shader::ProjectionModelViewMatrix);
}

} // namespace

void GLCircle(Vector3<double> const& center, Vector3<double> const& axisX, Vector3<double> const& axisY,
              double radius, int segments, Vector4<float> const& color)
{
    VEL_ASSERT(segments >= 3);
    Begin(ShaderManager::instance().ShaderDrawCircle);
    Shader::setUniform("Center", F(center));
    Shader::setUniform("AxisX", F(axisX));
    Shader::setUniform("AxisY", F(axisY));
    Shader::setUniform("Radius", float(radius));
    Shader::setUniform("Segments", segments);
    Shader::setUniform("Color", color);
    glDrawArrays(GL_LINE_LOOP, 0, segments);
}

void GLPoint(Vector3<double> const& position, float size, int width, int height, Vector4<float> const& color)
{
    Begin(ShaderManager::instance().ShaderPoint);
    Shader::setUniform("Position", F(position));
    Shader::setUniform("Size", size);
    Shader::setUniform("iResolution", float(width), float(height));
    Shader::setUniform("Color", color);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
}

void GLSegment(Vector3<double> const& p0, Vector3<double> const& p1, Vector4<float> const& color)
{
    Begin(ShaderManager::instance().ShaderSegment);
    Shader::setUniform("P0", F(p0));
    Shader::setUniform("P1", F(p1));
    Shader::setUniform("Color", color);
    glDrawArrays(GL_LINES, 0, 2);
}

void GLGrid(double step, int half, bool axes)
{
    Begin(ShaderManager::instance().ShaderDrawSegment);
    float const extent = float(step * half);
    Vector4<float> const line{0.6f, 0.6f, 0.6f, 0.6f};
    struct Family {
        Vector3<float> p0, p1, step; // one line and the offset between lines
        Vector4<float> axis;         // colour of the line through the origin
    };
    // Lines along x step in z, and the middle one is the x axis; the other way for z.
    Family const families[2] = {
        {{-extent, 0, -extent}, {extent, 0, -extent}, {0, 0, float(step)}, {0.9f, 0.2f, 0.2f, 1.0f}},
        {{-extent, 0, -extent}, {-extent, 0, extent}, {float(step), 0, 0}, {0.2f, 0.3f, 0.9f, 1.0f}},
    };
    for (Family const& f : families) {
        Shader::setUniform("P0", f.p0);
        Shader::setUniform("P1", f.p1);
        Shader::setUniform("Step", f.step);
        Shader::setUniform("Middle", half);
        Shader::setUniform("Fade", float(half + 1));
        Shader::setUniform("Color", line);
        Shader::setUniform("ColorAxis", axes ? f.axis : line);
        glDrawArraysInstanced(GL_LINES, 0, 2, 2 * half + 1);
    }
}

} // namespace vel
