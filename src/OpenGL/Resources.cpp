#include "OpenGL/Resources.h"

#include <QtGlobal>

// Q_INIT_RESOURCE must stand outside any namespace.
static void InitShaderResources()
{
    Q_INIT_RESOURCE(shaders);
}

namespace vel {

void InitResources()
{
    static bool done = false;
    if (done)
        return;
    done = true;
    InitShaderResources();
}

} // namespace vel
