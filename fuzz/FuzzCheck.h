// What every fuzz target checks beyond "no crash": a reader's result must satisfy the
// invariants of what it built. A violation ends the run like a crash, so libFuzzer keeps the
// input.
#pragma once

#include "Scene/Elements/Mesh/Mesh.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace vel::fuzz {

inline void CheckMesh(Mesh const& mesh)
{
    auto violations = mesh.validate();
    if (violations.empty())
        return;
    std::fprintf(stderr, "mesh invariant broken: %s\n", violations.front().rule.c_str());
    std::abort();
}

} // namespace vel::fuzz
