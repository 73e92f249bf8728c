#include "ImageSynthesizer.h"
#include "ProjectLoader.h"
#include "ProjectSaver.h"
#include "ProjectTestSupport.h"
#include "../ChildWithFileLimit.h"

#include <QDirIterator>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdio>
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

// One record of every kind, a frozen mixed cache, stale IDs. Names sort in
// list order, as the loader lists files by name.
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
    static_cast<ImageSynthesizer::PatchSynthesizerParams*>(rock->synthesizer()->params)->sourceSearch =
        SourceSearch::Structured;
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
    mix->freezeMask = mix->freezeWhiteSurface = mix->tileBlackSurface = true;
    SurfaceSynthesisContext& context = *mix->synthesisContext;
    context.maskResult = std::make_unique<LayeredImage>();
    context.maskResult->setLayer("Mask", new Image(patternImage(16, 16, Gray)));
    context.whiteResult = std::make_unique<LayeredImage>();
    context.whiteResult->setLayer("Color", new Image(patternImage(16, 16, RGB)));
    context.whiteResult->setLayer("Normal", new Image(patternImage(16, 16, Normal)));
    mix->updateMixedLayers();

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
    EXPECT_TRUE(original->textures[0]->id == 0 && original->surfaces[0]->id == 0
                && original->directionMaps[0]->id == 0); // renumbered
    const QByteArray sandXml = readFile(first + "/Surfaces/Sand.vms");
    EXPECT_TRUE(sandXml.startsWith("<Surface Name=\"Sand\">\n    <ID>1</ID>\n    <Masked>false</Masked>\n"
                                   "    <MaskTextureID>-1</MaskTextureID>\n"));
    EXPECT_FALSE(sandXml.contains("<DirectionMap>")); // written only when set
    EXPECT_FALSE(sandXml.contains("SourceSearch"));  // likewise
    EXPECT_TRUE(readFile(first + "/Surfaces/Rock.vms").contains("<SourceSearch>Structured</SourceSearch>"));

    // Identical files show that every saved value and reference survived the load.
    LogCapture log;
    std::unique_ptr<ProjectData> loaded = ProjectLoader(first).load();
    EXPECT_EQ(log.count(Warning) + log.count(Error), 0);
    ASSERT_TRUE(ProjectSaver(second).save(*loaded));
    const auto files = filesBelow(first);
    EXPECT_EQ(files.size(), 11u); // mask, 3 textures, model, 2 maps, 3 surfaces, mixed cache
    EXPECT_EQ(files.count("/Cache/Surface2.cache"), 1u);
    EXPECT_TRUE(files == filesBelow(second));

    ASSERT_EQ(loaded->textures.size(), 3u);
    EXPECT_TRUE(samePixels(loaded->textures[2]->image, original->textures[2]->image)); // the normal map
    EXPECT_TRUE(loaded->textures[2]->image.flipNormalX);
    ASSERT_EQ(loaded->surfaces.size(), 3u);
    const ProjectData::SurfaceData& rock = *loaded->surfaces[0];
    EXPECT_EQ(rock.layers[1].texture, loaded->textures[2].get());
    EXPECT_EQ(rock.maskTexture, loaded->textures[1].get());
    EXPECT_EQ(rock.scaleMap, loaded->scaleMaps[0].get());
    const auto searchOf = [](const ProjectData::SurfaceData& surface) {
        return static_cast<const ImageSynthesizer::PatchSynthesizerParams*>(surface.synthesizer()->params)
            ->sourceSearch;
    };
    EXPECT_EQ(searchOf(rock), SourceSearch::Structured);
    EXPECT_EQ(searchOf(*loaded->surfaces[1]), SourceSearch::Random);
    EXPECT_EQ(loaded->surfaces[1]->layers[1].texture, nullptr);
    auto* mix = dynamic_cast<ProjectData::MixedSurfaceData*>(loaded->surfaces[2].get());
    ASSERT_NE(mix, nullptr);
    EXPECT_EQ(mix->whiteSurface, &rock);
    EXPECT_EQ(mix->blackSurface, loaded->surfaces[1].get());
    EXPECT_EQ(mix->layers.size(), 2u);
}

TEST(ProjectSaveLoad, DirectoryQuirksAndUnsafeNames)
{
    QTemporaryDir dir;
    std::unique_ptr<ProjectData> store = makeProject(dir.path());
    const QString project = dir.path() + "/p";
    ASSERT_TRUE(ProjectSaver(project).save(*store));

    // Unsafe or colliding names still give one file per record and load back as they were.
    store->surfaces[0]->name = "Rock/Moss";
    store->surfaces[1]->name = "Rock_Moss";
    store->scaleMaps[0]->name = "..";
    ASSERT_TRUE(ProjectSaver(project).save(*store));
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
    LogCapture noFolder;
    EXPECT_FALSE(ProjectSaver(dir.path() + "/plain/project").save(*store));
    EXPECT_EQ(noFolder.count(Error, "Directory creation ERROR!!"), 5);
    EXPECT_GT(noFolder.count(Error, "Could not write file: "), 0);
    EXPECT_EQ(readFile(dir.path() + "/plain"), "keep me");

    // A record file that cannot be replaced stays, with no temporary file; the rest is saved.
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

TEST(ProjectSaveLoad, HiddenNamesAndMapNamesWithSpacesRoundTripWithoutCopies)
{
    QTemporaryDir dir;
    std::unique_ptr<ProjectData> store = makeProject(dir.path());
    store->surfaces[1]->name = ".wip";
    store->directionMaps[0]->name = "Dir Map"; // set by hand, bypassing the store
    ProjectData::ScaleMapData* second = store->addScaleMap();
    store->renameScaleMap(second, "Scale\tMap");
    EXPECT_EQ(second->name, "Scale_Map");
    store->renameScaleMap(second, "ScaleMap"); // taken by the first scale map
    EXPECT_EQ(second->name, "ScaleMap_1");

    const QString project = dir.path() + "/p";
    ASSERT_TRUE(ProjectSaver(project).save(*store));
    EXPECT_EQ(store->directionMaps[0]->name, "Dir_Map");
    for (int round = 0; round < 2; ++round) {
        std::unique_ptr<ProjectData> loaded = ProjectLoader(project).load();
        ASSERT_EQ(loaded->surfaces.size(), 3u);
        EXPECT_EQ(loaded->surfaces[0]->name, ".wip");
        ASSERT_EQ(loaded->directionMaps.size(), 1u);
        EXPECT_EQ(loaded->directionMaps[0]->name, "Dir_Map");
        ASSERT_TRUE(ProjectSaver(project).save(*loaded));
    }
    EXPECT_EQ(QDir(project + "/Utilities").entryList(QDir::Files),
              (QStringList{"Dir_Map.vdm", "ScaleMap.vsm", "ScaleMap_1.vsm"}));
}

TEST(ProjectSaveLoad, AFullDiskKeepsEveryOldFileAndFailsTheSave)
{
    QTemporaryDir dir;
    std::unique_ptr<ProjectData> store = makeProject(dir.path());
    const QString project = dir.path() + "/p";
    ASSERT_TRUE(ProjectSaver(project).save(*store));
    const auto before = filesBelow(project);

    store->surfaces[0]->maskChannel = 3;
    store->projectMask.pixelAt(9, 9)[0] = 0.5f;
    store->directionMaps[0]->image.pixelAt(9, 9)[0] = 0.5f;
    EXPECT_EQ(writeWithFileLimit(100, [&] { return ProjectSaver(project).save(*store); }),
              LimitedWrite::FailedWithReason);
    EXPECT_EQ(filesBelow(project), before); // nothing replaced, no temporary left over
}

TEST(ProjectSaveLoad, ARecordFileNameThatIsNotUtf8IsReported)
{
    QTemporaryDir dir;
    const QByteArray folder = QFile::encodeName(dir.path() + "/Surfaces");
    ASSERT_TRUE(QDir().mkpath(dir.path() + "/Surfaces"));
    FILE* file = std::fopen((folder + "/bad\xff.vms").constData(), "wb");
    ASSERT_NE(file, nullptr);
    std::fputs("<Surface Name=\"Bad\"/>", file);
    std::fclose(file);
    LogCapture log;
    std::unique_ptr<ProjectData> loaded = ProjectLoader(dir.path()).load();
    EXPECT_EQ(log.count(Warning, "is not valid UTF-8"), 1);
    EXPECT_TRUE(loaded->surfaces.empty());
    std::remove((folder + "/bad\xff.vms").constData()); // QTemporaryDir cannot name it
}
