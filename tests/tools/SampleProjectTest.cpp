#include "MessageHandler.h"
#include "ProceduralTextures.h"
#include "ProjectData.h"
#include "ProjectLoader.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>

#include <map>

using Velmor::ProjectData;

namespace {

struct LoggedLine
{
    QString text;
    int severity;
};

template <class Record>
const Record* byName(const std::vector<std::unique_ptr<Record>>& records, const std::string& name)
{
    for (const auto& record : records)
        if (record->name == name)
            return record.get();
    return nullptr;
}

} // namespace

// The project the build generates loads without a warning, with every record
// and reference in place.
TEST(SampleProject, LoadsCompleteWithAllReferences)
{
    const QString dir = QStringLiteral(ONDRELS_SAMPLE_PROJECT_DIR);
    ASSERT_TRUE(QFileInfo(dir).isDir()) << qPrintable(dir);

    std::vector<LoggedLine> lines;
    const QMetaObject::Connection listener =
        QObject::connect(MessageHandler::instance(), &MessageHandler::onMessage,
                         [&lines](const QString& text, int severity) { lines.push_back({text, severity}); });
    std::unique_ptr<ProjectData> project = Velmor::ProjectLoader(dir).load();
    QObject::disconnect(listener);
    ASSERT_TRUE(project);
    for (const LoggedLine& line : lines)
        EXPECT_EQ(line.severity, 0) << qPrintable(line.text);

    // Four maps per material and the mix mask, all files inside the project.
    ASSERT_EQ(project->textures.size(), 9u);
    const QString imageDir = QDir(dir).absoluteFilePath(QStringLiteral("Images"));
    for (const auto& texture : project->textures) {
        SCOPED_TRACE(texture->name);
        EXPECT_TRUE(QFileInfo(texture->path).isAbsolute());
        EXPECT_EQ(QFileInfo(texture->path).absolutePath(), imageDir);
        EXPECT_TRUE(QFileInfo::exists(texture->path));
        EXPECT_EQ(texture->image.width, 512u);
        EXPECT_EQ(texture->image.height, 512u);
    }

    const char* const layerNames[] = {"color", "normal", "displacement", "roughness"};
    const PixelFormat layerFormats[] = {RGB, Normal, Gray, Gray};
    const ProjectData::SurfaceData* plain[2] = {};
    const char* const surfaceNames[] = {"Cobblestones", "Moss"};
    ASSERT_EQ(project->surfaces.size(), 3u);
    ASSERT_EQ(project->directionMaps.size(), 1u);
    ASSERT_EQ(project->scaleMaps.size(), 1u);
    const ProjectData::DirectionMapData* directions = project->directionMaps.front().get();
    const ProjectData::ScaleMapData* scales = project->scaleMaps.front().get();
    for (int s = 0; s < 2; ++s) {
        SCOPED_TRACE(surfaceNames[s]);
        plain[s] = byName(project->surfaces, surfaceNames[s]);
        ASSERT_NE(plain[s], nullptr);
        EXPECT_EQ(dynamic_cast<const ProjectData::MixedSurfaceData*>(plain[s]), nullptr);
        ASSERT_EQ(plain[s]->layers.size(), 4u);
        for (int i = 0; i < 4; ++i) {
            const ProjectData::SurfaceLayer& layer = plain[s]->layers[size_t(i)];
            EXPECT_EQ(layer.name, layerNames[i]);
            EXPECT_EQ(int(layer.mode), i);
            ASSERT_NE(layer.texture, nullptr);
            EXPECT_EQ(layer.texture->image.format, layerFormats[i]);
        }
        // The normal layer holds vectors, not colours: flat areas decode to
        // about (0, 0, 1) and no normal points into the surface.
        const Image& normal = plain[s]->layers[1].texture->image;
        EXPECT_TRUE(normal.mappedNormalXY && normal.mappedNormalZ && !normal.flipNormalX && !normal.flipNormalY);
        for (uint64_t i = 0; i < normal.pixelCount(); ++i) {
            const float* n = normal.data + 3 * i;
            ASSERT_GT(n[2], 0.0f);
            ASSERT_NEAR(n[0] * n[0] + n[1] * n[1] + n[2] * n[2], 1.0f, 0.03f);
        }
        int32_t width = 0, height = 0;
        plain[s]->surfaceSize(width, height);
        EXPECT_EQ(width, 512);
        EXPECT_EQ(height, 512);
        EXPECT_EQ(plain[s]->directionMap, directions);
        EXPECT_EQ(plain[s]->scaleMap, scales);
    }
    EXPECT_NE(plain[0]->layers[0].texture, plain[1]->layers[0].texture);

    const auto* mixed = dynamic_cast<const ProjectData::MixedSurfaceData*>(
        byName(project->surfaces, std::string("MossyCobblestones")));
    ASSERT_NE(mixed, nullptr);
    EXPECT_EQ(mixed->whiteSurface, plain[1]);
    EXPECT_EQ(mixed->blackSurface, plain[0]);
    ASSERT_NE(mixed->maskTexture, nullptr);
    EXPECT_EQ(mixed->maskTexture->name, "moss_mask");
    EXPECT_EQ(mixed->maskChannel, 0);
    EXPECT_EQ(mixed->directionMap, directions);
    EXPECT_EQ(mixed->scaleMap, scales);
    // The mask is black and white, with both present.
    const Image& mask = mixed->maskTexture->image;
    ASSERT_EQ(mask.format, Gray);
    std::map<float, int> values;
    for (uint64_t i = 0; i < mask.pixelCount(); ++i)
        ++values[mask.data[i]];
    ASSERT_EQ(values.size(), 2u);
    EXPECT_EQ(values.begin()->first, 0.0f);
    EXPECT_EQ(values.rbegin()->first, 1.0f);
    // Loading rebuilt the mix from the two surfaces: one layer per layer.
    EXPECT_EQ(mixed->layers.size(), 4u);

    // The maps survive their files exactly.
    EXPECT_EQ(directions->name, "Swirl");
    EXPECT_EQ(scales->name, "ScaleGradient");
    const Image swirl = ProceduralTextures::swirlDirections(512);
    const Image gradient = ProceduralTextures::scaleGradient(512);
    ASSERT_EQ(directions->image.format, Normal);
    ASSERT_EQ(directions->image.floatCount(), swirl.floatCount());
    ASSERT_EQ(scales->image.floatCount(), gradient.floatCount());
    for (uint64_t i = 0; i < swirl.floatCount(); ++i)
        ASSERT_EQ(directions->image.data[i], swirl.data[i]);
    for (uint64_t i = 0; i < gradient.floatCount(); ++i)
        ASSERT_EQ(scales->image.data[i], gradient.data[i]);
}
