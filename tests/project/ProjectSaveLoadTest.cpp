#include "ImageSynthesizer.h"
#include "ProjectListing.h"
#include "ProjectLoader.h"
#include "ProjectSaver.h"
#include "ProjectTestSupport.h"
#include "SurfaceSynthesisContext.h"

#include <QDirIterator>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>

using namespace Velmor;

namespace {

// Relative path -> contents of every file below `root`.
std::map<QString, QByteArray> filesBelow(const QString& root)
{
    std::map<QString, QByteArray> files;
    QDirIterator it(root, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        files[path.mid(root.size())] = readFile(path);
    }
    return files;
}

Image* filledImage(uint32_t size, PixelFormat format, float value)
{
    Image* image = new Image(size, size, format);
    for (uint64_t i = 0; i < image->floatCount(); ++i)
        image->data[i] = value + float(i % 7) * 0.01f;
    return image;
}

// Textures (one a normal map), a model, maps, two surfaces and a mixed
// surface with a frozen mask and white surface. Names sort in list order, as
// the loader lists files by name.
std::unique_ptr<ProjectData> makeProject(const QString& imageDir)
{
    auto store = std::make_unique<ProjectData>();
    ProjectData::TextureData* color = store->addTexture(writeTestImage(imageDir + "/a_colour.png", 8, 8, RGB));
    ProjectData::TextureData* mask = store->addTexture(writeTestImage(imageDir + "/b_mask.png", 8, 8, Gray));
    ProjectData::TextureData* normal = store->addTexture(writeTestImage(imageDir + "/c_nörmal.png", 8, 8, RGB));
    normal->image.toNormalMap(true, false, true, true);
    ProjectData::ModelData* model = store->addModel("/meshes/tree.obj");
    model->rotationY = 33.25f;
    model->scale = 0.1f;
    ProjectData::DirectionMapData* dirMap = store->addDirectionMap();
    dirMap->image.pixelAt(3, 4)[0] = 0.5f;
    ProjectData::ScaleMapData* scaleMap = store->addScaleMap();
    scaleMap->image.pixelAt(5, 5)[0] = 0.25f;
    store->projectMask.pixelAt(1, 1)[0] = 0.0f;

    ProjectData::SurfaceData* rock = store->addSurface("Rock");
    rock->addLayer() = {"Color", color, ProjectData::LayerMode::Color};
    rock->addLayer() = {"Normal", normal, ProjectData::LayerMode::Normal};
    rock->maskTexture = mask;
    rock->masked = true;
    rock->directionMap = dirMap;
    rock->scaleMap = scaleMap;
    rock->selectSynthesizer("Patch Based Cutout");
    ProjectData::SurfaceData* sand = store->addSurface("Sand");
    sand->addLayer() = {"Color", color, ProjectData::LayerMode::Color};
    sand->addLayer() = {"Roughness", nullptr, ProjectData::LayerMode::Roughness};
    sand->maskChannel = 2;
    sand->useScaleMap = false;
    sand->makeInputSeamless = true;
    sand->synthesizer()->params->targetWidth = 300;
    sand->synthesizer()->params->useAllLayers = false;

    ProjectData::MixedSurfaceData* mix = store->addMixedSurface("Mix");
    mix->whiteSurface = rock;
    mix->blackSurface = sand;
    mix->maskTexture = mask;
    mix->freezeMask = true;
    mix->freezeWhiteSurface = true;
    mix->tileBlackSurface = true;
    SurfaceSynthesisContext& context = *mix->synthesisContext;
    context.maskResult = std::make_unique<LayeredImage>();
    context.maskResult->setLayer("Mask", filledImage(16, Gray, 0.5f));
    context.whiteResult = std::make_unique<LayeredImage>();
    context.whiteResult->setLayer("Color", filledImage(16, RGB, 0.2f));
    context.whiteResult->setLayer("Normal", filledImage(16, Normal, 0.0f));
    mix->updateMixedLayers();

    // Stale IDs, renumbered by the save.
    color->id = 9;
    rock->id = 7;
    dirMap->id = -1;
    return store;
}

} // namespace

TEST(ProjectSaveLoad, SaveLoadSaveGivesIdenticalFilesAndKeepsReferences)
{
    QTemporaryDir dir;
    std::unique_ptr<ProjectData> original = makeProject(dir.path());
    const QString first = dir.path() + "/first ü", second = dir.path() + "/second";
    ASSERT_TRUE(ProjectSaver(first).save(*original));
    EXPECT_EQ(original->textures[0]->id, 0);
    EXPECT_EQ(original->surfaces[0]->id, 0);
    EXPECT_EQ(original->directionMaps[0]->id, 0);
    EXPECT_TRUE(readFile(first + "/Surfaces/Mix.vmsm").contains("<WhiteSurfaceID>0</WhiteSurfaceID>"));
    EXPECT_TRUE(readFile(first + "/Surfaces/Mix.vmsm").contains("<BlackSurfaceID>1</BlackSurfaceID>"));
    const QByteArray sandXml = readFile(first + "/Surfaces/Sand.vms");
    EXPECT_TRUE(sandXml.startsWith("<Surface Name=\"Sand\">\n    <ID>1</ID>\n    <Masked>false</Masked>\n"
                                   "    <MaskTextureID>-1</MaskTextureID>\n"));
    EXPECT_FALSE(sandXml.contains("<DirectionMap>")); // written only when set
    EXPECT_LT(sandXml.lastIndexOf("<Layer"), sandXml.indexOf("<UseDirectionMap>"));
    EXPECT_LT(sandXml.lastIndexOf("<Synthesizer "), sandXml.indexOf("<SynthesizerMode>"));

    LogCapture log;
    std::unique_ptr<ProjectData> loaded = ProjectLoader(first).load();
    EXPECT_EQ(log.count(Warning) + log.count(Error), 0);
    ASSERT_TRUE(ProjectSaver(second).save(*loaded));
    const auto a = filesBelow(first), b = filesBelow(second);
    EXPECT_EQ(a.size(), 11u); // mask, 3 textures, model, 2 maps, 3 surfaces, mixed cache
    EXPECT_TRUE(a == b);
    EXPECT_EQ(a.count("/Cache/Surface2.cache"), 1u);

    ASSERT_EQ(loaded->textures.size(), 3u);
    EXPECT_EQ(loaded->textures[2]->image.format, Normal);
    EXPECT_TRUE(loaded->textures[2]->image.flipNormalX);
    EXPECT_EQ(0, memcmp(loaded->textures[2]->image.data, original->textures[2]->image.data, 8 * 8 * 12));
    EXPECT_FLOAT_EQ(loaded->models[0]->rotationY, 33.25f);
    EXPECT_FLOAT_EQ(loaded->models[0]->scale, 0.1f);
    EXPECT_EQ(loaded->directionMaps[0]->image.pixelAt(3, 4)[0], 0.5f);
    EXPECT_EQ(loaded->scaleMaps[0]->image.pixelAt(5, 5)[0], 0.25f);
    EXPECT_EQ(loaded->projectMask.pixelAt(1, 1)[0], 0.0f);

    ASSERT_EQ(loaded->surfaces.size(), 3u);
    const ProjectData::SurfaceData& rock = *loaded->surfaces[0];
    EXPECT_EQ(rock.layers[1].texture, loaded->textures[2].get());
    EXPECT_EQ(rock.maskTexture, loaded->textures[1].get());
    EXPECT_EQ(rock.directionMap, loaded->directionMaps[0].get());
    EXPECT_EQ(rock.scaleMap, loaded->scaleMaps[0].get());
    EXPECT_EQ(rock.synthesizerMode(), "Patch Based Cutout");
    const ProjectData::SurfaceData& sand = *loaded->surfaces[1];
    EXPECT_EQ(sand.maskTexture, nullptr);
    EXPECT_EQ(sand.layers[1].texture, nullptr);
    EXPECT_EQ(sand.layers[1].mode, ProjectData::LayerMode::Roughness);
    EXPECT_TRUE(sand.makeInputSeamless && !sand.useScaleMap && sand.maskChannel == 2);
    EXPECT_EQ(sand.synthesizer()->params->targetWidth, 300u);
    EXPECT_FALSE(sand.synthesizer()->params->useAllLayers);
    auto* mix = dynamic_cast<ProjectData::MixedSurfaceData*>(loaded->surfaces[2].get());
    ASSERT_NE(mix, nullptr);
    EXPECT_EQ(mix->whiteSurface, loaded->surfaces[0].get());
    EXPECT_EQ(mix->blackSurface, loaded->surfaces[1].get());
    EXPECT_TRUE(mix->tileBlackSurface);
    EXPECT_EQ(mix->layers.size(), 2u);
    // The frozen mask is cached with one layer, so one white layer comes back.
    ASSERT_TRUE(mix->synthesisContext->whiteResult);
    EXPECT_EQ(mix->synthesisContext->whiteResult->layerCount(), 1u);

    const QString listing = projectListing(*loaded);
    EXPECT_TRUE(listing.contains("  [0] surface \"Rock\", Patch Based Cutout 1024 x 1024\n"
                                 "    layer \"Color\": texture [0] \"a_colour\", color\n"
                                 "    layer \"Normal\": texture [2] \"c_nörmal\", normal\n"
                                 "    mask texture [1] \"b_mask\", channel 0\n"
                                 "    direction map [0] \"DirMap\"\n"))
        << listing.toStdString();
    EXPECT_TRUE(listing.contains("    white surface [0] \"Rock\"\n    black surface [1] \"Sand\"\n"));
}

TEST(ProjectSaveLoad, DirectoryQuirksAndUnsafeNames)
{
    QTemporaryDir dir;
    std::unique_ptr<ProjectData> store = makeProject(dir.path());
    const QString project = dir.path() + "/p";
    ASSERT_TRUE(ProjectSaver(project).save(*store));

    // A deleted texture's old file stays and comes back on load.
    store->removeTexture(store->textures[0].get());
    ASSERT_TRUE(ProjectSaver(project).save(*store));
    EXPECT_EQ(ProjectLoader(project).load()->textures.size(), 3u);

    // Names a file system refuses, or that collide once made safe, still
    // give one file per record and load back under their own names.
    store->surfaces[0]->name = "Rock/Moss";
    store->surfaces[1]->name = "Rock_Moss";
    store->scaleMaps[0]->name = "..";
    ASSERT_TRUE(ProjectSaver(project).save(*store));
    EXPECT_TRUE(QFileInfo::exists(project + "/Surfaces/Rock_Moss.vms"));
    EXPECT_TRUE(QFileInfo::exists(project + "/Surfaces/Rock_Moss_1.vms"));
    QDir(project + "/Surfaces").remove("Rock.vms");
    QDir(project + "/Surfaces").remove("Sand.vms");
    std::unique_ptr<ProjectData> loaded = ProjectLoader(project).load();
    std::vector<std::string> names;
    for (const auto& surface : loaded->surfaces)
        names.push_back(surface->name);
    EXPECT_EQ(names, (std::vector<std::string>{"Rock/Moss", "Rock_Moss", "Mix"}));
    ASSERT_EQ(loaded->scaleMaps.size(), 2u); // the old "ScaleMap.vsm" is still there
    EXPECT_EQ(loaded->scaleMaps[1]->name, "..");

    // Without a Surfaces folder: exactly one warning, everything else loads.
    QDir(project + "/Surfaces").removeRecursively();
    LogCapture log;
    loaded = ProjectLoader(project).load();
    EXPECT_EQ(log.count(Warning), 1);
    EXPECT_EQ(log.count(Warning, "Surface directory does not exists, no surfaces will be loaded: "), 1);
    EXPECT_EQ(loaded->textures.size(), 3u);
    EXPECT_TRUE(loaded->surfaces.empty());
}

TEST(ProjectSaveLoad, FailedSavesReportAndLeaveExistingFilesAlone)
{
    QTemporaryDir dir;
    std::unique_ptr<ProjectData> store = makeProject(dir.path());

    // The project folder's parent is a regular file: nothing can be made.
    writeFile(dir.path() + "/plain", "keep me");
    {
        LogCapture log;
        EXPECT_FALSE(ProjectSaver(dir.path() + "/plain/project").save(*store));
        EXPECT_EQ(log.count(Error, "Directory creation ERROR!!"), 5);
        EXPECT_GT(log.count(Error, "Could not write file: "), 0);
    }
    EXPECT_EQ(readFile(dir.path() + "/plain"), "keep me");

    // A record file that cannot be replaced keeps what is there, leaves no
    // temporary file behind, and the rest of the project is still saved.
    const QString project = dir.path() + "/p";
    ASSERT_TRUE(ProjectSaver(project).save(*store));
    QDir(project + "/Models").remove("tree.vmm");
    writeFile(project + "/Models/tree.vmm/inside", "blocked");
    store->surfaces[0]->maskChannel = 3;
    LogCapture log;
    EXPECT_FALSE(ProjectSaver(project).save(*store));
    EXPECT_EQ(log.count(Error), 1);
    EXPECT_EQ(QDir(project + "/Models").entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList{"tree.vmm"});
    EXPECT_EQ(readFile(project + "/Models/tree.vmm/inside"), "blocked");
    EXPECT_TRUE(readFile(project + "/Surfaces/Rock.vms").contains("<MaskChannel>3</MaskChannel>"));
}
