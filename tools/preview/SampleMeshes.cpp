#include "SampleMeshes.h"

#include <cmath>
#include <random>

namespace {

const float pi = 3.14159265f;
// Texture repeats per unit of length, so that stone courses have one size
// over the whole bridge.
const float stoneTiling = 0.5f;

// An axis-aligned box of six grids; `cells` subdivides the longest side.
void addBox(ObjWriter& obj, const QVector3D& low, const QVector3D& high, int cells)
{
    const QVector3D size = high - low;
    const float longest = std::max({size.x(), size.y(), size.z()});
    auto count = [&](float length) { return std::max(1, int(std::round(cells * length / longest))); };
    const int nx = count(size.x()), ny = count(size.y()), nz = count(size.z());
    auto uv = [](float a, float b) { return QVector2D(a * stoneTiling, b * stoneTiling); };
    for (float side : {0.0f, 1.0f}) {
        const float x = low.x() + side * size.x(), y = low.y() + side * size.y(), z = low.z() + side * size.z();
        // +z and -z faces
        obj.addGrid(nx, ny, [&](float s, float t) { return QVector3D(low.x() + s * size.x(), low.y() + t * size.y(), z); },
                    [&](float s, float t) { return uv(low.x() + s * size.x(), low.y() + t * size.y()); }, side == 0.0f);
        // +x and -x faces
        obj.addGrid(ny, nz, [&](float s, float t) { return QVector3D(x, low.y() + s * size.y(), low.z() + t * size.z()); },
                    [&](float s, float t) { return uv(low.z() + t * size.z(), low.y() + s * size.y()); }, side == 0.0f);
        // +y and -y faces
        obj.addGrid(nz, nx, [&](float s, float t) { return QVector3D(low.x() + t * size.x(), y, low.z() + s * size.z()); },
                    [&](float s, float t) { return uv(low.x() + t * size.x(), low.z() + s * size.z()); }, side == 0.0f);
    }
}

// A tube along `axis` from `base`, radius going from r0 to r1, bending by
// `bend` (added times t^2). Outward normals: the frame (a, b, axis) is right-handed.
void addTube(ObjWriter& obj, const QVector3D& base, const QVector3D& axis, float length, float r0, float r1,
             const QVector3D& bend, int around, int along)
{
    const QVector3D d = axis.normalized();
    const QVector3D helper = std::abs(d.y()) < 0.9f ? QVector3D(0, 1, 0) : QVector3D(1, 0, 0);
    const QVector3D a = QVector3D::crossProduct(d, helper).normalized();
    const QVector3D b = QVector3D::crossProduct(d, a);
    const float circumference = 2.0f * pi * 0.5f * (r0 + r1);
    obj.addGrid(
        around, along,
        [=](float s, float t) {
            const float r = r0 + (r1 - r0) * t;
            const QVector3D centre = base + d * (length * t) + bend * (t * t);
            return centre + r * (std::cos(2.0f * pi * s) * a + std::sin(2.0f * pi * s) * b);
        },
        [=](float s, float t) { return QVector2D(s, t * length / circumference); });
}

} // namespace

ObjWriter makeBridge()
{
    ObjWriter obj;
    const float radius = 1.5f, wallTop = 2.0f, halfLength = 4.0f, halfWidth = 1.0f;
    auto archBottom = [=](float x) { return std::abs(x) < radius ? std::sqrt(radius * radius - x * x) : 0.0f; };

    // Spandrel walls on both faces: stone from the arch (or the ground) up to the deck.
    for (float z : {halfWidth, -halfWidth}) {
        obj.beginObject(z > 0 ? "WallFront" : "WallBack");
        obj.addGrid(
            64, 8,
            [=](float s, float t) {
                const float x = -halfLength + 2.0f * halfLength * s;
                const float bottom = archBottom(x);
                return QVector3D(x, bottom + t * (wallTop - bottom), z);
            },
            [=](float s, float t) {
                const float x = -halfLength + 2.0f * halfLength * s;
                const float bottom = archBottom(x);
                return QVector2D(x * stoneTiling, (bottom + t * (wallTop - bottom)) * stoneTiling);
            },
            z < 0);
    }

    obj.beginObject("ArchVault");
    obj.addGrid(
        48, 8,
        [=](float s, float t) {
            const float angle = pi * s;
            return QVector3D(radius * std::cos(angle), radius * std::sin(angle), -halfWidth + 2.0f * halfWidth * t);
        },
        [=](float s, float t) { return QVector2D(pi * radius * s * stoneTiling, 2.0f * halfWidth * t * stoneTiling); },
        true);

    obj.beginObject("Abutments");
    for (float x : {halfLength, -halfLength})
        obj.addGrid(
            8, 8, [=](float s, float t) { return QVector3D(x, wallTop * s, -halfWidth + 2.0f * halfWidth * t); },
            [=](float s, float t) { return QVector2D(2.0f * halfWidth * t * stoneTiling, wallTop * s * stoneTiling); },
            x < 0);

    obj.beginObject("Deck");
    addBox(obj, QVector3D(-halfLength - 0.2f, wallTop, -halfWidth - 0.1f),
           QVector3D(halfLength + 0.2f, wallTop + 0.3f, halfWidth + 0.1f), 40);

    obj.beginObject("Parapets");
    for (float side : {1.0f, -1.0f}) {
        const float inner = side * (halfWidth - 0.15f), outer = side * (halfWidth + 0.1f);
        addBox(obj, QVector3D(-halfLength - 0.2f, wallTop + 0.3f, std::min(inner, outer)),
               QVector3D(halfLength + 0.2f, wallTop + 0.75f, std::max(inner, outer)), 48);
    }
    return obj;
}

ObjWriter makeTree()
{
    ObjWriter obj;
    std::mt19937 random(20261122u);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    const float trunkHeight = 3.0f;
    const QVector3D trunkBend(0.25f, 0.0f, 0.1f);
    auto trunkAt = [&](float t) { return QVector3D(0, trunkHeight * t, 0) + trunkBend * (t * t); };

    obj.beginObject("Trunk");
    addTube(obj, QVector3D(0, 0, 0), QVector3D(0, 1, 0), trunkHeight, 0.28f, 0.08f, trunkBend, 24, 16);

    struct Tip
    {
        QVector3D base, direction;
        float length;
    };
    std::vector<Tip> branches;
    obj.beginObject("Branches");
    const int branchCount = 8;
    for (int i = 0; i < branchCount; ++i) {
        const float t = 0.4f + 0.5f * float(i) / (branchCount - 1);
        const float azimuth = 2.0f * pi * (float(i) * 0.382f + 0.1f * unit(random));
        const float elevation = (25.0f + 25.0f * unit(random)) * pi / 180.0f;
        const QVector3D direction(std::cos(elevation) * std::cos(azimuth), std::sin(elevation),
                                  std::cos(elevation) * std::sin(azimuth));
        const float length = 1.3f - 0.6f * t + 0.2f * unit(random);
        addTube(obj, trunkAt(t), direction, length, 0.09f * (1.1f - t), 0.02f, QVector3D(0, -0.1f, 0), 12, 6);
        branches.push_back({trunkAt(t), direction, length});
    }
    branches.push_back({trunkAt(0.9f), QVector3D(0, 1, 0), 0.6f});

    // Leaf cards along the outer part of each branch, each card one whole
    // UV square (one island each).
    obj.beginObject("Leaves");
    for (const Tip& branch : branches)
        for (int k = 0; k < 28; ++k) {
            const float along = 0.35f + 0.65f * unit(random);
            QVector3D centre = branch.base + branch.direction * (branch.length * along) +
                               QVector3D(unit(random) - 0.5f, unit(random) - 0.5f, unit(random) - 0.5f) * 0.5f;
            const float yaw = 2.0f * pi * unit(random), tilt = (unit(random) - 0.5f) * 1.2f;
            const QVector3D right(std::cos(yaw), 0.0f, std::sin(yaw));
            const QVector3D up = QVector3D(-std::sin(yaw) * std::sin(tilt), std::cos(tilt),
                                           std::cos(yaw) * std::sin(tilt)).normalized();
            const float size = 0.16f + 0.08f * unit(random);
            const QVector3D normal = QVector3D::crossProduct(right, up).normalized();
            auto corner = [&](float s, float t) {
                return ObjWriter::Vertex{centre + right * ((s - 0.5f) * 2.0f * size) + up * ((t - 0.5f) * 2.0f * size),
                                         normal, QVector2D(s, t)};
            };
            obj.addQuad(corner(0, 0), corner(1, 0), corner(1, 1), corner(0, 1));
        }
    return obj;
}
