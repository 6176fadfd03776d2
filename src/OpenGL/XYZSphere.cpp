#include "OpenGL/XYZSphere.h"

#include "OpenGL/ShaderManager.h"
#include "Scene/Elements/Mesh/Mesh.h"

#include <glad/gl.h>

#include <vector>

namespace vel {

bool XYZSphere::enableShader()
{
    Shader* shader = ShaderManager::instance().ShaderXYZSphere;
    if (!shader || !shader->enable())
        return false;
    if (!positions) {
        std::unique_ptr<Mesh> mesh = Mesh::Sphere(Mesh::CubeHandle(), 3);
        std::vector<float> data;
        data.reserve(std::size_t(mesh->triangles) * 9);
        for (std::size_t f = 0; f < mesh->faces.size(); ++f) {
            // A fan from the face's first corner.
            int first = mesh->faces[f].edge;
            int e = mesh->edges[first].e[1];
            Vector3<float> a = mesh->verts[mesh->edges[first].v[1]].position;
            for (int next = mesh->edges[e].e[1]; next != first; e = next, next = mesh->edges[e].e[1]) {
                for (Vector3<float> const& p : {a, mesh->verts[mesh->edges[e].v[1]].position,
                                                mesh->verts[mesh->edges[next].v[1]].position})
                    data.insert(data.end(), {p.x, p.y, p.z});
            }
        }
        vertices = int(data.size() / 3);
        positions.reset(new VertexBuffer);
        positions->write(data.data(), int(data.size() * sizeof(float)));
    }
    return true;
}

Matrix4<double> XYZSphere::Transform(Matrix3<double> const& rotation)
{
    double const scale = 1.8;
    Matrix4<double> M;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            M(r, c) = rotation(r, c) * scale;
    M(3, 2) = -1;
    M(3, 3) = 1;
    return M;
}

void XYZSphere::render()
{
    Shader::setUniform("ProjectionModelViewMatrix", Shader::ProjectionModelViewMatrix);
    // The widget's one vertex array stays bound: attribute 0 is pointed here for this draw.
    glBindBuffer(GL_ARRAY_BUFFER, positions->buffer);
    glEnableVertexAttribArray(0);
    glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, 0, nullptr);
    glDrawArrays(GL_TRIANGLES, 0, vertices);
    glDisableVertexAttribArray(0);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
}

void XYZSphere::clear()
{
    positions.reset();
    vertices = 0;
}

} // namespace vel
