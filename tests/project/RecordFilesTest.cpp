#include "ProjectLoader.h"
#include "ProjectTestSupport.h"
#include "RecordFiles.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Velmor;

TEST(RecordFiles, MixedSurfaceFlagsAndEarlyRead)
{
    QTemporaryDir dir;
    const QString path = dir.path() + "/m.vmsm";
    ProjectData store;
    auto read = [&](const char* body) {
        writeFile(path, QByteArray("<MixedSurface Name=\"M\"><WhiteSurfaceID>0</WhiteSurfaceID>") + body
                            + "<Unknown>1</Unknown></MixedSurface>");
        return readMixedSurfaceFile(path, dir.path(), store);
    };
    // Read before any surface exists: the references stay null.
    ProjectData::MixedSurfaceData* early = read("<FreezeSurfaces>true</FreezeSurfaces>");
    ASSERT_NE(early, nullptr);
    EXPECT_EQ(early->whiteSurface, nullptr);
    EXPECT_TRUE(early->freezeWhiteSurface && early->freezeBlackSurface && early->synthesizeMask);

    // The specific flag wins over FreezeSurfaces, whatever the order.
    store.surfaces.front()->id = 0;
    ProjectData::MixedSurfaceData* late =
        read("<FreezeWhiteSurface>false</FreezeWhiteSurface><FreezeSurfaces>true</FreezeSurfaces>"
             "<SythesizeMask>false</SythesizeMask><MaskFilterMode>1</MaskFilterMode>");
    EXPECT_EQ(late->whiteSurface, early);
    EXPECT_FALSE(late->freezeWhiteSurface);
    EXPECT_TRUE(late->freezeBlackSurface);
    EXPECT_FALSE(late->synthesizeMask);
    EXPECT_EQ(late->maskFilterMode, 1);
}

TEST(RecordFiles, DamagedRecordsAreSkippedAndTheRestLoads)
{
    QTemporaryDir dir;
    const QByteArray image = writeTestImage(dir.path() + "/img.png", 4, 4, RGB).toUtf8();
    const QString root = dir.path() + "/project/";
    const std::vector<std::pair<const char*, QByteArray>> files = {
        {"Textures/a_good.vmt", "<Texture Name=\"Good\"><TexturePath>" + image + "</TexturePath><ID>0</ID></Texture>"},
        {"Textures/b_same.vmt", "<Texture Name=\"Good\"><ID>1</ID><TexturePath>" + image + "</TexturePath></Texture>"},
        {"Textures/malformed.vmt", "<Texture Name=\"X\"><ID>1</Texture>"},
        {"Textures/noPath.vmt", "<Texture Name=\"X\"><ID>1</ID></Texture>"},
        {"Textures/textId.vmt", "<Texture Name=\"X\"><TexturePath>" + image + "</TexturePath><ID>one</ID></Texture>"},
        {"Textures/wrongRoot.vmt", "<Model Name=\"X\"/>"},
        {"Textures/notes.txt", "ignored"},
        {"Surfaces/noMode.vms", "<Surface Name=\"A\"><Layer Name=\"L\"><TextureID>0</TextureID></Layer></Surface>"},
        {"Surfaces/textValues.vms", "<Surface Name=\"B\"><MaskChannel>red</MaskChannel><Masked>maybe</Masked>"
                                    "<Layer Name=\"L\"><TextureID>1</TextureID><Mode>1</Mode></Layer></Surface>"},
        {"Models/m.vmm", "<Model Name=\"M\"><ModelPath>/m.obj</ModelPath></Model>"}};
    for (const auto& [name, content] : files)
        writeFile(root + name, content);

    LogCapture log;
    std::unique_ptr<ProjectData> store = ProjectLoader(dir.path() + "/project").load();
    // 3 broken textures, a layer without mode, a model without "Transform"; wrong root: silent.
    EXPECT_EQ(log.count(Error, "XML parse error: "), 5);
    ASSERT_EQ(store->textures.size(), 2u);
    EXPECT_EQ(store->textures[1]->name, "Good"); // names from files are not made unique
    ASSERT_EQ(store->surfaces.size(), 1u);
    const ProjectData::SurfaceData& surface = *store->surfaces[0];
    EXPECT_TRUE(surface.maskChannel == 0 && !surface.masked); // unreadable values: defaults
    EXPECT_EQ(surface.layers[0].texture, store->textures[1].get());
    EXPECT_EQ(surface.layers[0].mode, ProjectData::LayerMode::Normal);
    EXPECT_EQ(log.count(Error, root + "Textures/malformed.vmt"), 1); // the parse error names its file
}

TEST(RecordFiles, OutOfRangeValuesWarnWithFileKeyAndValueAndKeepDefaults)
{
    QTemporaryDir dir;
    const QString root = dir.path() + "/project/";
    writeFile(root + "Surfaces/a.vms",
              "<Surface Name=\"A\"><ID>0</ID>"
              "<Layer Name=\"L1\"><Mode>-1</Mode></Layer><Layer Name=\"L2\"><Mode>6</Mode></Layer>"
              "<Layer Name=\"L3\"><Mode>99</Mode></Layer><Layer Name=\"L4\"><Mode>5</Mode></Layer>"
              "<Synthesizer Type=\"Patch Based Blended\"><TargetWidth>64</TargetWidth><TargetHeight>64</TargetHeight>"
              "<PatchSize>40</PatchSize><PatchBoundary>20</PatchBoundary><MaxTries>-1</MaxTries></Synthesizer>"
              "<Synthesizer Type=\"Patch Based Cutout\"><PatchSize>0</PatchSize><MaxTries>12</MaxTries></Synthesizer>"
              "</Surface>");
    writeFile(root + "Surfaces/m.vmsm", "<MixedSurface Name=\"M\"><ID>1</ID><MaskFilterMode>7</MaskFilterMode>"
                                        "<WhiteSurfaceID>1</WhiteSurfaceID><BlackSurfaceID>9</BlackSurfaceID>"
                                        "</MixedSurface>");
    LogCapture log;
    std::unique_ptr<ProjectData> store = ProjectLoader(dir.path() + "/project").load();
    ASSERT_EQ(store->surfaces.size(), 2u);
    const ProjectData::SurfaceData& surface = *store->surfaces[0];
    std::vector<int> modes;
    for (const auto& layer : surface.layers)
        modes.push_back(int(layer.mode));
    EXPECT_EQ(modes, (std::vector<int>{0, 0, 0, 5}));
    const QString file = root + "Surfaces/a.vms: ";
    for (const char* text : {"Mode -1 is out of range", "Mode 6 is out of range", "Mode 99 is out of range",
                             "MaxTries -1 is out of range", "PatchSize 0 is out of range"})
        EXPECT_EQ(log.count(Warning, file + text), 1) << text;
    EXPECT_EQ(log.count(Warning, "PatchSize 40 with PatchBoundary 20 makes patches of 80 pixels"), 1);
    auto* blended = static_cast<ImageSynthesizer::PatchSynthesizerParams*>(surface.synthesizers[0]->params);
    auto* cutout = static_cast<ImageSynthesizer::PatchSynthesizerParams*>(surface.synthesizers[1]->params);
    EXPECT_TRUE(blended->maxTries == 20u && blended->patchSize == 40); // 20 and 100: the defaults
    EXPECT_TRUE(cutout->patchSize == 100 && cutout->maxTries == 12);

    const auto& mixed = static_cast<const ProjectData::MixedSurfaceData&>(*store->surfaces[1]);
    EXPECT_EQ(mixed.maskFilterMode, 0);
    EXPECT_EQ(log.count(Warning, root + "Surfaces/m.vmsm: MaskFilterMode 7 is out of range"), 1);
    EXPECT_EQ(log.count(Warning, "WhiteSurfaceID 1, which is the mixed surface itself"), 1);
    EXPECT_EQ(log.count(Warning, "BlackSurfaceID 9, which names no loaded surface"), 1);
}
