#include "Scene/Tools/Array/ToolItem.h"

#include "Core/Assert.h"
#include "Core/Communicate.h"
#include "Scene/Commands/CommandObjectSetItem.h"
#include "Scene/IFile.h"
#include "Scene/OFile.h"
#include "Scene/SceneFile.h"
#include "Scene/SceneHistory.h"
#include "Scene/ToolList.h"

namespace vel {

namespace {

constexpr int V_FULL_SIZE_ITEMS = 20181222; // before: items were stored at twice their size

} // namespace

ToolItem::ToolItem(Shared<Element> const& element, Matrix34<double> const& object, Matrix34<double> const& pivot,
                   Material const& material)
    : Tool(element, object, pivot, material)
{
}

ToolItem::ToolItem(Unrecorded)
    : Tool(Unrecorded{})
{
}

ToolItem::~ToolItem()
{
    History::Pause pause;
    if (item && item->Parent == this)
        delete item; // leaves the slot through subFromParent
    item = nullptr;
}

void ToolItem::remove()
{
    if (item)
        item->remove();
    Tool::remove();
}

void ToolItem::setItem(Tool* newItem)
{
    if (item)
        item->remove();
    item = nullptr;
    if (!newItem)
        return;
    auto* command = new CommandObjectSetItem(this, newItem);
    newItem->Parent = this;
    newItem->setObject(isObject());
    item = newItem;
    History& history = History::instance();
    if (history.recording())
        history.push(command);
    else
        delete command;
}

void ToolItem::CloneInfo(bool asObject, Tool* copy, bool withLinks)
{
    Tool::CloneInfo(asObject, copy, withLinks);
    auto* holder = dynamic_cast<ToolItem*>(copy);
    if (holder && item && item->clonable())
        holder->setItem(item->clone ? item->clone : item->InternalClone());
}

Tool* ToolItem::SimpleClone(bool asObject, Matrix34<double> const& object, Matrix34<double> const& pivot)
{
    auto* copy = new ToolItem(element, object, pivot, material);
    CloneInfo(asObject, copy, true);
    return copy;
}

void ToolItem::Mark(bool on)
{
    Tool::Mark(on);
    if (item)
        item->Mark(on);
}

void ToolItem::toElements(std::set<Element*>& out)
{
    Tool::toElements(out);
    if (item)
        item->toElements(out);
}

void ToolItem::toMap(std::unordered_map<int, Tool*>& map)
{
    Tool::toMap(map);
    if (item)
        item->toMap(map);
}

void ToolItem::toList(std::vector<Tool*>& list)
{
    Tool::toList(list);
    if (item)
        item->toList(list);
}

void ToolItem::unlink(bool recursive)
{
    if (item)
        item->unlink(recursive);
    Tool::unlink(recursive);
}

void ToolItem::setObject(bool on)
{
    flags = on ? (flags | FLAG_OBJECT) : (flags & ~FLAG_OBJECT);
    if (item)
        item->setObject(on);
}

bool ToolItem::timer()
{
    bool changedItem = item && item->timer();
    return Tool::timer() || changedItem;
}

Tool* ToolItem::explodeGroup()
{
    VEL_ASSERT(item);
    auto* group = new Tool(Shared<Element>(), objectMatrix, pivotMatrix, material);
    CloneInfo(isObject(), group, false);
    if (Parent)
        group->addToParent(Parent);
    return group;
}

Tool* ToolItem::explodeFinish(Tool* group)
{
    Tool* newParent = group;
    Tool* oldParent = this;
    VEL_ASSERT(newParent);
    VEL_ASSERT(oldParent != newParent);
    while (!children.empty()) {
        Tool* child = children.front();
        child->subFromParent();
        child->addToParent(newParent);
    }
    VEL_ASSERT(group->isGroup());
    return group;
}

Tool* ToolItem::explodeInto(std::vector<std::vector<Matrix34<double>>> const& batches)
{
    Tool* group = explodeGroup();
    History& history = History::instance();
    // What Scene::addObjectsOnParent does, without reaching for the scene singleton: the
    // group may belong to any scene (a loaded one, a test's).
    for (std::vector<Matrix34<double>> const& batch : batches) {
        history.superBegin("Add Objects", false);
        for (Matrix34<double> const& frame : batch)
            item->cloneObject(Matrix34<double>(), frame)->addToParent(group);
        history.superEnd();
    }
    return explodeFinish(group);
}

void ToolItem::listInstances(ToolList& list, std::vector<Matrix34<double>> const& frames,
                             Matrix34<double> const& W, int self, int index, bool skipSelected)
{
    int outer = list.instance;
    if (item->children.empty() && item->ToolType() == 0) {
        // A plain leaf lists as Tool::toList would: its placement taken once, not per instance.
        if (!(skipSelected && (item->flags & FLAG_SELECTED))) {
            Matrix34<double> T = item->transform();
            for (size_t i = 0; i < frames.size(); ++i) {
                list.instance = int(i);
                list.add(item, T * (frames[i] * W), self, index);
            }
        }
    } else {
        for (size_t i = 0; i < frames.size(); ++i) {
            list.instance = int(i);
            list.walk(item, skipSelected, frames[i] * W, self, index);
        }
    }
    list.instance = outer;
}

// ---- file record ---------------------------------------------------------------------------

int ToolItem::DataSize() const
{
    return Tool::DataSize() + 4;
}

void ToolItem::Data(OFile& out, std::unordered_map<Element*, int>& ids)
{
    Tool::Data(out, ids);
    out.writeValue(item ? item->listIndex : -1);
}

bool ToolItem::DataRead(IFile& in, int payload)
{
    return Tool::DataRead(in, payload) && in.readValue(fileItem);
}

void ToolItem::identify(std::vector<Tool*> const& tools, std::vector<Shared<Element>> const& elements)
{
    Tool::identify(tools, elements);
    int index = fileItem;
    fileItem = -1;
    // As for children: the item comes after this record and belongs to nobody yet.
    Tool* found = index > listIndex && size_t(index) < tools.size() ? tools[size_t(index)] : nullptr;
    if (!found || found->Parent || (found->fileRefs && found->fileRefs->topLevel)) {
        if (index >= 0 || ToolType() >= 3)
            LogInfo("An object's item is missing in the file: it shows nothing.", 1);
        return;
    }
    setItem(found);
    if (FILE_VERSION < V_FULL_SIZE_ITEMS) {
        Matrix3<double> L = found->objectMatrix.linear();
        for (double& m : L.m)
            m *= 0.5;
        found->objectMatrix.setLinear(L);
    }
}

} // namespace vel
