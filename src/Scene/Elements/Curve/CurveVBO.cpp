#include "Scene/Elements/Curve/CurveVBO.h"

#include "Core/Assert.h"
#include "OpenGL/GLState.h"
#include "OpenGL/Shader.h"
#include "OpenGL/ShaderManager.h"
#include "OpenGL/Texture2D.h"

#include <glad/gl.h>

#include <algorithm>
#include <cmath>

namespace vel {

CurveVBO::CurveVBO()
{
    reset_vbos();
}

CurveVBO::CurveVBO(CurveVBO const& other)
    : ElementVBO(other)
{
    reset_vbos();
}

CurveVBO& CurveVBO::operator=(CurveVBO const& other)
{
    ElementVBO::operator=(other);
    bonesTextureDirty = true;
    return *this;
}

CurveVBO::~CurveVBO() = default;

bool CurveVBO::buildGPUData()
{
    if (!vbos[0]->dirty)
        return true;
    std::vector<float> positions;
    fillGPUPositions(positions);
    vbos[0]->write(positions.data(), int(positions.size() * sizeof(float)));
    return true;
}

void CurveVBO::deleteGPUData()
{
    ElementVBO::deleteGPUData();
    bonesTexture.reset();
    bonesTextureDirty = true;
}

int CurveVBO::render_state(TRenderState const& state, bool snake) const
{
    // Curves have one layout, the position alone, in every pass they draw in.
    bool drawn = state.kind == 0 || state.kind == 1 || state.kind == 6;
    return drawn ? (snake ? KEY_SNAKE : 0) | 1 : 0;
}

Shader* CurveVBO::renderShader(TRenderState const& state) const
{
    ShaderManager const& m = ShaderManager::instance();
    switch (state.kind) {
    case 0:
    case 1:
        return m.ShaderCurveRenderPbr;
    case 6:
        return m.ShaderCurveRender;
    default:
        return nullptr; // no depth or paint of lines
    }
}

void CurveVBO::describeAttributes(TRenderState const&, bool)
{
    glBindBuffer(GL_ARRAY_BUFFER, vbos[0]->buffer);
    glEnableVertexAttribArray(0);
    glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 0, nullptr);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
}

void CurveVBO::render(TRenderState const& state, Matrix34<double> const& M, int objectId, int items, int elementId,
                      int instance, Material const& material, int flags, float)
{
    VEL_ASSERT_MSG(Shader::Current, "renderBegin made the curve's shader current");
    if (points_count() == 0)
        return;
    objectUniforms(state, M, objectId, items, elementId, instance, material, flags, "");
    gl_Cull_Face.set(false);
    if (lineCount > 0)
        glDrawArrays(GL_LINES, 0, lineCount);
    if (handleCount > 0) {
        // The handles: large enough to pick and to see at a vertex.
        glPointSize(5.0f);
        glDrawArrays(GL_POINTS, lineCount, handleCount);
        glPointSize(1.0f);
    }
}

void CurveVBO::BonesTextureSize(int frames, int& width, int& height)
{
    int n = std::max(frames, 1) * 4;
    width = int(std::floor(std::sqrt(double(n))));
    width += width & 1;
    height = n / width + (n % width ? 1 : 0);
}

bool CurveVBO::uploadBones(std::deque<CurveBone> const& bones)
{
    if (bones.empty())
        return false;
    if (!bonesTextureDirty && bonesTexture)
        return true;
    int width = 0, height = 0;
    BonesTextureSize(int(bones.size()), width, height);
    // Texel 4i + c is column c of the shader's mat4x3 of bone i, which in our row-vector
    // storage is row c of the frame (and the position last): the twelve floats as they are.
    std::vector<float> texels(size_t(width) * size_t(height) * 3, 0.0f);
    for (size_t i = 0; i < bones.size(); ++i)
        std::copy(bones[i].begin(), bones[i].end(), texels.begin() + std::ptrdiff_t(i * 12));
    bonesTexture = std::make_unique<Texture2D>(width, height, GL_RGB32F, GL_RGB, GL_FLOAT, GL_CLAMP_TO_EDGE, GL_NEAREST);
    if (!bonesTexture->compile(texels.data()))
        return false;
    bonesTextureDirty = false;
    return true;
}

} // namespace vel
