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
}
