// The application's resources (":/shaders/...") live in the static library; a static
// library's resources must be registered by hand before the first ":/" path is read.
#pragma once

namespace vel {

// Registers the library's Qt resources. Idempotent; call once at start-up (and in tests).
void InitResources();

} // namespace vel
