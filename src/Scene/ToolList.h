// ToolList: the flat list of a tree for one frame: what is drawn, in which order, and what
// a pixel's id names.
//
// Entry i (id i + 1 in the id buffer) is held in four parallel sequences:
// - items[i]: the tool, the element it draws, and the entry of its tree parent (-1 none);
// - matrices[i]: the tool's world matrix;
// - parents[i]: the chase table. It maps an entry to the next higher one that belongs to
//   the same object, and to itself at the object: an object, or a tool at the top of the
//   list. parent(i) follows it to that fixed point.
// - indices[i]: where a search should start instead of i (the owner of a nested instance,
//   possibly a position in another list), or -1 for the entry itself.
//
// sort() turns the entries into draw lists keyed by shader: `sorted[DRAW_OPAQUE]` and
// `sorted[DRAW_TRANSPARENT]`; the other two belong to the frame's draws and sort leaves the
// third alone. render() draws one of the two, a shader change at a time; the GL work of a
// draw is the tools' and elements' (Tool::render, ElementVBO).
#pragma once

#include "Math/Matrix34.h"
#include "Scene/Element.h"
#include "Scene/Material.h"

#include <array>
#include <deque>
#include <memory>
#include <memory_resource>
#include <unordered_map>
#include <vector>

namespace vel {

class Shader;
class Tool;

struct RenderItem {
    Tool* tool = nullptr;
    Element* element = nullptr; // the tool's RenderElement(); null for a group
    int parent = -1;            // entry of the tree parent in this list, -1 for none
    int instance = 0;           // which instance of a repeating owner (an array), 0 for the rest
};

struct RenderSubItem {
    Tool* tool = nullptr;
    Element::SubElement sub; // the piece drawn
    int index = -1;          // the entry it came from
    Material material;       // the tool's material at sorting time
};

class ToolList {
public:
    // Draw lists live in a per-frame arena: a frame's nodes are laid out one after another
    // and dropped together, instead of being allocated and freed one by one.
    using DrawList = std::pmr::unordered_multimap<Shader*, RenderSubItem>;
    static constexpr int DRAW_OPAQUE = 0;
    static constexpr int DRAW_TRANSPARENT = 1;
    // A material alpha (13 bits) below this draws in the transparent pass.
    static constexpr int ALPHA_OPAQUE = 8160;

    // Vectors, not deques: cleared each frame, they keep their capacity, so a steady frame
    // lists without allocating.
    std::vector<RenderItem> items;
    std::vector<Matrix34<double>> matrices;
    std::vector<int> parents;
    std::vector<int> indices;
    std::array<DrawList, 4> sorted;
    // The instance number that add() gives new entries: an owner that repeats its item sets
    // it around each instance and puts it back after.
    int instance = 0;

    ToolList();
    ToolList(ToolList&&) = delete; // the draw lists point into this list's own arenas
    ToolList& operator=(ToolList&&) = delete;

    int count() const { return int(items.size()); }
    // Empties the four sequences; the draw lists stay until the next sort.
    void clear();
    // Empties the sequences and all four draw lists.
    void reset();

    // Lists T and its subtree under the place T has in the tree (its parent's world frame).
    // A root lists its children only. With `skipSelected` a selected tool is left out with
    // its subtree: a moved selection is drawn from another list, so that the pick of the
    // frame looks through it.
    void append(Tool* T, bool skipSelected);
    // Appends the subtree of T once per entry of `instances`: each copy of T has the world
    // matrix T->transform() * M * instance * W, where W is the world matrix of entry `index`
    // of `list` (identity when index is negative), the entry of `parent`. Every entry made
    // stores `index`, so that a search on an instance finds its owner there.
    void append(Tool* T, Matrix34<double> const& M, std::vector<Matrix34<double>> const& instances,
                ToolList const& list, Tool* parent, int index, bool skipSelected);

    // Fills the opaque and transparent draw lists from the entries. Left out: tools that
    // are not visible and groups; curves unless `curves`; transparent entries unless
    // `transparent`; rigid bodies unless `rigid`. With the material styles (6, 7) the
    // transparent entries go to their own list, with any other style all go to the first.
    void sort(bool curves, bool transparent, bool rigid);
    // Draws the transparent list for kind 1, else the opaque one, then the boxes when the
    // rendering settings ask for them. Each draw's id is the entry + 1, with the top bit for
    // a selected or highlighted tool; the spare fourth id word carries the tool's own id.
    // `counter` counts the draws. Ends with no program in use and the vertex array that was
    // bound before. The elements' buffers must be filled first (Tool::prepareRender).
    void render(TRenderState const& state, bool flag, int& counter) const;
    // The oriented box of each entry of the same list, drawn in lines with the entry's ids.
    void renderOBBs(TRenderState const& state, bool flag, int& counter) const;
    // One step of the frame's listing: T (unless skipped as selected) through its
    // Tool::toList, under `parentWorld` and entry `parentEntry`.
    void walk(Tool* T, bool skipSelected, Matrix34<double> const& parentWorld, int parentEntry, int index);
    // Appends one entry; returns its number.
    int add(Tool* T, Matrix34<double> const& world, int parentEntry, int index);

    // The id the id buffer receives for entry i.
    int itemId(int i) const;

    // Whether entry i draws in the transparent pass: the element or the tool says so, or
    // the material's alpha is under ALPHA_OPAQUE.
    bool isTransparent(int i) const;

    // The entry that answers for entry i as an object: the chase table's fixed point.
    int parent(int i) const;
    // The world matrix of the entry's tree parent, or its own when it has none.
    Matrix34<double> pivot(int i) const;
    // The tool of the entry's tree parent; null when it has none or i is past the end.
    Tool* FirstParent(int i) const;

private:
    // The box renderOBBs draws, made on its first use on the GL thread.
    mutable std::shared_ptr<Element> box;

    // One arena per draw list, so that the third (index 2), which sort leaves alone, keeps its nodes.
    std::array<std::unique_ptr<std::pmr::monotonic_buffer_resource>, 4> arenas;

    // Empties draw list `which` and its arena, keeping room for as many entries as it had.
    void restart(int which);
    // The walk of render and renderOBBs: each entry of the list through `draw`, with the
    // shader of its key made current and given the frame's uniforms.
    template <class Draw>
    void walkDraws(TRenderState const& state, int& counter, Draw const& draw) const;
};

} // namespace vel
