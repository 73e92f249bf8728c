#include "ImageSynthesizer.h"
#include "LayeredImage.h"
#include "ParameterCheck.h"
#include "SynthesizerFactory.h"

#include <gtest/gtest.h>

#include <memory>

// The panel flags exactly the values the engine refuses before a run: the
// two must not drift apart.
TEST(ParameterCheck, AgreesWithTheEnginesSettingsCheck)
{
    std::unique_ptr<Velmor::ImageSynthesizer> synthesizer(Velmor::createSynthesizer("Patch Based Blended"));
    ASSERT_TRUE(synthesizer && synthesizer->params);
    LayeredImage source; // owns its layers
    source.setLayer("color", new Image(8, 8, RGB));
    synthesizer->source = &source;
    auto* params = static_cast<Velmor::ImageSynthesizer::PatchSynthesizerParams*>(synthesizer->params);

    struct Case
    {
        int64_t width, height, size, boundary;
    };
    const Case cases[] = {{1024, 1024, 100, 20}, {0, 1024, 100, 20},   {32768, 8192, 100, 20}, {32768, 8193, 100, 20},
                          {32769, 1, 100, 20},   {64, 64, 0, 20},      {64, 64, 1, 0},         {64, 64, 10, -1},
                          {64, 64, 4096, 0},     {64, 64, 4096, 1},    {64, 64, 4000, 48},     {64, 64, 4000, 49}};
    for (const Case& c : cases) {
        params->targetWidth = uint32_t(c.width);
        params->targetHeight = uint32_t(c.height);
        params->patchSize = int32_t(c.size);
        params->patchBoundary = int32_t(c.boundary);
        const bool accepted = ParameterCheck::targetSize(c.width, c.height).isEmpty()
            && ParameterCheck::patchSize(c.size, c.boundary).isEmpty()
            && ParameterCheck::patchBoundary(c.size, c.boundary).isEmpty();
        EXPECT_EQ(accepted, synthesizer->checkSettings())
            << c.width << " x " << c.height << ", patch " << c.size << " boundary " << c.boundary;
    }
    synthesizer->source = nullptr;
}
