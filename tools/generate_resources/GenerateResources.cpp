// vel_generate_resources RESOURCES_FOLDER: writes the generated image-based-light resources
// (split-sum table, default panorama, default matcap) under the given resources folder.
#include "OpenGL/PbrResources.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s RESOURCES_FOLDER\n", argv[0]);
        return 2;
    }
    return vel::WritePbrResources(argv[1]) ? 0 : 1;
}
