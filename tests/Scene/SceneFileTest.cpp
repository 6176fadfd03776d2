// Scene and object files: round trips of scenes built in code compared field by field, files
// of older versions built byte by byte, and malformed input (truncation at every byte,
// wrong tags, huge counts, sizes past the end, random bytes, a version too new).
#include "Scene/SceneFile.h"

#include "Animation/Animation.h"
#include "Elements/Mesh/MeshFixtures.h"
#include "SceneTestSupport.h"
#include "Scene/Elements/Mesh/Clay.h"
#include "Scene/Elements/Mesh/Mesh.h"
#include "Scene/IFile.h"
#include "Scene/OFile.h"
#include "Scene/Tools/SDFTool/SDFTool.h"

#include <QTemporaryDir>

#include <cstring>
#include <map>
#include <random>

namespace vel {
namespace {

using test::LogCapture;

std::string Save(Scene& scene)
{
    OFile out;
    scene.saveN(out);
    return out.bytes();
}

// A scene loaded from bytes, with its tool box tools; everything goes at its end.
struct Loaded {
    Scene scene;
    bool ok = false;
    std::vector<UITool> boxes;

    explicit Loaded(std::string const& bytes)
    {
        IFile in(QByteArray(bytes.data(), int(bytes.size())));
        ok = scene.load(in);
        boxes = Scene::UITools;
        Scene::UITools.clear();
    }
    ~Loaded()
    {
        for (UITool& b : boxes)
            delete b.tool;
    }
    std::vector<Tool*> list()
    {
        std::vector<Tool*> all;
        for (UITool& b : boxes)
            b.tool->toList(all);
        scene.root->toList(all);
        return all;
    }
};

// Everything a file keeps of a tool, with references as list positions and elements by the
// order of first appearance.
std::string Describe(std::vector<Tool*> const& list)
{
    std::map<Tool const*, int> index;
    for (std::size_t i = 0; i < list.size(); ++i)
        index[list[i]] = int(i);
    std::map<Element const*, int> elements;
    std::ostringstream out;
    for (Tool* t : list) {
        out << "[";
        for (double v : t->objectMatrix.m)
            out << v << " ";
        for (double v : t->pivotMatrix.m)
            out << v << " ";
        out << t->rotationAxis.x << t->rotationAxis.y << t->rotationAxis.z << " " << t->translationAxis.x
            << t->translationAxis.y << t->translationAxis.z << " pbr";
        for (uint32_t w : t->material.pbr.w)
            out << " " << w;
        out << " " << t->material.flags << " " << t->material.scalar << " flags " << t->flags << " kids";
        for (Tool* c : t->children)
            out << " " << index[c];
        out << " link " << index[t->linkNext] << " el ";
        if (t->element)
            out << elements.emplace(t->element.get(), int(elements.size())).first->second;
        out << " " << t->rotationMultiplier << " " << t->speed << " " << t->delay << " " << t->record << " shader "
            << t->active;
        for (auto const& [title, text] : t->code)
            out << " " << title << "=" << text;
        for (int i : t->vIncludes)
            out << " v" << i;
        for (int i : t->fIncludes)
            out << " f" << i;
        out << "]\n";
    }
    return out.str();
}

// The difference of two meshes in what a record stores, the element's mapping included.
std::string MeshDifference(Element& a, Element& b)
{
    std::string d = test::RecordDifference(static_cast<Mesh&>(a), static_cast<Mesh&>(b));
    return d + (a.center == b.center && a.scale == b.scale ? "" : " mapping differs");
}

class SceneFile : public test::SceneTest {
protected:
    std::vector<Tool*> owned; // tool box tools of the scene being saved

    void TearDown() override
    {
        Scene::UITools.clear();
        for (Tool* t : owned)
            delete t;
        Animation::instance().clear();
        test::SceneTest::TearDown();
    }

    // A tool with every field away from its default.
    Tool* rich(Tool* parent, Shared<Element> const& e, int seed)
    {
        Tool* t = add(parent, e, seed % 2 == 0, test::moveBy(seed, 2, 3));
        t->objectMatrix.m[1] = 0.25 * seed;
        t->pivotMatrix = Matrix34<double>(Matrix3<double>::Scale(1.5), {0, seed * 0.5, 0});
        t->rotationAxis = {0, 1, float(seed)};
        t->translationAxis = {1, 0, 0};
        t->material.pbr.setColor(0, 100 * seed);
        t->material.pbr.setRough(seed);
        t->material.flags = 0x240 + seed;
        t->material.scalar = 0.5f + seed;
        t->flags |= Tool::FLAG_TRANSPARENT | 0x400;
        t->rotationMultiplier = -2.0f / float(seed + 1);
        t->speed = 3;
        t->delay = 0.125f * seed;
        t->record = 7.5 + seed;
        t->active = seed % 3 == 0;
        t->code["FragmentMainCode"] = "oColor = vec4(" + std::to_string(seed) + ");";
        t->vIncludes = {seed, 2};
        t->fIncludes = {4};
        return t;
    }
};

// ---- round trips -----------------------------------------------------------------------------

TEST_F(SceneFile, ScenesRoundTripFieldByField)
{
    auto colored = test::ClosedCube();
    colored->setDataType(1);
    colored->materials[3].setColor(1, 77);
    auto mapped = test::QuadGrid(2);
    mapped->setDataType(2);
    mapped->uvs[1] = 0x12345678u;
    Shared<Element> shared(colored.release()), uv(mapped.release());

    Tool* a = rich(root, shared, 1);
    Tool* b = rich(a, Shared<Element>(), 2);
    Tool* c = rich(b, shared, 3); // the shared element, two levels down
    Tool* d = rich(root, uv, 4);
    c->link(d);
    d->link(a); // a ring of three across the hierarchy
    Tool* boxed = new Tool(uv);
    owned.push_back(boxed);
    Scene::UITools.push_back({test::moveBy(9, 8, 7), int(TOOLS_PANEL_BLOCK), boxed});

    Animation& animation = Animation::instance();
    Keyframe key;
    key.time = 2.5;
    key.transition = Keyframe::LINEAR;
    key.position = {1, 2, 3};
    key.distance = 4;
    key.viewParameters = {{1, 2, 3, -4}};
    animation.keyframes = {key, Keyframe()};
    animation.current = 1;

    std::vector<Tool*> before;
    boxed->toList(before);
    root->toList(before);
    std::string expected = Describe(before);
    a->flags |= Tool::FLAG_SELECTED | Tool::FLAG_HIGHLIGHTED; // not saved
    std::string bytes = Save(*scene);
    animation.clear();

    LogCapture log;
    Loaded loaded(bytes);
    ASSERT_TRUE(loaded.ok) << log.all().toStdString();
    EXPECT_EQ(Describe(loaded.list()), expected);
    EXPECT_TRUE(test::validate(loaded.scene.root).empty());
    ASSERT_EQ(loaded.boxes.size(), 1u);
    EXPECT_EQ(loaded.boxes[0].blockId, int(TOOLS_PANEL_BLOCK));
    EXPECT_EQ(loaded.boxes[0].matrix, test::moveBy(9, 8, 7));
    EXPECT_TRUE(log.all().contains("Loaded 5 objects and 2 elements")) << log.all().toStdString();

    // Meshes come back record for record, materials and UVs included, and stay shared.
    std::vector<Tool*> list = loaded.list();
    ASSERT_EQ(list.size(), 5u);
    EXPECT_EQ(list[1]->element.get(), list[3]->element.get());
    EXPECT_EQ(MeshDifference(*list[1]->element, *shared), "");
    EXPECT_EQ(MeshDifference(*list[0]->element, *uv), "");

    ASSERT_TRUE(gAnimationBuf);
    ASSERT_TRUE(animation.Load(gAnimationBuf.get(), false, FILE_VERSION));
    ASSERT_EQ(animation.keyframes.size(), 2u);
    EXPECT_EQ(animation.keyframes[0], key);
    EXPECT_EQ(animation.current, 1);
    gDeleteLoadBuffers();
}

// SDF tools travel under their own tag, with their parameters after the base record, and the
// tree they form comes back in the same order of evaluation.
TEST_F(SceneFile, SdfTreesRoundTrip)
{
    SDFObj box;
    box.shape = 1;
    box.dims = {2, 3, 4};
    box.falloff = 0.25f;
    auto* top = new SDFTool(box, test::moveBy(1, 2, 3));
    root->addChild(top);
    SDFObj hole;
    hole.operation = 2;
    hole.priority = 1;
    hole.R = 0.5f;
    auto* cut = new SDFTool(hole);
    top->addChild(cut);
    std::string bytes = Save(*scene);

    LogCapture log;
    Loaded loaded(bytes);
    ASSERT_TRUE(loaded.ok) << log.all().toStdString();
    std::vector<Tool*> list = loaded.list();
    ASSERT_EQ(list.size(), 2u);
    for (std::size_t i = 0; i < 2; ++i) {
        ASSERT_TRUE(list[i]->isSDF()) << i;
        SDFObj const& expected = i == 0 ? top->sdf : cut->sdf;
        auto* read = static_cast<SDFTool*>(list[i]);
        EXPECT_EQ(read->sdf.difference(expected), -1) << i;
        EXPECT_EQ(read->sdf.priority, expected.priority) << i;
    }
    EXPECT_EQ(list[0]->objectMatrix, top->objectMatrix);
    EXPECT_EQ(list[1]->Parent, list[0]);
    EXPECT_TRUE(static_cast<SDFTool*>(list[0])->validateTree().empty());
}

TEST_F(SceneFile, EmptySceneHasTheFrameOfTheFormat)
{
    std::string bytes = Save(*scene);
    // Version record, element block, interface, camera, shader layers, includes, animation.
    std::vector<std::pair<unsigned, unsigned>> expected = {
        {VERSION_DATA, FILE_VERSION_CURRENT}, {ELEMENTS_BLOCK, 8}, {GUI_BLOCK, 8},           {CAMERA_BLOCK, 144},
        {SHADER_LAYERS_BLOCK, 78},            {INCLUDE_COMMON_BLOCK, 12}, {ANIMATION_BLOCK, 26}};
    std::size_t at = 0;
    for (auto const& [id, size] : expected) {
        ASSERT_LE(at + 8, bytes.size());
        unsigned header[2];
        std::memcpy(header, bytes.data() + at, 8);
        EXPECT_EQ(header[0], id);
        EXPECT_EQ(header[1], size);
        at += id == VERSION_DATA ? 8 : size;
    }
    EXPECT_EQ(at, bytes.size());

    // A tool's record is as long as its DataSize says, and the block counts it.
    Tool* t = rich(root, Shared<Element>(), 5);
    OFile record;
    std::unordered_map<Element*, int> ids;
    t->DataWrite(record, ids);
    EXPECT_EQ(int(record.bytes().size()), t->DataSize());
    EXPECT_EQ(Save(*scene).size(), bytes.size() + 8 + record.bytes().size());
}

TEST_F(SceneFile, ObjectFilesKeepThePartOfARingThatIsSaved)
{
    Tool* a = add(root, Shared<Element>(), true);
    Tool* b = add(root, Shared<Element>(), true);
    Tool* c = add(root, Shared<Element>(), true);
    Tool* child = add(a);
    a->link(b);
    b->link(c); // ring a, c, b or similar: three members
    OFile out;
    scene->saveNO({a, c, child, root}, out); // the root is skipped, the child comes with a
    Loaded loaded(out.bytes());
    ASSERT_TRUE(loaded.ok);
    auto list = loaded.list();
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(list[0]->children.size(), 1u);
    EXPECT_EQ(list[0]->linkNext, list[2]);
    EXPECT_EQ(list[2]->linkNext, list[0]);
    EXPECT_EQ(list[1]->linkNext, list[1]);
    EXPECT_FALSE(gGuiBuf); // an object file has no interface block
}

TEST_F(SceneFile, SavingToDiskGoesByExtension)
{
    QTemporaryDir dir;
    auto cube = test::ClosedCube();
    cube->vertAdd({9, 9, 9}); // a record left inactive by an edit: compacted before writing
    cube->verts.back().clear(MeshVert::ACTIVE);
    cube->hasInactive = true;
    add(root, Shared<Element>(cube.release()), true);
    std::string vsc = dir.filePath("a.VSC").toStdString();
    EXPECT_TRUE(scene->save(vsc));
    EXPECT_TRUE(scene->save(dir.filePath("b.obj").toStdString()));
    EXPECT_FALSE(scene->save(dir.filePath("c.txt").toStdString()));
    EXPECT_FALSE(scene->save(dir.filePath("missing/d.vsc").toStdString()));
    Scene other;
    EXPECT_TRUE(other.load(vsc));
    ASSERT_EQ(other.root->children.size(), 1u);
    EXPECT_EQ(static_cast<Mesh*>(other.root->children[0]->element.get())->verts.size(), 8u);
    gDeleteLoadBuffers();
    Tool* obj = Scene::loadTool(dir.filePath("b.obj").toStdString());
    ASSERT_TRUE(obj && obj->element);
    EXPECT_EQ(static_cast<Mesh*>(obj->element.get())->faces.size(), 6u);
    delete obj;
    EXPECT_EQ(Scene::loadTool(vsc), nullptr); // scenes are opened, not loaded as a tool
}

// ---- older versions, built byte by byte from the format's tables -----------------------------

// What the old files below hold, as a loaded tool must show it.
Matrix34<double> const OLD_OBJECT(Matrix3<double>(1, 2, 3, 4, 5, 6, 7, 8, 9), {10, 11, 12});
wvec4 const OLD_COLOR{65535, 0, 32768, 65535};

template <class T>
void put(std::string& out, T const& value)
{
    out.append(reinterpret_cast<char const*>(&value), sizeof(T));
}

void putMatrix(std::string& out, Matrix34<double> const& M, bool doubles, int version)
{
    if (doubles)
        return put(out, M);
    float f[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 3; ++c)
            // By rows before 20161026 (row r at 4r), by columns after (column c at 4c).
            f[version < 20161026 ? 4 * r + c : 4 * c + r] = float(M.m[3 * r + c]);
    out.append(reinterpret_cast<char const*>(f), sizeof f);
}

// One tool record of `version`: the object matrix above, a material, flags 9 (0x409 where
// two bytes are kept), the children and link given, no element, then the later fields.
std::string OldToolRecord(int version, std::vector<int> const& children, int link)
{
    std::string r;
    bool doubles = version > 20180605;
    putMatrix(r, OLD_OBJECT, doubles, version);
    putMatrix(r, Matrix34<double>(), doubles, version);
    put(r, Vector3<float>(0, 1, 0));
    put(r, Vector3<float>(1, 0, 0));
    if (version < 20161026) {
        put(r, int(0));                         // a field of the oldest files, ignored
        put(r, uint32_t(0xFF8000FFu));          // 8-bit colour: 255, 0, 128, 255
        put(r, uint32_t(0));                    // 8-bit light
    } else if (version < 20211202) {
        put(r, OLD_COLOR);
        put(r, wvec4{0, 0, 0, 0});
        put(r, short(0));       // metal
        put(r, short(-32768));  // rough
    } else {
        put(r, Pbr(OLD_COLOR, wvec4{0, 0, 0, 0}, -32768, 0));
    }
    if (version > 20181221)
        put(r, int(0x241));
    if (version > 20200406)
        put(r, 2.5f);
    if (version > 20180604)
        put(r, (unsigned short)0x409);
    else
        put(r, (unsigned char)9);
    put(r, int(children.size()));
    for (int c : children)
        put(r, c);
    put(r, link);
    put(r, int(-1));
    if (version >= 20060411) {
        put(r, 0.5f); // rotation multiplier
        put(r, 2.0f); // speed
        put(r, 0.25f);
    }
    if (version >= 20210109)
        put(r, 9.0);
    if (version >= 20211106) {
        ObjectShader shader;
        shader.code["VertexMainLocalCode"] = "p *= 2.0;";
        OFile out;
        shader.DataWrite(out);
        r += out.bytes();
    }
    return r;
}

// A whole file: a tool box block with one tool, a tool block of a parent and its child
// linked to each other, and an empty element block.
std::string OldFile(int version)
{
    bool counts = version >= 20170421;
    auto block = [&](unsigned id, std::string const& prefix, std::vector<std::string> const& records) {
        std::string body;
        for (std::string const& rec : records) {
            put(body, TOOL_DATA);
            put(body, unsigned(rec.size() + (counts ? 8 : 0)));
            body += rec;
        }
        std::string b;
        put(b, id);
        put(b, unsigned(body.size() + (counts ? 8 : 0)));
        return b + prefix + body;
    };
    std::string file;
    if (version != 0) {
        put(file, VERSION_DATA);
        put(file, unsigned(version));
    }
    std::string matrix;
    putMatrix(matrix, Matrix34<double>::Translation({1, 2, 3}), version >= 20181221, version);
    file += block(0x10000001u, matrix, {OldToolRecord(version, {}, -1)});
    file += block(TOOL_BLOCK, "", {OldToolRecord(version, {2}, 2), OldToolRecord(version, {}, 1)});
    put(file, ELEMENTS_BLOCK);
    put(file, unsigned(counts ? 8 : 0));
    return file;
}

TEST_F(SceneFile, OlderVersionsLoadWithTheirLayouts)
{
    for (int version : {0, 20160915, 20161026, 20180402, 20180605, 20181221, 20181222, 20200511, 20210116,
                        20211106, 20211202, 20230528, FILE_VERSION_CURRENT}) {
        SCOPED_TRACE(version);
        LogCapture log;
        Loaded loaded(OldFile(version));
        ASSERT_TRUE(loaded.ok) << log.all().toStdString();
        ASSERT_EQ(loaded.boxes.size(), 1u);
        EXPECT_EQ(loaded.boxes[0].matrix, Matrix34<double>::Translation({1, 2, 3}));
        ASSERT_EQ(loaded.scene.root->children.size(), 1u);
        Tool* parent = loaded.scene.root->children[0];
        ASSERT_EQ(parent->children.size(), 1u);
        Tool* child = parent->children[0];
        for (Tool* t : {loaded.boxes[0].tool, parent, child}) {
            EXPECT_EQ(t->objectMatrix, OLD_OBJECT);
            EXPECT_EQ(t->rotationAxis, Vector3<float>(0, 1, 0));
            Pbr expected = version < 20161026 ? Pbr(wvec4{0xFF00, 0, 0x8000, 0xFF00}, wvec4{0, 0, 0, 0}, 0, 0)
                                              : Pbr(OLD_COLOR, wvec4{0, 0, 0, 0}, -32768, 0);
            EXPECT_EQ(t->material.pbr, expected);
            EXPECT_EQ(t->material.flags, version > 20181221 ? 0x241 : Material::DEFAULT_FLAGS);
            EXPECT_EQ(t->material.scalar, version > 20200406 ? 2.5f : 1.0f);
            EXPECT_EQ(t->flags, version > 20180604 ? 0x409 : 9);
            EXPECT_EQ(t->speed, version >= 20060411 ? 2.0f : 1.0f);
            EXPECT_EQ(t->record, version >= 20210109 ? 9.0 : 0.02);
            EXPECT_EQ(t->code.count("VertexMainLocalCode"), version >= 20211106 ? 1u : 0u);
        }
        // Links before 20181222 are not kept; the placed object's pivot was mirrored in y.
        EXPECT_EQ(parent->linkNext, version >= 20181222 ? child : parent);
        EXPECT_EQ(parent->pivotMatrix.m[4], version < 20181221 ? -1.0 : 1.0);
    }
    // The log names the known versions by number.
    for (auto const& [version, line] : std::map<int, QString>{
             {0, "File Version 0"}, {20160915, "File Version 02 20160915"}, {20211202, "File Version 26 20211202"}}) {
        LogCapture log;
        Loaded loaded(OldFile(version));
        EXPECT_TRUE(log.all().contains(line)) << log.all().toStdString();
    }
}

// ---- malformed input -------------------------------------------------------------------------

// A small scene: a parent with a child, both on one mesh, linked, and a tool box tool.
std::string SmallScene(Scene& scene, std::vector<Tool*>& owned)
{
    Shared<Element> mesh(test::ClosedOctahedron().release());
    Tool* a = new Tool(mesh);
    a->Parent = scene.root;
    scene.root->children.push_back(a);
    Tool* b = new Tool(mesh);
    a->addChild(b);
    a->link(b);
    owned.push_back(new Tool);
    Scene::UITools.push_back({Matrix34<double>(), 0x10000003, owned.back()});
    OFile out;
    scene.saveN(out);
    Scene::UITools.clear();
    return out.bytes();
}

// Whatever a load makes of damaged bytes is a sound tree: every tool reachable once, every
// ring closed, nothing left alive once the scene goes.
void ExpectSound(std::string const& bytes, char const* what, std::size_t at)
{
    Loaded loaded(bytes);
    EXPECT_TRUE(test::validate(loaded.scene.root).empty()) << what << " " << at;
    for (UITool const& b : loaded.boxes)
        EXPECT_TRUE(test::validate(b.tool).empty()) << what << " " << at;
    gDeleteLoadBuffers();
}

TEST_F(SceneFile, EveryTruncationLoadsAConsistentPartOrFails)
{
    std::string bytes = SmallScene(*scene, owned);
    int before = Tool::COUNT;
    for (std::size_t cut = 0; cut < bytes.size(); ++cut) {
        LogCapture log;
        ExpectSound(bytes.substr(0, cut), "cut", cut);
        EXPECT_EQ(Tool::COUNT, before) << cut;
        // Every load ends in its summary or the reason it failed.
        EXPECT_TRUE(log.all().contains("Loaded ") || log.all().contains("damaged")) << cut;
    }
}

TEST_F(SceneFile, ClayComesBackAsClayWithEveryPosition)
{
    auto sphere = Mesh::Sphere(Mesh::Octahedron(), 2);
    auto* clay = new Clay(sphere.get());
    Tool* t = new Tool(Shared<Element>(clay));
    t->Parent = scene->root;
    scene->root->children.push_back(t);
    std::string bytes = Save(*scene);
    {
        Loaded loaded(bytes);
        ASSERT_TRUE(loaded.ok);
        auto list = loaded.list();
        ASSERT_EQ(list.size(), 1u);
        auto* back = dynamic_cast<Clay*>(list[0]->element.get());
        ASSERT_NE(back, nullptr);
        EXPECT_EQ(test::RecordDifference(*back, *clay), "");
    }
    // Cut anywhere inside the clay's record: a sound tree and a message.
    std::size_t record = bytes.find(std::string("\x0A\x00\x00\xE0", 4));
    ASSERT_NE(record, std::string::npos);
    for (std::size_t cut = record; cut < bytes.size(); cut += 7) {
        LogCapture log;
        ExpectSound(bytes.substr(0, cut), "clay cut", cut);
        EXPECT_FALSE(log.all().isEmpty()) << cut;
    }
}

TEST_F(SceneFile, CorruptFieldsAreRefusedWithAMessage)
{
    std::string bytes = SmallScene(*scene, owned);
    // Offsets in the small scene: the version record (0), the tool box block (8), its matrix
    // (16), its record header (112) and fields, then the tool block.
    std::size_t boxRecord = 8 + 8 + 96;
    std::size_t toolBlock = boxRecord + *reinterpret_cast<unsigned const*>(bytes.data() + boxRecord + 4);
    std::size_t firstRecord = toolBlock + 8;
    std::size_t childCount = firstRecord + 8 + 96 + 96 + 12 + 12 + 16 + 4 + 4 + 2;
    std::size_t elementIndex = childCount + 4 + 4 + 4;
    auto patched = [&bytes](std::size_t at, uint32_t value) {
        std::string b = bytes;
        std::memcpy(b.data() + at, &value, 4);
        return b;
    };
    std::size_t elementBlock = bytes.find(std::string("\xEE\xEE\xEE\xEE", 4));
    ASSERT_NE(elementBlock, std::string::npos);

    struct Case {
        char const* what;
        std::string bytes;
        bool ok;
        char const* message;
    };
    Case const cases[] = {
        {"version too new", patched(4, 20230712), false, "Version 20230712 not supported! Update to latest Vellumbra"},
        {"child count 2^31", patched(childCount, 0x80000000u), false, "damaged"},
        {"child count 2^31 - 1", patched(childCount, 0x7FFFFFFFu), false, "damaged"},
        {"child outside", patched(childCount + 4, 99), true, "Error loading object - deleted."},
        {"child is its parent", patched(childCount + 4, 1), true, "Error loading object - deleted."},
        {"link outside", patched(childCount + 8, 0x7FFFFFFFu), true, "Object link broken - cleared."},
        {"element outside", patched(elementIndex, 5), true, "Loaded 3 objects"},
        {"unknown tool tag", patched(firstRecord, 0xABCDEF7Fu), true, "Deleted 1 incompatible objects!"},
        {"unknown element tag", patched(elementBlock + 8, 0xE0000077u), false, "Load element error: 3758096503"},
        {"block past the end", patched(bytes.size() - 26 + 4, 0x7FFFFFF0u), false, "damaged"},
        {"record past the end", patched(elementBlock + 12, 0x7FFFFFF0u), true, "runs past the end"},
        // Object record sizes may fall short: the fields tell where a record ends.
        {"short object record", patched(firstRecord + 4, 100), true, "Loaded 3 objects and 1 elements"},
    };
    for (Case const& c : cases) {
        LogCapture log;
        {
            Loaded loaded(c.bytes);
            EXPECT_EQ(loaded.ok, c.ok) << c.what;
            EXPECT_TRUE(test::validate(loaded.scene.root).empty()) << c.what;
        }
        EXPECT_TRUE(log.all().contains(c.message)) << c.what << ": " << log.all().toStdString();
        gDeleteLoadBuffers();
    }
}

TEST_F(SceneFile, RandomBytesNeverBreakTheTree)
{
    std::string bytes = SmallScene(*scene, owned);
    std::mt19937 random(13);
    for (int round = 0; round < 300; ++round) {
        std::string b = bytes;
        for (int k = 0; k < 1 + round % 8; ++k)
            b[random() % b.size()] = char(random());
        LogCapture log;
        ExpectSound(b, "round", std::size_t(round));
    }
    std::string noise(4096, 0);
    for (char& c : noise)
        c = char(random());
    ExpectSound(noise, "noise", 0);
}

} // namespace
} // namespace vel
