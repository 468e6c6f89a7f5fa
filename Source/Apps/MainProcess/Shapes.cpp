#include "Shapes.h"

#include <QVector2D>

#include <cmath>

namespace {

constexpr float turn = 6.28318531f;

// Two triangles for each cell of a grid of vertices that was appended row by row.
void addGrid(Mesh *mesh, int rows, int columns)
{
    const auto at = [columns](int row, int column) { return static_cast<quint32>(row * (columns + 1) + column); };
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            for (const quint32 index : {at(row, column), at(row, column + 1), at(row + 1, column + 1), at(row, column),
                                        at(row + 1, column + 1), at(row + 1, column)})
                mesh->indices.push_back(index);
        }
    }
}

QVector3D knotCentre(float t)
{
    const float angle = turn * t;
    const float radius = 0.5f + 0.19f * std::cos(3 * angle);
    return {radius * std::cos(2 * angle), 1.05f - 0.42f * std::sin(3 * angle), radius * std::sin(2 * angle)};
}

// A line, turned around the vertical axis. Its normals point to the right of its direction.
MeshPointer lathe(const std::vector<QVector2D> &line)
{
    constexpr int columns = 96;
    auto mesh = std::make_shared<Mesh>();
    int rows = 0;
    for (size_t i = 0; i + 1 < line.size(); ++i) {
        const QVector2D direction = (line[i + 1] - line[i]).normalized();
        for (const QVector2D &point : {line[i], line[i + 1]}) {
            for (int column = 0; column <= columns; ++column) {
                const float angle = turn * static_cast<float>(column) / columns;
                const QVector3D outward(std::cos(angle), 0, std::sin(angle));
                mesh->vertices.push_back({outward * point.x() + QVector3D(0, point.y(), 0),
                                          outward * direction.y() - QVector3D(0, direction.x(), 0)});
            }
        }
        rows += 2;
    }
    // The rows between two segments have no area.
    addGrid(mesh.get(), rows - 1, columns);
    return mesh;
}

} // namespace

MeshPointer makeTorusKnot()
{
    constexpr int rows = 288;
    constexpr int columns = 24;
    constexpr float thickness = 0.125f;
    auto mesh = std::make_shared<Mesh>();
    for (int row = 0; row <= rows; ++row) {
        const float t = static_cast<float>(row) / rows;
        const QVector3D centre = knotCentre(t);
        const QVector3D along = (knotCentre(t + 0.001f) - knotCentre(t - 0.001f)).normalized();
        const QVector3D outward = QVector3D::crossProduct(along, {0, 1, 0}).normalized();
        const QVector3D upward = QVector3D::crossProduct(outward, along);
        for (int column = 0; column <= columns; ++column) {
            const float angle = turn * static_cast<float>(column) / columns;
            const QVector3D normal = std::cos(angle) * outward + std::sin(angle) * upward;
            mesh->vertices.push_back({centre + thickness * normal, normal});
        }
    }
    addGrid(mesh.get(), rows, columns);
    return mesh;
}

MeshPointer makePedestal()
{
    return lathe({{0.82f, 0}, {0.82f, 0.08f}, {0.74f, 0.12f}, {0.74f, 0.2f}, {0.7f, 0.24f}, {0, 0.24f}});
}

MeshPointer makeFloor()
{
    return lathe({{7, 0}, {0, 0}});
}
