#include "BasicPatchSynthesizer.h"
#include "CutoutPatchSynthesizer.h"

#include <gtest/gtest.h>
#include <tinyxml2.h>

#include <string>
#include <vector>

using namespace Velmor;
using Basic = BasicPatchSynthesizer::BasicPatchSynthesizerParams;
using Cutout = CutoutPatchSynthesizer::CutoutPatchSynthesizerParams;
using Elements = std::vector<std::pair<std::string, std::string>>;

static Elements written(const ImageSynthesizer::ImageSynthesizerParams& params)
{
    tinyxml2::XMLDocument document;
    tinyxml2::XMLElement* parent = document.NewElement("Synthesizer");
    params.writeXml(parent);
    Elements out;
    for (const tinyxml2::XMLElement* e = parent->FirstChildElement(); e; e = e->NextSiblingElement())
        out.emplace_back(e->Name(), e->GetText() ? e->GetText() : "");
    return out;
}

static void read(ImageSynthesizer::ImageSynthesizerParams& params, const Elements& elements)
{
    std::string xml = "<Synthesizer>";
    for (const auto& [name, text] : elements)
        xml += "<" + name + ">" + text + "</" + name + ">";
    tinyxml2::XMLDocument document;
    ASSERT_EQ(document.Parse((xml + "</Synthesizer>").c_str()), tinyxml2::XML_SUCCESS);
    params.readXml(document.RootElement());
}

TEST(ParamsXml, ReadsAndWritesTheSameRecordInOrder)
{
    const Elements record = {
        {"Type", "Patch Based Cutout"}, {"TargetWidth", "2048"},    {"TargetHeight", "512"},
        {"UseAllLayers", "false"},      {"PatchSize", "64"},        {"PatchBoundary", "4294967295"},
        {"MaxTries", "7"},              {"ErrorThreshold", "0.25"}, {"Feather", "3"}};
    Cutout params;
    read(params, record);
    EXPECT_TRUE(params.targetWidth == 2048 && params.targetHeight == 512 && !params.useAllLayers);
    EXPECT_TRUE(params.patchSize == 64 && params.patchBoundary == -1 && params.maxTries == 7 && params.feather == 3);
    EXPECT_FLOAT_EQ(params.errorThreshold, 0.25f);
    EXPECT_EQ(written(params), record);

    // The blended record is the same without "Feather".
    const Elements blended = written(Basic());
    ASSERT_EQ(blended.size(), 8u);
    EXPECT_EQ(blended[0].second, "Patch Based Blended");
    EXPECT_EQ(blended[7].first, "ErrorThreshold");
}

TEST(ParamsXml, MissingOrBadElementsKeepCurrentValues)
{
    Cutout params, expected;
    read(params, {{"TargetWidth", "abc"}, {"PatchSize", ""}, {"ErrorThreshold", "x1"}, {"UseAllLayers", "maybe"},
                  {"MaxTries", "12"}, {"Feather", "-"}});
    params.readXml(nullptr); // no crash, nothing changes
    expected.maxTries = 12;
    EXPECT_EQ(written(params), written(expected));
}

TEST(ParamsXml, CopyToCopiesPatchFieldsOnlyBetweenLikeClasses)
{
    Cutout from, same;
    from.targetWidth = 300;
    from.patchSize = 50;
    from.feather = 8;
    Basic basic, other;
    EXPECT_EQ(from.copyTo(&basic), nullptr);
    EXPECT_TRUE(basic.targetWidth == 300 && basic.patchSize == 100); // base fields in any case
    EXPECT_EQ(from.copyTo(&same), &same);
    EXPECT_TRUE(same.patchSize == 50 && same.feather == 8);
    basic.patchSize = 70;
    EXPECT_EQ(basic.copyTo(&other), &other);
    EXPECT_EQ(other.patchSize, 70);
    EXPECT_EQ(basic.copyTo(&same), nullptr);
    EXPECT_EQ(same.patchSize, 50);
}
