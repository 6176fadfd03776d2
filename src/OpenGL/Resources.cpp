#include "OpenGL/Resources.h"

#include <QtGlobal>

// Q_INIT_RESOURCE must stand outside any namespace.
static void InitShaderResources()
{
    Q_INIT_RESOURCE(shaders);
    Q_INIT_RESOURCE(app);
    Q_INIT_RESOURCE(pbr);
    Q_INIT_RESOURCE(scenes);
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
