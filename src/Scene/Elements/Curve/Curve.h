// Curve: a polyline element of one or more chains, open or closed, kept in vertex and edge
// records like a mesh, with an optional radius and frame at each vertex.
//
// Invariants of the records (after buildConnectivity and correctOrientation):
// - An active edge runs from v[0] to v[1]; e[0] is the edge of the chain that ends at v[0]
//   and e[1] the one that starts at v[1], -1 at an open end. Following e[1] from any edge
//   of a chain comes back to it (closed) or stops at -1 (open), in at most edges.size() steps.
// - A vertex's `edge` names an active edge that touches it, NO_EDGE for a lone vertex.
// - `component` numbers the chains from 0; `patch` is cut again at every sharp vertex.
// - Frames (edgeFrames, the tangent and normal of each edge) are a projected transport:
//   the normal of an edge is the previous edge's normal with its part along the new
//   tangent removed, so the frame never spins about the curve. They are rebuilt lazily:
//   any change of vertices must call update(), which marks them dirty.
//
// A frame as a Matrix34 (vertFrame) has the normal as row 0 (x), binormal as row 1 (y) and
// the tangent as row 2 (z): an item's local z runs along the curve.
//
// Index
// - records, construction, connectivity, queries, factories ...... Curve.cpp
// - frames, bones, subdivision, smoothing, Uniform ............... CurveGeometry.cpp
// - file fields (DataSize, DataWrite, DataRead) ................... CurveFile.cpp
// - sculpting and painting on the CPU ............................. CurveSculpt.cpp
#pragma once

#include "Math/HFloat.h"
#include "Math/Pbr.h"
#include "Scene/Elements/Curve/CurveVBO.h"
#include "Scene/Elements/SculptRecords.h"

#include <array>
#include <cstdint>
#include <deque>
#include <utility>
#include <vector>

namespace vel {

struct CurveVert {
    static constexpr unsigned ACTIVE = 1;
    static constexpr unsigned SHARP = 2; // a control point that smoothing leaves alone
    static constexpr unsigned NO_EDGE = (1u << 27) - 1;

    Vector3<float> position;
    unsigned edge : 27;  // an incident edge, NO_EDGE for none
    unsigned flags : 5;

    CurveVert()
        : edge(NO_EDGE)
        , flags(0)
    {
    }
    bool is(unsigned flag) const { return (flags & flag) != 0; }
};

struct CurveEdge {
    static constexpr unsigned ACTIVE = 1;
    static constexpr unsigned START_SHARP = 4;
    static constexpr unsigned END_SHARP = 8;
    static constexpr unsigned VISITED = 16; // transient: set and cleared within one walk

    int v[2] = {-1, -1}; // start and end vertex
    int e[2] = {-1, -1}; // previous and next edge of the chain, -1 at an open end
    int component = 0;
    unsigned patch : 27;
    unsigned flags : 5;

    CurveEdge()
        : patch(0)
        , flags(0)
    {
    }
    bool is(unsigned flag) const { return (flags & flag) != 0; }
};

// Five half floats per vertex: radius, angle (radians, about the tangent), three spare.
struct CurveFrame {
    hfloat radius{1.0f};
    hfloat angle{0.0f};
    hfloat spare[3];
};

// The stored frame of an edge: its tangent and the transported normal.
struct CurveEdgeFrame {
    hvec3 tangent;
    hvec3 normal;
};

// A free end of a chain, for enders: `vertex` is +(v + 1) at a chain's start and -(v + 1)
// at its end; the frame is the vertex frame there.
struct CurveBord {
    int vertex = 0;
    Matrix34<double> frame;
};

class Curve : public CurveVBO {
public:
    std::vector<CurveVert> verts;
    std::vector<CurveEdge> edges;
    std::vector<CurveFrame> vertFrames;      // one per vertex when hasFrames
    std::vector<CurveEdgeFrame> edgeFrames;  // one per edge, refreshed by calculateFrames
    std::vector<Pbr> materials;              // data type 1: two per edge, one per end
    std::vector<uint32_t> uvs;               // data type 2: one per edge
    std::vector<CurveBord> bords;            // free ends, refreshed by updateBords
    std::deque<CurveBone> bones;             // vertex frames for snakes, by buildVertsFrames
    bool hasFrames = false;
    bool framesDirty = true; // edge frames and bones must be rebuilt
    bool bonesDirty = true;  // the bones deque must be refilled
    bool sculpting = false;  // a stroke runs: smoothing reads the copy in the curve pad

    Curve() = default;
    // A polyline through the points, one chain; closed joins the last to the first.
    Curve(std::vector<Vector3<float>> const& points, bool closed, bool sharp, TResizeStyle style);
    Curve(Curve const& other);
    Curve& operator=(Curve const& other);
    ~Curve() override;

    // ---- Element ----
    int Type() const override { return 5; }
    unsigned BlockId() const override { return 0xe1000002u; }
    bool empty() const override;
    void calculateAABB(Matrix34<double> const& M) override;
    void initialize(TResizeStyle style) override;
    Element* clone() override;
    std::deque<Vector3<double>> Points(Matrix34<double> const& M) const override;
    void subdivide(bool smooth) override;
    void update() override;
    int DataSize() const override;
    void DataWrite(OFile& out, std::unordered_map<Element*, int>& ids) override;
    void DataRead(IFile& in) override;
    // False (and an empty curve, with a log line) when the record is damaged.
    bool DataRead(IFile& in, int version);

    // ---- curve protocol, in slot order ----
    virtual int CurveType() const { return 0; }
    virtual void setFrames(bool on);
    virtual void construct(Curve* other);
    virtual void construct(std::vector<Vector3<float>> const& points, bool closed, bool sharp);
    virtual void construct(std::vector<Vector3<float>> const& points, std::vector<float> const& radii, bool closed,
                           bool sharp);
    virtual Curve* BaseCurve() { return this; }
    // Takes the other's records; with `frames` its frame records too.
    virtual void copyVertsEdges(Curve* other, bool frames);
    virtual void updateBords();
    // The ends of edge e, its length and the radii at both ends.
    virtual void segmentPointsLengthRadii(int e, Vector3<float>& p0, Vector3<float>& p1, float& length, float& r0,
                                          float& r1) const;
    // Joins the open ends of every chain with a new edge.
    virtual void close();

    // ---- building ----
    int vertAdd(Vector3<float> const& position, bool sharp, int edge = -1);
    int vertAddFrame(Vector3<float> const& position, float radius, float angle, bool sharp, int edge = -1);
    int edgeAdd(CurveEdge const& edge);
    int edgeAdd(int v0, int v1, int e0, int e1, bool startSharp, bool endSharp);
    // Edges between consecutive indices; a -1 index breaks the chain there.
    void edgesAdd(std::vector<int> const& indices, std::vector<bool> const& sharp = {});
    void append(Curve* other);
    void swap(Curve& other);
    void clear();

    // ---- queries ----
    double Length() const;
    Vector3<float> position(int v) const { return verts[size_t(v)].position; }
    float radius(int v) const;
    std::vector<int> vertEdges(int v) const;
    // The vertex after `through` coming from `from`, -1 at an open end.
    int nextVert(int from, int through) const;
    int findEdge(int v0, int v1) const;
    std::vector<int> findNeighbours(int v) const;
    // The incident edges of v: the one ending there first (-1 if none), then the one starting.
    void findENeighbours(int v, std::vector<int>& out) const;
    // The same without a container, for the per-frame walks.
    void edgePair(int v, int& in, int& out) const;
    // The first edge of e's chain: e itself for a closed one.
    int edgeStart(int e) const;
    void segmentPoints(int e, Vector3<float>& p0, Vector3<float>& p1) const;
    void segmentPointsRadii(int e, Vector3<float>& p0, Vector3<float>& p1, float& r0, float& r1) const;
    void segmentRadii(int e, float& r0, float& r1) const;
    // Normal, binormal, tangent as rows and the position; with `withRadius` the 3x3 is
    // scaled by the vertex radius. The identity at the position for a lone vertex.
    Matrix34<double> vertFrame(int v, bool withRadius) const;
    bool isClosedChain(int e) const;
    int activeVerts() const;
    int activeEdges() const;

    // ---- operations ----
    void edgeSplit(CurveEdge& edge, int index, int vertex, bool frames);
    void edgeSplitFrame(int edge, int vertex);
    void smoothDraw(int iterations);
    Vector3<float> vertSmoothPosition(int v) const;
    Vector3<float> vertTangentialSmoothPosition(int v) const;
    float vertSmoothRadius(int v) const;
    float vertSmoothAngle(int v) const;
    void calculateFrames(bool force);
    void correctOrientation();
    // Samples at `spacing` along every chain (derived from Length() when 0 or less; with
    // frames and `byRadius`, in radii); `params` receives edge + fraction for every sample,
    // `radii` the interpolated radius, `chains` the samples and closedness of each chain.
    // `maxLength` above 0 ends the walk after that length. Nothing for an empty curve.
    std::vector<Vector3<float>> Uniform(float& spacing, std::deque<float>& params, bool includeEnd, bool byRadius,
                                        double maxLength, std::vector<float>* radii = nullptr,
                                        std::vector<std::pair<int, bool>>* chains = nullptr) const;
    void removeInactive(bool keepFrames);
    bool buildConnectivity();
    void setComponentsPatches();
    void newPatch(int vertex);
    void setSharp(bool on);
    void setDataType(int type) override;

    // ---- CPU sculpting and painting (CurveSculpt.cpp), as Mesh's ----
    void sculpt(std::deque<Sculptor*>& sculptors) override;
    void sculptStep(std::deque<Sculptor*>& sculptors, int index, unsigned char phase) override;
    // The smoothing target: the mean of the neighbours; sharp points and open ends stay.
    Vector3<float> PointSculptSmooth(int v) const override;
    void swapPositions(std::deque<IndexPosition>& records);
    void swapMaterials(std::deque<IndexMaterial>& records);
    // Material slot 2e is edge e's start, 2e + 1 its end.
    int sculptCornerVertex(int slot) const;
    void sculptMoved(std::vector<int> const& touched);
    void sculptPainted();
    // Fills bones from the frames when dirty; false with no vertex or no edge.
    bool buildVertsFrames();
    // buildVertsFrames, then the bones texture (render thread).
    bool buildGPUVertsFrames();

    // ---- factories ----
    static Curve* Segment();
    static Curve* Segment(int n, TResizeStyle style);
    static Curve* Quad(float width, float height);
    static Curve* NGon(int n, bool sharp);
    static Curve* Helix(int n, int turns);
    static Curve* Chainlink(int n, bool sharp);
    static Curve* TrefoilKnot(int n);
    static Curve* Knot(int n, int p, int q);

protected:
    void calculateSize(TResizeStyle style);
    void subdivideGeometry(bool smooth);
    void subdivideGeometryMaterial(bool smooth);
    void vertDataReadOld(IFile& in, int count, bool& ok);
    void edgeDataReadOld(IFile& in, int count, bool& ok);
    void clearVisited();
    // The flat arrays the vertex buffers hold: two points per active edge, then the handles.
    void fillGPUPositions(std::vector<float>& out) override;
};

} // namespace vel
