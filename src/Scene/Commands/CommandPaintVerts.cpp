#include "Scene/Commands/CommandPaintVerts.h"

#include "Core/Assert.h"
#include "Scene/Elements/Curve/Curve.h"
#include "Scene/Elements/Mesh/Mesh.h"

#include <utility>

namespace vel {

template <class T>
CommandPaintVerts<T>::CommandPaintVerts(Shared<Element> const& element, std::deque<IndexMaterial> records)
    : Command(TYPE)
    , element(element)
    , target(dynamic_cast<T*>(element.get()))
    , records(std::move(records))
{
    VEL_ASSERT_MSG(target, "painted materials belong to an element of the command's kind");
}

template <class T>
void CommandPaintVerts<T>::undo()
{
    target->swapMaterials(records);
    Command::undo();
}

template <class T>
void CommandPaintVerts<T>::redo()
{
    target->swapMaterials(records);
    Command::redo();
}

template <class T>
int CommandPaintVerts<T>::size()
{
    return int(sizeof(*this) + records.size() * sizeof(IndexMaterial));
}

template <class T>
std::string CommandPaintVerts<T>::name()
{
    return "Paint Vertices";
}

template class CommandPaintVerts<Mesh>;
template class CommandPaintVerts<Curve>;

} // namespace vel
