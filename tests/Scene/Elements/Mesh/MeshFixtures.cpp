#include "MeshFixtures.h"

#include "Core/Communicate.h"

#include <cstring>
#include <sstream>

namespace vel::test {

std::unique_ptr<Mesh> MakeMesh(std::vector<Vector3<float>> const& points, std::vector<std::vector<int>> const& faces)
{
    auto m = std::make_unique<Mesh>();
    for (auto const& p : points)
        m->vertAdd(p);
    for (auto const& f : faces)
        EXPECT_GE(m->faceFromIndices(f), 0);
    return m;
}

std::unique_ptr<Mesh> BuildMesh(std::vector<Vector3<float>> const& points, std::vector<std::vector<int>> const& faces)
{
    auto m = MakeMesh(points, faces);
    m->initialize(0);
    return m;
}

static std::vector<Vector3<float>> cubePoints()
{
    std::vector<Vector3<float>> p;
    for (int i = 0; i < 8; ++i)
        p.push_back({i & 1 ? 0.5f : -0.5f, i & 2 ? 0.5f : -0.5f, i & 4 ? 0.5f : -0.5f});
    return p;
}

std::unique_ptr<Mesh> ClosedCube()
{
    return BuildMesh(cubePoints(), {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}});
}

static std::vector<Vector3<float>> octahedronPoints()
{
    return {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}};
}

static std::vector<std::vector<int>> octahedronFaces()
{
    return {{0, 2, 4}, {2, 1, 4}, {1, 3, 4}, {3, 0, 4}, {2, 0, 5}, {1, 2, 5}, {3, 1, 5}, {0, 3, 5}};
}

std::unique_ptr<Mesh> ClosedOctahedron()
{
    return BuildMesh(octahedronPoints(), octahedronFaces());
}

static std::unique_ptr<Mesh> grid(int n, std::vector<std::pair<int, int>> const& holes)
{
    std::vector<Vector3<float>> p;
    for (int y = 0; y <= n; ++y)
        for (int x = 0; x <= n; ++x)
            p.push_back({float(x) / n, float(y) / n, 0});
    std::vector<std::vector<int>> f;
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x) {
            if (std::find(holes.begin(), holes.end(), std::make_pair(x, y)) != holes.end())
                continue;
            int a = y * (n + 1) + x;
            f.push_back({a, a + 1, a + n + 2, a + n + 1});
        }
    return BuildMesh(p, f);
}

std::unique_ptr<Mesh> QuadGrid(int n)
{
    return grid(n, {});
}

std::unique_ptr<Mesh> OpenWithHoles()
{
    return grid(5, {{1, 1}, {3, 3}});
}

std::unique_ptr<Mesh> FlippedFaces()
{
    auto faces = octahedronFaces();
    std::reverse(faces[1].begin(), faces[1].end());
    std::reverse(faces[6].begin(), faces[6].end());
    return BuildMesh(octahedronPoints(), faces);
}

std::unique_ptr<Mesh> NonManifoldEdge()
{
    return BuildMesh({{0, 0, 0}, {1, 0, 0}, {0.5f, 1, 0}, {0.5f, -1, 0}, {0.5f, 0, 1}},
                     {{0, 1, 2}, {1, 0, 3}, {0, 1, 4}});
}

std::unique_ptr<Mesh> NonManifoldVertex()
{
    // Apex 0 shared; base of the upper pyramid 1..4, of the lower 5..8.
    std::vector<Vector3<float>> p = {{0, 0, 0}};
    for (int i = 0; i < 4; ++i)
        p.push_back({i == 0 ? 1.f : i == 2 ? -1.f : 0.f, i == 1 ? 1.f : i == 3 ? -1.f : 0.f, 1});
    for (int i = 0; i < 4; ++i)
        p.push_back({i == 0 ? 1.f : i == 2 ? -1.f : 0.f, i == 1 ? 1.f : i == 3 ? -1.f : 0.f, -1});
    std::vector<std::vector<int>> f;
    for (int i = 0; i < 4; ++i) {
        f.push_back({0, 1 + (i + 1) % 4, 1 + i});
        f.push_back({0, 5 + i, 5 + (i + 1) % 4});
    }
    f.push_back({1, 2, 3, 4});
    f.push_back({8, 7, 6, 5});
    return BuildMesh(p, f);
}

std::unique_ptr<Mesh> FlatPair()
{
    return BuildMesh({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {{0, 1, 2}, {0, 2, 3}});
}

int EdgeBetween(Mesh const& mesh, int a, int b)
{
    int e = mesh.findEdge(a, b);
    return e >= 0 ? e : mesh.findEdge(b, a);
}

std::string Violations(Mesh const& mesh)
{
    std::ostringstream out;
    auto list = mesh.validate();
    for (std::size_t i = 0; i < list.size() && i < 20; ++i)
        out << list[i].kind << list[i].index << ": " << list[i].rule << "\n";
    if (list.size() > 20)
        out << "... " << list.size() << " in all\n";
    return out.str();
}

double SignedVolume(Mesh const& m)
{
    double volume = 0;
    for (std::size_t f = 0; f < m.faces.size(); ++f) {
        auto v = m.faceVerts(int(f));
        for (std::size_t i = 1; i + 1 < v.size(); ++i) {
            Vector3<double> a(m.verts[v[0]].position), b(m.verts[v[i]].position), c(m.verts[v[i + 1]].position);
            volume += a.dot(b.cross(c)) / 6;
        }
    }
    return volume;
}

int SharpEdgeCount(Mesh const& mesh)
{
    int n = 0;
    for (std::size_t i = 0; i < mesh.edges.size(); ++i) {
        MeshEdge const& e = mesh.edges[i];
        if (e.is(MeshEdge::SHARP) && (e.half < 0 || std::size_t(e.half) > i))
            ++n;
    }
    return n;
}

int BorderCount(Mesh const& mesh)
{
    int n = 0;
    for (std::size_t i = 0; i < mesh.edges.size(); ++i)
        n += mesh.edges[i].half < 0;
    return n;
}

template <class T>
static std::string firstDifference(char const* what, ChunkedSequence<T> const& a, ChunkedSequence<T> const& b)
{
    if (a.size() != b.size())
        return std::string(what) + " counts differ";
    for (std::size_t i = 0; i < a.size(); ++i)
        if (std::memcmp(&a[i], &b[i], sizeof(T)) != 0)
            return std::string(what) + " " + std::to_string(i);
    return "";
}

std::string RecordDifference(Mesh const& a, Mesh const& b)
{
    if (a.dataType != b.dataType)
        return "data type differs";
    if (a.triangles != b.triangles)
        return "triangle counts differ";
    for (std::string d : {firstDifference("vertex", a.verts, b.verts), firstDifference("half-edge", a.edges, b.edges),
                          firstDifference("face", a.faces, b.faces)})
        if (!d.empty())
            return d;
    if (a.materials.size() != b.materials.size() || a.uvs.size() != b.uvs.size())
        return "corner data counts differ";
    for (std::size_t e = 0; e < a.materials.size(); ++e)
        if (!(a.materials[e] == b.materials[e]))
            return "material " + std::to_string(e);
    for (std::size_t e = 0; e < a.uvs.size(); ++e)
        if (a.uvs[e] != b.uvs[e])
            return "uv " + std::to_string(e);
    return "";
}

LogCapture::LogCapture()
{
    Communicate::instance().quiet = false;
    connection = QObject::connect(&Communicate::instance(), &Communicate::LogInfo,
                                  [this](QString const& text, int type) { entries.emplace_back(text, type); });
}

LogCapture::~LogCapture()
{
    QObject::disconnect(connection);
}

QString LogCapture::all() const
{
    QString text;
    for (auto const& e : entries)
        text += e.first + "\n";
    return text;
}

} // namespace vel::test
