#pragma once

#include "SourceSearch.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

class Image;
class LayeredImage;

namespace tinyxml2 {
class XMLElement;
}

namespace Velmor {

class Patch;
class PixelDestGenerator;
class PixelSourceGenerator;

// Grows a larger layered image (the target) from a source layered image by
// copying square patches. The concrete synthesizers differ only in the patch
// they paste.
class ImageSynthesizer
{
public:
    class ImageSynthesizerParams
    {
    public:
        virtual ~ImageSynthesizerParams() = default;
        // "Patch Based Blended" or "Patch Based Cutout": the record's "Type".
        virtual std::string methodName() const = 0;
        // Copies the base fields into `other`, and the patch fields too when
        // `other` is of the same class; returns `other` as that class or null.
        virtual ImageSynthesizerParams* copyTo(ImageSynthesizerParams* other) const = 0;
        // Appends the child elements "Type", "TargetWidth", ... to `parent`.
        virtual void writeXml(tinyxml2::XMLElement* parent) const;
        // Reads the keys found under `parent`; absent ones keep their value.
        virtual void readXml(const tinyxml2::XMLElement* parent);

        uint32_t targetWidth = 1024;
        uint32_t targetHeight = 1024;
        bool useAllLayers = true;
    };

    class PatchSynthesizerParams : public ImageSynthesizerParams
    {
    public:
        void writeXml(tinyxml2::XMLElement* parent) const override;
        void readXml(const tinyxml2::XMLElement* parent) override;

        int32_t patchSize = 100;
        int32_t patchBoundary = 20;
        float errorThreshold = 0.1f;
        uint32_t maxTries = 20;
        // Random tries unless a record or caller asks for the structured
        // search; "SourceSearch" is written only when it is not the default,
        // so records that never set it stay as they were.
        SourceSearch sourceSearch = SourceSearch::Random;

    protected:
        // copyTo's common part: the base fields always, the patch fields when
        // `other` is of this very class; returns `other` then, else null.
        ImageSynthesizerParams* copyPatchFieldsTo(ImageSynthesizerParams* other) const;
    };

    using Progress = std::function<void(int)>;

    ImageSynthesizer() = default;
    ImageSynthesizer(const ImageSynthesizer&) = delete;
    ImageSynthesizer& operator=(const ImageSynthesizer&) = delete;
    virtual ~ImageSynthesizer();

    // Stores the source and maps; keeps the target when its size and layer
    // formats still match, otherwise makes a new zero-filled one.
    void setInputs(LayeredImage* source, int32_t targetWidth, int32_t targetHeight, Image* directionMap,
                   Image* scaleMap, Image* writeMask);
    void reset();
    // Hands the output to the caller, who owns it from now on; the
    // synthesizer is left without one.
    LayeredImage* detachTarget();
    // Forgets the source and maps, which it never owns, so that no pointer
    // outlives them.
    void forgetInputs();

    // Checks the parameters against the source before a run; logs an Error
    // naming each bad setting and returns false when nothing may run.
    bool checkSettings() const;

    // The patch loop. Runs until the destination generator is exhausted or
    // cancelRequested is set. startFilled 1 treats the whole target as
    // already filled.
    virtual void synthesize(PixelDestGenerator* destGenerator, PixelSourceGenerator* sourceGenerator,
                            Progress progress, int32_t startFilled);
    virtual ImageSynthesizer* clone() const = 0;
    virtual void onInputsSet(int) {}
    virtual void onReset() {}

    // An explicit seed makes a run reproducible; without one the seed comes
    // from the steady clock.
    void setSeed(std::optional<uint32_t> value) { seed = value; }
    // Whether the structured search may place patches across the source's
    // edges; unset, it looks whether the source tiles.
    void setSourceTiles(std::optional<bool> value) { sourceTiles = value; }

    bool targetReady = false;
    bool ownsTarget = true;
    ImageSynthesizerParams* params = nullptr;
    LayeredImage* target = nullptr;
    LayeredImage* source = nullptr;
    Image* directionMap = nullptr;
    Image* scaleMap = nullptr;
    Image* writeMask = nullptr;
    // Set from another thread to stop a run; polled by the loop.
    std::atomic<bool> cancelRequested{false};

protected:
    virtual Patch* preparePatch() = 0;
    PatchSynthesizerParams* patchParams() const { return static_cast<PatchSynthesizerParams*>(params); }

    std::optional<uint32_t> seed;
    std::optional<bool> sourceTiles;

private:
    void makeTarget(int32_t targetWidth, int32_t targetHeight);
    // The patch loop of the structured search; the setup is synthesize's.
    void synthesizeStructured(Patch* patch, PixelDestGenerator* destGenerator, PixelSourceGenerator* sourceGenerator,
                              const Progress& progress, std::vector<uint8_t>& filledMask, const Image* direction,
                              const Image* scaling);
};

} // namespace Velmor
