#include "ImageSynthesizer.h"
#include "LayeredImage.h"
#include "ViewSources.h"

#include <gtest/gtest.h>

using ProjectData = Velmor::ProjectData;

TEST(ViewSources, InputChoicesFollowTheSelectedRecord)
{
    ProjectData store;
    auto wood = std::make_unique<ProjectData::TextureData>();
    wood->name = "wood";
    ProjectData::TextureData* texture = wood.get();
    store.textures.push_back(std::move(wood));
    ProjectData::DirectionMapData* directions = store.addDirectionMap();
    directions->name = "flow";
    ProjectData::SurfaceData* surface = store.addSurface("Surface");
    surface->addLayer() = {"color", texture, ProjectData::LayerMode::Color};
    surface->addLayer() = {"height", nullptr, ProjectData::LayerMode::Displacement};
    surface->directionMap = directions;

    std::vector<ViewSources::InputChoice> choices = ViewSources::inputChoices(store, RecordRef(surface));
    ASSERT_EQ(choices.size(), 4u);
    EXPECT_EQ(choices[0].label, QStringLiteral("color (wood)"));
    EXPECT_EQ(choices[0].image, &texture->image);
    EXPECT_EQ(choices[1].image, nullptr); // a layer without texture shows nothing
    EXPECT_EQ(choices[2].label, QStringLiteral("Direction Map: flow"));
    EXPECT_EQ(choices[2].image, &directions->image);
    EXPECT_EQ(choices[3].label, QStringLiteral("Project Mask"));
    EXPECT_EQ(choices[3].image, &store.projectMask);

    choices = ViewSources::inputChoices(store, RecordRef(texture));
    ASSERT_EQ(choices.size(), 2u);
    EXPECT_EQ(choices[0].image, &texture->image);
    choices = ViewSources::inputChoices(store, RecordRef());
    ASSERT_EQ(choices.size(), 1u);
    EXPECT_EQ(choices[0].image, &store.projectMask);
}

TEST(ViewSources, OutputLayersComeFromTheSynthesizersTarget)
{
    ProjectData store;
    ProjectData::SurfaceData* surface = store.addSurface("Surface");
    ASSERT_NE(surface->synthesizer(), nullptr);
    EXPECT_TRUE(ViewSources::outputLayerNames(surface).empty());
    EXPECT_EQ(ViewSources::outputLayer(surface, "color"), nullptr);
    EXPECT_TRUE(ViewSources::outputLayerNames(nullptr).empty());

    LayeredImage source;
    source.setLayer("color", new Image(4, 4, RGB));
    source.setLayer("rough", new Image(4, 4, Gray));
    surface->synthesizer()->setInputs(&source, 8, 6, nullptr, nullptr, nullptr);
    surface->synthesizer()->forgetInputs();
    source.deleteLayers();

    EXPECT_EQ(ViewSources::outputLayerNames(surface), (std::vector<std::string>{"color", "rough"}));
    const Image* rough = ViewSources::outputLayer(surface, "rough");
    ASSERT_NE(rough, nullptr);
    EXPECT_EQ(rough->width, 8u);
    EXPECT_EQ(rough->format, Gray);
    EXPECT_EQ(ViewSources::outputLayer(surface, "missing"), nullptr);
}
