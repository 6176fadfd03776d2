#include "Scene/Commands/CommandSculptPositions.h"

#include "Core/Assert.h"
#include "Scene/Elements/Curve/Curve.h"
#include "Scene/Elements/Mesh/Mesh.h"

#include <utility>

namespace vel {

template <class T>
CommandSculptPositions<T>::CommandSculptPositions(Shared<Element> const& element, std::deque<IndexPosition> records)
    : Command(TYPE)
    , element(element)
    , target(dynamic_cast<T*>(element.get()))
    , records(std::move(records))
{
    VEL_ASSERT_MSG(target, "sculpted positions belong to an element of the command's kind");
}

template <class T>
void CommandSculptPositions<T>::undo()
{
    target->swapPositions(records);
    Command::undo();
}

template <class T>
void CommandSculptPositions<T>::redo()
{
    target->swapPositions(records);
    Command::redo();
}

template <class T>
int CommandSculptPositions<T>::size()
{
    return int(sizeof(*this) + records.size() * sizeof(IndexPosition));
}

template <class T>
std::string CommandSculptPositions<T>::name()
{
    return "Sculpt Positions";
}

template class CommandSculptPositions<Mesh>;
template class CommandSculptPositions<Curve>;

} // namespace vel
