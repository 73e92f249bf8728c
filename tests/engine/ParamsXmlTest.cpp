#include "BasicPatchSynthesizer.h"
#include "CutoutPatchSynthesizer.h"

#include <gtest/gtest.h>
#include <tinyxml2.h>

#include <string>
#include <vector>

using namespace Velmor;
using Basic = BasicPatchSynthesizer::BasicPatchSynthesizerParams;
using Cutout = CutoutPatchSynthesizer::CutoutPatchSynthesizerParams;

namespace {

std::vector<std::pair<std::string, std::string>> children(const tinyxml2::XMLElement* parent)
{
    std::vector<std::pair<std::string, std::string>> out;
    for (const tinyxml2::XMLElement* e = parent->FirstChildElement(); e; e = e->NextSiblingElement())
        out.emplace_back(e->Name(), e->GetText() ? e->GetText() : "");
    return out;
}

} // namespace

TEST(ParamsXml, WritesInOrderAndReadsBack)
{
    Cutout params;
    params.targetWidth = 2048;
    params.targetHeight = 512;
    params.useAllLayers = false;
    params.patchSize = 64;
    params.patchBoundary = -1; // written as unsigned, read back as the same bits
    params.errorThreshold = 0.25f;
    params.maxTries = 7;
    params.feather = 3;

    tinyxml2::XMLDocument document;
    tinyxml2::XMLElement* root = document.NewElement("Synthesizer");
    document.InsertEndChild(root);
    params.writeXml(root);
    const std::vector<std::pair<std::string, std::string>> expected = {
        {"Type", "Patch Based Cutout"}, {"TargetWidth", "2048"},    {"TargetHeight", "512"},
        {"UseAllLayers", "false"},      {"PatchSize", "64"},        {"PatchBoundary", "4294967295"},
        {"MaxTries", "7"},              {"ErrorThreshold", "0.25"}, {"Feather", "3"}};
    EXPECT_EQ(children(root), expected);

    tinyxml2::XMLPrinter printer;
    document.Print(&printer);
    tinyxml2::XMLDocument reread;
    ASSERT_EQ(reread.Parse(printer.CStr()), tinyxml2::XML_SUCCESS);
    Cutout back;
    back.readXml(reread.RootElement());
    EXPECT_EQ(back.targetWidth, 2048u);
    EXPECT_EQ(back.targetHeight, 512u);
    EXPECT_FALSE(back.useAllLayers);
    EXPECT_EQ(back.patchSize, 64);
    EXPECT_EQ(back.patchBoundary, -1);
    EXPECT_FLOAT_EQ(back.errorThreshold, 0.25f);
    EXPECT_EQ(back.maxTries, 7u);
    EXPECT_EQ(back.feather, 3);

    // The blended record has no "Feather".
    Basic basic;
    tinyxml2::XMLElement* other = document.NewElement("Other");
    basic.writeXml(other);
    const auto written = children(other);
    ASSERT_EQ(written.size(), 8u);
    EXPECT_EQ(written[0], (std::pair<std::string, std::string>{"Type", "Patch Based Blended"}));
    EXPECT_EQ(written[7].first, "ErrorThreshold");
}

TEST(ParamsXml, MissingOrBadElementsKeepCurrentValues)
{
    tinyxml2::XMLDocument document;
    ASSERT_EQ(document.Parse("<S><TargetWidth>abc</TargetWidth><PatchSize></PatchSize>"
                             "<ErrorThreshold>x1</ErrorThreshold><UseAllLayers>maybe</UseAllLayers>"
                             "<MaxTries>12</MaxTries><Feather>-</Feather></S>"),
              tinyxml2::XML_SUCCESS);
    Cutout params;
    params.readXml(document.RootElement());
    EXPECT_EQ(params.targetWidth, 1024u);
    EXPECT_EQ(params.targetHeight, 1024u);
    EXPECT_TRUE(params.useAllLayers);
    EXPECT_EQ(params.patchSize, 100);
    EXPECT_EQ(params.patchBoundary, 20);
    EXPECT_FLOAT_EQ(params.errorThreshold, 0.1f);
    EXPECT_EQ(params.maxTries, 12u);
    EXPECT_EQ(params.feather, 4);
    params.readXml(nullptr); // no crash, nothing changes
    EXPECT_EQ(params.maxTries, 12u);
}

TEST(ParamsXml, CopyToCopiesPatchFieldsOnlyBetweenLikeClasses)
{
    Cutout from;
    from.targetWidth = 300;
    from.patchSize = 50;
    from.feather = 8;
    Basic basic;
    EXPECT_EQ(from.copyTo(&basic), nullptr);
    EXPECT_EQ(basic.targetWidth, 300u); // base fields in any case
    EXPECT_EQ(basic.patchSize, 100);
    Cutout same;
    EXPECT_EQ(from.copyTo(&same), &same);
    EXPECT_EQ(same.patchSize, 50);
    EXPECT_EQ(same.feather, 8);
    Basic other;
    basic.patchSize = 70;
    EXPECT_EQ(basic.copyTo(&other), &other);
    EXPECT_EQ(other.patchSize, 70);
    EXPECT_EQ(basic.copyTo(&same), nullptr);
    EXPECT_EQ(same.patchSize, 50);
}
