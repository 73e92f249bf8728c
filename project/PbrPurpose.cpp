#include "PbrPurpose.h"

#include <algorithm>

namespace {

struct PurposeRule
{
    const char* layerName;
    const char* const* contains; // null-terminated
    const char* const* equals;   // null-terminated
};

const char* const colorContains[] = {"_col", "_color", "_diffuse", "_diff", "_albedo", nullptr};
const char* const colorEquals[] = {"col", "color", "diffuse", "diff", "albedo", nullptr};
const char* const normalContains[] = {"_norm", "_nor", "_normal", nullptr};
const char* const normalEquals[] = {"norm", "nor", "normal", nullptr};
const char* const displacementContains[] = {"_displacement", "_displ", "_disp", nullptr};
const char* const displacementEquals[] = {"displacement", "displ", "disp", nullptr};
const char* const roughnessContains[] = {"_roughness", "_rough", nullptr};
const char* const roughnessEquals[] = {"roughness", "rough", nullptr};
const char* const metalnessContains[] = {"_metalness", "_metal", nullptr};
const char* const metalnessEquals[] = {"metalness", "metal", nullptr};
const char* const occlusionContains[] = {"_ao", "_occlusion", "_ambient", nullptr};
const char* const occlusionEquals[] = {"ao", "occlusion", "ambient", nullptr};

// Indexed by purpose.
const PurposeRule rules[pbrPurposeCount] = {
    {"color", colorContains, colorEquals},
    {"normal", normalContains, normalEquals},
    {"displacement", displacementContains, displacementEquals},
    {"roughness", roughnessContains, roughnessEquals},
    {"metalness", metalnessContains, metalnessEquals},
    {"occlusion", occlusionContains, occlusionEquals},
};

// Roughness and metalness are tested before normal and displacement, and a
// later match overrides an earlier one: "rock_metal_rough" is metalness,
// "wall_nor_ao" occlusion. Keep this order.
const int testOrder[pbrPurposeCount] = {0, 3, 4, 1, 2, 5};

QString fileStem(const QString& path)
{
    const int slash = std::max(path.lastIndexOf('/'), path.lastIndexOf('\\'));
    QString name = path.mid(slash + 1);
    const int dot = name.lastIndexOf('.');
    if (dot >= 0)
        name.truncate(dot);
    return name;
}

bool matches(const PurposeRule& rule, const QString& stem)
{
    for (const char* const* s = rule.contains; *s; ++s)
        if (stem.contains(QLatin1String(*s), Qt::CaseSensitive))
            return true;
    for (const char* const* s = rule.equals; *s; ++s)
        if (stem == QLatin1String(*s))
            return true;
    return false;
}

} // namespace

int pbrPurposeOfFile(const QString& path)
{
    const QString stem = fileStem(path);
    int purpose = -1;
    for (int index : testOrder)
        if (matches(rules[index], stem))
            purpose = index;
    return purpose;
}

QString pbrLayerName(int purpose)
{
    if (purpose < 0 || purpose >= pbrPurposeCount)
        return QString();
    return QLatin1String(rules[purpose].layerName);
}

int pbrPurposeOfLayerName(const QString& name)
{
    for (int i = 0; i < pbrPurposeCount; ++i)
        if (name == QLatin1String(rules[i].layerName))
            return i;
    return -1;
}
