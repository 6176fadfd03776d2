#include "OpenGL/ShaderManager.h"

#include "Core/Assert.h"
#include "Core/Communicate.h"
#include "OpenGL/ShaderIncludeManager.h"
#include "OpenGL/SimplifiedString.h"

#include <QFile>
#include <QString>

#include <array>

namespace vel {

namespace {

// The vertex and fragment defines of the five G-buffer variants of a vertex file with
// "Mesh/fMeshRender", in member order.
std::array<std::pair<char const*, char const*>, 5> const MeshRenderDefines = {{
    {"", "RENDER_PBR"},
    {"MESH_PBR", "MESH_PBR RENDER_PBR"},
    {"MESH_TEX", "MESH_TEX RENDER_PBR"},
    {"", ""},
    {"RENDER_FAST", "RENDER_FAST"},
}};

} // namespace

ShaderManager::ShaderManager()
{
    // Registered first, so that user shaders can include them (shader layers, object shaders).
    ShaderIncludeManager::instance();

    ShaderCopy = builtin(FromFile(Path("Copy")));
    ShaderCopyGreyMax = builtin(FromFile(Path("Copy"), "", "GREY_MAX"));
    ShaderFillVec4 = builtin(FromFile(Path("FillVec4")));
    ShaderXYZSphere = builtin(FromFile(Path("XYZSphere")));

    // Frame pipeline.
    ShaderCompositFlat = builtin(FromFile(Path("CompositFlat")));
    ShaderCompositFlatBack = builtin(FromFile(Path("CompositFlatBack")));
    ShaderCompositIDs = builtin(FromFile(Path("CompositIDs")));
    ShaderCompositShaded = builtin(FromFile(Path("CompositShaded")));
    ShaderCompositShadedBack = builtin(FromFile(Path("CompositShadedBack")));
    ShaderCompositNormals = builtin(FromFile(Path("CompositNormals")));
    ShaderCompositMatCap = builtin(FromFile(Path("CompositMatCap")));
    ShaderCompositMatCapBackFace = builtin(FromFile(Path("CompositMatCap"), "", "BACKFACE"));
    ShaderCompositColor = builtin(FromFile(Path("CompositColor")));
    ShaderCompositColorGlow = builtin(FromFile(Path("CompositColor"), "", "GLOW"));
    ShaderCompositPBR = builtin(FromFile(Path("CompositPBR")));
    ShaderCompositPBRGlow = builtin(FromFile(Path("CompositPBR"), "", "GLOW"));
    ShaderDepthMapOrthogonal = builtin(FromFile(Path("DepthMapOrthogonal")));
    ShaderDepthMapPerspective = builtin(FromFile(Path("DepthMapPerspective")));
    ShaderObjectType = builtin(FromFile(Path("ObjectType")));
    ShaderMixRefract = builtin(FromFile(Path("MixRefract")));
    ShaderMixRefractChroma = builtin(FromFile(Path("MixRefract"), "", "CHROMA"));
    ShaderMixRefractGlow = builtin(FromFile(Path("MixRefract"), "", "GLOW"));
    ShaderMixRefractGlowChroma = builtin(FromFile(Path("MixRefract"), "", "GLOW CHROMA"));
    ShaderMixRefractTestOpaque = builtin(FromFile(Path("MixRefractTestOpaque")));
    ShaderShadowComposit = builtin(FromFile(Path("ShadowComposit")));
    ShaderSegment = builtin(FromFile(Path("Segment")));
    ShaderPoint = builtin(FromFile(Path("Point")));
    ShaderDrawCircle = builtin(FromFile(Path("Curve/DrawCircle")));
    ShaderDrawSegment = builtin(FromFile(Path("Curve/DrawSegment")));
    // ---- curve elements
    ShaderCurveRenderPbr = builtin(FromFiles(Path("Curve/vCurveRender"), Path("Curve/fCurveRender"), "", "RENDER_PBR"));
    ShaderCurveRender = builtin(FromFiles(Path("Curve/vCurveRender"), Path("Curve/fCurveRender"), "", ""));
    // ---- end of curve elements
    // ---- the filter family (GLFilters) and the environment cube (Environment)
    ShaderMirrorVertical = builtin(FromFile(Path("MirrorVertical")));
    ShaderFilterClamp = builtin(FromFile(Path("Filters/FilterClamp")));
    ShaderFilterMul = builtin(FromFile(Path("Filters/FilterMul")));
    ShaderFilterMul2 = builtin(FromFile(Path("Filters/FilterMul"), "", "MUL2"));
    ShaderFilterAdd = builtin(FromFile(Path("Filters/FilterAdd")));
    ShaderFilterAddFactor = builtin(FromFile(Path("Filters/FilterAddFactor")));
    ShaderFilterAdd2 = builtin(FromFile(Path("Filters/FilterAdd2")));
    ShaderFilterAdd3 = builtin(FromFile(Path("Filters/FilterAdd3")));
    ShaderFilterAdd4 = builtin(FromFile(Path("Filters/FilterAdd4")));
    ShaderFilterAdd5 = builtin(FromFile(Path("Filters/FilterAdd5")));
    ShaderFilterAddMipMaps = builtin(FromFile(Path("Filters/FilterAddMipMaps")));
    ShaderFilterAdd2MipMaps = builtin(FromFile(Path("Filters/FilterAdd2MipMaps")));
    ShaderFilterMix = builtin(FromFile(Path("Filters/FilterMix")));
    ShaderFilterMixDepth = builtin(FromFile(Path("Filters/FilterMixDepth")));
    ShaderFilterThreshold = builtin(FromFile(Path("Filters/FilterThreshold")));
    ShaderFilterThresholdMul = builtin(FromFile(Path("Filters/FilterThresholdMul")));
    ShaderFilterMedian = builtin(FromFile(Path("Filters/FilterMedian")));
    ShaderFilterBlur = builtin(FromFile(Path("Filters/FilterBlur")));
    ShaderFilterBlurSimple = builtin(FromFile(Path("Filters/FilterBlur"), "", "SIMPLE"));
    ShaderFilterGaussianBlur = builtin(FromFile(Path("Filters/FilterGaussianBlur")));
    ShaderNormalize = builtin(FromFile(Path("Normalize")));
    ShaderNormals = builtin(FromFile(Path("Normals")));
    ShaderNoise = builtin(FromFile(Path("Filters/Noise")));
    ShaderFilterMinMax = builtin(FromFile(Path("Filters/FilterMinMax")));
    ShaderFilterMinMaxDepthOnly = builtin(FromFile(Path("Filters/FilterMinMaxDepthOnly")));
    ShaderSkyBox = builtin(FromFile(Path("SkyBox")));
    ShaderCopySkyBox = builtin(FromFile(Path("CopySkyBox")));
    ShaderFilterSkyBox = builtin(FromFile(Path("FilterSkyBox")));
    // ---- end of the filter family and environment block
    // ---- screen effects
    ShaderTonemap = builtin(FromFile(Path("Tonemap")));
    ShaderTonemapReinhard = builtin(FromFile(Path("Tonemap"), "", "TONEMAP REINHARD"));
    ShaderTonemapUncharted2 = builtin(FromFile(Path("Tonemap"), "", "TONEMAP UNCHARTED2"));
    ShaderTonemapACES = builtin(FromFile(Path("Tonemap"), "", "TONEMAP ACES"));
    ShaderFilterChroma = builtin(FromFile(Path("Filters/FilterChroma")));
    ShaderFogOrthogonal = builtin(FromFile(Path("FogOrthogonal")));
    ShaderSSAO = builtin(FromFile(Path("SSAO")));
    ShaderSSSS = builtin(FromFile(Path("SSSS")));
    ShaderSSR = builtin(FromFile(Path("SSR")));
    // ---- screen effects at reduced size
    ShaderSSAOGather = builtin(FromFile(Path("SSAO"), "", "GATHER"));
    ShaderSSAOApply = builtin(FromFile(Path("SSAO"), "", "APPLY"));
    ShaderSSSSGather = builtin(FromFile(Path("SSSS"), "", "GATHER"));
    ShaderSSSSApply = builtin(FromFile(Path("SSSS"), "", "APPLY"));
    ShaderFogRange = builtin(FromFile(Path("FogOrthogonal"), "", "RANGE_TEXTURE"));
    ShaderFogRangeOver = builtin(FromFile(Path("FogOrthogonal"), "", "RANGE_TEXTURE OVER"));
    ShaderFilterDepthOfFieldOver = builtin(FromFile(Path("Filters/FilterDepthOfField"), "", "OVER"));
    // ---- end of the reduced-size block
    ShaderEdgeDetection = builtin(FromFile(Path("EdgeDetection")));
    ShaderSimpleEdgeDetection = builtin(FromFile(Path("SimpleEdgeDetection")));
    ShaderContour = builtin(FromFile(Path("Contour")));
    ShaderContourWire = builtin(FromFile(Path("ContourWire")));
    // ---- tile summaries of the edge and contour passes
    ShaderEdgeTiles = builtin(FromFile(Path("EdgeTiles")));
    ShaderSimpleEdgeTiles = builtin(FromFile(Path("EdgeTiles"), "", "IDS_ONLY"));
    ShaderContourTiles = builtin(FromFile(Path("EdgeTiles"), "", "CONTOURS"));
    ShaderEdgeTileMask = builtin(FromFile(Path("EdgeTileMask")));
    ShaderSimpleEdgeTileMask = builtin(FromFile(Path("EdgeTileMask"), "", "IDS_ONLY"));
    ShaderContourTileMask = builtin(FromFile(Path("EdgeTileMask"), "", "CONTOURS"));
    // ---- end of the tile summaries
    ShaderFilterDepthOfField = builtin(FromFile(Path("Filters/FilterDepthOfField")));
    // ---- end of screen effects
    describeMeshPrograms();
    describeClayPrograms();
}

Shader* ShaderManager::builtin(Shared<Shader> const& shader)
{
    catalogue.push_back(shader.get());
    return shader.get();
}

// ---- mesh programs -----------------------------------------------------------------------

void ShaderManager::describeMeshPrograms()
{
    // The five G-buffer variants of a vertex file with "Mesh/fMeshRender", in member order.
    auto variants = [this](std::string const& vertex, std::array<Shader**, 5> const& members) {
        for (std::size_t i = 0; i < MeshRenderDefines.size(); ++i)
            *members[i] = builtin(FromFiles(Path(vertex), Path("Mesh/fMeshRender"), MeshRenderDefines[i].first,
                                            MeshRenderDefines[i].second));
    };
    variants("Mesh/vMeshRender", {&ShaderMeshRenderPbr, &ShaderMeshRenderMeshPbr, &ShaderMeshRenderTex,
                                  &ShaderMeshRender, &ShaderMeshRenderFast});
    variants("Mesh/vMeshSnakeRender", {&ShaderMeshSnakeRenderPbr, &ShaderMeshSnakeRenderMeshPbr,
                                       &ShaderMeshSnakeRenderTex, &ShaderMeshSnakeRender, &ShaderMeshSnakeRenderFast});
    ShaderMeshColor = builtin(FromFile(Path("Mesh/MeshColor")));
    ShaderMeshRenderPaint = builtin(FromFile(Path("Mesh/MeshRenderPaint")));
    ShaderMeshDepthPeel = builtin(FromFile(Path("Mesh/MeshDepthPeel")));
    ShaderMeshDepth = builtin(FromFile(Path("Mesh/MeshDepth")));
    ShaderMeshDepthPeelComponent = builtin(FromFile(Path("Mesh/MeshDepthPeelComponent")));
    // ---- viewport: selection feedback
    ShaderContourSelection = builtin(FromFile(Path("ContourSelection")));
    // ---- end of viewport
}

// ---- clay programs -----------------------------------------------------------------------

void ShaderManager::describeClayPrograms()
{
    auto clay = [this](char const* name, std::string const& defines = {}) {
        return builtin(FromFile(Path(std::string("Clay/") + name), "", defines));
    };
    ShaderClayFacesNormal = clay("ClayFacesNormal");
    ShaderClayVertsNormals = clay("ClayVertsNormals");
    ShaderClayDeform = clay("ClayDeform");
    ShaderClaySmooth = clay("ClaySmooth");
    ShaderClayDeformVolume = clay("ClayDeformVolume");
    ShaderClayTwist = clay("ClayTwist");
    ShaderClayPinch = clay("ClayPinch");
    ShaderClayAddSub = clay("ClayAddSub");
    ShaderClayCrease = clay("ClayCrease");
    ShaderClayAddSubDir = clay("ClayAddSubDir");
    ShaderClayAddSubStamp = clay("ClayAddSubStamp");
    ShaderClayMaterial = clay("ClayMaterial");
    ShaderClaySmoothMaterial = clay("ClaySmoothMaterial");
    ShaderClaySelectPaint = clay("ClaySelectPaint");
    ShaderClaySelectGradient = clay("ClaySelectGradient");
    ShaderClayMove = clay("ClayMove");
    ShaderClayScale = clay("ClayScale");
    ShaderClayRotate = clay("ClayRotate");
    ShaderClaySkew = clay("ClaySkew");
    ShaderClayBend = clay("ClayBend");
    ShaderClayTaper = clay("ClayTaper");
    ShaderClayPosition = clay("ClayPosition");
    ShaderClayPositionBlend = clay("ClayPosition", "BLEND");
    ShaderClaySwirl[0] = clay("ClaySwirl", "X_AXIS");
    ShaderClaySwirl[1] = clay("ClaySwirl", "Y_AXIS");
    ShaderClaySwirl[2] = clay("ClaySwirl", "Z_AXIS");
    std::array<Shader**, 5> const render = {&ShaderClayRenderPbr, &ShaderClayRenderMeshPbr, &ShaderClayRenderTex,
                                            &ShaderClayRender, &ShaderClayRenderFast};
    for (std::size_t i = 0; i < render.size(); ++i)
        *render[i] = builtin(FromFiles(Path("Clay/vClayRender"), Path("Mesh/fMeshRender"), MeshRenderDefines[i].first,
                                       MeshRenderDefines[i].second));
    ShaderClayRenderDepth = builtin(FromVFileFText(Path("Clay/vClayRender"), "void main() {}", "DEPTH_ONLY"));
}

std::string ShaderManager::Path(std::string const& name)
{
    return ":/shaders/" + name + ".glsl";
}

std::string ShaderManager::ReadFile(std::string const& path)
{
    std::string text;
    ReadFile(path, text);
    return text;
}

bool ShaderManager::ReadFile(std::string const& path, std::string& text)
{
    QFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return false;
    // One byte past the limit, so that a file that grows or has no size (a device) is caught.
    QByteArray const bytes = file.read(FileSizeLimit + 1);
    if (bytes.size() > FileSizeLimit) {
        LogInfo(QString("Shader file '%1' refused: larger than %2 bytes.")
                    .arg(QString::fromStdString(path))
                    .arg(FileSizeLimit),
                2);
        return false;
    }
    text = bytes.toStdString();
    return true;
}

std::string ShaderManager::Key(std::string const& simplified, std::string const& vert_defs,
                               std::string const& frag_defs)
{
    std::string key;
    if (!vert_defs.empty())
        key += "##VERT_DEFS( " + vert_defs + " ) ";
    if (!frag_defs.empty())
        key += "##FRAG_DEFS( " + frag_defs + " ) ";
    key += simplified;
    return QString::fromStdString(key).simplified().toStdString();
}

// ---- user shaders
Shared<Shader> ShaderManager::Share(Shared<Shader> const& compiled)
{
    std::string key = Key(SimplifiedString(compiled->text), compiled->vertexDefines, compiled->fragmentDefines);
    auto found = shaders.find(key);
    if (found != shaders.end() && found->second->Compiled)
        return found->second;
    shaders[key] = compiled;
    return compiled;
}
// ---- end of user shaders

Shared<Shader> ShaderManager::FromText(std::string const& text, std::string const& vert_defs,
                                       std::string const& frag_defs)
{
    if (text.empty())
        return {};
    std::string simplified = SimplifiedString(text);
    std::string key = Key(simplified, vert_defs, frag_defs);
    auto found = shaders.find(key);
    if (found != shaders.end())
        return found->second;
    Shared<Shader> shader(new Shader(simplified, vert_defs, frag_defs));
    shaders.emplace(key, shader);
    return shader;
}

namespace {

// The first file a shader comes from names it in messages.
Shared<Shader> Named(Shared<Shader> shader, std::string const& name)
{
    if (shader && shader->name.empty())
        shader->name = name;
    return shader;
}

} // namespace

Shared<Shader> ShaderManager::FromFile(std::string const& filename, std::string const& vert_defs,
                                       std::string const& frag_defs)
{
    VEL_ASSERT(!filename.empty());
    return Named(FromText(ReadFile(filename), vert_defs, frag_defs), filename);
}

Shared<Shader> ShaderManager::FromFiles(std::string const& vert_file, std::string const& frag_file,
                                        std::string const& vert_defs, std::string const& frag_defs)
{
    VEL_ASSERT(!vert_file.empty() && !frag_file.empty());
    std::string vertex = ReadFile(vert_file);
    std::string fragment = ReadFile(frag_file);
    // A program needs both halves: a missing one yields no shader rather than half of one.
    if (vertex.empty() || fragment.empty())
        return {};
    return Named(FromText(vertex + "\n" + fragment, vert_defs, frag_defs), vert_file + " " + frag_file);
}

Shared<Shader> ShaderManager::FromVFileFText(std::string const& vert_file, std::string const& frag_text,
                                             std::string const& vert_defs, std::string const& frag_defs)
{
    VEL_ASSERT(!vert_file.empty() && !frag_text.empty());
    std::string vertex = ReadFile(vert_file);
    if (vertex.empty())
        return {};
    return Named(FromText(vertex + "\n##FRAGMENT\n" + frag_text, vert_defs, frag_defs), vert_file);
}

void ShaderManager::clear()
{
    catalogue.clear();
    ShaderCopy = ShaderCopyGreyMax = ShaderFillVec4 = nullptr;
    // the filter family and environment block
    ShaderMirrorVertical = ShaderFilterClamp = ShaderFilterMul = ShaderFilterMul2 = ShaderFilterAdd = nullptr;
    ShaderFilterAddFactor = ShaderFilterAdd2 = ShaderFilterAdd3 = ShaderFilterAdd4 = ShaderFilterAdd5 = nullptr;
    ShaderFilterAddMipMaps = ShaderFilterAdd2MipMaps = ShaderFilterMix = ShaderFilterMixDepth = nullptr;
    ShaderFilterThreshold = ShaderFilterThresholdMul = ShaderFilterMedian = ShaderFilterBlur = nullptr;
    ShaderFilterBlurSimple = ShaderFilterGaussianBlur = ShaderNormalize = ShaderNormals = ShaderNoise = nullptr;
    ShaderFilterMinMax = ShaderFilterMinMaxDepthOnly = ShaderSkyBox = ShaderCopySkyBox = ShaderFilterSkyBox = nullptr;
    ShaderCurveRenderPbr = ShaderCurveRender = nullptr; // curve elements
    // ---- mesh programs
    for (Shader** member : {&ShaderMeshRenderPbr, &ShaderMeshRenderMeshPbr, &ShaderMeshRenderTex, &ShaderMeshRender,
                            &ShaderMeshRenderFast, &ShaderMeshSnakeRenderPbr, &ShaderMeshSnakeRenderMeshPbr,
                            &ShaderMeshSnakeRenderTex, &ShaderMeshSnakeRender, &ShaderMeshSnakeRenderFast,
                            &ShaderMeshColor, &ShaderMeshRenderPaint, &ShaderMeshDepthPeel, &ShaderMeshDepth,
                            &ShaderMeshDepthPeelComponent})
        *member = nullptr;
    ShaderContourSelection = nullptr; // viewport
    shaders.clear();
}

} // namespace vel
