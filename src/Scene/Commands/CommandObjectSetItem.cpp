#include "Scene/Commands/CommandObjectSetItem.h"

#include "Scene/Tool.h"

namespace vel {

CommandObjectSetItem::CommandObjectSetItem(Tool* composite, Tool* item)
    : Command(TYPE)
    , composite(composite)
    , item(item)
    , wasObject(item->isObject())
    , itemId(item->id)
{
}

CommandObjectSetItem::~CommandObjectSetItem()
{
    if (!done && Tool::Alive(itemId) && !item->Parent)
        Tool::Abandon(itemId);
}

void CommandObjectSetItem::undo()
{
    composite->setItemSlot(nullptr);
    item->Parent = nullptr;
    item->setObject(wasObject);
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
