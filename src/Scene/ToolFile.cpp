// Tool's file record: DataSize, Data, DataWrite, DataRead by file version, identify.
//
// Record of the current version, after tag and size: object and pivot matrices (12 doubles
// each), rotation and translation axes, Pbr, render flags, scalar, flags (without selected
// and highlighted), child count and children, link, element, rotation multiplier, speed,
// delay, record, then the object shader data (not for SDF tools). Every reference is an
// index into the file's list of records; the element an index into its element block.
//
// Index
// - writing
// - reading
// - identify
#include "Scene/Tool.h"

#include "Core/Communicate.h"
#include "Math/PackedVectors.h"
#include "Scene/IFile.h"
#include "Scene/OFile.h"
#include "Scene/Scene.h"
#include "Scene/SceneFile.h"

namespace vel {

namespace {

// Versions at which the base record changed.
constexpr int V_RECORD_ENDS = 20060411;        // before: the record ends after the element
constexpr int V_COLUMN_MATRICES = 20161026;    // before: 8-bit colours; elements not identified
constexpr int V_SHORT_FLAGS = 20180604;        // after: 2-byte flags
constexpr int V_PBR_ONLY = 20181221;           // up to: a Pbr without render flags
constexpr int V_LINKS = 20181222;              // from: links kept
constexpr int V_SCALAR = 20200406;             // after: the material's scalar stored
constexpr int V_RECORD_FIELD = 20210109;       // from: the `record` double
constexpr int V_OBJECT_SHADER = 20211106;      // from: object shader data
constexpr int V_SDF_SHADER_DROPPED = 20230602; // from: SDF tools have no object shader data
constexpr unsigned short SAVED_FLAGS = 0xFFED; // selected and highlighted are not saved
constexpr int PAYLOAD_TWO_BYTE_FIELD = 175;    // the payload at which the oldest field is 2 bytes
constexpr int OLD_FLAGS_RENDER_BIT = 0x400;    // what files with 1-byte flags add to render flags

// The oldest material: 8-bit colour and light, each byte the top of a 16-bit channel.
bool readByteMaterial(IFile& in, int payload, Material& material)
{
    char skipped[4];
    unsigned char color[4], light[4];
    if (in.readRawData(skipped, payload == PAYLOAD_TWO_BYTE_FIELD ? 2 : 4) < (payload == PAYLOAD_TWO_BYTE_FIELD ? 2 : 4) ||
        !in.readValue(color) || !in.readValue(light))
        return false;
    auto wide = [](unsigned char const* c) {
        return wvec4{uint16_t(c[0] << 8), uint16_t(c[1] << 8), uint16_t(c[2] << 8), uint16_t(c[3] << 8)};
    };
    material.pbr = Pbr(wide(color), wide(light), 0, 0);
    return true;
}

} // namespace

// ---- writing -------------------------------------------------------------------------------

int Tool::DataSize() const
{
    return 282 + 4 * int(children.size()) + (isSDF() ? 0 : ObjectShader::DataSize());
}

void Tool::Data(OFile& out, std::unordered_map<Element*, int>& ids)
{
    out.writeValue(objectMatrix);
    out.writeValue(pivotMatrix);
    out.writeValue(rotationAxis);
    out.writeValue(translationAxis);
    out.writeValue(material.pbr);
    out.writeValue(material.flags);
    out.writeValue(material.scalar);
    out.writeValue(static_cast<unsigned short>(flags & SAVED_FLAGS));
    out.writeValue(int(children.size()));
    for (Tool* child : children)
        out.writeValue(child->listIndex);
    // The next ring member that is saved too: the mark of the saved set is FLAG_HIGHLIGHTED.
    int steps = 0;
    Tool* next = linkNext;
    while (next != this && !(next->flags & FLAG_HIGHLIGHTED))
        next = ringNext(next, steps);
    out.writeValue(next->listIndex);
    int elementIndex = -1;
    if (element && !isPrimitive() && !isSDF()) {
        auto found = ids.find(element.get());
        if (found != ids.end())
            elementIndex = found->second;
    }
    out.writeValue(elementIndex);
    out.writeValue(rotationMultiplier);
    out.writeValue(speed);
    out.writeValue(delay);
    out.writeValue(record);
    if (!isSDF())
        ObjectShader::DataWrite(out);
}

void Tool::DataWrite(OFile& out, std::unordered_map<Element*, int>& ids)
{
    out.writeValue(TOOL_DATA);
    out.writeValue(unsigned(DataSize()));
    Data(out, ids);
}

bool Tool::save(std::string const& path)
{
    return Scene::instance().save(std::vector<Tool*>{this}, path);
}

// ---- reading -------------------------------------------------------------------------------

Tool::Tool(IFile& in, int payload)
    : Tool(Unrecorded{})
{
    if (!DataRead(in, payload)) {
        if (!fileRefs)
            fileRefs = std::make_unique<FileRefs>();
        fileRefs->failed = true;
    }
}

bool Tool::DataRead(IFile& in, int payload)
{
    int const version = FILE_VERSION;
    fileRefs = std::make_unique<FileRefs>();
    FileRefs& refs = *fileRefs;
    bool doubles = version > MATRIX_DOUBLES_AFTER;
    if (!ReadFileMatrix(in, doubles, version, objectMatrix) || !ReadFileMatrix(in, doubles, version, pivotMatrix) ||
        !in.readValue(rotationAxis) || !in.readValue(translationAxis))
        return false;

    material = Material();
    if (version < V_COLUMN_MATRICES) {
        if (!readByteMaterial(in, payload, material))
            return false;
    } else if (!ReadFilePbr(in, version, material.pbr)) {
        return false;
    }
    if (version > V_PBR_ONLY && !in.readValue(material.flags))
        return false;
    if (version > V_SCALAR && !in.readValue(material.scalar))
        return false;

    if (version > V_SHORT_FLAGS) {
        if (!in.readValue(flags))
            return false;
    } else {
        unsigned char small = 0;
        if (!in.readValue(small))
            return false;
        flags = small;
        material.flags |= OLD_FLAGS_RENDER_BIT;
    }
    flags &= SAVED_FLAGS;

    int count = 0;
    if (!in.readValue(count) || count < 0 || count > in.left() / 4)
        return false;
    refs.children.resize(std::size_t(count));
    if (!in.readValues(refs.children.data(), count) || !in.readValue(refs.link) || !in.readValue(refs.element))
        return false;
    if (version < V_LINKS)
        refs.link = -1;
    if (version < V_RECORD_ENDS)
        return true;
    if (!in.readValue(rotationMultiplier) || !in.readValue(speed) || !in.readValue(delay))
        return false;
    if (version >= V_RECORD_FIELD && !in.readValue(record))
        return false;
    bool shader = version >= V_OBJECT_SHADER && (!isSDF() || version < V_SDF_SHADER_DROPPED);
    return !shader || ObjectShader::DataRead(in);
}

bool Tool::DataReadOld(IFile& in)
{
    // Qualified: a kind whose DataRead falls back on DataReadOld would otherwise loop.
    return Tool::DataRead(in, PAYLOAD_TWO_BYTE_FIELD);
}

// ---- identify ------------------------------------------------------------------------------

void Tool::identify(std::vector<Tool*> const& tools, std::vector<Shared<Element>> const& elements)
{
    if (!fileRefs)
        return;
    std::unique_ptr<FileRefs> refs = std::move(fileRefs);
    auto inside = [&tools](int i) { return i >= 0 && std::size_t(i) < tools.size(); };

    // A child comes after its parent in the pre-order list, has no parent yet and does not
    // open a block: anything else would make a cycle or give a tool two owners. (Tools are
    // identified in list order, so a child's numbers are still there.)
    children.assign(refs->children.size(), nullptr);
    for (std::size_t i = children.size(); i-- > 0;) {
        int index = refs->children[i];
        Tool* child = inside(index) && index > listIndex ? tools[std::size_t(index)] : nullptr;
        if (child && !child->Parent && !(child->fileRefs && child->fileRefs->topLevel)) {
            setChild(int(i), child);
            continue;
        }
        children.erase(children.begin() + std::ptrdiff_t(i));
        LogInfo("Error loading object - deleted.", 1);
    }

    if (refs->link >= 0 && inside(refs->link) && tools[std::size_t(refs->link)]) {
        linkNext = tools[std::size_t(refs->link)];
    } else {
        if (refs->link >= 0)
            LogInfo("Object link broken - cleared.", 1);
        linkNext = this;
    }

    if (refs->element >= 0 && std::size_t(refs->element) < elements.size())
        element = elements[std::size_t(refs->element)];
    if (!element)
        return;
    if (FILE_VERSION < V_COLUMN_MATRICES && element->Type() == 8) {
        // Revolutions of those files stood on another axis: a quarter turn, rows r0, -r2, r1.
        auto turn = [](Matrix34<double>& M) {
            Vector3<double> r0 = M.row(0), r1 = M.row(1), r2 = M.row(2);
            M.setLinear(Matrix3<double>(r0, -r2, r1));
        };
        turn(objectMatrix);
        for (Tool* child : children)
            turn(child->pivotMatrix);
    }
    element->identify(elements);
}

} // namespace vel
