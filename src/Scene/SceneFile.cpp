// Scene and object files: the frame of Scene::saveN, saveNO and load, the element block's
// records (DataReadElement), the camera block, and the shared pieces of old layouts.
//
// Reading trusts nothing: every count is checked against the bytes left before anything is
// allocated, every reference is resolved by identify with broken ones dropped, rings of
// links are checked to close, and what no root or tool box reaches is deleted. A file that
// ends inside a record keeps what came before it as a consistent scene, logs where it
// broke, and the load answers false.
//
// Index
// - state of a load, old layouts
// - element records
// - camera block
// - writing
// - reading: blocks, records, references, reachability
// - files by extension, loadTool
#include "Scene/SceneFile.h"

#include "Animation/Animation.h"
#include "Core/Assert.h"
#include "Core/Communicate.h"
#include "Math/PackedVectors.h"
#include "Math/Pbr.h"
#include "OpenGL/ObjectShader.h"
#include "Scene/Elements/Mesh/Clay.h"
#include "Scene/Elements/Curve/Curve.h"
#include "Scene/Elements/Curve/UCurve.h"
#include "Scene/Elements/Mesh/Mesh.h"
#include "Scene/Elements/Mesh/MeshFile.h"
#include "Scene/IFile.h"
#include "Scene/OFile.h"
#include "Scene/Root.h"
#include "Scene/Scene.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tool.h"
#include "Scene/Tools/Array/Array.h"
#include "Scene/Tools/Array/Ender.h"
#include "Scene/Tools/Array/Snake.h"
#include "Scene/Tools/SDFTool/SDFTool.h"

#include <QFileInfo>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <unordered_set>

namespace vel {

// ---- state of a load, old layouts ----------------------------------------------------------

int FILE_VERSION = 0;
bool FILE_LOAD_ERROR = false;
bool FILE_OLD = false;
bool gOldLoadedElement = false;
std::set<Element*> gModifiedLoadedElements;
std::unique_ptr<std::stringstream> gGuiBuf;
std::unique_ptr<std::stringstream> gCameraBuf;
std::unique_ptr<std::stringstream> gAnimationBuf;
std::unique_ptr<std::stringstream> gShaderLayersBuf;
std::unique_ptr<std::stringstream> gIncludeCommonBuf;
bool (*gSaveCamera)(CameraState&) = nullptr;
void (*gSaveGui)(std::ostream&) = nullptr;
void (*gSaveShaderLayers)(std::ostream&) = nullptr;
void (*gSaveIncludeCommon)(std::ostream&) = nullptr;

void gDeleteLoadBuffers()
{
    gGuiBuf.reset();
    gCameraBuf.reset();
    gAnimationBuf.reset();
    gShaderLayersBuf.reset();
    gIncludeCommonBuf.reset();
}

namespace {

constexpr int V_COLUMN_MATRICES = 20161026; // before: matrices stored by rows
constexpr int V_PBR16 = 20211202;           // from: 16-byte Pbr
constexpr int V_NEGATED_PIVOTS = 20181221;  // before: top-level pivots were mirrored in y

// The versions the log names, numbered as the log numbers them.
constexpr int KNOWN_VERSIONS[] = {20060411, 20160915, 20161026, 20170420, 20170621, 20171222, 20180402,
                                  20180605, 20181221, 20190212, 20190706, 20190731, 20191111, 20191202,
                                  20200406, 20200511, 20201207, 20210108, 20210116, 20210211, 20211022,
                                  20211106, 20211107, 20211111, 20211114, 20211202};

} // namespace

bool ReadFileMatrix(IFile& in, bool doubles, int version, Matrix34<double>& M)
{
    if (doubles)
        return in.readValue(M);
    float f[16];
    if (!in.readValues(f, 16))
        return false;
    // Rows of the linear part, then the translation, as indices into the 16 floats.
    static int const byColumns[12] = {0, 4, 8, 1, 5, 9, 2, 6, 10, 3, 7, 11};
    static int const byRows[12] = {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14};
    int const* order = version < V_COLUMN_MATRICES ? byRows : byColumns;
    for (int i = 0; i < 12; ++i)
        M.m[i] = double(f[order[i]]);
    return true;
}

bool ReadFilePbr(IFile& in, int version, Pbr& pbr)
{
    if (version >= V_PBR16)
        return in.readValue(pbr);
    wvec4 color, light;
    short metal = 0, rough = 0;
    if (!in.readValue(color) || !in.readValue(light) || !in.readValue(metal) || !in.readValue(rough))
        return false;
    pbr = Pbr(color, light, rough, metal);
    return true;
}

// ---- element records -----------------------------------------------------------------------

namespace {

// What the element block may hold. A kind not in this build has its payload skipped: the
// tools showing it become groups.
enum class ElementRead { Mesh, Clay, Skip, Obsolete, Curve, UCurve };
struct ElementTag {
    unsigned tag;
    ElementRead read;
    char const* kind; // for the log, where a kind of the format is not in this build
};
ElementTag const ELEMENT_TAGS[] = {
    {0xE0000001u, ElementRead::Mesh, "mesh"},
    {0xE000000Au, ElementRead::Clay, "clay"},   // clay's record is a mesh's
    {0xE000001Au, ElementRead::Mesh, "cloth"},  // a mesh's, then the cloth's own fields
    {0xE0000002u, ElementRead::Skip, "curve"},
    {0xE1000002u, ElementRead::Curve, "curve"},
    {0xE0000003u, ElementRead::Skip, "sprite"},
    {0xE0000006u, ElementRead::Skip, "sprite"},
    {0xE0000004u, ElementRead::Skip, "revolution"},
    {0xE0000009u, ElementRead::Skip, "revolution"},
    {0xE0000005u, ElementRead::Skip, "tube"},
    {0xE1000005u, ElementRead::Skip, "tube"},
    {0xE1000006u, ElementRead::Skip, "solid tube"},
    {0xE1000007u, ElementRead::UCurve, "curve"},
    {0xE000000Bu, ElementRead::Obsolete, nullptr}, // decals are written but never read back
    {0xE1100002u, ElementRead::Obsolete, nullptr},
    {0xE1100005u, ElementRead::Obsolete, nullptr},
    {0xE0000007u, ElementRead::Obsolete, nullptr},
    {0xE0000008u, ElementRead::Obsolete, nullptr},
    {0xE1000001u, ElementRead::Obsolete, nullptr},
    {0xE1200002u, ElementRead::Obsolete, nullptr},
    {0xEEEEEEEEu, ElementRead::Obsolete, nullptr},
};

} // namespace

Element* DataReadElement(IFile& in)
{
    unsigned tag = 0, size = 0;
    if (!in.readValue(tag) || in.atEnd()) {
        in.seek(in.size()); // a stray end shorter than a tag
        return nullptr;
    }
    FILE_LOAD_ERROR = true;
    ElementTag const* known = nullptr;
    for (ElementTag const& t : ELEMENT_TAGS)
        if (t.tag == tag)
            known = &t;
    if (!known) {
        LogInfo(QString("Load element error: %1").arg(tag), 2);
        return nullptr;
    }
    FILE_LOAD_ERROR = false;
    if (!in.readValue(size))
        return nullptr;
    gOldLoadedElement = false;
    long long start = in.pos();
    long long payload = PayloadSize(size, FILE_VERSION);
    if (payload < 0 || payload > in.left()) {
        LogInfo(QString("An element record (tag %1) runs past the end of the file.").arg(tag, 0, 16), 2);
        in.seek(in.size());
        return nullptr;
    }
    Element* result = nullptr;
    if (known->read == ElementRead::Mesh) {
        auto mesh = std::make_unique<Mesh>();
        if (mesh->DataRead(in, FILE_VERSION) && in.pos() <= start + payload)
            result = mesh.release();
    } else if (known->read == ElementRead::Clay) {
        // The GPU tables are made at the first draw, from the records read here.
        auto clay = std::make_unique<Clay>();
        if (clay->DataRead(in, FILE_VERSION) && in.pos() <= start + payload)
            result = clay.release();
    } else if (known->read == ElementRead::Curve) {
        auto curve = std::make_unique<Curve>();
        if (curve->DataRead(in, FILE_VERSION) && in.pos() <= start + payload)
            result = curve.release();
    } else if (known->read == ElementRead::UCurve) {
        auto curve = std::make_unique<UCurve>();
        if (curve->DataReadU(in, FILE_VERSION) && in.pos() <= start + payload)
            result = curve.release();
    } else if (known->read == ElementRead::Skip) {
        LogInfo(QString("Elements of kind %1 are not part of this build: skipped.").arg(known->kind), 1);
    }
    // The size of an element record is exact: whatever the fields left, the next record
    // starts there.
    in.seek(start + payload);
    return result;
}

// ---- camera block --------------------------------------------------------------------------

void CameraState::write(std::ostream& out) const
{
    out.write(reinterpret_cast<char const*>(&centre), sizeof centre);
    out.write(reinterpret_cast<char const*>(&radius), sizeof radius);
    out.write(reinterpret_cast<char const*>(&position), sizeof position);
    out.write(reinterpret_cast<char const*>(&rotation), sizeof rotation);
    out.write(reinterpret_cast<char const*>(&distance), sizeof distance);
}

bool CameraState::read(std::istream& in, int version)
{
    CameraState c;
    char stray[4];
    auto get = [&in](auto& value) { return bool(in.read(reinterpret_cast<char*>(&value), sizeof value)); };
    if (!get(c.centre) || !get(c.radius) || (version == CAMERA_STRAY_BYTES && !get(stray)) || !get(c.position) ||
        !get(c.rotation) || !get(c.distance))
        return false;
    *this = c;
    return true;
}

// ---- writing -------------------------------------------------------------------------------

namespace {

struct Top {
    Tool* tool;
    unsigned blockId;
    Matrix34<double> const* matrix; // tool box entries only
};

// Builds a stream's block in memory first, since its size precedes it.
void writeBlock(OFile& out, unsigned id, std::string const& payload)
{
    out.writeValue(id);
    out.writeValue(unsigned(payload.size() + 8));
    out.write(payload.data(), std::streamsize(payload.size()));
}

template <class T>
void put(std::ostream& out, T const& value)
{
    out.write(reinterpret_cast<char const*>(&value), sizeof(T));
}

// The empty state of the shader layer groups: none of them holds a layer.
std::string shaderLayersPayload()
{
    constexpr int GROUPS = 4;
    std::ostringstream out;
    put(out, GROUPS);
    put(out, ObjectShader::ActiveAll);
    put(out, true);          // shader layers active
    put(out, int(0));        // mouse update
    put(out, 0.0f);          // mouse position, normalised
    put(out, 0.0f);
    for (int g = 0; g < GROUPS; ++g) {
        put(out, SHADER_LAYERS_BLOCK + unsigned(g));
        put(out, 13);        // this sub-block's bytes: no layers
        put(out, int(0));
        put(out, true);      // the group is active
    }
    return out.str();
}

// Steps 2 to 7 of writing: the tool blocks and the element block. `tops` in order.
void writeTools(OFile& out, std::vector<Top> const& tops)
{
    std::vector<Tool*> list;
    std::vector<std::size_t> starts;
    for (Top const& top : tops) {
        starts.push_back(list.size());
        top.tool->toList(list);
    }
    starts.push_back(list.size());
    for (Tool* t : list)
        t->flags |= Tool::FLAG_HIGHLIGHTED;

    std::unordered_map<Element*, int> ids;
    std::vector<Element*> order, parts;
    for (Tool* t : list) {
        if (!t->element || t->isSDF() || t->isPrimitive())
            continue;
        parts.clear();
        t->element->elements(parts);
        for (Element* e : parts)
            if (ids.emplace(e, int(order.size())).second)
                order.push_back(e);
    }

    out.writeValue(VERSION_DATA);
    out.writeValue(unsigned(FILE_VERSION_CURRENT));
    for (std::size_t i = 0; i < tops.size(); ++i) {
        long long sum = 0;
        for (std::size_t k = starts[i]; k < starts[i + 1]; ++k)
            sum += list[k]->DataSize();
        out.writeValue(tops[i].blockId);
        // The tool box matrix is not counted: so the format has it.
        out.writeValue(unsigned(sum + 8));
        if (tops[i].matrix)
            out.writeValue(*tops[i].matrix);
        for (std::size_t k = starts[i]; k < starts[i + 1]; ++k)
            list[k]->DataWrite(out, ids);
    }
    long long sum = 0;
    for (Element* e : order) {
        e->prepareSave(); // a record's size is known only once the element is ready to write
        sum += e->DataSize();
    }
    out.writeValue(ELEMENTS_BLOCK);
    out.writeValue(unsigned(sum + 8));
    for (Element* e : order)
        e->DataWrite(out, ids);

    for (Tool* t : list)
        t->flags &= static_cast<unsigned short>(~Tool::FLAG_HIGHLIGHTED);
}

} // namespace

void Scene::saveN(OFile& out)
{
    std::vector<Top> tops;
    for (UITool const& entry : UITools)
        if (entry.tool)
            tops.push_back({entry.tool, unsigned(entry.blockId), &entry.matrix});
    for (Tool* child : root->children)
        tops.push_back({child, TOOL_BLOCK, nullptr});
    writeTools(out, tops);

    std::ostringstream gui;
    if (gSaveGui)
        gSaveGui(gui);
    writeBlock(out, GUI_BLOCK, gui.str());
    CameraState camera;
    camera.centre = centre;
    camera.radius = radius;
    camera.distance = radius;
    if (gSaveCamera)
        gSaveCamera(camera);
    std::ostringstream view;
    camera.write(view);
    writeBlock(out, CAMERA_BLOCK, view.str());
    std::ostringstream layers;
    if (gSaveShaderLayers)
        gSaveShaderLayers(layers);
    else
        layers << shaderLayersPayload();
    writeBlock(out, SHADER_LAYERS_BLOCK, layers.str());
    std::ostringstream includes;
    if (gSaveIncludeCommon)
        gSaveIncludeCommon(includes);
    else
        put(includes, int(0)); // no common includes
    writeBlock(out, INCLUDE_COMMON_BLOCK, includes.str());
    std::ostringstream animation;
    Animation::instance().Save(&animation);
    writeBlock(out, ANIMATION_BLOCK, animation.str());
}

void Scene::saveNO(std::vector<Tool*> const& tools, OFile& out)
{
    std::vector<Top> tops;
    std::unordered_set<Tool*> listed;
    for (Tool* t : tools) {
        // A tool inside another of the list is saved with it.
        bool inside = false;
        for (Tool* p = t ? t->Parent : nullptr; p && !p->isRoot() && !inside; p = p->Parent)
            inside = std::find(tools.begin(), tools.end(), p) != tools.end();
        if (t && !t->isRoot() && !inside && listed.insert(t).second)
            tops.push_back({t, TOOL_BLOCK, nullptr});
    }
    writeTools(out, tops);
}

namespace {

// Writes through `write` into a new file beside `path`, and puts it in the place of `path`
// only when the whole write succeeded: a full disk or a folder without write access leaves
// the old file as it was.
template <class Write>
bool writeReplacing(std::string const& path, Write const& write)
{
    // The extension stays last: writers that add a missing one must not add a second.
    std::size_t slash = path.find_last_of('/');
    std::size_t dot = path.find_last_of('.');
    bool hasExtension = dot != std::string::npos && (slash == std::string::npos || dot > slash);
    std::string temporary = hasExtension ? path.substr(0, dot) + ".saving" + path.substr(dot) : path + ".saving";
    bool written = write(temporary);
    if (written && std::rename(temporary.c_str(), path.c_str()) == 0)
        return true;
    std::remove(temporary.c_str());
    return false;
}

template <class Fill>
bool writeFile(std::string const& path, Fill const& fill)
{
    OFile out(path);
    if (!out.isOpen())
        return false;
    fill(out);
    out.flush();
    return bool(out);
}

} // namespace

bool Scene::saveN(std::string const& path)
{
    return writeReplacing(path, [this](std::string const& file) {
        return writeFile(file, [this](OFile& out) { saveN(out); });
    });
}

bool Scene::saveNO(std::vector<Tool*> const& tools, std::string const& path)
{
    return writeReplacing(path, [this, &tools](std::string const& file) {
        return writeFile(file, [this, &tools](OFile& out) { saveNO(tools, out); });
    });
}

// ---- reading: blocks, records, references, reachability ------------------------------------

namespace {

// The tool kinds this build reads. A kind not listed is skipped by its size and leaves a
// null in the list, so that the numbering stays: references to it become broken ones.
// `plain` kinds take the record's payload size, all others 175.
using ToolReader = Tool* (*)(IFile& in, int payload);
struct ToolKind {
    unsigned tag;
    bool plain;
    ToolReader read;
};
Tool* readPlainTool(IFile& in, int payload)
{
    return new Tool(in, payload);
}
Tool* readSDFTool(IFile& in, int payload)
{
    return new SDFTool(in, payload);
}
Tool* readArray(IFile& in, int payload)
{
    return new Array(in, payload);
}
Tool* readSnake(IFile& in, int payload)
{
    return new Snake(in, payload);
}
Tool* readEnder(IFile& in, int payload)
{
    return new Ender(in, payload);
}
ToolKind const TOOL_KINDS[] = {
    {TOOL_DATA, true, &readPlainTool},
    {SDFTool::TAG, false, &readSDFTool},
    {ARRAY_DATA, false, &readArray},
    {SNAKE_DATA, false, &readSnake},
    {ENDER_DATA, false, &readEnder},
};

// What a load collects before references are resolved.
struct LoadState {
    std::vector<Tool*> tools;                // the file's numbered list; null for skipped kinds
    std::vector<Shared<Element>> elements;   // the element block, in order
    std::vector<Tool*> placedOld;            // objects placed from files before 20181221
    bool damaged = false;                    // the file broke off or contradicts itself
    bool unsupported = false;                // version above what this build reads
    int percent = -1;                        // of the file read, as last told the interface

    // Tells the interface how far the read has come, once per percent.
    void progress(IFile& in)
    {
        int now = in.size() > 0 ? int(in.pos() * 100 / in.size()) : 100;
        if (now != percent)
            emit Communicate::instance().setProgress(percent = now);
    }
};

bool damage(LoadState& state, IFile& in, QString const& what)
{
    LogInfo(QString("The file is damaged at byte %1: %2").arg(in.pos()).arg(what), 2);
    state.damaged = true;
    return false;
}

// Step 8 and 9: the records of one tool block.
bool readToolBlock(IFile& in, Scene& scene, LoadState& state, unsigned blockId, Matrix34<double> const& M,
                   long long limit)
{
    long long start = in.pos();
    bool first = true;
    while (!in.atEnd() && in.pos() - start < limit) {
        unsigned tag = 0, size = 0;
        if (!in.readValue(tag) || !in.readValue(size))
            return damage(state, in, "an object record's header is cut short.");
        long long payload = PayloadSize(size, FILE_VERSION);
        ToolKind const* kind = nullptr;
        for (ToolKind const& k : TOOL_KINDS)
            if (k.tag == tag)
                kind = &k;
        Tool* t = nullptr;
        if (kind) {
            t = kind->read(in, kind->plain ? int(std::clamp<long long>(payload, -1, 1 << 30)) : 175);
            if (t->fileRefs && t->fileRefs->failed) {
                delete t;
                return damage(state, in, QString("object record %1 cannot be read.").arg(state.tools.size()));
            }
        } else if (payload < 0 || !in.skipRawData(payload)) {
            return damage(state, in, QString("object record %1 runs past the end.").arg(state.tools.size()));
        }
        if (t) {
            t->listIndex = int(state.tools.size());
            if (!t->fileRefs)
                t->fileRefs = std::make_unique<Tool::FileRefs>();
        }
        state.tools.push_back(t);
        state.progress(in);
        // Only the first record of a block is placed (none, if its kind is unknown); the
        // rest hang below it by reference.
        bool placed = first && t;
        first = false;
        if (!placed)
            continue;
        t->fileRefs->topLevel = true;
        if (blockId == TOOL_BLOCK) {
            t->Parent = scene.root;
            scene.root->children.push_back(t);
            if (FILE_VERSION < V_NEGATED_PIVOTS)
                state.placedOld.push_back(t);
        } else {
            Scene::UITools.push_back({M, int(blockId), t});
        }
    }
    return true;
}

bool readBuffer(IFile& in, LoadState& state, long long payload, std::unique_ptr<std::stringstream>& buffer)
{
    char const* bytes = in.take(payload);
    if (!bytes)
        return damage(state, in, "a block runs past the end.");
    buffer = std::make_unique<std::stringstream>(std::string(bytes, std::size_t(payload)));
    return true;
}

// The first pair of the file: the version record, or (in files without one) a block.
// False when the file is of a version this build does not read.
bool checkVersion(LoadState& state)
{
    if (FILE_VERSION == 0) {
        LogInfo("File Version 0", 0);
        return true;
    }
    if (FILE_VERSION > FILE_VERSION_CURRENT) {
        LogInfo(QString("Version %1 not supported! Update to latest Vellumbra, from the place you got this "
                        "one.")
                    .arg(FILE_VERSION),
                0);
        state.unsupported = true;
        return false;
    }
    for (int i = 0; i < int(std::size(KNOWN_VERSIONS)); ++i)
        if (KNOWN_VERSIONS[i] == FILE_VERSION)
            LogInfo(QString("File Version %1 %2").arg(i + 1, 2, 10, QChar('0')).arg(FILE_VERSION), 0);
    return true;
}

// Steps 2 to 10: every block of the file.
void readBlocks(IFile& in, Scene& scene, LoadState& state)
{
    bool first = true;
    while (!in.atEnd()) {
        unsigned id = 0, size = 0;
        if (!in.readValue(id) || in.atEnd() || !in.readValue(size))
            break;
        if (id == VERSION_DATA)
            FILE_VERSION = int(size);
        if (first) {
            first = false;
            if (!checkVersion(state))
                return;
            if (FILE_VERSION != 0)
                continue;
        } else if (id == VERSION_DATA) {
            if (!checkVersion(state))
                return;
            continue;
        }
        long long payload = PayloadSize(size, FILE_VERSION);
        if (id == TOOL_BLOCK || (id >= TOOLBOX_BLOCK_FIRST && id <= TOOLBOX_BLOCK_LAST)) {
            Matrix34<double> M = Matrix34<double>::Scale(0.5);
            if (id != TOOL_BLOCK && !ReadFileMatrix(in, FILE_VERSION >= TOOLBOX_MATRIX_DOUBLES, FILE_VERSION, M)) {
                damage(state, in, "a tool box matrix is cut short.");
                return;
            }
            if (!readToolBlock(in, scene, state, id, M, payload))
                return;
        } else if (id == ELEMENTS_BLOCK) {
            long long start = in.pos();
            while (!in.atEnd() && in.pos() - start < payload) {
                long long before = in.pos();
                Element* e = DataReadElement(in);
                VEL_ASSERT_MSG(in.pos() > before, "every element record moves the stream on");
                if (FILE_LOAD_ERROR)
                    return;
                state.elements.emplace_back(e);
                state.progress(in);
            }
        } else if (id == GUI_BLOCK || id == CAMERA_BLOCK || id == ANIMATION_BLOCK || id == SHADER_LAYERS_BLOCK ||
                   id == INCLUDE_COMMON_BLOCK) {
            std::unique_ptr<std::stringstream>& buffer = id == GUI_BLOCK          ? gGuiBuf
                                                         : id == CAMERA_BLOCK     ? gCameraBuf
                                                         : id == ANIMATION_BLOCK  ? gAnimationBuf
                                                         : id == SHADER_LAYERS_BLOCK ? gShaderLayersBuf
                                                                                     : gIncludeCommonBuf;
            if (!readBuffer(in, state, payload, buffer))
                return;
        }
        // Any other id: only its header was read; the next pair follows directly.
    }
}

// Makes every ring of links close: a tool whose chain of links does not come back to it
// stands alone. Each tool is visited a bounded number of times: O(tools).
void closeRings(std::vector<Tool*> const& tools)
{
    std::vector<char> state(tools.size(), 0); // 0 new, 1 on the current walk, 2 on a ring, 3 not
    std::vector<int> walk;
    auto index = [&tools](Tool* t) {
        int i = t->listIndex;
        return i >= 0 && std::size_t(i) < tools.size() && tools[std::size_t(i)] == t ? i : -1;
    };
    for (std::size_t s = 0; s < tools.size(); ++s) {
        if (!tools[s] || state[s])
            continue;
        walk.clear();
        int i = int(s);
        while (i >= 0 && state[std::size_t(i)] == 0) {
            state[std::size_t(i)] = 1;
            walk.push_back(i);
            i = index(tools[std::size_t(i)]->linkNext);
        }
        // The walk ends on a tool of this walk (a ring closes there), or on one already judged.
        int ringStart = i >= 0 && state[std::size_t(i)] == 1 ? i : -1;
        bool onRing = false;
        for (int w : walk) {
            onRing = onRing || w == ringStart;
            state[std::size_t(w)] = onRing ? 2 : 3;
        }
    }
    bool broken = false;
    for (std::size_t s = 0; s < tools.size(); ++s)
        if (tools[s] && state[s] == 3) {
            tools[s]->linkNext = tools[s];
            broken = true;
        }
    if (broken)
        LogInfo("Object link broken - cleared.", 1);
}

} // namespace

bool Scene::load(std::string const& path)
{
    LogInfo(QString("Loading '%1' ...").arg(QString::fromStdString(path)), 0);
    IFile in(QString::fromStdString(path));
    return load(in);
}

bool Scene::load(IFile& in)
{
    History::Pause pause;
    VEL_ASSERT(root);
    gModifiedLoadedElements.clear();
    gDeleteLoadBuffers();
    UITools.clear();
    FILE_VERSION = 0;
    FILE_LOAD_ERROR = false;
    LoadState state;
    emit Communicate::instance().beginProgress("Loading", 100);
    readBlocks(in, *this, state);
    emit Communicate::instance().setProgress(100);

    if (FILE_LOAD_ERROR)
        for (Tool* t : state.tools)
            if (t && t->fileRefs)
                t->fileRefs->element = -1;
    for (Tool* t : state.placedOld) {
        Matrix34<double>& B = t->pivotMatrix;
        for (int k : {1, 4, 7, 10})
            B.m[k] = -B.m[k];
    }
    for (Tool* t : state.tools)
        if (t)
            t->identify(state.tools, state.elements);
    closeRings(state.tools);

    // Reachable: from the root and from each tool box tool. Everything else goes.
    std::unordered_map<int, Tool*> reachable;
    root->toMap(reachable);
    for (UITool const& entry : UITools)
        entry.tool->toMap(reachable);
    for (Tool* t : state.tools)
        if (t)
            t->flags &= static_cast<unsigned short>(~Tool::FLAG_HIGHLIGHTED);
    for (auto const& [id, t] : reachable)
        t->flags |= Tool::FLAG_HIGHLIGHTED;
    int read = 0, deleted = 0;
    for (std::size_t i = state.tools.size(); i-- > 0;) {
        Tool* t = state.tools[i];
        if (!t)
            continue;
        ++read;
        if (t->flags & Tool::FLAG_HIGHLIGHTED) {
            t->flags &= static_cast<unsigned short>(~Tool::FLAG_HIGHLIGHTED);
        } else {
            delete t;
            ++deleted;
        }
    }

    // SDF trees of older files get their priorities renumbered; broken ones are repaired.
    SDFTool::RepairLoaded(reachable, FILE_VERSION);

    std::set<Element*> used;
    std::vector<Element*> parts;
    for (auto const& [id, t] : reachable) {
        if (!t->element)
            continue;
        parts.clear();
        t->element->elements(parts);
        used.insert(parts.begin(), parts.end());
    }
    int dropped = 0;
    for (Shared<Element>& e : state.elements) {
        if (!e)
            continue;
        if (!used.count(e.get()))
            ++dropped;
        // Meshes come out of their reading complete; other kinds are made ready here.
        else if (!dynamic_cast<Mesh*>(e.get()))
            e->initialize(0);
        e = Shared<Element>();
    }
    if (deleted > 0)
        LogInfo(QString("Deleted %1 incompatible objects!").arg(deleted), 1);
    if (dropped > 0)
        LogInfo(QString("Deleted %1 incompatible elements!").arg(dropped), 1);
    LogInfo(QString("Loaded %1 objects and %2 elements").arg(read - deleted).arg(used.size()), 0);

    dirty = true;
    gModifiedLoadedElements.clear();
    return !state.damaged && !state.unsupported && !FILE_LOAD_ERROR;
}

// ---- files by extension, loadTool ----------------------------------------------------------

namespace {

QString upperSuffix(std::string const& path)
{
    return QFileInfo(QString::fromStdString(path)).suffix().toUpper();
}

} // namespace

bool Scene::save(std::string const& path)
{
    QString suffix = upperSuffix(path);
    if (suffix == "VSC")
        return saveN(path);
    if (suffix == "OBJ")
        return writeReplacing(path, [this](std::string const& file) {
            return saveOBJ(std::vector<Tool*>(root->children.begin(), root->children.end()), file, true);
        });
    return false;
}

bool Scene::save(std::vector<Tool*> const& tools, std::string const& path)
{
    QString suffix = upperSuffix(path);
    if (suffix == "VOB")
        return saveNO(tools, path);
    if (suffix == "OBJ")
        return writeReplacing(path, [this, &tools](std::string const& file) { return saveOBJ(tools, file, true); });
    return false;
}

Tool* Scene::loadTool(std::string const& path)
{
    if (!QFileInfo(QString::fromStdString(path)).isReadable())
        return nullptr;
    if (upperSuffix(path) != "OBJ")
        return nullptr;
    History::Pause pause; // a loaded object is placed by its caller, which records that
    AABB box;
    std::vector<std::unique_ptr<Mesh>> meshes = importOBJ(path, box);
    if (meshes.empty())
        return nullptr;
    auto makeTool = [](std::unique_ptr<Mesh>& m) {
        Material material;
        int type = m->Type();
        if (type == 12 || type == 13)
            material.flags = Material::DEFAULT_FLAGS & ~0x340;
        return new Tool(Shared<Element>(m.release()), Matrix34<double>(), Matrix34<double>(), material);
    };
    if (meshes.size() == 1)
        return makeTool(meshes.front());
    Tool* group = new Tool;
    for (auto& m : meshes) {
        Tool* t = makeTool(m);
        t->Parent = group;
        group->children.push_back(t);
    }
    return group;
}

} // namespace vel
