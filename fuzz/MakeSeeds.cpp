// Writes the starting inputs of every fuzz target, made by the system's own writers, into
// <folder>/<target>/: OBJ exports and mesh records of the shape factories, stream scripts,
// shipped shaders, small images of each kind, and scene and object files.
#include "Math/Matrix34.h"
#include "mainwindow/ConfigFile.h"
#include "OpenGL/ShaderLayer.h"
#include "OpenGL/ShaderManager.h"
#include "Scene/Elements/Mesh/Clay.h"
#include "Scene/Elements/Curve/Curve.h"
#include "Scene/Elements/Curve/UCurve.h"
#include "Scene/Elements/Mesh/Mesh.h"
#include "Scene/OFile.h"
#include "Scene/Tools/Array/Array.h"
#include "Scene/Tools/Array/Ender.h"
#include "Scene/Tools/Array/Snake.h"
#include "Scene/Tools/SDFTool/SDFObj.h"
#include "Scene/Root.h"
#include "Scene/Scene.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tool.h"
#include "TestImages.h" // the GIF and HDR writers of the texture tests

#include <QDir>
#include <QImage>

#include <cstdio>
#include <fstream>
#include <sstream>

namespace {

using namespace vel;

std::string gFolder;

void Seed(std::string const& target, std::string const& name, std::string const& bytes)
{
    QDir().mkpath(QString::fromStdString(gFolder + "/" + target));
    std::ofstream(gFolder + "/" + target + "/" + name, std::ios::binary) << bytes;
}

std::string Obj(std::vector<Mesh const*> const& meshes, bool normals)
{
    std::ostringstream out;
    unsigned objects = 0, vertices = 0, faces = 0;
    for (Mesh const* m : meshes)
        m->appendOBJ(out, objects, vertices, faces, Matrix34<double>(), normals);
    return out.str();
}

void Meshes()
{
    auto box = Mesh::Box();
    auto gear = Mesh::Gear(3, 0.1f, 0.3f, 0.5f, 0.1f, 5);
    auto quad = Mesh::Quad();
    Seed("obj", "box.obj", Obj({box.get()}, true));
    Seed("obj", "two.obj", Obj({quad.get(), gear.get()}, false));
    std::string cr = Obj({box.get()}, false);
    for (char& c : cr)
        c = c == '\n' ? '\r' : c;
    Seed("obj", "cr.obj", cr);
    int version = 4; // the byte that picks the current version in the record target
    for (auto* m : {box.get(), gear.get(), quad.get()}) {
        OFile out;
        m->DataWrite(out);
        Seed("mesh_record", "mesh" + std::to_string(m->verts.size()), char(version) + out.bytes().substr(8));
    }
}

// A tree of three records in the current layout: a top, a member that opens a group and one
// that closes it; and the same records read as the oldest layout.
void SDFRecords()
{
    std::string tree(1, char(7)); // the byte that picks the current version
    for (int i = 0; i < 3; ++i) {
        SDFObj o;
        o.shape = uint8_t(i * 3);
        o.operation = uint8_t(i == 0 ? 0 : i);
        o.priority = int16_t(i);
        o.bracket = int16_t(i == 1 ? 1 : i == 2 ? -1 : 0);
        OFile out;
        o.DataWrite(out);
        tree += char(i == 0 ? 0 : 1) + out.bytes();
    }
    Seed("sdf_record", "tree", tree);
    Seed("sdf_record", "oldest", char(0) + tree.substr(1));
}

void Streams()
{
    // Steps of the stream target: an operation byte and a 64-bit operand each.
    auto step = [](char op, long long operand) { return op + std::string(reinterpret_cast<char*>(&operand), 8); };
    OFile payload;
    payload.writeValue(3.5);
    payload.writeString("Cube");
    payload.writeValue(int(7));
    Seed("ifile", "reads", char(4) + step(4, 0) + step(1, 64) + step(0, 4) + step(3, 0) + payload.bytes());
    Seed("ifile", "skips", char(3) + step(2, 8) + step(2, 1 << 20) + step(3, 12) + payload.bytes());
}

void Shaders()
{
    for (char const* name : {"Copy", "FillVec4"})
        Seed("shader_text", name, ShaderManager::ReadFile(ShaderManager::Path(name)));
    Seed("shader_text", "defines",
         "##VERTEX\n#include \":/shaders/Include/Math.glsl\"\nout vec3 p; // x\nvoid main(){}\n"
         "##FRAGMENT\n/* a\nb */void main(){}\n" + std::string(1, '\0') + "A  B=1");
}

void Images()
{
    QImage image(13, 7, QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgba(x * 19, y * 37, (x ^ y) * 11, 255 - x));
    for (char const* kind : {"png", "jpg", "bmp", "ppm"}) {
        std::string folder = gFolder + "/image_" + kind;
        QDir().mkpath(QString::fromStdString(folder));
        image.save(QString::fromStdString(folder + "/seed." + kind), kind);
        image.convertToFormat(QImage::Format_Mono).save(QString::fromStdString(folder + "/mono." + kind), kind);
    }
    QDir().mkpath(QString::fromStdString(gFolder + "/image_gif"));
    test::WriteAnimatedGif(gFolder + "/image_gif/anim.gif", 5, 3, 3, 10);
    QDir().mkpath(QString::fromStdString(gFolder + "/image_hdr"));
    std::vector<float> rgb(9 * 4 * 3);
    for (size_t i = 0; i < rgb.size(); ++i)
        rgb[i] = float(i % 7) * 0.75f;
    test::WriteHdr(gFolder + "/image_hdr/rle.hdr", 9, 4, rgb);
    test::WriteHdr(gFolder + "/image_hdr/flat.hdr", 3, 4, std::vector<float>(rgb.begin(), rgb.begin() + 36));
    Seed("texture_list", "list.txt", "a.png\r\na.png\n\nmissing.png\n");
}

// The document the application writes at close, with recent files, and an older one that
// keeps one folder for every kind of shader.
void Configs()
{
    AddRecentFile("/home/artist/scenes/robot.vsc");
    AddRecentFile("/home/artist/scenes/tree.vsc");
    Seed("config", "written.xml", ConfigText());
    Seed("config", "old.xml",
         "<?xml version=\"1.0\"?>\n<Tessaron><Version value=\"20191111\"/><FPS cap=\"1\" max=\"60\"/>"
         "<UIScale auto=\"0\" value=\"2\"/><Paths><Shaders path=\"/tmp/shaders\"/></Paths>"
         "<RecentFiles><File1 path=\"a.vsc\"/><File3 path=\"b.vsc\"/></RecentFiles></Tessaron>\n");
}

void CurveScenes(Shared<Element> const& box);
// Layer files: the writer's, with a sampler and an include, and the shipped new layer.
void ShaderLayers()
{
    ShaderLayer layer("#include \":/shaders/Include/Math.glsl\"\nvoid main() { oColor = texture(iTex1, vec2(0)); }\n");
    layer.stencil = ShaderLayer::StencilContent;
    layer.depthWrite = true;
    Seed("shader_layer", "written.xml", layer.ToXML());
    Seed("shader_layer", "default.xml", ShaderManager::ReadFile(":/shaders/ShaderIO/DefaultFinal.xml"));
}

// Scenes by the writer: an empty one; a group over two linked boxes, with a tool box tool;
// and an object file of one box alone.
void Scenes()
{
    History::Pause pause; // nothing here is a step of the history
    Scene scene;
    OFile empty;
    scene.saveN(empty);
    Seed("scene", "empty.vsc", empty.bytes());

    Shared<Element> box(Mesh::Box().release());
    auto* group = new Tool;
    group->Parent = scene.root;
    scene.root->children.push_back(group);
    std::vector<Tool*> boxes;
    for (double x : {-1.0, 1.0}) {
        boxes.push_back(new Tool(box, Matrix34<double>::Translation({x, 0, 0})));
        group->addChild(boxes.back());
    }
    boxes[0]->link(boxes[1]);
    Tool boxed(box);
    Scene::UITools = {{Matrix34<double>::Scale(2), 0x10000004, &boxed}};
    OFile full;
    scene.saveN(full);
    Scene::UITools.clear();
    Seed("scene", "group.vsc", full.bytes());
    OFile object;
    scene.saveNO({boxes[1]}, object);
    Seed("scene", "box.vob", object.bytes());

    // Clay: the mesh record under its own tag; whole, and cut inside its half-edges.
    Scene clayScene;
    auto lump = Mesh::Sphere(Mesh::Tetrahedron(), 1);
    auto* sculpted = new Tool(Shared<Element>(new Clay(lump.get())));
    sculpted->Parent = clayScene.root;
    clayScene.root->children.push_back(sculpted);
    OFile clay;
    clayScene.saveN(clay);
    Seed("scene", "clay.vsc", clay.bytes());
    Seed("scene", "clay-cut.vsc", clay.bytes().substr(0, clay.bytes().size() * 3 / 4));
    CurveScenes(box);
}

// The kinds that show an item along a curve: an array of boxes on a helix with corner
// materials, a snake on a ring with a uniform curve following it, an ender on a segment.
void CurveScenes(Shared<Element> const& box)
{
    History::Pause pause;
    Scene scene;
    Curve* helix = Curve::Helix(6, 2);
    helix->setFrames(true);
    helix->setDataType(1);
    auto* array = new Array(Shared<Element>(helix), 1);
    scene.root->addChild(array);
    array->setItem(new Tool(box));
    Shared<Element> ring(Curve::NGon(8, false));
    auto* snake = new Snake(ring, 2, 2);
    scene.root->addChild(snake);
    snake->setItem(new Tool(box));
    scene.root->addChild(new Tool(Shared<Element>(new UCurve(ring, 0.1f))));
    auto* ender = new Ender(Shared<Element>(Curve::Segment(3, 0)));
    scene.root->addChild(ender);
    ender->setItem(new Tool(box));
    OFile out;
    scene.saveN(out);
    Seed("scene", "curves.vsc", out.bytes());
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s <seed folder>\n", argv[0]);
        return 2;
    }
    // The shipped shaders live in the library's resources, which a static library must
    // register by hand.
    Q_INIT_RESOURCE(shaders);
    gFolder = argv[1];
    Meshes();
    SDFRecords();
    Streams();
    Shaders();
    Images();
    Configs();
    ShaderLayers();
    Scenes();
    return 0;
}
