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
    EXPECT_TRUE(early->freezeWhiteSurface && early->freezeBlackSurface);
    EXPECT_TRUE(early->synthesizeMask); // absent: default

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
    const QString image = writeTestImage(dir.path() + "/img.png", 4, 4, RGB);
    const QByteArray path = image.toUtf8();
    const QString textures = dir.path() + "/project/Textures/";
    writeFile(textures + "a_good.vmt", "<Texture Name=\"Good\"><TexturePath>" + path + "</TexturePath><ID>0</ID></Texture>");
    writeFile(textures + "b_same.vmt", "<Texture Name=\"Good\"><ID>1</ID><TexturePath>" + path + "</TexturePath></Texture>");
    writeFile(textures + "malformed.vmt", "<Texture Name=\"X\"><ID>1</Texture>");
    writeFile(textures + "noPath.vmt", "<Texture Name=\"X\"><ID>1</ID></Texture>");
    writeFile(textures + "textId.vmt", "<Texture Name=\"X\"><TexturePath>" + path + "</TexturePath><ID>one</ID></Texture>");
    writeFile(textures + "wrongRoot.vmt", "<Model Name=\"X\"/>");
    writeFile(textures + "notes.txt", "ignored");
    const QString surfaces = dir.path() + "/project/Surfaces/";
    writeFile(surfaces + "noMode.vms", "<Surface Name=\"A\"><Layer Name=\"L\"><TextureID>0</TextureID></Layer></Surface>");
    writeFile(surfaces + "textValues.vms", "<Surface Name=\"B\"><MaskChannel>red</MaskChannel><Masked>maybe</Masked>"
                                           "<Layer Name=\"L\"><TextureID>1</TextureID><Mode>1</Mode></Layer></Surface>");
    writeFile(dir.path() + "/project/Models/m.vmm", "<Model Name=\"M\"><ModelPath>/m.obj</ModelPath></Model>");

    LogCapture log;
    std::unique_ptr<ProjectData> store = ProjectLoader(dir.path() + "/project").load();
    // Three broken textures, one surface without a layer mode, one model
    // without "Transform"; the wrong root is skipped without a word.
    EXPECT_EQ(log.count(Error, "XML parse error: "), 5);
    ASSERT_EQ(store->textures.size(), 2u);
    EXPECT_EQ(store->textures[0]->name, "Good");
    EXPECT_EQ(store->textures[1]->name, "Good"); // names from files are not made unique
    EXPECT_EQ(store->textures[0]->image.width, 4u);
    EXPECT_TRUE(store->models.empty());
    ASSERT_EQ(store->surfaces.size(), 1u);
    const ProjectData::SurfaceData& surface = *store->surfaces[0];
    EXPECT_EQ(surface.maskChannel, 0);
    EXPECT_FALSE(surface.masked);
    EXPECT_EQ(surface.layers[0].texture, store->textures[1].get());
    EXPECT_EQ(surface.layers[0].mode, ProjectData::LayerMode::Normal);
}
