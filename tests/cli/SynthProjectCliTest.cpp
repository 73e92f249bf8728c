// Runs the built ondrels-synth on a project saved by the test.
#include "ImageFile.h"
#include "ImageSynthesizer.h"
#include "ProjectLoader.h"
#include "ProjectSaver.h"
#include "SurfaceSynthesisContext.h"

#include "SynthRun.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <cmath>

using Velmor::ProjectData;

namespace {

QString writePng(const QString& path, uint32_t size, PixelFormat format, float phase)
{
    Image image(size, size, format);
    const uint32_t c = image.channels();
    for (uint32_t y = 0; y < size; ++y)
        for (uint32_t x = 0; x < size; ++x)
            for (uint32_t k = 0; k < c; ++k)
                image.data[c * (x + size * y) + k] = 0.5f + 0.4f * std::sin(0.3f * x * (k + 1) + 0.2f * y + phase);
    image.fileType = FilePNG;
    image.sampleType = UInt8;
    EXPECT_TRUE(saveImage(path, image));
    return path;
}

void setTarget(ProjectData::SurfaceData& surface, uint32_t width, uint32_t height)
{
    for (const auto& synthesizer : surface.synthesizers) {
        auto* params = static_cast<Velmor::ImageSynthesizer::PatchSynthesizerParams*>(synthesizer->params);
        params->targetWidth = width;
        params->targetHeight = height;
        params->patchSize = 8;
        params->patchBoundary = 2;
    }
}

// Two surfaces of two layers and a mixed surface of them whose mask and
// white part are frozen, saved below `root`/project.
QString makeProject(const QString& root)
{
    QDir().mkpath(root + "/images");
    ProjectData store;
    ProjectData::TextureData* color = store.addTexture(writePng(root + "/images/rock_col.png", 32, RGB, 0.0f));
    ProjectData::TextureData* rough = store.addTexture(writePng(root + "/images/rock_rough.png", 32, Gray, 1.0f));
    ProjectData::TextureData* moss = store.addTexture(writePng(root + "/images/moss_col.png", 24, RGB, 2.0f));
    ProjectData::TextureData* mask = store.addTexture(writePng(root + "/images/mask.png", 16, Gray, 3.0f));
    ProjectData::SurfaceData* rock = store.addSurface("Rock");
    rock->addLayer() = {"Color", color, ProjectData::LayerMode::Color};
    rock->addLayer() = {"Roughness", rough, ProjectData::LayerMode::Roughness};
    setTarget(*rock, 48, 32);
    ProjectData::SurfaceData* mossy = store.addSurface("Moss");
    mossy->addLayer() = {"Color", moss, ProjectData::LayerMode::Color};
    mossy->addLayer() = {"Roughness", rough, ProjectData::LayerMode::Roughness};
    setTarget(*mossy, 48, 32);
    ProjectData::MixedSurfaceData* mix = store.addMixedSurface("Mossy Rock");
    mix->whiteSurface = rock;
    mix->blackSurface = mossy;
    mix->maskTexture = mask;
    mix->synthesizeMask = false;
    mix->synthesizeBlackSurface = false;
    mix->freezeMask = true;
    mix->freezeWhiteSurface = true;
    setTarget(*mix, 40, 24);
    const QString dir = root + "/project";
    EXPECT_TRUE(Velmor::ProjectSaver(dir).save(store));
    return dir;
}

Image loadOutput(const QString& path)
{
    Image image;
    ImageFileInfo info;
    EXPECT_TRUE(loadImage(info, path, image)) << path.toStdString();
    return image;
}

QByteArray bytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

TEST(SynthProjectCli, ListsTheProjectWithTheLoaderLog)
{
    QTemporaryDir dir;
    const QString project = makeProject(dir.path());
    const RunResult run = runSynth({"--project", project, "--list"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(run.output.contains("Textures: 4")) << run.output.toStdString();
    EXPECT_TRUE(run.output.contains("\"Rock\""));
    EXPECT_TRUE(run.output.contains("mixed surface \"Mossy Rock\""));
    EXPECT_TRUE(run.errorLines.join('\n').contains("Loading texture file: "));
}

TEST(SynthProjectCli, SynthesizesASurfaceWithItsOwnSettingsOrOverrides)
{
    QTemporaryDir dir;
    const QString project = makeProject(dir.path());
    const QString out = dir.path() + "/out";
    RunResult run = runSynth({"--project", project, "--surface", "Rock", "-o", out, "--seed", "5", "-q"});
    ASSERT_EQ(run.exitCode, 0) << run.errorLines.join('\n').toStdString();
    const Image color = loadOutput(out + "/Color.png");
    EXPECT_EQ(color.width, 48u);
    EXPECT_EQ(color.height, 32u);
    EXPECT_EQ(color.format, RGB);
    EXPECT_EQ(loadOutput(out + "/Roughness.png").format, Gray);

    // The same seed gives the same file; --size overrides the project's size.
    run = runSynth({"--project", project, "--surface", "Rock", "-o", dir.path() + "/again", "--seed", "5", "-q"});
    ASSERT_EQ(run.exitCode, 0);
    EXPECT_EQ(bytes(dir.path() + "/again/Color.png"), bytes(out + "/Color.png"));
    EXPECT_FALSE(bytes(out + "/Color.png").isEmpty());
    run = runSynth({"--project", project, "--surface", "Rock", "-o", out, "--size", "40x16", "--patch-size", "6",
                    "--method", "cutout", "-q"});
    ASSERT_EQ(run.exitCode, 0);
    EXPECT_EQ(loadOutput(out + "/Color.png").width, 40u);
    EXPECT_EQ(loadOutput(out + "/Roughness.png").height, 16u);
}

TEST(SynthProjectCli, MixedSurfaceKeepsItsFrozenPartsInTheSavedProject)
{
    QTemporaryDir dir;
    const QString project = makeProject(dir.path());
    const QString out = dir.path() + "/mixed";
    const RunResult run = runSynth({"--project", project, "--surface", "Mossy Rock", "-o", out, "--size", "36x20",
                                    "--seed", "9", "--save-project"});
    ASSERT_EQ(run.exitCode, 0) << run.errorLines.join('\n').toStdString();
    EXPECT_TRUE(run.errorLines.join('\n').contains("MixedSurface Phase 4/4: merging surfaces."));
    const Image color = loadOutput(out + "/Color.png");
    EXPECT_EQ(color.width, 36u);
    EXPECT_EQ(color.height, 20u);
    EXPECT_EQ(loadOutput(out + "/Roughness.png").width, 36u);

    std::unique_ptr<ProjectData> loaded = Velmor::ProjectLoader(project).load();
    ProjectData::SurfaceData* mixed = nullptr;
    for (const auto& surface : loaded->surfaces)
        if (surface->name == "Mossy Rock")
            mixed = surface.get();
    ASSERT_NE(mixed, nullptr);
    const Velmor::SurfaceSynthesisContext& context = *mixed->synthesisContext;
    ASSERT_NE(context.maskResult, nullptr);
    EXPECT_EQ(context.maskResult->layers[0]->width, 36u);
    // (The cache keeps as many surface layers as its first part has: one,
    // with a frozen mask.)
    ASSERT_NE(context.whiteResult, nullptr);
    ASSERT_GE(context.whiteResult->layerCount(), 1u);
    EXPECT_EQ(context.whiteResult->layers[0]->height, 20u);
    EXPECT_EQ(context.blackResult, nullptr); // not frozen, so not kept
    // The override was for this run only.
    EXPECT_EQ(mixed->synthesizer()->params->targetWidth, 40u);
}

TEST(SynthProjectCli, FailuresGiveOneLineAndTheirStatus)
{
    QTemporaryDir dir;
    const QString project = makeProject(dir.path());
    const QString out = dir.path() + "/out";
    const struct
    {
        QStringList arguments;
        int status;
        const char* reason;
    } cases[] = {
        {{"--project", project, "--surface", "Granite", "-o", out, "-q"}, 1, "Granite"},
        {{"--project", dir.path() + "/missing", "--list", "-q"}, 1, "no such directory"},
        {{"--project", project, "--surface", "Rock", "-q"}, 2, "-o DIR"},
        {{"--project", project, "--list", "--surface", "Rock", "-q"}, 2, "cannot be combined"},
        {{"--project", project, "--surface", "Rock", "-o", out, "--feather", "2", "-q"}, 2, "cutout"},
    };
    for (const auto& c : cases) {
        const RunResult run = runSynth(c.arguments);
        EXPECT_EQ(run.exitCode, c.status) << c.arguments.join(' ').toStdString();
        ASSERT_EQ(run.errorLines.size(), 1) << run.errorLines.join('\n').toStdString();
        EXPECT_TRUE(run.errorLines[0].contains(c.reason)) << run.errorLines[0].toStdString();
    }
    EXPECT_FALSE(QDir(out).exists());
}
