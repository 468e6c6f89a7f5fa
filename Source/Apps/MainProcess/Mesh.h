#pragma once

#include <QVector3D>

#include <memory>
#include <vector>

/// Triangles, as the graphics card takes them.
struct Mesh
{
    struct Vertex
    {
        QVector3D position;
        QVector3D normal;
    };

    std::vector<Vertex> vertices;
    std::vector<quint32> indices; // three for each triangle
};
static_assert(sizeof(Mesh::Vertex) == 6 * sizeof(float));

using MeshPointer = std::shared_ptr<const Mesh>;
