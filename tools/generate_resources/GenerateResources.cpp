// vel_generate_resources RESOURCES_FOLDER: writes the generated image-based-light resources
// (split-sum table, default panorama, default matcap) and the shader layer sample scenes
// under the given resources folder.
#include "OpenGL/PbrResources.h"
#include "ShaderLayerSamples.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s RESOURCES_FOLDER\n", argv[0]);
        return 2;
    }
    bool ok = vel::WritePbrResources(argv[1]);
    ok = vel::WriteShaderLayerSamples(argv[1]) && ok;
    return ok ? 0 : 1;
}
