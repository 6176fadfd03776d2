#include "Scene/Tools/SDFTool/SDFTool.h"

#include "Core/Assert.h"
#include "Core/Communicate.h"
#include "Scene/Commands/CommandSDFSave.h"
#include "Scene/Commands/CommandSDFSavePriorityGroup.h"
#include "Scene/IFile.h"
#include "Scene/OFile.h"
#include "Scene/SceneFile.h"
#include "Scene/SceneHistory.h"
#include "Scene/Tools/SDFTool/SDFRemoval.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace vel {

SDFStruct SelectionSDF1;

namespace {

constexpr double PI = 3.14159265358979323846;

// Set while a member's deletion is being handled: the members deleted with it leave a
// tree that goes as a whole, and need no bookkeeping of their own.
bool gRemovingSDF = false;

// Pairs the brackets of tools read in `ordered` order into `pairs` (when given). With
// `repair`, a close with nothing open moves one towards 0 as a command. Returns whether the
// first and the last tool are a matched pair: a pair around the whole list.
bool Match(std::vector<SDFTool*> const& ordered, bool repair, std::multimap<SDFTool*, SDFTool*>* pairs)
{
    std::vector<SDFTool*> open;
    bool around = false;
    for (SDFTool* t : ordered) {
        int b = t->sdf.bracket;
        for (int k = 0; k < b; ++k)
            open.push_back(t);
        for (int k = 0; k < -b; ++k) {
            if (open.empty()) {
                if (repair)
                    t->setPriorityBracket(t->sdf.priority, int16_t(t->sdf.bracket + 1));
                continue;
            }
            if (pairs) {
                pairs->emplace(open.back(), t);
                pairs->emplace(t, open.back());
            }
            around = around || (t == ordered.back() && open.back() == ordered.front() && t != open.back());
            open.pop_back();
        }
    }
    return around;
}

// The walk sorted by priority, equal priorities in the walk's order: findOrder as a vector.
std::vector<SDFTool*> Ordered(std::vector<SDFTool*> tools)
{
    std::stable_sort(tools.begin(), tools.end(),
                     [](SDFTool* a, SDFTool* b) { return a->sdf.priority < b->sdf.priority; });
    return tools;
}

} // namespace

// ---- construction and kind -------------------------------------------------------------

SDFTool::SDFTool(SDFObj const& obj, Matrix34<double> const& object, Matrix34<double> const& pivot,
                 Material const& material)
    : Tool(Shared<Element>(), object, pivot, material)
    , sdf(obj)
    , top(this)
{
}

SDFTool::SDFTool(IFile& in, int payload)
    : Tool(Unrecorded{})
    , top(this)
{
    // Read here, not by the base constructor, so that the SDF reading is the one called.
    if (!DataRead(in, payload)) {
        if (!fileRefs)
            fileRefs = std::make_unique<FileRefs>();
        fileRefs->failed = true;
    }
}

int SDFTool::DataSize() const
{
    return Tool::DataSize() + SDFDataSize();
}

void SDFTool::Data(OFile& out, std::unordered_map<Element*, int>& ids)
{
    Tool::Data(out, ids);
    SDFDataWrite(out);
}

void SDFTool::DataWrite(OFile& out, std::unordered_map<Element*, int>& ids)
{
    out.writeValue(TAG);
    out.writeValue(unsigned(DataSize()));
    Data(out, ids);
}

bool SDFTool::DataRead(IFile& in, int payload)
{
    return Tool::DataRead(in, payload) && SDFDataRead(in, FILE_VERSION);
}

int SDFTool::ToolType() const
{
    return TYPE;
}

Tool* SDFTool::SimpleClone(bool asObject, Matrix34<double> const& object, Matrix34<double> const& pivot)
{
    auto* copy = new SDFTool(sdf, object, pivot, material);
    CloneInfo(asObject, copy, true);
    return copy;
}

unsigned char SDFTool::nextOperation(unsigned char op)
{
    unsigned char next = (op + 1) % SDF_OPERATIONS;
    return next == SDF_INT ? SDF_PAINT : next;
}

// ---- listing ---------------------------------------------------------------------------

void SDFTool::toList(std::vector<Tool*>& list)
{
    temporary = false;
    if (isMember()) {
        top = static_cast<SDFTool*>(Parent)->top;
    } else {
        top = this;
        sdfs.clear();
        sdfs_temp.clear();
    }
    SDFStruct entry;
    entry.tool = this;
    worldTransform(entry.world, true);
    entry.selection = int(list.size());
    addSDF(entry);
    Tool::toList(list);
}

bool SDFTool::isMember() const
{
    return Parent && Parent->isSDF() && sdf.operation != SDF_NOOP;
}

SDFTool* SDFTool::treeTop()
{
    SDFTool* t = this;
    while (t->isMember())
        t = static_cast<SDFTool*>(t->Parent);
    return t;
}

bool SDFTool::hasSDFHierarchy() const
{
    for (Tool* child : children)
        if (child->isSDF() && static_cast<SDFTool*>(child)->sdf.operation != SDF_NOOP)
            return true;
    return false;
}

void SDFTool::addSDF(SDFStruct const& entry)
{
    if (top)
        top->sdfs.push_back(entry);
}

void SDFTool::addSDFTemp(SDFStruct const& entry, Tool* target)
{
    if (!target || !target->isSDF())
        return;
    top = static_cast<SDFTool*>(target)->top;
    if (!top || top->sdfContains(this))
        return;
    temporary = true;
    sdfs.clear();
    top->sdfs_temp.push_back(entry);
    if (!SelectionSDF1.tool)
        SelectionSDF1 = entry;
}

bool SDFTool::sdfContains(Tool* t) const
{
    for (SDFStruct const& entry : sdfs)
        if (entry.tool == t)
            return true;
    return false;
}

// ---- walks of the tree -----------------------------------------------------------------

std::vector<SDFTool*> SDFTool::walk()
{
    std::vector<SDFTool*> out{this};
    for (size_t i = 0; i < out.size(); ++i)
        for (Tool* child : out[i]->children)
            if (child->isSDF() && static_cast<SDFTool*>(child)->sdf.operation != SDF_NOOP)
                out.push_back(static_cast<SDFTool*>(child));
    return out;
}

std::set<SDFTool*> SDFTool::findAll()
{
    auto tools = walk();
    return std::set<SDFTool*>(tools.begin(), tools.end());
}

std::multimap<short, SDFTool*> SDFTool::findOrder()
{
    std::multimap<short, SDFTool*> order;
    for (SDFTool* t : walk())
        order.emplace(t->sdf.priority, t); // after its equals: the walk's order stays
    return order;
}

std::multimap<SDFTool*, SDFTool*> SDFTool::findMatchingBrackets()
{
    std::multimap<SDFTool*, SDFTool*> pairs;
    Match(Ordered(walk()), true, &pairs);
    return pairs;
}

// ---- brackets and priorities -----------------------------------------------------------

void SDFTool::setPriorityBracket(int16_t priority, int16_t bracket)
{
    if (sdf.priority == priority && sdf.bracket == bracket)
        return;
    auto* command = new CommandSDFSavePriorityGroup(this);
    sdf.priority = priority;
    sdf.bracket = bracket;
    History::instance().push(command);
}

void SDFTool::setSDFPriorityGroup(int base, std::deque<short> saved)
{
    bool hierarchy = saved.empty() && hasSDFHierarchy();
    std::vector<SDFTool*> ordered = Ordered(walk());
    if (!saved.empty())
        for (SDFTool* t : walk())
            for (short s : saved)
                if (std::abs(int(s)) == t->sdf.priority + 1)
                    t->setPriorityBracket(t->sdf.priority, int16_t(t->sdf.bracket + (s > 0 ? 1 : -1)));
    int p = base;
    for (SDFTool* t : ordered)
        t->setPriorityBracket(int16_t(p++), t->sdf.bracket);
    if (!hierarchy || ordered.size() < 2)
        return;
    SDFTool* first = ordered.front();
    SDFTool* last = ordered.back();
    if (Match(ordered, false, nullptr))
        return;
    first->setPriorityBracket(first->sdf.priority, int16_t(first->sdf.bracket + 1));
    last->setPriorityBracket(last->sdf.priority, int16_t(last->sdf.bracket - 1));
}

void SDFTool::setSDFPriorityGroup(std::unordered_map<Tool*, std::pair<short, short>>& pairs, int base)
{
    for (SDFTool* t : walk())
        pairs[t] = {short(t->sdf.priority + base), t->sdf.bracket};
}

std::deque<short> SDFTool::removeExternalBrackets()
{
    std::deque<short> saved;
    auto matches = treeTop()->findMatchingBrackets();
    auto inside = findAll();
    for (SDFTool* t : walk()) {
        auto range = matches.equal_range(t);
        for (auto m = range.first; m != range.second; ++m) {
            if (inside.count(m->second))
                continue;
            int s = t->sdf.bracket > 0 ? 1 : -1;
            VEL_ASSERT(t->sdf.bracket != 0);
            t->setPriorityBracket(t->sdf.priority, int16_t(t->sdf.bracket - s));
            saved.push_back(short(s * (t->sdf.priority + 1)));
        }
    }
    return saved;
}

void SDFTool::fixPriorities()
{
    if (isMember())
        return;
    std::vector<SDFTool*> ordered = Ordered(walk());
    for (size_t i = 0; i < ordered.size(); ++i)
        ordered[i]->setPriorityBracket(int16_t(i), ordered[i]->sdf.bracket);
    if (ordered.size() < 2)
        return;
    SDFTool* first = ordered.front();
    SDFTool* last = ordered.back();
    // A pair around the whole list groups nothing.
    if (!Match(ordered, false, nullptr))
        return;
    first->setPriorityBracket(first->sdf.priority, int16_t(first->sdf.bracket - 1));
    last->setPriorityBracket(last->sdf.priority, int16_t(last->sdf.bracket + 1));
}

// ---- validation and repair -------------------------------------------------------------

std::vector<std::string> SDFTool::validateTree()
{
    std::vector<std::string> violations;
    if (isMember())
        return {"not a top"};
    std::vector<SDFTool*> ordered = Ordered(walk());
    int n = int(ordered.size()), depth = 0;
    for (int i = 0; i < n; ++i) {
        SDFObj const& o = ordered[i]->sdf;
        std::string at = "tool " + std::to_string(ordered[i]->id) + ": ";
        if (o.priority != i)
            violations.push_back(at + "priority " + std::to_string(o.priority) + " at place " + std::to_string(i));
        if (std::abs(int(o.bracket)) > n)
            violations.push_back(at + "bracket " + std::to_string(o.bracket) + " exceeds the tree");
        depth += o.bracket;
        if (depth < 0) {
            violations.push_back(at + "closes a bracket that is not open");
            depth = 0;
        }
    }
    if (depth > 0)
        violations.push_back(std::to_string(depth) + " brackets never close");
    return violations;
}

bool SDFTool::fixTree()
{
    if (isMember())
        return treeTop()->fixTree();
    std::vector<SDFTool*> tools = walk();
    std::vector<std::pair<int16_t, int16_t>> before;
    before.reserve(tools.size());
    for (SDFTool* t : tools)
        before.emplace_back(t->sdf.priority, t->sdf.bracket);

    // Counts beyond the tree can never match; bounding them first bounds the repairs.
    int16_t const limit = int16_t(std::min<size_t>(tools.size(), 0x7fff));
    for (SDFTool* t : tools)
        t->setPriorityBracket(t->sdf.priority, std::clamp<int16_t>(t->sdf.bracket, int16_t(-limit), limit));
    std::vector<SDFTool*> ordered = Ordered(tools);
    for (size_t i = 0; i < ordered.size(); ++i)
        ordered[i]->setPriorityBracket(int16_t(i), ordered[i]->sdf.bracket);
    Match(ordered, true, nullptr);
    // Opens that never close move towards 0, the innermost first.
    std::vector<SDFTool*> open;
    for (SDFTool* t : ordered) {
        for (int k = 0; k < t->sdf.bracket; ++k)
            open.push_back(t);
        for (int k = 0; k < -t->sdf.bracket && !open.empty(); ++k)
            open.pop_back();
    }
    while (!open.empty()) {
        SDFTool* t = open.back();
        open.pop_back();
        t->setPriorityBracket(t->sdf.priority, int16_t(t->sdf.bracket - 1));
    }
    // Every pair around the whole list groups nothing.
    while (ordered.size() > 1 && Match(ordered, false, nullptr)) {
        SDFTool* first = ordered.front();
        SDFTool* last = ordered.back();
        first->setPriorityBracket(first->sdf.priority, int16_t(first->sdf.bracket - 1));
        last->setPriorityBracket(last->sdf.priority, int16_t(last->sdf.bracket + 1));
    }

    for (size_t i = 0; i < tools.size(); ++i)
        if (before[i] != std::make_pair(tools[i]->sdf.priority, tools[i]->sdf.bracket))
            return true;
    return false;
}

int SDFTool::RepairLoaded(std::unordered_map<int, Tool*> const& reachable, int version)
{
    std::vector<SDFTool*> tools;
    for (auto const& entry : reachable)
        if (entry.second && entry.second->isSDF())
            tools.push_back(static_cast<SDFTool*>(entry.second));
    // The map's order is the hash's: sorted by id, the log reads the same on every load.
    std::sort(tools.begin(), tools.end(), [](SDFTool* a, SDFTool* b) { return a->id < b->id; });
    if (version < SDF_VERSION_CURRENT)
        for (SDFTool* t : tools)
            t->fixPriorities();
    int repaired = 0;
    for (SDFTool* t : tools) {
        if (t->isMember())
            continue;
        auto violations = t->validateTree();
        if (violations.empty())
            continue;
        LogInfo(QString::fromStdString("SDF tree repaired (" + violations.front() + ")"), 1);
        t->fixTree();
        ++repaired;
    }
    return repaired;
}

// ---- edits: operation, parent, removal -------------------------------------------------

int TreeSDFCount(Tool* root)
{
    int n = 0;
    FindSDFCount(root, n);
    return n;
}

void FindSDFCount(Tool* t, int& n)
{
    if (!t->isSDF())
        return;
    if (static_cast<SDFTool*>(t)->sdf.operation == SDF_NOOP && n > 0)
        return;
    ++n;
    for (Tool* child : t->children)
        FindSDFCount(child, n);
}

void g_SDF_OPERATION(SDFTool* tool, unsigned char op)
{
    if (tool->sdf.operation == op)
        return;
    History& history = History::instance();
    history.superBegin("SDF Operation", false);
    SDFObj before = tool->sdf;
    bool underSDF = tool->Parent && tool->Parent->isSDF();
    if (underSDF && before.operation == SDF_NOOP) {
        // Counted while the tool is still foreign: its subtree goes to the end of the list.
        SDFTool* newTop = static_cast<SDFTool*>(tool->Parent)->treeTop();
        int base = TreeSDFCount(newTop);
        tool->sdf.operation = op;
        history.push(new CommandSDFSave(tool, before));
        tool->setSDFPriorityGroup(base, {});
        newTop->fixTree();
    } else if (underSDF && op == SDF_NOOP) {
        SDFTool* oldTop = tool->treeTop();
        SDFRemoval removal(tool);
        tool->removeExternalBrackets();
        tool->sdf.operation = op;
        history.push(new CommandSDFSave(tool, before));
        removal.ProcessRemoval();
        oldTop->fixTree();
        tool->fixTree();
    } else {
        tool->sdf.operation = op;
        history.push(new CommandSDFSave(tool, before));
    }
    history.superEnd();
}

void g_SDF_PARENT(SDFTool* tool, Tool* parent)
{
    History& history = History::instance();
    history.superBegin("SDF Parent", false);
    if (tool->isMember()) {
        SDFTool* oldTop = tool->treeTop();
        SDFRemoval removal(tool);
        tool->removeExternalBrackets();
        tool->subFromParent();
        removal.ProcessRemoval();
        oldTop->fixTree();
    } else {
        tool->subFromParent();
    }
    tool->addToParent(parent);
    if (tool->isMember()) {
        SDFTool* newTop = tool->treeTop();
        int base = TreeSDFCount(newTop) - int(tool->walk().size());
        tool->setSDFPriorityGroup(base, {});
        newTop->fixTree();
    } else {
        tool->fixTree();
    }
    history.superEnd();
}

void SDFTool::remove()
{
    if (gRemovingSDF || !isMember()) {
        // Everything below leaves with this tool: no tree that stays is touched.
        bool outer = gRemovingSDF;
        gRemovingSDF = true;
        Tool::remove();
        gRemovingSDF = outer;
        return;
    }
    History& history = History::instance();
    history.superBegin("Object Delete", false);
    SDFTool* oldTop = treeTop();
    SDFRemoval removal(this);
    removeExternalBrackets();
    gRemovingSDF = true;
    Tool::remove(); // with recording off this destroys the tool: nothing of it is used after
    gRemovingSDF = false;
    removal.ProcessRemoval();
    oldTop->fixTree();
    history.superEnd();
}

// ---- file record and outline -----------------------------------------------------------

void SDFTool::SDFDataWrite(OFile& out) const
{
    sdf.DataWrite(out);
}

bool SDFTool::SDFDataRead(IFile& in, int version)
{
    bool complete = sdf.DataRead(in, version);
    std::vector<std::string> repairs = sdf.repair();
    if (!complete)
        repairs.insert(repairs.begin(), "record ends early");
    if (!repairs.empty()) {
        std::string text = "SDF object " + std::to_string(id) + ":";
        for (size_t i = 0; i < repairs.size(); ++i)
            text += (i ? ", " : " ") + repairs[i];
        LogInfo(QString::fromStdString(text + " - repaired."), 1);
    }
    return complete;
}

std::vector<std::pair<int, int>> SDFTool::operations(std::deque<SDFStruct> const& sorted)
{
    std::vector<std::pair<int, int>> ops;
    std::vector<int> openers;
    for (int i = 0; i < int(sorted.size()); ++i) {
        int b = sorted[i].bracket();
        if (b > 0) {
            openers.insert(openers.end(), size_t(b), i); // the entry's value stays on the stack
            continue;
        }
        if (i != 0)
            ops.emplace_back(i, i);
        for (int k = 0; k < -b && !openers.empty(); ++k) {
            int j = openers.back();
            openers.pop_back();
            if (j > 0)
                ops.emplace_back(i, j);
        }
    }
    return ops;
}

SDFOutline SDFTool::simpleOutline(Matrix34<double> const& M) const
{
    SDFOutline o;
    bool array = sdf.arrayActive();
    if (array)
        sdf._obb_array(o.box, sdf._obb_full_shape());
    else
        o.box = sdf._obb_tight_shape();
    o.model = M;
    int shape = sdf.shaderShape();
    Vector3<float> h = sdf.halfDims();
    o.ids[0] = shape;
    o.ids[1] = sdf.shell;
    o.ids[2] = array ? sdf.arrayType : 0;
    o.dims_r[0] = h.x;
    o.dims_r[1] = h.y;
    o.dims_r[2] = shape == SDF_CAPPED_TORUS ? float(sdf.dims.z * 0.5 * PI / 180.0) : h.z;
    o.dims_r[3] = sdf.R;
    o.thickness = sdf.thickness * 0.5f;
    o.step = {};
    int nn[4] = {1, 1, 1, 1};
    if (array && sdf.arrayType == SDF_ARRAY_LINEAR) {
        o.step = h * sdf.step;
        nn[0] = sdf.nx;
        nn[1] = sdf.ny;
        nn[2] = sdf.nz;
    } else if (array) {
        o.step = {sdf.arrayAngle / float(sdf.count - 1), float(sdf.arrayAngle * 0.5 + PI),
                  sdf.arrayRadius * h[(sdf.arrayType / 2) % 3]};
        nn[3] = sdf.count - 1;
    }
    std::copy(nn, nn + 4, o.nn);
    return o;
}

} // namespace vel
