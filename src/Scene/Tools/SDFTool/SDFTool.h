// SDFTool: one primitive of a signed distance field, and the trees they form.
//
// A tool whose operation is not "none" and whose parent is an SDFTool is a member of its
// parent's tree; any other SDFTool is the top of a tree of its own. Listing (toList)
// gathers every member into the top's `sdfs`; ordered by priority, that list is the
// expression `result = result op entry`, with signed bracket counts as parentheses: a
// positive count b opens b groups before its entry, a negative one closes -b after it,
// and a group joins the enclosing value with the operation of the entry that opened it.
//
// Invariants of a tree that `fixTree` restores and every edit of this file keeps:
// - the members' priorities are exactly 0 .. n - 1;
// - read in priority order, the bracket counts never close more than is open, and
//   everything opened is closed by the end;
// - no bracket count exceeds the number of members in size.
// Every change of priority or bracket is a CommandSDFSavePriorityGroup, every change of
// parameters a CommandSDFSave, so each edit undoes exactly.
//
// Index (SDFTool.cpp)
// - construction and kind
// - listing
// - walks of the tree
// - brackets and priorities
// - validation and repair
// - edits: operation, parent, removal
// - file record and outline
#pragma once

#include "Scene/Tool.h"
#include "Scene/Tools/SDFTool/SDFObj.h"
#include "Scene/Tools/SDFTool/SDFStruct.h"

#include <deque>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vel {

class IFile;
class OFile;
class SDFTool;

// The first preview entry listed this frame (tool null when none).
extern SDFStruct SelectionSDF1;

// What the outline of one primitive is drawn from: the unit cube scaled to `box` and
// placed by `model`, and the values of the simple raymarcher.
struct SDFOutline {
    AABB box;               // in the primitive's own space
    Matrix34<double> model; // the primitive's space to the world
    int ids[3];             // shape as evaluated, shell, array type (0 when inactive)
    float dims_r[4];        // half dims (capped torus: half angle in radians in z), R
    float thickness;        // half the shell thickness
    Vector3<float> step;    // linear: half dims times step; circular: angle step, start, radius
    int nn[4];              // nx, ny, nz, count - 1; all 1 when inactive
};

class SDFTool : public Tool {
public:
    static constexpr int TYPE = 12;
    static constexpr unsigned TAG = 0xABCDEF20; // SDF_DATA

    SDFObj sdf;
    SDFTool* top = nullptr; // the top of this tool's tree; itself at the top
    std::deque<SDFStruct> sdfs;      // the tree's members listed this frame (on the top)
    std::deque<SDFStruct> sdfs_temp; // preview entries of this frame (on the top)
    std::deque<SDFStruct> sdfs_all;  // sdfs, then sdfs_temp, as evaluated
    int max_sdfs = 0;       // the capacity last compiled into the shader
    bool temporary = false; // a preview in another tree this frame
    AABB bounds;            // of the whole tree, in the top's space
    int optimisation = 0;   // 0 to 3: how the shader may read the list

    explicit SDFTool(SDFObj const& obj = SDFObj(), Matrix34<double> const& object = Matrix34<double>(),
                     Matrix34<double> const& pivot = Matrix34<double>(), Material const& material = Material());

    // A record of a scene file (tag SDF_DATA): the base record, then the SDF fields. Like
    // every loaded tool, it is not a step of the history.
    SDFTool(IFile& in, int payload);

    int ToolType() const override;
    Tool* SimpleClone(bool asObject, Matrix34<double> const& object, Matrix34<double> const& pivot) override;
    // Listing: joins the parent's tree or starts its own, adds its entry to the top, then
    // walks the children as any tool does.
    void toList(std::vector<Tool*>& list) override;
    // A member leaving by deletion hands its brackets to the tools that stay.
    void remove() override;

    // ---- membership ----
    // A member: its parent is an SDFTool and its operation is not "none".
    bool isMember() const;
    // The top of the tree by the parent chain (no listing needed).
    SDFTool* treeTop();
    bool hasSDFHierarchy() const;
    void addSDF(SDFStruct const& entry);
    void addSDFTemp(SDFStruct const& entry, Tool* target);
    bool sdfContains(Tool* t) const;

    // ---- walks of the tree below this tool, breadth first ----
    std::vector<SDFTool*> walk();
    std::set<SDFTool*> findAll();
    // Priority to tool; equal priorities keep the order of the walk.
    std::multimap<short, SDFTool*> findOrder();
    // Each bracket's tool to the tool at its other end, both directions. Closes with
    // nothing open are repaired here: each moves one towards 0, as a command.
    std::multimap<SDFTool*, SDFTool*> findMatchingBrackets();

    // ---- brackets and priorities ----
    // Records and sets this tool's pair.
    void setPriorityBracket(int16_t priority, int16_t bracket);
    // Gives the subtree the priorities base, base + 1, ... in its own order; `saved`
    // restores brackets that removeExternalBrackets took; a subtree with members gets a
    // pair of brackets around its range unless it has one.
    void setSDFPriorityGroup(int base, std::deque<short> saved);
    // Fills `pairs` with (priority + base, bracket) of every member of the subtree.
    void setSDFPriorityGroup(std::unordered_map<Tool*, std::pair<short, short>>& pairs, int base);
    // For a subtree about to leave its tree: every bracket whose partner stays outside
    // moves one towards 0. The returned values are sign * (priority + 1) of each move
    // (offset by one, so that priority 0 keeps its sign).
    std::deque<short> removeExternalBrackets();
    // On a top: priorities 0, 1, ... in order, and a pair around the whole list dropped.
    void fixPriorities();
    // On a top: fixPriorities, then the brackets made sound. True if anything changed.
    bool fixTree();
    // Broken invariants of the tree of this top (see the file comment); empty when sound.
    std::vector<std::string> validateTree();

    // ---- file record ----
    // The SDF fields that follow Tool's base record under SDF_DATA.
    static int SDFDataSize() { return SDFObj::DataSize(); }
    int DataSize() const override;
    void Data(OFile& out, std::unordered_map<Element*, int>& ids) override;
    void DataWrite(OFile& out, std::unordered_map<Element*, int>& ids) override;
    bool DataRead(IFile& in, int payload) override;
    void SDFDataWrite(OFile& out) const;
    // Reads by version and repairs what is out of range, logging each repair. False when
    // the stream ended before the fields did (the tool keeps sound values either way).
    bool SDFDataRead(IFile& in, int version);
    // After a load: fixPriorities on every SDFTool for files before the current version,
    // then every tree that is still unsound is repaired, with a warning in the log.
    // Returns the number of trees repaired that way.
    static int RepairLoaded(std::unordered_map<int, Tool*> const& reachable, int version);

    // The combination steps of a list in priority order, as the stack evaluator reads
    // them: (index at which to combine, index of the entry whose operation applies).
    static std::vector<std::pair<int, int>> operations(std::deque<SDFStruct> const& sorted);

    // The data of the outline of this primitive alone, placed by M.
    SDFOutline simpleOutline(Matrix34<double> const& M) const;

    // Operation after `op` on the Tab key: intersection is reached only through the panel.
    static unsigned char nextOperation(unsigned char op);
};

// The size of the tree below `root` by FindSDFCount.
int TreeSDFCount(Tool* root);
// Counts SDF tools down from t, stopping at a tool with no operation once counting began.
void FindSDFCount(Tool* t, int& n);
// Changes the operation class of `tool` as one step "SDF Operation"; joining or leaving
// the parent's tree is handled here.
void g_SDF_OPERATION(SDFTool* tool, unsigned char op);
// Moves `tool` under `parent` as one step "SDF Parent", leaving and joining trees cleanly.
void g_SDF_PARENT(SDFTool* tool, Tool* parent);

} // namespace vel
