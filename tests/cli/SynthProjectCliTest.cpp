// Runs the built ondrels-synth on a project saved by the test.
#include "ImageSynthesizer.h"
#include "ProjectLoader.h"
#include "ProjectSaver.h"
#include "SurfaceSynthesisContext.h"

#include "SynthRun.h"

#include <QDir>
#include <QTemporaryDir>

using Velmor::ProjectData;

namespace {

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
    const auto texture = [&](const char* name, uint32_t size, PixelFormat format, float phase) {
        return store.addTexture(writePattern(root + "/images/" + name, size, format, phase));
    };
    ProjectData::TextureData* rough = texture("rock_rough.png", 32, Gray, 1.0f);
    ProjectData::SurfaceData* rock = store.addSurface("Rock");
    ProjectData::SurfaceData* moss = store.addSurface("Moss");
    rock->addLayer() = {"Color", texture("rock_col.png", 32, RGB, 0.0f), ProjectData::LayerMode::Color};
    moss->addLayer() = {"Color", texture("moss_col.png", 24, RGB, 2.0f), ProjectData::LayerMode::Color};
    for (ProjectData::SurfaceData* surface : {rock, moss}) {
        surface->addLayer() = {"Roughness", rough, ProjectData::LayerMode::Roughness};
        setTarget(*surface, 48, 32);
    }
    ProjectData::MixedSurfaceData* mix = store.addMixedSurface("Mossy Rock");
    mix->whiteSurface = rock;
    mix->blackSurface = moss;
    mix->maskTexture = texture("mask.png", 16, Gray, 3.0f);
    mix->synthesizeMask = mix->synthesizeBlackSurface = false;
    mix->freezeMask = mix->freezeWhiteSurface = true;
    setTarget(*mix, 40, 24);
    EXPECT_TRUE(Velmor::ProjectSaver(root + "/project").save(store));
    return root + "/project";
}

} // namespace

TEST(SynthProjectCli, ListsFailsOrSynthesizesASurfaceWithItsOwnSettingsOrOverrides)
{
    QTemporaryDir dir;
    const QString project = makeProject(dir.path()), out = dir.path() + "/out";
    // An unknown surface or project fails with one line, status 1 and no output.
    const std::pair<QStringList, const char*> failures[] = {
        {{"--project", project, "--surface", "Granite", "-o", out, "-q"}, "Granite"},
        {{"--project", dir.path() + "/missing", "--list", "-q"}, "no such directory"},
    };
    for (const auto& [arguments, reason] : failures) {
        const RunResult run = runSynth(arguments);
        EXPECT_EQ(run.exitCode, 1) << arguments.join(' ').toStdString();
        ASSERT_EQ(run.errorLines.size(), 1) << run.errorLines.join('\n').toStdString();
        EXPECT_TRUE(run.errorLines[0].contains(reason)) << run.errorLines[0].toStdString();
    }
    EXPECT_FALSE(QDir(out).exists());

    RunResult run = runSynth({"--project", project, "--list"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(run.output.contains("Textures: 4")) << run.output.toStdString();
    EXPECT_TRUE(run.output.contains("\"Rock\"") && run.output.contains("mixed surface \"Mossy Rock\""));
    EXPECT_TRUE(run.errorLines.join('\n').contains("Loading texture file: "));

    run = runSynth({"--project", project, "--surface", "Rock", "-o", out, "-q"});
    ASSERT_EQ(run.exitCode, 0) << run.errorLines.join('\n').toStdString();
    const Image color = loadOutput(out + "/Color.png");
    EXPECT_TRUE(color.width == 48u && color.height == 32u && color.format == RGB);
    EXPECT_EQ(loadOutput(out + "/Roughness.png").format, Gray);

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
    EXPECT_EQ(loadOutput(out + "/Color.png").height, 20u);
    EXPECT_EQ(loadOutput(out + "/Roughness.png").width, 36u);

    std::unique_ptr<ProjectData> loaded = Velmor::ProjectLoader(project).load();
    ASSERT_EQ(loaded->surfaces.size(), 3u);
    ProjectData::SurfaceData* mixed = loaded->surfaces[2].get();
    ASSERT_EQ(mixed->name, "Mossy Rock");
    const Velmor::SurfaceSynthesisContext& context = *mixed->synthesisContext;
    // (The cache keeps as many surface layers as its first part has: one, with a frozen mask.)
    ASSERT_TRUE(context.maskResult && context.whiteResult && context.whiteResult->layerCount() >= 1u);
    EXPECT_EQ(context.maskResult->layers[0]->width, 36u);
    EXPECT_EQ(context.whiteResult->layers[0]->height, 20u);
    EXPECT_EQ(context.blackResult, nullptr); // not frozen, so not kept
    EXPECT_EQ(mixed->synthesizer()->params->targetWidth, 40u); // the override was for this run only
}
