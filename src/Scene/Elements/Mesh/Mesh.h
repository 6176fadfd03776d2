// Mesh: the polygonal element, a half-edge structure over vertices, half-edges and faces of
// any number of sides, with derived components and patches, per-corner normals and optional
// per-corner materials (data type 1) or UVs (data type 2).
//
// HALF-EDGE INVARIANTS (Mesh::validate() checks every one; tests run it after each operation)
//
//  Records. `verts`, `edges`, `faces` hold the records; after any public operation every record
//  is active (the has-inactive flag is clear). An index field of -1 is unset.
//  Half-edge. edges[e] runs from v[0] to v[1], v[0] != v[1]. It is also the corner of its
//  face at v[1]: the corner's normal, `materials[e]` and `uvs[e]` belong to v[1] in that face.
//  Ring. e[0] and e[1] are the previous and next half-edge of the face ring:
//  edges[e.e[1]].e[0] == e, edges[e.e[0]].e[1] == e, edges[e.e[0]].v[1] == e.v[0]. Following
//  e[1] from faces[f].edge returns to it after at least 3 steps, and every half-edge on the
//  way has face == f. The ring's first half-edge ends at the face's first vertex.
//  Twin. `half` is the opposite half-edge, or -1 on a border. When set: edges[half].half == e,
//  edges[half].v[0] == e.v[1], edges[half].v[1] == e.v[0], and the twin lies in another face.
//  So neighbouring faces are consistently oriented. An edge shared by three or more faces is
//  never paired: all its halves are borders.
//  Sharp. Sharpness belongs to the pair: both halves carry MeshEdge::SHARP, or neither.
//  Vertex fan. An active vertex's `edge` arrives at it (edges[edge].v[1] == vertex). The
//  forward walk c -> edges[edges[c].e[1]].half from `edge` visits every half-edge arriving at
//  the vertex exactly once: each vertex has one fan (non-manifold vertices are split). On a
//  border vertex `edge` is the border half-edge (half == -1) where the fan begins, and the
//  walk ends at the outgoing border. BORDER is set exactly on such vertices; SHARP on those
//  with a sharp or border edge; ANCHOR implies SHARP.
//  Counts. `triangles` is the sum over faces of (sides - 2). `component` of every face is in
//  [0, components) and equal across every paired edge; `patch` is in [0, patches) and equal
//  across every paired edge that is not sharp.
//
// SCRATCH PADS: buildConnectivity (pairing) and smoothAll use ScratchPadGeometry; face normals
// ScratchPadBrush; vertex normal groups ScratchPadSculpt. None of these calls another on the
// same pad while it holds it.
//
// Index (where each section is defined)
// - records, building, queries, lifecycle, extraction ........... Mesh.cpp
// - connectivity repair, vertex flags, components, compaction ... MeshConnectivity.cpp
// - normals and sharpness ......................................... MeshNormals.cpp
// - subdivision, smoothing, welding, local edits ................. MeshOperations.cpp
// - vertex splits, collapse, relaxing, merging, partial normals .. MeshEdits.cpp
// - validation ................................................... MeshValidate.cpp
// - the triangle soup of the vertex buffers ...................... MeshBuffers.cpp
// - file fields (DataSize, DataWrite, DataRead) .................. MeshData.cpp
// - OBJ import and export ........................................ MeshFile.cpp
// - factories (shapes) ........................................... MeshGeometry.cpp
#pragma once

#include "Math/AABB.h"
#include "Math/Matrix34.h"
#include "Math/Pbr.h"
#include "Math/Vector3.h"
#include "Scene/Elements/Mesh/ChunkedSequence.h"
#include "Scene/Elements/Mesh/MeshEdge.h"
#include "Scene/Elements/Mesh/MeshFace.h"
#include "Scene/Elements/Mesh/MeshVBO.h"
#include "Scene/Elements/Mesh/MeshVert.h"
#include "Scene/Elements/SculptRecords.h"

#include <cstdint>
#include <deque>
#include <iosfwd>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace vel {

// One broken rule found by Mesh::validate(): which record, and what is wrong with it.
struct MeshViolation {
    char kind;        // 'v' vertex, 'e' half-edge, 'f' face, 'm' mesh-wide
    int index;        // record index, or -1 for mesh-wide rules
    std::string rule; // e.g. "twin of twin"
};

// The buffers (positions, ids, normals, materials) and the programs are MeshVBO's; the mesh
// fills them from its records in buildGPUData and marks each when its source changes.
class Mesh : public MeshVBO {
public:
    // What the last buildConnectivity repaired (bits of `repairs`).
    static constexpr unsigned REPAIRED_NON_MANIFOLD_EDGES = 1;
    static constexpr unsigned REPAIRED_ORIENTATION = 2;
    static constexpr unsigned REPAIRED_NON_MANIFOLD_VERTICES = 4;

    static constexpr int INDEX_MAX = (1 << 26) - 1; // the largest index a 27-bit field holds
    static constexpr int FILE_VERSION_CURRENT = 20230711;

    // ---- Records ---------------------------------------------------------------------------
    ChunkedSequence<MeshVert> verts;
    ChunkedSequence<MeshEdge> edges;
    ChunkedSequence<MeshFace> faces;
    ChunkedSequence<Pbr> materials; // one per half-edge with data type 1, else empty
    ChunkedSequence<uint32_t> uvs;  // one per half-edge with data type 2, else empty; u low 16 bits, v high

    int triangles = 0;        // sum over faces of sides - 2
    int components = 0;
    int patches = 0;
    bool geometryChanged = false;
    bool hasInactive = false;
    unsigned repairs = 0;     // REPAIRED_* of the last buildConnectivity

    Mesh() = default;
    Mesh(Mesh const&) = default;
    Mesh& operator=(Mesh const&) = default;
    ~Mesh() override = default;

    // ---- Element protocol ------------------------------------------------------------------
    int Type() const override { return 1; }
    unsigned BlockId() const override { return 0xe0000001u; }
    bool empty() const override { return faces.size() == 0; }
    void calculateAABB(Matrix34<double> const& M) override;
    Mesh* clone() override { return new Mesh(*this); }
    std::deque<Vector3<double>> Points(Matrix34<double> const& M) const override;
    bool ConvertibleToMesh() const override { return true; }
    Mesh* ToMesh() override { return this; }
    // Expands the faces (fans from each face's first corner) into the dirty buffers and
    // uploads them; a buffer that is clean is left alone.
    bool buildGPUData() override;
    // File fields: see MeshData.cpp. DataWrite writes the block id and DataSize() first;
    // prepareSave compacts, since only active records are written.
    void prepareSave() override { removeInactive(false); }
    int DataSize() const override;
    void DataWrite(OFile& out, unsigned blockId) const;
    void DataWrite(OFile& out) const { DataWrite(out, BlockId()); }
    void DataWrite(OFile& out, std::unordered_map<Element*, int>& ids) override;
    // Reads the fields after the block header; false (and an empty mesh, with a log line)
    // on data that cannot form a mesh. `version` is the file's FILE_VERSION. The reader of
    // a scene calls this form: it needs the version and the verdict, which the element slot
    // below, a void of one argument, cannot carry.
    bool DataRead(IFile& in, int version);
    // Records before 20180605.
    bool DataReadOld(IFile& in, int version);
    // The element slot: the current layout, verdict in `invalid`.
    void DataRead(IFile& in) override;

    // Snapshot and restore for undo: exchanges every record, counter and base field.
    void swap(Mesh& other);

    // ---- Building --------------------------------------------------------------------------
    int vertAdd(Vector3<float> const& position);
    int vertAdd(Vector3<float> const& position, int edge);
    int vertAdd(Vector3<float> const& position, int edge, bool sharp, bool anchor);
    int edgeAdd(int v0, int v1, int e0, int e1, int half, int face);
    int edgeAdd(int v0, int v1, int e0, int e1, int half, int face, bool sharp);
    int edgeAddMaterial(int v0, int v1, int e0, int e1, int half, int face, Pbr const& material);
    int edgeAddMaterial(int v0, int v1, int e0, int e1, int half, int face, bool sharp, Pbr const& material);
    int faceAdd(int edge, int component, int patch);
    // A face over existing vertices: for index i the half-edge from index i-1 to index i.
    // Refuses (returns -1, mesh untouched) fewer than 3 indices, an index out of range, or a
    // repeated index. `sharp` (per corner) and `mats` may be empty.
    int faceFromIndices(std::vector<int> const& indices);
    int faceFromIndices(std::vector<int> const& indices, std::vector<bool> const& sharp);
    int faceFromIndices(std::vector<int> const& indices, std::vector<bool> const& sharp, std::vector<Pbr> const& mats);
    // As faceFromIndices, but a half-edge whose key (from << 32 | to) is in `existing` and
    // has no face yet is reused instead of added.
    int faceFromIndicesEdges(std::vector<int> const& indices, std::unordered_map<long, int> const& existing);

    // ---- Walks and queries -----------------------------------------------------------------
    std::vector<int> edgeLoop(int e) const;      // the ring of e, starting at e
    std::vector<int> faceVerts(int f) const;     // v[1] of each ring half-edge, in ring order
    std::vector<int> faceVertsEdges(int f) const; // interleaved: vertex, its corner half-edge, ...
    int faceCount(int f) const;                  // number of sides
    Vector3<float> faceCenter(int f) const;
    std::vector<int> faceFaces(int f) const;      // sorted neighbour faces
    std::vector<int> faceFacesPatch(int f) const; // the same, not across sharp edges
    std::vector<int> vertInEdges(int v) const;    // half-edges arriving, in fan order from `edge`
    std::vector<int> vertOutEdges(int v) const;   // half-edges leaving, same order
    std::vector<int> vertEdges(int v) const;      // both, arriving then leaving
    std::vector<int> vertEdgesSet(int v) const;   // vertEdges sorted
    std::vector<int> vertVerts(int v) const;      // neighbour vertices in fan order
    // The half-edge arriving at e's end vertex where e's smooth fan begins: the sharp or border
    // half-edge before e, or the vertex's `edge` when no sharp line passes the vertex.
    int edgeStart(int e) const;
    // Walks and scans of MeshEdits.cpp. faceVerts1Edges: interleaved, the vertex each ring
    // half-edge leaves, then that half-edge. vertEdgesActive and vertStartEdges scan the
    // records (they hold where fans are broken, mid-edit): every active half-edge touching v,
    // and every active half-edge leaving v, sorted.
    std::vector<int> faceVerts1Edges(int f) const;
    std::vector<int> vertEdgesActive(int v) const;
    std::vector<int> vertStartEdges(int v) const;
    int findEdge(int from, int to) const;         // -1 when there is none
    int findFace(int from, int to) const;         // face of the half-edge from -> to, or -1
    int vertexOfRecord(MeshVert const& v) const;  // index of a vertex record by its `edge`

    // ---- Lifecycle -------------------------------------------------------------------------
    void initialize(TResizeStyle style) override;
    void initializeData();
    void initializeDataLoad();
    void initializeVerts();
    // For imported meshes whose corners carry their file normal index + 1 in `normal` (0 for
    // none): buildConnectivity, calculateSize(style), buildSharpness, initializeVerts,
    // setComponentsPatches.
    void initializeReconstructSharp(TResizeStyle style);
    bool buildConnectivity();
    void vertUpdate(int v);
    void vertUpdateAnchor(int v);
    void setComponentsPatches();
    void removeInactive(bool force);
    void clear();
    void calculateSize(TResizeStyle style);
    void calculateNormalsCenters();
    void updateGeometry();

    // ---- Normals and sharpness -------------------------------------------------------------
    Vector3<double> calculatePreciseFaceNormal(int f) const;
    void calculateNormals(); // all corner normals: smooth fans between sharp edges
    void vertNormals(int v, Vector3<float> const* faceNormals);
    void setVertNormals(int v, Vector3<float> const& normal);
    void makeSharp(float angleDegrees);
    void makeSmooth();
    // Marks a pair sharp where the file normal indices (in `normal`, see above) of the two
    // sides' corners differ.
    void buildSharpness();

    // ---- Extraction and merging ------------------------------------------------------------
    std::unique_ptr<Mesh> GetComponentGeometry(int component) const;
    std::unique_ptr<Mesh> GetPatchGeometry(int patch) const;
    std::unique_ptr<Mesh> GetComponentGeometryMaterial(int component) const;
    std::unique_ptr<Mesh> GetPatchGeometryMaterial(int patch) const;
    // Adds the other mesh's records, transformed; then initialize(0).
    void append(Mesh const* other, Matrix34<double> const& M);

    // ---- Operations (MeshOperations.cpp) ---------------------------------------------------
    void subdivide(bool smooth) override;
    void subdivideQuadsTris(bool smooth);
    void subdivideQuadsTrisGeometry(bool smooth);
    void subdivideQuadsTrisGeometryMaterial(bool smooth);
    Vector3<float> vertSmoothPosition(MeshVert const& v) const;
    Vector3<float> vertSmoothPosition(int v) const;
    void smoothAll(float amount);
    void spherize();
    // Joins vertices closer than `distance` (at least one weld cell); returns how many merged.
    int weld(float distance);
    void triangulate(bool fan);
    bool faceTriangulateFan(int f, bool keepNormals);
    // Splits the pair of e at `vertex` (-1: a new vertex at the midpoint); returns the vertex.
    int edgeSplit(int e, int vertex);
    int edgeSplitMaterial(int e, int vertex, Pbr const& material);
    bool edgeFlip(int e);
    void faceFlip(int f);
    void flipNormals();

    // ---- Local edits (MeshEdits.cpp) -----------------------------------------------------
    // Each checks every precondition first: a refusal (-1 or false) leaves the mesh as it was.
    //
    // One-sided split: half-edge e (a -> b), which must start at `start`, becomes a -> m and
    // a new half-edge m -> b placed after e in its ring; `vertex` is m (-1: a new vertex at
    // the midpoint; else any vertex but a and b). The new half-edge inherits sharpness and
    // takes e's corner data. Returns m. THE OPPOSITE SIDE IS THE CALLER'S: e's twin is not
    // touched. When e had one, both halves of e's side are left unpaired (half -1) while the
    // twin still names e, so the mesh is not valid until the caller splits the twin at the
    // same m and pairs the four halves crosswise (edgeSplit(e, vertex) does exactly that;
    // the booleans split many cuts per half-edge and repair the far face themselves). On a
    // border half-edge the split is complete and the mesh stays valid.
    int edgeSplit(int e, int start, int vertex);
    // Joins the end of half-edge e (which must start at `start`) that is not `keep` into
    // `keep`, which stays where it is; triangles on the edge vanish, larger faces lose a side.
    // Refused when the result would not be a valid manifold: a vertex shared by both ends
    // other than the tips of the removed triangles, a face holding both ends besides those
    // of the edge, two border vertices joined across the inside, a removed triangle whose
    // other two edges are both borders, or a tip left with two edges. Vertex and record
    // indices are renumbered (the mesh is rebuilt); corner normals need a recompute.
    bool edgeCollapse(int e, int start, int keep);
    // Vertex split: the corners of v from `from` to `to` (half-edges arriving at v, in fan
    // order, from != to; on a closed fan not all of them) move to a new vertex at v's
    // position, joined to v by a new edge pair that widens the faces of `from` and `to` by
    // one side each. Euler characteristic kept. Returns the new vertex.
    int vertSplit(int v, int from, int to);
    // Rip: the corners of v from `from` to `to` (fan order, may be equal) move to a new
    // vertex at v's position, and the edges at both ends of that range open into borders.
    // Refused when the range is the whole fan, or the far end of an opened edge is a border
    // vertex (it would become non-manifold). Returns the new vertex.
    int vertSeparate(int v, int from, int to);
    // Tangential relaxation: the smoothed position (vertSmoothPosition) with its component
    // along `normal` removed, so relaxing spreads vertices over the surface without
    // shrinking it. Anchors stay.
    Vector3<float> vertRelaxPosition(MeshVert const& v, Vector3<float> const& normal) const;
    // Appends `other`'s faces, carried by M; other's vertex i becomes this mesh's vertex
    // existing[i] where the map has it (so a cap closes onto a rim), else a new vertex. Then
    // initialize(style).
    void appendExisting(Mesh const* other, std::unordered_map<int, int> const& existing, TResizeStyle style,
                        Matrix34<double> const& M);
    // Corner normals of the touched vertices and of every vertex sharing a face with them,
    // exactly as calculateNormals would leave them, in time proportional to that set. For
    // strokes that move a few vertices of a large mesh.
    void updateNormals(std::vector<int> const& touched);

    // ---- OBJ (MeshFile.cpp) -----------------------------------------------------------------
    bool loadOBJ(std::string const& path, bool reconstructSharp = true);
    bool loadOBJText(std::string const& text, bool reconstructSharp = true);
    static std::vector<std::unique_ptr<Mesh>> loadSeparateOBJ(std::string const& path, AABB& box, bool flag = true);
    static std::vector<std::unique_ptr<Mesh>> loadSeparateOBJText(std::string const& text, AABB& box, bool flag = true);
    void appendOBJ(std::ostream& out, unsigned& objects, unsigned& vertices, unsigned& faces,
                   Matrix34<double> const& M, bool normals) const;
    // The same, for objects after others in one file: `normalLines` counts the "vn" lines
    // written so far, so that normal indices go on from there.
    void appendOBJ(std::ostream& out, unsigned& objects, unsigned& vertices, unsigned& faces, unsigned& normalLines,
                   Matrix34<double> const& M, bool normals) const;

    // ---- Validation (MeshValidate.cpp) -----------------------------------------------------
    std::vector<MeshViolation> validate() const;

    // Corner groups: the corners of a vertex between two sharp edges or borders share one
    // normal. Fills the group of every corner (half-edge) and returns the number of groups.
    int cornerGroups(std::vector<int>& groupOfCorner) const;

    // ---- Factories (MeshGeometry.cpp): unit-sized shapes about the origin ------------------
    static std::unique_ptr<Mesh> Quad();
    static std::unique_ptr<Mesh> NGon(int sides);
    static std::unique_ptr<Mesh> Tetrahedron();
    static std::unique_ptr<Mesh> Box(int sharp = 1);
    static std::unique_ptr<Mesh> CubeHandle();
    static std::unique_ptr<Mesh> Octahedron();
    static std::unique_ptr<Mesh> Icosahedron();
    static std::unique_ptr<Mesh> Dodecahedron();
    // `base` subdivided `levels` times, each level pushed onto the sphere of diameter `size`.
    static std::unique_ptr<Mesh> Sphere(std::unique_ptr<Mesh> base, int levels, int dataType = 0, float size = 1.0f,
                                        bool smooth = true);
    static std::unique_ptr<Mesh> Cylinder(int sides);
    static std::unique_ptr<Mesh> Cone(int sides);
    static std::unique_ptr<Mesh> Capsule(int sides, int rings);
    static std::unique_ptr<Mesh> Gear(int teeth, float r0, float r1, float r2, float halfWidth, float bevel);
    // A tube of `sides` around a helix of `turns` turns and `steps` steps per turn, capped;
    // `radius` is the tube's, relative to the unit box it fills.
    static std::unique_ptr<Mesh> Helix(int sides, int steps, float turns, float radius);
    // A small closed mesh with every kind of record: quads and triangles, sharp lines, an
    // anchor, a smooth patch (a box with a pyramid roof).
    static std::unique_ptr<Mesh> Test();
    // The corner of a box: three perpendicular quads about one anchor vertex, open.
    static std::unique_ptr<Mesh> Trihedral();
    // The box cut along a diagonal plane: a wedge of two triangles and three quads.
    static std::unique_ptr<Mesh> HalfCube();
    // Two half-spheres of radii r0 (bottom) and r1 (top), joined by a cone band, filling
    // the unit height.
    static std::unique_ptr<Mesh> BiCapsule(int sides, int rings, float r0, float r1);
    // A width x depth grid of heights over the unit square (row by row, x fastest). An empty
    // mesh, with a log line, when the heights do not fill the grid; non-finite heights read 0.
    static std::unique_ptr<Mesh> Heightmap(std::vector<float> const& heights, int width, int depth);
    // A closed outline near a plane, cleaned of repeated points and spikes, triangulated
    // (constrained Delaunay, refined to 30 degrees with `quality`, boundary points only with
    // `keepBoundary`), wound like the outline or against it with `flip`. Empty, with a log
    // line, when the outline encloses nothing.
    static std::unique_ptr<Mesh> FromPolygonTriangulation(std::deque<Vector3<double>> points, bool quality,
                                                          bool keepBoundary, bool flip);

    // ---- Slots of the buffer and sculpt levels (MeshEdits.cpp) -----------------------------
    // Vertices of the triangle soup the buffers hold: three per triangle.
    int points_count() const override;
    // One sample of a stroke: phase 0 begin, 1 progress, 2 end; `index` the sample (normally
    // the last). Prepares the step, applies it on the CPU and writes positions or materials
    // back (MeshSculpt.cpp).
    void sculptStep(std::deque<Sculptor*>& sculptors, int index, unsigned char phase) override;
    // Data type 1 carries a material per corner, 2 a UV per corner; the corner arrays follow.
    void setDataType(int type) override;
    // The smoothing target of one vertex for the smooth brush: an anchor stays; a smooth
    // vertex goes to the mean of its ring; a sharp one to the mean of its neighbours along
    // sharp or border edges, and stays when there are more than two (or none).
    Vector3<float> PointSculptSmooth(int v) const override;

    // ---- CPU sculpting and painting (MeshSculpt.cpp) ----------------------------------------
    // One call per frame of a stroke: begin, one step on the newest sample, and at the end
    // the undo command ("Sculpt Positions", or "Paint Vertices" in a "Paint Mesh" group with
    // the type change when the mesh had no materials).
    void sculpt(std::deque<Sculptor*>& sculptors) override;
    // Exchange the records' values with the mesh's, for undo and redo alike.
    void swapPositions(std::deque<IndexPosition>& records);
    void swapMaterials(std::deque<IndexMaterial>& records);
    // The vertex whose paint weight a material slot (a corner, by its arriving half-edge) takes.
    int sculptCornerVertex(int corner) const;
    // After vertices moved: corner normals of the touched ones and their faces, buffers dirty.
    void sculptMoved(std::vector<int> const& touched);
    // After materials changed: buffers dirty.
    void sculptPainted();

private:
    // The fields of a record in the layout of `version` (DataRead and DataReadOld).
    bool readRecord(IFile& in, int version);
    // buildConnectivity; with `sharpFromNormals`, buildSharpness runs once pairs are known, so
    // the vertex flags are derived only once.
    bool buildConnectivity(bool sharpFromNormals);
    void pairEdges(bool& orientation, bool& nonManifold);
    bool fixOrientation();
    bool splitNonManifoldVertices();
    void reportRepairs();
    void subdivideFaces(bool smooth, bool material);
    int rebuildOverVertices(std::vector<int> const& representative); // returns vertices split again
    std::unique_ptr<Mesh> extractFaces(bool byComponent, int number, bool withMaterial) const;
    // Edits of MeshEdits.cpp: one side of a split (returns the new half-edge, halves not
    // paired), and the arriving corners of v from `from` to `to` in fan order (empty when
    // either is missing, or `to` precedes `from` on an open fan).
    int splitHalfEdge(int e, int m, Pbr const& material);
    std::vector<int> fanRange(int v, int from, int to, bool& wholeFan) const;
    int faceFromCorners(std::vector<int> const& indices, std::vector<bool> const* sharp,
                        std::vector<Pbr> const* mats, std::unordered_map<long, int> const* existing);
};

} // namespace vel
