// CommandSwapRecords<T, Record>: the undo of a CPU sculpt or paint stroke on an element of
// kind T: sparse records (vertex positions or material slots) that undo and redo exchange with
// the element alike, so they always hold the state that is not shown. The named commands
// derive from it.
#pragma once

#include "Core/Assert.h"
#include "Memory/Shared.h"
#include "Scene/Command.h"
#include "Scene/Elements/SculptRecords.h"

#include <deque>
#include <type_traits>
#include <utility>

namespace vel {

class Element;

template <class T, class Record>
class CommandSwapRecords : public Command {
public:
    Shared<Element> element;
    T* target;
    std::deque<Record> records;

    CommandSwapRecords(int type, Shared<Element> const& element, std::deque<Record> records)
        : Command(type)
        , element(element)
        , target(dynamic_cast<T*>(element.get()))
        , records(std::move(records))
    {
        VEL_ASSERT_MSG(target, "the records belong to an element of the command's kind");
    }

    void undo() override
    {
        swap();
        Command::undo();
    }
    void redo() override
    {
        swap();
        Command::redo();
    }
    int size() override { return int(sizeof(*this) + records.size() * sizeof(Record)); }

private:
    void swap()
    {
        if constexpr (std::is_same_v<Record, IndexPosition>)
            target->swapPositions(records);
        else
            target->swapMaterials(records);
    }
};

} // namespace vel
