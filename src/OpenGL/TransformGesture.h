// TransformGesture: one drag of the transform actions (Move, Rotate, Scale, Mirror,
// RotateScale, Align) over a set of tools, and the step of the history it leaves.
//
// Every target keeps its placement from the press; each frame of the drag applies one world
// transform X, from the press on, to all of them: a tool whose world matrix was W becomes
// W X. With object matrix A acting in the world frame Q of its pivot (W = A Q), that is
// A := A Q X Q^-1, so tools under different parents and pivots move alike in the world.
//
// The change is made first and recorded at the end: `finish` pushes one
// CommandTransformObjects holding the matrices from the press, `cancel` puts them back and
// records nothing. Nothing here touches GL.
#pragma once

#include "Math/Matrix34.h"
#include "Math/Vector3.h"

#include <vector>

namespace vel {

class Tool;

class TransformGesture {
public:
    std::vector<Tool*> targets;           // each once; none below another target
    std::vector<Matrix34<double>> starts; // object matrices at the press
    std::vector<Matrix34<double>> frames; // world frames of the pivots at the press
    Vector3<double> center;               // of rotations, scales and mirrors, in the world
    Matrix34<double> applied;             // the world transform in force

    // The tools to transform: each once, and none whose ancestor is among them (it moves
    // with that ancestor already).
    static std::vector<Tool*> Targets(std::vector<Tool*> const& given);

    // False, and nothing begins, when no target is left.
    bool begin(std::vector<Tool*> const& tools, Vector3<double> const& center);
    bool active() const { return !targets.empty(); }
    // Sets every target to its press placement followed by X in the world; a pure
    // translation keeps to each target's translation axis.
    void apply(Matrix34<double> const& X);
    // Whether a target's placement differs from the press.
    bool moved() const;
    // Records the gesture as one step when anything moved; ends it.
    void finish();
    // Back to the press, nothing recorded; ends it.
    void cancel();

    // ---- world transforms of the actions
    static Matrix34<double> Move(Vector3<double> const& shift);
    static Matrix34<double> RotateAbout(Vector3<double> const& center, Vector3<double> const& axis, double angle);
    static Matrix34<double> ScaleAbout(Vector3<double> const& center, double factor);
    static Matrix34<double> MirrorAbout(Vector3<double> const& center, Vector3<double> const& normal);
};

} // namespace vel
