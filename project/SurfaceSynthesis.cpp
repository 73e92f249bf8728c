#include "SurfaceSynthesis.h"

#include "LogMessage.h"
#include "MixedSurfaceSynthesis.h"
#include "PDGBoundary.h"
#include "PDG_GridAll.h"
#include "PSGBoundaryAll.h"
#include "PSGMasked.h"
#include "RunProgress.h"

#include <algorithm>
#include <memory>

namespace Velmor {

namespace {

// Clears the current synthesizer when a pass ends, however it ends.
class CurrentSynthesizer
{
public:
    CurrentSynthesizer(SurfaceSynthesisContext& runContext, ImageSynthesizer& synthesizer)
        : context(runContext)
    {
        context.currentSynthesizer = &synthesizer;
    }
    ~CurrentSynthesizer() { context.currentSynthesizer = nullptr; }

private:
    SurfaceSynthesisContext& context;
};

// One synthesize call on inputs already set. The settings are checked here
// first, so that a refused run is known (the check logs each problem once;
// the engine's own check then passes silently).
bool runPass(SurfaceSynthesisContext& context, ImageSynthesizer& synthesizer, PixelDestGenerator& destination,
             PixelSourceGenerator& source, const ImageSynthesizer::Progress& progress, int32_t startFilled)
{
    if (context.cancelRequested)
        return false;
    if (!synthesizer.target || !synthesizer.checkSettings())
        return false;
    synthesizer.setSeed(context.seed);
    {
        CurrentSynthesizer running(context, synthesizer);
        // A cancel that arrived between the check above and here would be
        // cleared by synthesize; the context's flag still ends the run after it.
        synthesizer.synthesize(&destination, &source, progress, startFilled);
    }
    return !context.cancelRequested;
}

} // namespace

void requestCancel(SurfaceSynthesisContext& context)
{
    context.cancelRequested = true;
    if (ImageSynthesizer* running = context.currentSynthesizer.load())
        running->cancelRequested = true;
}

bool gatherSurfaceLayers(const ProjectData::SurfaceData& surface, LayeredImage& input)
{
    for (const ProjectData::SurfaceLayer& layer : surface.layers) {
        if (!layer.texture) {
            logMessage(Error, QStringLiteral("Layer '%1' of surface '%2' has no texture; nothing is synthesized.")
                                  .arg(QString::fromStdString(layer.name), QString::fromStdString(surface.name)));
            return false;
        }
        if (!layer.texture->usable()) {
            logMessage(Error, QStringLiteral("%1; layer '%2' of surface '%3' cannot be synthesized.")
                                  .arg(layer.texture->unusableReason(), QString::fromStdString(layer.name),
                                       QString::fromStdString(surface.name)));
            return false;
        }
        input.setLayer(layer.name, &layer.texture->image);
    }
    if (surface.masked && surface.maskTexture && !surface.maskTexture->usable()) {
        logMessage(Error, QStringLiteral("%1; it is the mask of surface '%2', which cannot be synthesized.")
                              .arg(surface.maskTexture->unusableReason(), QString::fromStdString(surface.name)));
        return false;
    }
    return true;
}

SurfacePassSettings passSettingsOf(const ProjectData::SurfaceData& surface)
{
    SurfacePassSettings settings;
    settings.masked = surface.masked;
    settings.makeInputSeamless = surface.makeInputSeamless;
    if (surface.directionMap && surface.useDirectionMap)
        settings.directionMap = &surface.directionMap->image;
    if (surface.scaleMap && surface.useScaleMap)
        settings.scaleMap = &surface.scaleMap->image;
    return settings;
}

bool runSurfacePasses(SurfaceSynthesisContext& context, ImageSynthesizer& synthesizer, LayeredImage& input,
                      const SurfacePassSettings& settings, const ImageSynthesizer::Progress& progress)
{
    // Masked surfaces take masked sources and repair by re-synthesizing the
    // whole copy; others repair only the patches across the wrapping seams.
    PSGBoundaryAll boundaryAllSource;
    PSGMasked maskedSource;
    PDG_GridAll gridDestination;
    PDGBoundary boundaryDestination;
    PixelSourceGenerator& source = settings.masked ? static_cast<PixelSourceGenerator&>(maskedSource)
                                                   : static_cast<PixelSourceGenerator&>(boundaryAllSource);
    PixelDestGenerator& seamDestination = settings.masked ? static_cast<PixelDestGenerator&>(gridDestination)
                                                          : static_cast<PixelDestGenerator&>(boundaryDestination);

    const int32_t targetWidth = int32_t(synthesizer.params->targetWidth);
    const int32_t targetHeight = int32_t(synthesizer.params->targetHeight);
    const bool guided = settings.directionMap || settings.scaleMap;

    const RunProgress run(progress);
    if (!settings.makeInputSeamless || !guided) {
        if (context.cancelRequested)
            return false;
        synthesizer.setInputs(&input, targetWidth, targetHeight, settings.directionMap, settings.scaleMap, nullptr);
        const bool done = runPass(context, synthesizer, gridDestination, source, run.stage(0, 100), 0);
        synthesizer.forgetInputs();
        return done;
    }

    // Seam repair: a clone synthesizes over a copy of the input at its own
    // size, so that the guided main pass samples a source that tiles.
    std::unique_ptr<ImageSynthesizer> repairer(synthesizer.clone());
    if (!repairer || context.cancelRequested)
        return false;
    const Image* first = input.layers.empty() ? nullptr : input.layers[0];
    const int32_t inputWidth = first ? int32_t(first->width) : 0;
    const int32_t inputHeight = first ? int32_t(first->height) : 0;
    // The two passes share the bar by the pixels they cover.
    const double inputPixels = double(inputWidth) * inputHeight;
    const double targetPixels = double(targetWidth) * targetHeight;
    const int repairShare = int(100.0 * inputPixels / std::max(1.0, inputPixels + targetPixels));
    repairer->setInputs(&input, inputWidth, inputHeight, nullptr, nullptr, nullptr);
    if (repairer->target)
        input.copyTo(*repairer->target);
    // Unmasked surfaces mend their seams against the copy around them; masked
    // ones grow the whole copy anew from the masked sources alone.
    const bool repairedFully
        = runPass(context, *repairer, seamDestination, source, run.stage(0, repairShare), settings.masked ? 0 : 1);

    // Detach the repaired image so that it survives the clone.
    std::unique_ptr<LayeredImage> repaired(repairer->detachTarget());
    repairer->forgetInputs();
    repairer.reset();
    if (!repairedFully || !repaired)
        return false;

    synthesizer.setInputs(repaired.get(), targetWidth, targetHeight, settings.directionMap, settings.scaleMap, nullptr);
    const bool done
        = runPass(context, synthesizer, gridDestination, boundaryAllSource, run.stage(repairShare, 100), 0);
    synthesizer.forgetInputs();
    return done;
}

bool synthesizeSurface(SurfaceSynthesisContext& context, const ImageSynthesizer::Progress& progress)
{
    // Every run starts afresh: a cancel of an earlier run must not stop it.
    context.cancelRequested = false;
    ProjectData::SurfaceData* surface = context.surface;
    if (!surface)
        return false;
    logMessage(Info, QStringLiteral("\nSynthesizing surface ") + QString::fromStdString(surface->name));

    if (auto* mixed = dynamic_cast<ProjectData::MixedSurfaceData*>(surface))
        return synthesizeMixedSurface(context, *mixed, progress);

    ImageSynthesizer* synthesizer = surface->synthesizer();
    if (!synthesizer) {
        logMessage(Error, QStringLiteral("Surface '%1' has no synthesizer.").arg(QString::fromStdString(surface->name)));
        return false;
    }
    BorrowedLayers input;
    if (!gatherSurfaceLayers(*surface, input.image))
        return false;
    if (surface->masked && surface->maskTexture) {
        input.image.mask = &surface->maskTexture->image;
        // A negative channel wraps to a large one, which the mask preparation
        // replaces by channel 0 like any channel the mask lacks.
        input.image.maskChannel = uint32_t(surface->maskChannel);
    }
    return runSurfacePasses(context, *synthesizer, input.image, passSettingsOf(*surface), progress);
}

} // namespace Velmor
