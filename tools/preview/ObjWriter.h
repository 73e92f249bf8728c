#pragma once

#include <QString>
#include <QVector2D>
#include <QVector3D>

#include <functional>
#include <string>
#include <vector>

// Collects named objects of quads and triangles with positions, normals and
// UVs, and writes them as one OBJ file.
class ObjWriter
{
public:
    struct Vertex
    {
        QVector3D position;
        QVector3D normal;
        QVector2D uv;
    };

    void beginObject(const std::string& name);
    // A grid of nu x nv quads over (s, t) in [0, 1]^2. Normals come from the
    // surface's derivatives, oriented by `outward`; UVs from `uvOf`.
    void addGrid(int nu, int nv, const std::function<QVector3D(float, float)>& positionOf,
                 const std::function<QVector2D(float, float)>& uvOf, bool flip = false);
    void addQuad(const Vertex& a, const Vertex& b, const Vertex& c, const Vertex& d);

    int triangleCount() const { return triangles; }
    bool write(const QString& path) const;

private:
    int addVertex(const Vertex& vertex);

    std::string text;
    std::vector<Vertex> vertices;
    int triangles = 0;
};
