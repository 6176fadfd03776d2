// Rendering: the shader layer groups and the common includes, with their scene file blocks.
#include "OpenGL/Rendering.h"

#include "Core/Assert.h"
#include "Core/Communicate.h"
#include "Core/StreamValues.h"
#include "OpenGL/FBODoubleBuffer.h"
#include "OpenGL/ObjectShader.h"
#include "OpenGL/ShaderIncludeManager.h"
#include "OpenGL/ShaderLayer.h"
#include "Scene/SceneFile.h"

#include <QString>

#include <istream>
#include <ostream>
#include <sstream>

namespace vel {

namespace {

constexpr int GROUPS = ShaderLayer::GROUPS;
constexpr int MAX_LAYERS = 1024;       // in one group
constexpr int MAX_INCLUDE = 4 << 20;   // bytes of one common include
constexpr int MAX_COMMON = 1024;       // common includes

} // namespace

Shared<ShaderLayer> const& Rendering::addShaderLayer(int group, Shared<ShaderLayer> const& layer)
{
    VEL_ASSERT(0 <= group && group < GROUPS);
    layer->setCustom(group, layer->custom);
    ShaderLayers[group].push_back(layer);
    return ShaderLayers[group].back();
}

bool Rendering::FindCustomShaderLayer(Texture const* texture, char& group, int& index) const
{
    for (int g = 0; g < GROUPS; ++g)
        for (size_t i = 0; i < ShaderLayers[g].size(); ++i) {
            ShaderLayer const* layer = ShaderLayers[g][i].get();
            if (layer->fbo && texture && layer->fbo->front() == texture) {
                group = char(g);
                index = int(i);
                return true;
            }
        }
    return false;
}

bool Rendering::FindShaderLayer(ShaderLayer const* layer, char& group, int& index) const
{
    for (int g = 0; g < GROUPS; ++g)
        for (size_t i = 0; i < ShaderLayers[g].size(); ++i)
            if (ShaderLayers[g][i].get() == layer) {
                group = char(g);
                index = int(i);
                return true;
            }
    return false;
}

void Rendering::save_shader_layers(std::ostream& out) const
{
    PutValue(out, GROUPS);
    PutValue(out, ObjectShader::ActiveAll);
    PutValue(out, ShaderLayer::ActiveAll);
    PutValue(out, ShaderCode::mouse_update);
    PutValue(out, ShaderCode::mouse_normalized[0]);
    PutValue(out, ShaderCode::mouse_normalized[1]);
    for (int g = 0; g < GROUPS; ++g) {
        std::ostringstream layers;
        for (Shared<ShaderLayer> const& layer : ShaderLayers[g])
            layer->DataWrite(layers);
        std::string const bytes = layers.str();
        PutValue(out, SHADER_LAYERS_BLOCK + unsigned(g));
        PutValue(out, int(bytes.size()) + 13);
        PutValue(out, int(ShaderLayers[g].size()));
        PutValue(out, ShaderLayerGroupActive[g]);
        out.write(bytes.data(), std::streamsize(bytes.size()));
    }
}

bool Rendering::load_shader_layers_from_buffer(std::istream* buffer, bool replace)
{
    if (!buffer)
        return false;
    buffer->clear();
    buffer->seekg(0);
    auto fail = [](QString const& why) {
        LogInfo("The shader layers of the scene cannot be read (" + why + "); the layers stay as they were.", 2);
        return false;
    };
    int groups = 0;
    bool objectShaders = true, layersOn = true;
    char objectByte = 0, layersByte = 0;
    int mouseUpdate = 0;
    float mouseAt[2] = {0, 0};
    if (!GetValue(*buffer, groups) || groups != GROUPS || !GetValue(*buffer, objectByte) || !GetValue(*buffer, layersByte) ||
        !GetValue(*buffer, mouseUpdate) || !GetValue(*buffer, mouseAt[0]) || !GetValue(*buffer, mouseAt[1]))
        return fail("a short or unknown header");
    objectShaders = objectByte != 0;
    layersOn = layersByte != 0;
    // Everything is read first, so that a fault anywhere leaves the scene's layers alone.
    std::deque<Shared<ShaderLayer>> read[GROUPS];
    std::vector<std::array<std::pair<int, int>, ShaderCode::SAMPLERS>> refs[GROUPS];
    bool active[GROUPS] = {};
    for (int g = 0; g < GROUPS; ++g) {
        unsigned id = 0;
        int size = 0, count = 0;
        char on = 0;
        if (!GetValue(*buffer, id) || id != SHADER_LAYERS_BLOCK + unsigned(g) || !GetValue(*buffer, size) || size < 13 ||
            !GetValue(*buffer, count) || count < 0 || count > MAX_LAYERS || !GetValue(*buffer, on))
            return fail(QString("group %1 has a broken header").arg(g));
        active[g] = on != 0;
        std::string bytes(size_t(size - 13), '\0');
        if (!buffer->read(bytes.data(), std::streamsize(bytes.size())))
            return fail(QString("group %1 is cut short").arg(g));
        std::istringstream in(bytes);
        for (int i = 0; i < count; ++i) {
            Shared<ShaderLayer> layer(new ShaderLayer());
            std::array<std::pair<int, int>, ShaderCode::SAMPLERS> ref{};
            if (!layer->DataRead(in, ref))
                return fail(QString("layer %1 of group %2 is broken").arg(i).arg(g));
            layer->group = g;
            read[g].push_back(layer);
            refs[g].push_back(ref);
        }
    }
    int offset[GROUPS] = {};
    for (int g = 0; g < GROUPS; ++g) {
        if (replace)
            ShaderLayers[g].clear();
        offset[g] = int(ShaderLayers[g].size());
        ShaderLayerGroupActive[g] = replace ? active[g] : ShaderLayerGroupActive[g] || active[g];
        for (Shared<ShaderLayer> const& layer : read[g])
            addShaderLayer(g, layer);
    }
    // A sampler that reads another layer's output takes that layer's front texture, made now.
    for (int g = 0; g < GROUPS; ++g)
        for (size_t i = 0; i < read[g].size(); ++i)
            for (int s = 0; s < ShaderCode::SAMPLERS; ++s) {
                auto [rg, ri] = refs[g][i][size_t(s)];
                if (rg < 0)
                    continue;
                int at = offset[rg] + ri;
                if (at >= int(ShaderLayers[rg].size()) || !ShaderLayers[rg][size_t(at)]->custom) {
                    LogInfo(QString("A shader layer reads a layer output that is missing: iTex%1 stays empty.").arg(s), 1);
                    continue;
                }
                ShaderLayer& source = *ShaderLayers[rg][size_t(at)];
                if (!source.fbo) {
                    Vector2<int> wh = source.bufferSize();
                    source.fbo = Shared<FBODoubleBuffer>(new FBODoubleBuffer(wh.x, wh.y));
                }
                read[g][i]->samplers[size_t(s)] = Shared<Texture>(source.fbo->attachments[1]);
            }
    if (replace) {
        ObjectShader::ActiveAll = objectShaders;
        ShaderLayer::ActiveAll = layersOn;
        ShaderCode::mouse_update = mouseUpdate;
        ShaderCode::mouse_normalized[0] = mouseAt[0];
        ShaderCode::mouse_normalized[1] = mouseAt[1];
    }
    return true;
}

void Rendering::save_include_common(std::ostream& out) const
{
    std::deque<std::string> const& common = ShaderIncludeManager::instance().common;
    PutValue(out, int(common.size()));
    for (std::string const& text : common) {
        PutValue(out, int(text.size()));
        out.write(text.data(), std::streamsize(text.size()));
    }
}

bool Rendering::load_include_common_from_buffer(std::istream* buffer, bool replace)
{
    if (!buffer)
        return false;
    buffer->clear();
    buffer->seekg(0);
    int count = 0;
    std::deque<std::string> read;
    bool ok = GetValue(*buffer, count) && count >= 0 && count <= MAX_COMMON;
    for (int i = 0; ok && i < count; ++i) {
        int length = 0;
        ok = GetValue(*buffer, length) && length >= 0 && length <= MAX_INCLUDE;
        if (ok) {
            std::string text(size_t(length), '\0');
            ok = bool(buffer->read(text.data(), length));
            read.push_back(std::move(text));
        }
    }
    if (!ok) {
        LogInfo("The common includes of the scene cannot be read; they stay as they were.", 2);
        return false;
    }
    std::deque<std::string>& common = ShaderIncludeManager::instance().common;
    if (replace)
        common.clear();
    common.insert(common.end(), read.begin(), read.end());
    // Every user shader may include them: all compile anew.
    for (auto const& group : ShaderLayers)
        for (Shared<ShaderLayer> const& layer : group)
            layer->dirty = true;
    return true;
}

} // namespace vel
