#include "EnvironmentScenes.h"

#include <QVector3D>

#include <algorithm>
#include <cmath>

namespace {

const float pi = 3.14159265f;

float smoothstep(float edge0, float edge1, float x)
{
    const float t = std::clamp((x - edge0) / (edge1 - edge0), 0.0f, 1.0f);
    return t * t * (3.0f - 2.0f * t);
}

// 1 inside an azimuth/elevation rectangle (degrees), with soft edges.
float panel(float azimuth, float elevation, float az0, float az1, float el0, float el1, float soft)
{
    return smoothstep(az0 - soft, az0 + soft, azimuth) * (1.0f - smoothstep(az1 - soft, az1 + soft, azimuth)) *
           smoothstep(el0 - soft, el0 + soft, elevation) * (1.0f - smoothstep(el1 - soft, el1 + soft, elevation));
}

float spot(const QVector3D& direction, const QVector3D& centre, float angleDegrees)
{
    const float cosine = QVector3D::dotProduct(direction, centre.normalized());
    const float limit = std::cos(angleDegrees * pi / 180.0f);
    return smoothstep(limit - 0.002f, limit + 0.002f, cosine);
}

QVector3D hotelRoom(const QVector3D& d, float azimuth, float elevation)
{
    QVector3D colour = elevation > -20.0f ? QVector3D(0.32f, 0.25f, 0.18f) : QVector3D(0.14f, 0.08f, 0.05f);
    if (elevation > 45.0f)
        colour = QVector3D(0.36f, 0.34f, 0.3f);
    // Floorboards: darker stripes.
    if (elevation < -20.0f && std::fmod(std::abs(d.x() / std::max(0.2f, -d.y())) * 6.0f, 1.0f) < 0.08f)
        colour *= 0.6f;
    // Two windows on one wall, with crossbars, daylight outside.
    for (float centre : {-40.0f, 20.0f}) {
        float window = panel(azimuth, elevation, centre - 14.0f, centre + 14.0f, -5.0f, 35.0f, 0.6f);
        if (std::abs(azimuth - centre) < 0.7f || std::abs(elevation - 15.0f) < 0.7f)
            window *= 0.1f;
        const QVector3D daylight = QVector3D(3.0f, 3.4f, 4.2f) + QVector3D(0.3f, 0.2f, 0.0f) * (elevation < 10.0f);
        colour = colour * (1.0f - window) + daylight * window;
    }
    // Warm lamps: a ceiling lamp and two wall lamps.
    for (const QVector3D& lamp : {QVector3D(0.1f, 1.0f, 0.05f), QVector3D(-0.9f, 0.15f, 0.8f), QVector3D(0.8f, 0.1f, -0.9f)}) {
        const float core = spot(d, lamp, 4.0f), glow = spot(d, lamp, 12.0f);
        colour += QVector3D(30.0f, 16.0f, 6.0f) * core + QVector3D(0.6f, 0.35f, 0.12f) * glow;
    }
    return colour;
}

QVector3D venice(const QVector3D& d, float azimuth, float elevation)
{
    const QVector3D sunDirection(std::cos(0.52f) * std::cos(1.1f), std::sin(0.52f), std::cos(0.52f) * std::sin(1.1f));
    auto sky = [&](const QVector3D& v, float el) {
        const float height = std::clamp(el / 90.0f, 0.0f, 1.0f);
        QVector3D c = QVector3D(0.9f, 0.95f, 1.1f) * (1.0f - height) + QVector3D(0.25f, 0.45f, 1.0f) * height;
        const float toSun = std::max(0.0f, QVector3D::dotProduct(v, sunDirection));
        c += QVector3D(1.2f, 0.9f, 0.6f) * std::pow(toSun, 8.0f);
        c += QVector3D(60.0f, 55.0f, 45.0f) * spot(v, sunDirection, 1.5f);
        return c;
    };
    // Palaces along the horizon: blocks of ochre, red and white facades.
    const int block = int(std::floor((azimuth + 180.0f) / 9.0f));
    const float blockHeight = 4.0f + 7.0f * std::fmod(std::abs(std::sin(block * 12.9898f)) * 43758.5f, 1.0f);
    const QVector3D facades[3] = {QVector3D(0.55f, 0.38f, 0.2f), QVector3D(0.5f, 0.2f, 0.15f), QVector3D(0.7f, 0.65f, 0.58f)};
    const bool awayFromSun = std::abs(azimuth - 63.0f) > 50.0f;
    if (elevation >= 0.0f) {
        if (awayFromSun && elevation < blockHeight) {
            QVector3D facade = facades[block % 3];
            // Windows in rows.
            if (std::fmod(azimuth + 180.0f, 1.5f) < 0.5f && std::fmod(elevation, 2.0f) > 1.0f)
                facade *= 0.3f;
            return facade;
        }
        return sky(d, elevation);
    }
    // Water: the sky mirrored, darkened, with waves.
    const float wave = 0.04f * std::sin(azimuth * 1.7f + elevation * 9.0f) * std::sin(azimuth * 0.6f - elevation * 5.0f);
    QVector3D mirrored(d.x() + wave, -d.y(), d.z() - wave);
    mirrored.normalize();
    const float mirroredElevation = std::asin(std::clamp(mirrored.y(), -1.0f, 1.0f)) * 180.0f / pi;
    const float fresnel = 0.1f + 0.6f * std::pow(1.0f - std::min(1.0f, -d.y() * 1.5f), 4.0f);
    return QVector3D(0.03f, 0.1f, 0.11f) + sky(mirrored, mirroredElevation) * fresnel;
}

QVector3D studio(const QVector3D& d, float azimuth, float elevation)
{
    (void)d;
    QVector3D colour = QVector3D(0.04f, 0.04f, 0.045f) * (1.0f + 0.5f * smoothstep(-30.0f, 60.0f, elevation));
    if (elevation < -10.0f)
        colour = QVector3D(0.06f, 0.06f, 0.06f);
    // Key, fill and top soft boxes.
    colour += QVector3D(9.0f, 8.8f, 8.5f) * panel(azimuth, elevation, 20.0f, 55.0f, 5.0f, 40.0f, 3.0f);
    colour += QVector3D(2.5f, 2.6f, 2.8f) * panel(azimuth, elevation, 150.0f, 200.0f, -5.0f, 25.0f, 4.0f);
    colour += QVector3D(5.0f, 5.0f, 5.0f) * panel(azimuth, elevation, -100.0f, -60.0f, 60.0f, 85.0f, 3.0f);
    // A rim strip behind.
    colour += QVector3D(4.0f, 4.0f, 4.2f) * panel(azimuth, elevation, -152.0f, -145.0f, -5.0f, 50.0f, 1.0f);
    return colour;
}

// Box blur of `radius` pixels, separable, wrapping around horizontally.
void boxBlur(EnvironmentLevel& level, int radius)
{
    const int w = int(level.width), h = int(level.height);
    std::vector<float> temporary(level.rgb.size());
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 3; ++c) {
                float sum = 0.0f;
                for (int k = -radius; k <= radius; ++k)
                    sum += level.rgb[(size_t(y) * w + size_t((x + k + 4 * w) % w)) * 3 + c];
                temporary[(size_t(y) * w + x) * 3 + c] = sum / float(2 * radius + 1);
            }
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 3; ++c) {
                float sum = 0.0f;
                for (int k = -radius; k <= radius; ++k)
                    sum += temporary[(size_t(std::clamp(y + k, 0, h - 1)) * w + x) * 3 + c];
                level.rgb[(size_t(y) * w + x) * 3 + c] = sum / float(2 * radius + 1);
            }
}

} // namespace

QStringList environmentSceneNames()
{
    return {QStringLiteral("HotelRoom"), QStringLiteral("Venice"), QStringLiteral("Studio")};
}

EnvironmentLevel renderEnvironmentScene(const QString& name, uint32_t width, uint32_t height)
{
    EnvironmentLevel level;
    level.width = width;
    level.height = height;
    level.rgb.resize(size_t(width) * height * 3);
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x) {
            const float u = (x + 0.5f) / width, v = (y + 0.5f) / height;
            const float azimuthRadians = (u - 0.5f) * 2.0f * pi, elevationRadians = (v - 0.5f) * pi;
            const QVector3D d(std::cos(elevationRadians) * std::cos(azimuthRadians), std::sin(elevationRadians),
                              std::cos(elevationRadians) * std::sin(azimuthRadians));
            const float azimuth = azimuthRadians * 180.0f / pi, elevation = elevationRadians * 180.0f / pi;
            QVector3D colour = name == QLatin1String("HotelRoom") ? hotelRoom(d, azimuth, elevation)
                               : name == QLatin1String("Venice")  ? venice(d, azimuth, elevation)
                                                                  : studio(d, azimuth, elevation);
            float* out = &level.rgb[(size_t(y) * width + x) * 3];
            out[0] = colour.x(), out[1] = colour.y(), out[2] = colour.z();
        }
    return level;
}

EnvironmentMap blurredLevels(const EnvironmentLevel& sharp)
{
    EnvironmentMap map;
    map.levels[0] = sharp;
    const int radii[4] = {0, 2, 4, 8};
    for (int k = 1; k < environmentLevelCount; ++k) {
        map.levels[k] = filterEnvironmentLevel(map.levels[k - 1]);
        // Three box passes approximate a Gaussian.
        for (int pass = 0; pass < 3; ++pass)
            boxBlur(map.levels[k], radii[k]);
    }
    return map;
}
