#include "Scene/Commands/CommandObjectSetItem.h"

#include "Scene/Tool.h"

namespace vel {

CommandObjectSetItem::CommandObjectSetItem(Tool* composite, Tool* item)
    : Command(TYPE)
    , composite(composite)
    , item(item)
{
}

void CommandObjectSetItem::undo()
{
    composite->setItemSlot(nullptr);
    item->Parent = nullptr;
    Command::undo();
}

void CommandObjectSetItem::redo()
{
    item->Parent = composite;
    item->setObject(composite->isObject());
    composite->setItemSlot(item);
    Command::redo();
}

std::string CommandObjectSetItem::name()
{
    return "Set Item";
}

} // namespace vel
