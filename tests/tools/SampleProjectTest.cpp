#include "MessageHandler.h"
#include "ProceduralTextures.h"
#include "ProjectData.h"
#include "ProjectLoader.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <set>

using Velmor::ProjectData;

namespace {

const ProjectData::SurfaceData* byName(const ProjectData& project, const std::string& name)
{
    const auto& surfaces = project.surfaces;
    const auto found = std::find_if(surfaces.begin(), surfaces.end(), [&](const auto& s) { return s->name == name; });
    return found == surfaces.end() ? nullptr : found->get();
}

bool samePixels(const Image& a, const Image& b)
{
    return a.format == b.format && a.floatCount() == b.floatCount() &&
           std::equal(a.data, a.data + a.floatCount(), b.data);
}

} // namespace

// The project the build generates loads without a warning, with every record
// and reference in place.
TEST(SampleProject, LoadsCompleteWithAllReferences)
{
    const QString dir = QStringLiteral(ONDRELS_SAMPLE_PROJECT_DIR);
    std::vector<std::pair<QString, int>> lines;
    const QMetaObject::Connection listener =
        QObject::connect(MessageHandler::instance(), &MessageHandler::onMessage,
                         [&lines](const QString& text, int severity) { lines.emplace_back(text, severity); });
    std::unique_ptr<ProjectData> project = Velmor::ProjectLoader(dir).load();
    QObject::disconnect(listener);
    ASSERT_TRUE(project);
    for (const auto& [text, severity] : lines)
        EXPECT_EQ(severity, 0) << qPrintable(text);

    // Four maps per material and the mix mask, all files inside the project.
    ASSERT_EQ(project->textures.size(), 9u);
    for (const auto& texture : project->textures) {
        EXPECT_EQ(QFileInfo(texture->path).absolutePath(), QDir(dir).absoluteFilePath("Images")) << texture->name;
        EXPECT_EQ(texture->image.width, 512u) << texture->name;
    }

    ASSERT_EQ(project->surfaces.size(), 3u);
    ASSERT_TRUE(project->directionMaps.size() == 1u && project->scaleMaps.size() == 1u);
    const ProjectData::DirectionMapData* directions = project->directionMaps.front().get();
    const ProjectData::ScaleMapData* scales = project->scaleMaps.front().get();
    const char* const layerNames[] = {"color", "normal", "displacement", "roughness"};
    const PixelFormat layerFormats[] = {RGB, Normal, Gray, Gray};
    const ProjectData::SurfaceData* cobbles = byName(*project, "Cobblestones");
    const ProjectData::SurfaceData* moss = byName(*project, "Moss");
    ASSERT_TRUE(cobbles && moss);
    for (const ProjectData::SurfaceData* surface : {cobbles, moss}) {
        SCOPED_TRACE(surface->name);
        ASSERT_EQ(surface->layers.size(), 4u);
        for (int i = 0; i < 4; ++i) {
            const ProjectData::SurfaceLayer& layer = surface->layers[size_t(i)];
            EXPECT_EQ(layer.name, layerNames[i]);
            EXPECT_EQ(int(layer.mode), i);
            ASSERT_NE(layer.texture, nullptr);
            EXPECT_EQ(layer.texture->image.format, layerFormats[i]);
        }
        EXPECT_TRUE(surface->directionMap == directions && surface->scaleMap == scales);
    }
    EXPECT_NE(cobbles->layers[0].texture, moss->layers[0].texture);

    const auto* mixed = dynamic_cast<const ProjectData::MixedSurfaceData*>(byName(*project, "MossyCobblestones"));
    ASSERT_NE(mixed, nullptr);
    EXPECT_TRUE(mixed->whiteSurface == moss && mixed->blackSurface == cobbles);
    ASSERT_NE(mixed->maskTexture, nullptr);
    EXPECT_EQ(mixed->maskTexture->name, "moss_mask");
    EXPECT_TRUE(mixed->directionMap == directions && mixed->scaleMap == scales);
    EXPECT_EQ(mixed->layers.size(), 4u); // loading rebuilt the mix from the two surfaces
    // The mask is black and white, with both present.
    const Image& mask = mixed->maskTexture->image;
    ASSERT_EQ(mask.format, Gray);
    EXPECT_EQ(std::set<float>(mask.data, mask.data + mask.pixelCount()), std::set<float>({0.0f, 1.0f}));

    // The maps survive their files exactly.
    EXPECT_TRUE(samePixels(directions->image, ProceduralTextures::swirlDirections(512)));
    EXPECT_TRUE(samePixels(scales->image, ProceduralTextures::scaleGradient(512)));
}
