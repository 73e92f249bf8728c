#include "ObjWriter.h"

#include <QFile>
#include <QSaveFile>

#include <cstdio>

void ObjWriter::beginObject(const std::string& name)
{
    text += "o " + name + "\n";
}

int ObjWriter::addVertex(const Vertex& vertex)
{
    vertices.push_back(vertex);
    return int(vertices.size());
}

void ObjWriter::addQuad(const Vertex& a, const Vertex& b, const Vertex& c, const Vertex& d)
{
    const int ia = addVertex(a), ib = addVertex(b), ic = addVertex(c), id = addVertex(d);
    char line[160];
    std::snprintf(line, sizeof line, "f %d/%d/%d %d/%d/%d %d/%d/%d\nf %d/%d/%d %d/%d/%d %d/%d/%d\n", ia, ia, ia, ib,
                  ib, ib, ic, ic, ic, ia, ia, ia, ic, ic, ic, id, id, id);
    text += line;
    triangles += 2;
}

void ObjWriter::addGrid(int nu, int nv, const std::function<QVector3D(float, float)>& positionOf,
                        const std::function<QVector2D(float, float)>& uvOf, bool flip)
{
    const float e = 1e-3f;
    auto vertexAt = [&](int i, int j) {
        const float s = float(i) / nu, t = float(j) / nv;
        // One-sided differences at the borders keep the normal defined.
        const float s0 = std::max(0.0f, s - e), s1 = std::min(1.0f, s + e);
        const float t0 = std::max(0.0f, t - e), t1 = std::min(1.0f, t + e);
        const QVector3D ds = positionOf(s1, t) - positionOf(s0, t);
        const QVector3D dt = positionOf(s, t1) - positionOf(s, t0);
        QVector3D normal = QVector3D::crossProduct(ds, dt).normalized();
        if (flip)
            normal = -normal;
        return Vertex{positionOf(s, t), normal, uvOf(s, t)};
    };
    for (int j = 0; j < nv; ++j)
        for (int i = 0; i < nu; ++i) {
            const Vertex a = vertexAt(i, j), b = vertexAt(i + 1, j), c = vertexAt(i + 1, j + 1),
                         d = vertexAt(i, j + 1);
            if (flip)
                addQuad(a, d, c, b);
            else
                addQuad(a, b, c, d);
        }
}

bool ObjWriter::write(const QString& path) const
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    std::string head = "# Written by ondrels-make-preview-data\n";
    char line[200];
    for (const Vertex& v : vertices) {
        std::snprintf(line, sizeof line, "v %.5f %.5f %.5f\nvn %.5f %.5f %.5f\nvt %.5f %.5f\n", v.position.x(),
                      v.position.y(), v.position.z(), v.normal.x(), v.normal.y(), v.normal.z(), v.uv.x(), v.uv.y());
        head += line;
    }
    file.write(head.data(), qint64(head.size()));
    file.write(text.data(), qint64(text.size()));
    return file.commit();
}
