#include "Scene/Commands/CommandObjectRemItem.h"

#include "Scene/Tool.h"

namespace vel {

CommandObjectRemItem::CommandObjectRemItem(Tool* composite, Tool* item)
    : Command(TYPE)
    , composite(composite)
    , item(item)
{
}

void CommandObjectRemItem::undo()
{
    composite->setItemSlot(item);
    item->Parent = composite;
    Command::undo();
}

void CommandObjectRemItem::redo()
{
    item = composite->itemSlot();
    composite->setItemSlot(nullptr);
    if (item)
        item->Parent = nullptr;
    Command::redo();
}

std::string CommandObjectRemItem::name()
{
    return "Rem Item";
}

} // namespace vel
