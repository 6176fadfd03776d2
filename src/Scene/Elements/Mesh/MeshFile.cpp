// OBJ exchange: the reader (Mesh::loadOBJ, Mesh::loadSeparateOBJ), the writer
// (Mesh::appendOBJ, saveOBJ) and the importing caller's policy (importOBJ).
//
// The reader never fails on content: lines it cannot use are counted and reported in one
// warning, bad faces are skipped, and what remains goes through buildConnectivity's repairs.
// Normal indices are kept per corner only to rebuild sharp edges: two faces meeting with
// different normal indices at either end of their shared edge are cut by a sharp edge.
// Comments ("#" to the end of a line), continued lines (ending in "\") and a leading UTF-8
// byte-order mark are understood.
//
// Index
// - reading: line splitting, numbers, ObjParser
// - Mesh::loadOBJ, loadSeparateOBJ
// - writing: Mesh::appendOBJ, saveOBJ
// - importOBJ
#include "Scene/Elements/Mesh/MeshFile.h"

#include "Core/Communicate.h"
#include "Scene/Elements/Mesh/Mesh.h"

#include <charconv>
#include <cstring>
#include <fstream>
#include <ostream>

namespace vel {

namespace {

// ---- reading ----------------------------------------------------------------------------------

constexpr long long MAX_FILE_BYTES = 1LL << 34; // 16 GiB: beyond any mesh the indices can hold

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v';
}

char const* skipBlanks(char const* p, char const* end)
{
    while (p < end && isBlank(*p))
        ++p;
    return p;
}

// A float at p; false on anything that is not one. '+' is accepted, as C's strtof does.
bool parseFloat(char const*& p, char const* end, float& value)
{
    if (p < end && *p == '+')
        ++p;
    auto [next, ec] = std::from_chars(p, end, value);
    if (ec != std::errc() || (next < end && !isBlank(*next)))
        return false;
    p = next;
    return std::isfinite(value);
}

bool parseIndex(char const*& p, char const* end, long long& value)
{
    if (p < end && *p == '+')
        ++p;
    auto [next, ec] = std::from_chars(p, end, value);
    if (ec != std::errc())
        return false;
    p = next;
    return true;
}

struct ObjStats {
    long long badVertexLines = 0; // missing or unreadable coordinates
    long long badFaces = 0;       // an index zero, out of range or unreadable
    long long shortFaces = 0;     // fewer than three distinct corners
    bool tooLarge = false;
};

// Reads OBJ text into one mesh, or into one mesh per group of "v" lines when `separate`.
class ObjParser {
public:
    ObjParser(bool separate, bool reconstructSharp, AABB* box)
        : separate(separate)
        , reconstructSharp(reconstructSharp)
        , box(box)
    {
        current = std::make_unique<Mesh>();
    }

    std::vector<std::unique_ptr<Mesh>> parse(std::string const& text)
    {
        char const* p = text.data();
        char const* end = p + text.size();
        if (end - p >= 3 && std::memcmp(p, "\xEF\xBB\xBF", 3) == 0)
            p += 3; // a UTF-8 byte-order mark
        char separator = std::memchr(p, '\n', std::size_t(end - p)) ? '\n' : '\r';
        std::string joined;
        while (p < end && !stats.tooLarge) {
            char const* eol = lineEnd(p, end, separator);
            char const* last = continued(p, eol);
            if (!last) {
                line(skipBlanks(p, eol), eol);
                p = eol + 1;
                continue;
            }
            // A line ending in "\" goes on in the next one.
            joined.assign(p, last);
            while (last && eol < end) {
                p = eol + 1;
                eol = lineEnd(p, end, separator);
                last = continued(p, eol);
                joined += ' ';
                joined.append(p, last ? last : eol);
            }
            line(skipBlanks(joined.data(), joined.data() + joined.size()), joined.data() + joined.size());
            p = eol + 1;
        }
        finish();
        report();
        return std::move(meshes);
    }

private:
    static char const* lineEnd(char const* p, char const* end, char separator)
    {
        char const* eol = static_cast<char const*>(std::memchr(p, separator, std::size_t(end - p)));
        return eol ? eol : end;
    }
    // Where the text of a line ending in a continuation "\" stops, or null for other lines.
    static char const* continued(char const* p, char const* eol)
    {
        while (eol > p && isBlank(eol[-1]))
            --eol;
        return eol > p && eol[-1] == '\\' ? eol - 1 : nullptr;
    }

    void line(char const* p, char const* end)
    {
        if (char const* hash = static_cast<char const*>(std::memchr(p, '#', std::size_t(end - p))))
            end = hash; // a comment runs to the end of the line
        if (end - p < 2 || !isBlank(p[1])) {
            if (end - p >= 3 && p[0] == 'v' && p[1] == 'n' && isBlank(p[2]))
                ++normalCount;
            return;
        }
        if (p[0] == 'v')
            vertex(p + 2, end);
        else if (p[0] == 'f')
            face(p + 2, end);
    }

    void vertex(char const* p, char const* end)
    {
        if (separate && afterFaces) {
            finish();
            current = std::make_unique<Mesh>();
            meshStart = fileVertices;
            afterFaces = false;
        }
        if (current->verts.size() >= std::size_t(Mesh::INDEX_MAX)) {
            stats.tooLarge = true;
            return;
        }
        float c[3] = {0, 0, 0};
        int read = 0;
        bool ok = true;
        for (; read < 3 && ok; ++read) {
            p = skipBlanks(p, end);
            ok = p < end && parseFloat(p, end, c[read]);
            if (!ok)
                c[read] = 0;
        }
        if (!ok)
            ++stats.badVertexLines;
        Vector3<float> position(c[0], c[1], c[2]);
        current->vertAdd(position);
        if (box)
            box->add(Vector3<double>(position));
        ++fileVertices;
    }

    void face(char const* p, char const* end)
    {
        afterFaces = true;
        indices.clear();
        normals.clear();
        bool bad = false;
        long long count = (long long)current->verts.size();
        while (true) {
            p = skipBlanks(p, end);
            if (p >= end)
                break;
            long long v = 0, n = 0;
            bool hasNormal = false;
            if (!parseIndex(p, end, v)) {
                bad = true;
                break;
            }
            // "v", "v/t", "v//n" or "v/t/n": the texture index is skipped.
            if (p < end && *p == '/') {
                ++p;
                while (p < end && *p != '/' && !isBlank(*p))
                    ++p;
                if (p < end && *p == '/') {
                    ++p;
                    hasNormal = parseIndex(p, end, n);
                }
            }
            while (p < end && !isBlank(*p))
                ++p; // anything trailing a corner is ignored
            long long global = v > 0 ? v - 1 : fileVertices + v;
            long long local = global - meshStart;
            if (v == 0 || local < 0 || local >= count) {
                bad = true;
                break;
            }
            long long normal = !hasNormal || n == 0 ? -1 : (n > 0 ? n - 1 : normalCount + n);
            if (normal < 0 || normal >= normalCount)
                normal = -1;
            indices.push_back(int(local));
            normals.push_back(int(normal));
        }
        if (bad) {
            ++stats.badFaces;
            return;
        }
        // A corner repeating its predecessor is an edge of length zero: drop it.
        std::size_t kept = 0;
        for (std::size_t i = 0; i < indices.size(); ++i) {
            if (kept > 0 && indices[kept - 1] == indices[i])
                continue;
            indices[kept] = indices[i];
            normals[kept++] = normals[i];
        }
        while (kept > 1 && indices[kept - 1] == indices[0])
            --kept;
        indices.resize(kept);
        normals.resize(kept);
        if (current->edges.size() + kept > std::size_t(Mesh::INDEX_MAX)) {
            stats.tooLarge = true;
            return;
        }
        std::size_t first = current->edges.size();
        if (current->faceFromIndices(indices) < 0) {
            ++stats.shortFaces;
            return;
        }
        for (std::size_t i = 0; i < kept; ++i)
            current->edges[first + i].normal = uint32_t(normals[i] + 1);
    }

    void finish()
    {
        if (!current || current->faces.empty())
            return;
        if (reconstructSharp) {
            current->initializeReconstructSharp(2);
        } else {
            for (std::size_t i = 0; i < current->edges.size(); ++i)
                current->edges[i].normal = 0;
            current->initialize(2);
        }
        meshes.push_back(std::move(current));
    }

    void report()
    {
        QStringList parts;
        if (stats.badFaces)
            parts << QString("skipped %1 faces with an index that is zero, out of range or unreadable").arg(stats.badFaces);
        if (stats.shortFaces)
            parts << QString("skipped %1 faces with fewer than 3 distinct corners").arg(stats.shortFaces);
        if (stats.badVertexLines)
            parts << QString("%1 vertex lines with missing or unreadable coordinates").arg(stats.badVertexLines);
        if (!parts.isEmpty())
            LogInfo("OBJ import: " + parts.join("; ") + ".", 1);
        if (stats.tooLarge)
            LogInfo(QString("OBJ import: the file holds more than %1 vertices or half-edges; reading stopped.")
                        .arg(Mesh::INDEX_MAX),
                    2);
        if (meshes.empty())
            LogInfo("OBJ import: the file has no faces.", 2);
    }

    bool separate;
    bool reconstructSharp;
    AABB* box;
    std::unique_ptr<Mesh> current;
    std::vector<std::unique_ptr<Mesh>> meshes;
    std::vector<int> indices, normals;
    long long fileVertices = 0; // "v" lines so far: file indices count on across meshes
    long long meshStart = 0;    // file index of the current mesh's first vertex
    long long normalCount = 0;
    bool afterFaces = false;
    ObjStats stats;
};

bool readWholeFile(std::string const& path, std::string& text)
{
    std::ifstream in(path, std::ios::binary | std::ios::ate);
    if (!in) {
        LogInfo(QString("Cannot open '%1'.").arg(QString::fromStdString(path)), 2);
        return false;
    }
    long long size = (long long)in.tellg();
    if (size < 0 || size > MAX_FILE_BYTES) {
        LogInfo(QString("Cannot read '%1': the file is too large.").arg(QString::fromStdString(path)), 2);
        return false;
    }
    text.resize(std::size_t(size));
    in.seekg(0);
    in.read(text.data(), size);
    return bool(in) || in.eof();
}

} // namespace

// ---- Mesh::loadOBJ, loadSeparateOBJ -----------------------------------------------------------

bool Mesh::loadOBJ(std::string const& path, bool reconstructSharp)
{
    std::string text;
    if (!readWholeFile(path, text)) {
        clear();
        return false;
    }
    return loadOBJText(text, reconstructSharp);
}

bool Mesh::loadOBJText(std::string const& text, bool reconstructSharp)
{
    auto meshes = ObjParser(false, reconstructSharp, nullptr).parse(text);
    clear();
    if (meshes.empty())
        return false;
    swap(*meshes.front());
    return true;
}

std::vector<std::unique_ptr<Mesh>> Mesh::loadSeparateOBJ(std::string const& path, AABB& box, bool flag)
{
    std::string text;
    if (!readWholeFile(path, text))
        return {};
    return loadSeparateOBJText(text, box, flag);
}

std::vector<std::unique_ptr<Mesh>> Mesh::loadSeparateOBJText(std::string const& text, AABB& box, bool flag)
{
    return ObjParser(true, flag, &box).parse(text);
}

// ---- writing ----------------------------------------------------------------------------------

// Normals are written one per corner group (a smooth fan at a vertex), so sharp edges come
// back on import. Indices are absolute, counted from the start of the file.
void Mesh::appendOBJ(std::ostream& out, unsigned& objects, unsigned& vertices, unsigned& faceTotal,
                     Matrix34<double> const& M, bool normals) const
{
    unsigned normalLines = 0;
    appendOBJ(out, objects, vertices, faceTotal, normalLines, M, normals);
}

void Mesh::appendOBJ(std::ostream& out, unsigned& objects, unsigned& vertices, unsigned& faceTotal,
                     unsigned& normalLines, Matrix34<double> const& M, bool normals) const
{
    std::streamsize precision = out.precision(9); // floats survive the round trip
    ++objects;
    out << "\no Object" << objects << "\n";
    out << "# " << verts.size() << " verts, " << faces.size() << " faces\n";
    for (std::size_t v = 0; v < verts.size(); ++v) {
        Vector3<double> p = Vector3<double>(verts[v].position) * M;
        out << "v " << p.x << " " << p.y << " " << p.z << "\n";
    }
    std::vector<int> group;
    int groups = 0;
    if (normals) {
        groups = cornerGroups(group);
        std::vector<Vector3<double>> sum((std::size_t)groups);
        for (std::size_t e = 0; e < edges.size(); ++e)
            if (group[e] >= 0)
                sum[std::size_t(group[e])] += calculatePreciseFaceNormal(edges[e].face).normalize();
        Matrix3<double> normalMatrix = inv(M.linear()).transposed();
        for (Vector3<double> const& n : sum) {
            Vector3<double> t = (n * normalMatrix).normalize();
            out << "vn " << t.x << " " << t.y << " " << t.z << "\n";
        }
    }
    // A mirroring matrix turns the faces inside out unless their corners go the other way.
    bool mirrored = M.linear().determinant() < 0;
    for (std::size_t f = 0; f < faces.size(); ++f) {
        out << "f";
        int s = faces[f].edge, c = s;
        do {
            out << " " << edges[std::size_t(c)].v[1] + 1 + long(vertices);
            if (normals)
                out << "//" << group[std::size_t(c)] + 1 + long(normalLines);
            c = edges[std::size_t(c)].e[mirrored ? 0 : 1];
        } while (c != s);
        out << "\n";
    }
    vertices += unsigned(verts.size());
    faceTotal += unsigned(faces.size());
    normalLines += unsigned(groups);
    out.precision(precision);
}

bool saveOBJ(std::vector<PlacedMesh> const& meshes, std::string const& path, bool normals)
{
    std::string file = path;
    auto endsWithObj = [](std::string const& p) {
        if (p.size() < 4)
            return false;
        std::string ext = p.substr(p.size() - 4);
        for (char& c : ext)
            c = char(std::tolower(static_cast<unsigned char>(c)));
        return ext == ".obj";
    };
    if (!endsWithObj(file))
        file += ".obj";
    std::ofstream out(file, std::ios::binary);
    if (!out)
        return false;
    unsigned long long v = 0, f = 0;
    for (PlacedMesh const& m : meshes) {
        v += m.first->verts.size();
        f += m.first->faces.size();
    }
    out << "# Vellumbra OBJ export\n";
    out << "# Global: " << meshes.size() << " objects, " << v << " vertices, " << f << " faces\n";
    unsigned objects = 0, vertices = 0, faces = 0, normalLines = 0;
    for (PlacedMesh const& m : meshes)
        m.first->appendOBJ(out, objects, vertices, faces, normalLines, m.second, normals);
    return bool(out);
}

// ---- importOBJ --------------------------------------------------------------------------------

std::vector<std::unique_ptr<Mesh>> importOBJ(std::string const& path, AABB& box)
{
    std::vector<std::unique_ptr<Mesh>> meshes = Mesh::loadSeparateOBJ(path, box, true);
    std::vector<std::unique_ptr<Mesh>> accepted;
    for (auto& m : meshes) {
        if (m->repairs & Mesh::REPAIRED_NON_MANIFOLD_EDGES)
            LogInfo("Cannot import non-manifold mesh.", 2);
        else
            accepted.push_back(std::move(m));
    }
    return accepted;
}

} // namespace vel
