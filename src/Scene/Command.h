// Command: one recorded change of the scene.
//
// A change is made first and recorded after: a command holds what it takes to take the
// change back (`undo`) and to make it again (`redo`), and both end by moving the `done`
// flag. Commands that own objects (a deleted tool, a created one) decide by that flag in
// their destructor whether the object is theirs to destroy.
//
// Merging: a drag pushes one command per frame; `coincides` lets the newest fold into the
// one before it when both are marked mergeable and `isSame` agrees. `isSame` may move the
// newest's after-values into the older command as its side effect.
//
// Type numbers in use: 1 SuperCommand, 2 CommandRegisterToolCreation, 11 CommandObjectAddChild,
// 12 CommandObjectSubChild, 14 CommandObjectSetItem, 15 CommandObjectRemItem,
// 16 CommandObjectSetPivot, 18 CommandObjectLink, 19 CommandObjectUnlink,
// 22 CommandObjectDelete, 40 to 48 the swap commands on tools (Commands/ToolSwapCommands.h,
// Commands/CommandTransformObjects.h), 50 CommandReplaceElement, 51 CommandUniqueElement,
// 52 CommandSaveMesh, 53 CommandSubdivideMesh, 54 CommandMeshDataType.
// 55 CommandSculptClay, 56 CommandPaintClay.
// 60 CommandSDFSave, 61 CommandSDFSavePriorityGroup.
// 64 CommandSaveCurve, 65 CommandSubdivideCurve, 66 CommandCurveDataType,
// 67 CommandArrayEdgeVert.
// Each class keeps its own as `TYPE`.
#pragma once

#include <string>

namespace vel {

class Command {
public:
    static int GlobalID; // advanced once per command made
    static int depth;    // number of groups opened by History::superBegin and not yet closed

    int type = 0; // identifies the class; `isSameType` compares it
    int id = 0;
    bool mergeable = false;
    bool done = true; // the change stands; false once undone

    explicit Command(int type = 0);
    virtual ~Command();
    Command(Command const&) = delete;
    Command& operator=(Command const&) = delete;

    // Overrides do their work and then call these, so that `done` moves last of all.
    virtual void undo();
    virtual void redo();
    // The history's budget counts commands, not bytes: always 0.
    virtual int size();
    virtual bool isSameType(Command* previous);
    virtual bool isSame(Command* previous);
    // Whether this command folds into `previous` (see the file comment).
    virtual bool coincides(Command* previous);
    virtual bool isSuper();
    virtual bool isFinished();
    virtual void finish();
    // The text of the history list.
    virtual std::string name();
};

} // namespace vel
