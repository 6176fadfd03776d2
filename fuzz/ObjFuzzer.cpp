// OBJ import: any text gives valid meshes or none.
#include "FuzzCheck.h"

#include "Math/AABB.h"
#include "Scene/Elements/Mesh/Mesh.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size)
{
    std::string text(reinterpret_cast<char const*>(data), size);
    vel::Mesh mesh;
    mesh.loadOBJText(text);
    vel::fuzz::CheckMesh(mesh);
    vel::AABB box;
    for (auto const& part : vel::Mesh::loadSeparateOBJText(text, box))
        vel::fuzz::CheckMesh(*part);
    return 0;
}
