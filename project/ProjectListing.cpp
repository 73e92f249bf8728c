#include "ProjectListing.h"

#include "ImageSynthesizer.h"
#include "PbrPurpose.h"

namespace {

using Velmor::ProjectData;

QString modeName(ProjectData::LayerMode mode)
{
    const QString name = pbrLayerName(int(mode));
    return name.isEmpty() ? QStringLiteral("mode %1").arg(int(mode)) : name;
}

QString quoted(const std::string& name)
{
    return QLatin1Char('"') + QString::fromStdString(name) + QLatin1Char('"');
}

// "[id] "name"" of a referenced record, or "none".
template <class Record>
QString reference(const Record* record)
{
    return record ? QStringLiteral("[%1] %2").arg(record->id).arg(quoted(record->name)) : QStringLiteral("none");
}

QString sizeText(const Image& image)
{
    return QStringLiteral("%1 x %2").arg(image.width).arg(image.height);
}

void listSurface(QString& out, const ProjectData::SurfaceData& surface)
{
    const auto* mixed = dynamic_cast<const ProjectData::MixedSurfaceData*>(&surface);
    out += QStringLiteral("  [%1] %2 %3").arg(surface.id).arg(mixed ? "mixed surface" : "surface", quoted(surface.name));
    if (const Velmor::ImageSynthesizer* synthesizer = surface.synthesizer())
        out += QStringLiteral(", %1 %2 x %3")
                   .arg(QString::fromStdString(synthesizer->params->methodName()))
                   .arg(synthesizer->params->targetWidth)
                   .arg(synthesizer->params->targetHeight);
    out += QLatin1Char('\n');
    if (mixed) {
        out += QStringLiteral("    white surface %1\n").arg(reference(mixed->whiteSurface));
        out += QStringLiteral("    black surface %1\n").arg(reference(mixed->blackSurface));
    }
    for (const ProjectData::SurfaceLayer& layer : surface.layers)
        out += QStringLiteral("    layer %1: texture %2, %3\n")
                   .arg(quoted(layer.name), mixed ? QStringLiteral("generated") : reference(layer.texture),
                        modeName(layer.mode));
    if (surface.maskTexture || surface.masked)
        out += QStringLiteral("    mask texture %1, channel %2%3\n")
                   .arg(reference(surface.maskTexture))
                   .arg(surface.maskChannel)
                   .arg(surface.masked ? "" : " (not used)");
    if (surface.directionMap)
        out += QStringLiteral("    direction map %1%2\n")
                   .arg(reference(surface.directionMap), surface.useDirectionMap ? "" : " (not used)");
    if (surface.scaleMap)
        out += QStringLiteral("    scale map %1%2\n")
                   .arg(reference(surface.scaleMap), surface.useScaleMap ? "" : " (not used)");
}

} // namespace

QString projectListing(const ProjectData& project)
{
    QString out;
    out += QStringLiteral("Textures: %1\n").arg(project.textures.size());
    for (const auto& texture : project.textures)
        out += QStringLiteral("  %1, %2%3, %4\n")
                   .arg(reference(texture.get()), sizeText(texture->image),
                        texture->image.format == Normal ? QStringLiteral(" normal map") : QString(), texture->path);
    out += QStringLiteral("Models: %1\n").arg(project.models.size());
    for (const auto& model : project.models)
        out += QStringLiteral("  %1, %2\n").arg(quoted(model->name), model->path);
    out += QStringLiteral("Direction maps: %1\n").arg(project.directionMaps.size());
    for (const auto& map : project.directionMaps)
        out += QStringLiteral("  %1, %2\n").arg(reference(map.get()), sizeText(map->image));
    out += QStringLiteral("Scale maps: %1\n").arg(project.scaleMaps.size());
    for (const auto& map : project.scaleMaps)
        out += QStringLiteral("  %1, %2\n").arg(reference(map.get()), sizeText(map->image));
    out += QStringLiteral("Surfaces: %1\n").arg(project.surfaces.size());
    for (const auto& surface : project.surfaces)
        listSurface(out, *surface);
    out += QStringLiteral("Project mask: %1\n").arg(sizeText(project.projectMask));
    return out;
}
