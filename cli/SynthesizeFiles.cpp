#include "SynthesizeFiles.h"

#include "CommandLine.h"
#include "ConsoleLog.h"
#include "ExitStatus.h"
#include "OutputLayers.h"
#include "PatchOptions.h"
#include "PbrPurpose.h"

#include "ImageFile.h"
#include "ImageSynthesizer.h"
#include "MethodNames.h"
#include "LayeredImage.h"
#include "LogMessage.h"
#include "NormalConvention.h"
#include "NormalMap.h"
#include "PDG_GridAll.h"
#include "PSGBoundaryAll.h"
#include "PSGMasked.h"
#include "SynthesizerFactory.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

struct LayerInput
{
    QString name;
    QString path;
    bool normal = false;
};

// Everything read from disk for one run. The source owns its layers.
struct Inputs
{
    LayeredImage source;
    std::vector<QString> paths; // parallel to the source layers
    std::unique_ptr<Image> directionMap;
    std::unique_ptr<Image> scaleMap;
    std::unique_ptr<Image> outputMask;
    std::unique_ptr<Image> sourceMask;

    void release()
    {
        source.mask = nullptr;
        source.deleteLayers();
        paths.clear();
        directionMap.reset();
        scaleMap.reset();
        outputMask.reset();
        sourceMask.reset();
    }
};

QByteArray text(const QString& s)
{
    return s.toLocal8Bit();
}

// The layers in the order of a PBR surface (color, normal, displacement,
// roughness, metalness, occlusion), then the freely named ones in command-line
// order. A later file for the same layer replaces an earlier one.
bool planLayers(const CommandLine& cl, std::vector<LayerInput>& layers, QString& error)
{
    QString purposePaths[pbrPurposeCount];
    std::vector<LayerInput> named;
    const auto replaceWarning = [](const QString& name, const QString& before, const QString& after) {
        logMessage(Warning, "Both '%s' and '%s' are the %s layer; using '%s'.", text(before).constData(),
                   text(after).constData(), text(name).constData(), text(after).constData());
    };
    const auto takePurpose = [&](int purpose, const QString& path) {
        if (!purposePaths[purpose].isEmpty())
            replaceWarning(pbrLayerName(purpose), purposePaths[purpose], path);
        purposePaths[purpose] = path;
    };

    for (const QString& path : cl.files) {
        const int purpose = pbrPurposeOfFile(path);
        if (purpose < 0) {
            error = QStringLiteral("cannot tell the layer of '%1' from its name; name it with --layer NAME=%1").arg(path);
            return false;
        }
        takePurpose(purpose, path);
    }
    for (const auto& [name, path] : cl.namedLayers) {
        const int purpose = pbrPurposeOfLayerName(name);
        if (purpose >= 0) {
            takePurpose(purpose, path);
            continue;
        }
        auto same = std::find_if(named.begin(), named.end(), [&](const LayerInput& l) { return l.name == name; });
        if (same != named.end()) {
            replaceWarning(name, same->path, path);
            same->path = path;
        } else {
            named.push_back({name, path, false});
        }
    }

    layers.clear();
    for (int purpose = 0; purpose < pbrPurposeCount; ++purpose)
        if (!purposePaths[purpose].isEmpty())
            layers.push_back({pbrLayerName(purpose), purposePaths[purpose], purpose == pbrNormalPurpose});
    layers.insert(layers.end(), named.begin(), named.end());
    return true;
}

// Cheap checks of every input file, so that a typo fails before any loading.
bool checkInputFile(const QString& path)
{
    const QFileInfo info(path);
    const char* reason = nullptr;
    if (!info.exists())
        reason = "no such file";
    else if (!info.isFile())
        reason = "not a file";
    else if (!info.isReadable())
        reason = "permission denied";
    if (!reason)
        return true;
    logMessage(Error, "Cannot read input file '%s': %s.", text(path).constData(), reason);
    return false;
}

// Loads one file; the loader's own errors are folded into a single line
// that names the file.
std::unique_ptr<Image> loadInput(ConsoleLog& console, const QString& path)
{
    auto image = std::make_unique<Image>();
    ImageFileInfo info;
    console.startCapture();
    const bool loaded = loadImage(info, path, *image);
    const QStringList errors = console.stopCapture();
    if (loaded && errors.isEmpty() && !image->isEmpty() && image->channels() > 0)
        return image;
    const QString reason = errors.isEmpty() ? QStringLiteral("no pixels") : errors.join(QStringLiteral("; "));
    logMessage(Error, "Cannot read input file '%s': %s", text(path).constData(), text(reason).constData());
    return nullptr;
}

// Red and green of 0..1 become a direction of -1..1.
std::unique_ptr<Image> toDirectionMap(const Image& file)
{
    auto map = std::make_unique<Image>(file.width, file.height, Normal);
    const uint32_t c = file.channels();
    const uint64_t pixels = file.pixelCount();
    for (uint64_t i = 0; i < pixels; ++i) {
        map->data[3 * i] = 2.0f * file.data[c * i] - 1.0f;
        map->data[3 * i + 1] = 2.0f * file.data[c * i + 1] - 1.0f;
    }
    return map;
}

std::unique_ptr<Image> firstChannel(std::unique_ptr<Image> file)
{
    if (file->format == Gray)
        return file;
    auto map = std::make_unique<Image>(file->width, file->height, Gray);
    const uint32_t c = file->channels();
    const uint64_t pixels = file->pixelCount();
    for (uint64_t i = 0; i < pixels; ++i)
        map->data[i] = file->data[c * i];
    return map;
}

bool loadLayers(ConsoleLog& console, const std::vector<LayerInput>& plan, Inputs& inputs)
{
    for (const LayerInput& layer : plan) {
        std::unique_ptr<Image> image = loadInput(console, layer.path);
        if (!image)
            return false;
        if (layer.normal && !convertToNormalLayer(*image))
            logMessage(Warning, "%s", normalLayerImportWarning);
        inputs.source.setLayer(layer.name.toStdString(), image.release());
        inputs.paths.push_back(layer.path);
    }
    return true;
}

bool loadMaps(ConsoleLog& console, const CommandLine& cl, Inputs& inputs)
{
    if (!cl.directionMap.isEmpty()) {
        std::unique_ptr<Image> file = loadInput(console, cl.directionMap);
        if (!file)
            return false;
        if (file->channels() < 2) {
            logMessage(Error, "Cannot use direction map '%s': it has one channel, but red and green hold the direction.",
                       text(cl.directionMap).constData());
            return false;
        }
        inputs.directionMap = toDirectionMap(*file);
    }
    if (!cl.scaleMap.isEmpty()) {
        std::unique_ptr<Image> file = loadInput(console, cl.scaleMap);
        if (!file)
            return false;
        inputs.scaleMap = firstChannel(std::move(file));
    }
    if (!cl.outputMask.isEmpty()) {
        inputs.outputMask = loadInput(console, cl.outputMask);
        if (!inputs.outputMask)
            return false;
    }
    if (!cl.sourceMask.isEmpty()) {
        inputs.sourceMask = loadInput(console, cl.sourceMask);
        if (!inputs.sourceMask)
            return false;
        if (cl.sourceMaskChannel >= inputs.sourceMask->channels())
            logMessage(Warning, "The source mask '%s' has no channel %u; channel 0 is used.",
                       text(cl.sourceMask).constData(), cl.sourceMaskChannel);
        inputs.source.mask = inputs.sourceMask.get();
        inputs.source.maskChannel = cl.sourceMaskChannel;
    }
    return true;
}

// The displacement layer's place in the PBR order (color, normal,
// displacement, ...).
constexpr int displacementPurpose = 2;

// Reads the normal layer in the convention the command line names, or the
// one its displacement layer shows; the layer keeps the flips, so it is
// written back the way it came.
void applyNormalConvention(const CommandLine& cl, Inputs& inputs)
{
    using Flip = CommandLine::NormalFlip;
    const std::string normalName = pbrLayerName(pbrNormalPurpose).toStdString();
    Image* normal = inputs.source.layer(normalName);
    if (!normal || normal->format != Normal)
        return;
    if (cl.normalFlip != Flip::Auto) {
        const bool x = cl.normalFlip == Flip::X || cl.normalFlip == Flip::XY;
        const bool y = cl.normalFlip == Flip::Y || cl.normalFlip == Flip::XY;
        flipNormalLayer(*normal, x, y);
        logMessage(Info, "Normal layer: reading X %s and Y %s, as --normal-flip says.", x ? "flipped" : "as stored",
                   y ? "flipped (green pointing down)" : "as stored (green pointing up)");
        return;
    }
    const Image* height = inputs.source.layer(pbrLayerName(displacementPurpose).toStdString());
    if (!height) {
        logMessage(Info, "Normal layer: no displacement layer to check its convention against; reading X and Y as "
                         "stored (use --normal-flip y for maps with green pointing down).");
        return;
    }
    const NormalConvention found = detectNormalConvention(*normal, *height);
    if (!found.decided) {
        logMessage(Warning, "Normal layer: its X and Y follow the displacement layer's slopes too weakly to tell "
                            "their signs (correlations %.2f and %.2f); reading them as stored.",
                   found.correlationX, found.correlationY);
        return;
    }
    flipNormalLayer(*normal, found.flipX, found.flipY);
    logMessage(Info, "Normal layer: green points %s and red points %s (as stored), since its X and Y correlate with "
                     "the displacement layer's downhill slope at %.2f and %.2f; %s.",
               found.flipY ? "down" : "up", found.flipX ? "left" : "right", found.correlationX, found.correlationY,
               found.flipX || found.flipY ? "reading the flipped components negated, and writing them back as they came"
                                          : "reading it as stored");
}

// Layers (and the source mask) of different sizes still synthesize: the
// source generator uses the smallest size.
void warnAboutSizes(const CommandLine& cl, const Inputs& inputs)
{
    const Image* first = inputs.source.layers.front();
    const auto differs = [&](const Image& image) { return image.width != first->width || image.height != first->height; };
    for (size_t i = 1; i < inputs.source.layerCount(); ++i) {
        const Image& image = *inputs.source.layers[i];
        if (differs(image))
            logMessage(Warning, "Layer '%s' ('%s') is %ux%u but layer '%s' is %ux%u; the smallest size is used.",
                       inputs.source.names[i].c_str(), text(inputs.paths[i]).constData(), image.width, image.height,
                       inputs.source.names[0].c_str(), first->width, first->height);
    }
    if (inputs.sourceMask && differs(*inputs.sourceMask))
        logMessage(Warning, "The source mask '%s' is %ux%u but layer '%s' is %ux%u; the smallest size is used.",
                   text(cl.sourceMask).constData(), inputs.sourceMask->width, inputs.sourceMask->height,
                   inputs.source.names[0].c_str(), first->width, first->height);
}

void applySettings(const CommandLine& cl, Velmor::ImageSynthesizer& synthesizer)
{
    Velmor::ImageSynthesizer::ImageSynthesizerParams* params = synthesizer.params;
    params->targetWidth = cl.width;
    params->targetHeight = cl.height;
    params->useAllLayers = !cl.firstLayerOnly;
    // Files have no record to keep: they get the search that keeps
    // structures.
    if (auto* patch = dynamic_cast<Velmor::ImageSynthesizer::PatchSynthesizerParams*>(params))
        patch->sourceSearch = Velmor::SourceSearch::Structured;
    applyPatchOptions(cl, params);
    synthesizer.setSeed(cl.seed);
    synthesizer.setSourceTiles(cl.sourceTiles);
}

} // namespace

int synthesizeFiles(const CommandLine& cl, ConsoleLog& console)
{
    std::vector<LayerInput> plan;
    QString error;
    if (!planLayers(cl, plan, error)) {
        logUsageError(error);
        return ExitUsage;
    }
    QStringList files;
    for (const LayerInput& layer : plan)
        files << layer.path;
    for (const QString* map : {&cl.directionMap, &cl.scaleMap, &cl.outputMask, &cl.sourceMask})
        if (!map->isEmpty())
            files << *map;
    for (const QString& file : files)
        if (!checkInputFile(file))
            return ExitFailure;
    const char* method = cl.cutout ? Velmor::cutoutMethodName : Velmor::blendedMethodName;
    std::unique_ptr<Velmor::ImageSynthesizer> synthesizer(Velmor::createSynthesizer(method));
    if (!synthesizer) {
        logMessage(Error, "The synthesis method '%s' is not available.", method);
        return ExitFailure;
    }
    applySettings(cl, *synthesizer);

    Inputs inputs;
    if (!loadLayers(console, plan, inputs) || !loadMaps(console, cl, inputs))
        return ExitFailure;
    applyNormalConvention(cl, inputs);
    warnAboutSizes(cl, inputs);

    // Refuse bad settings before the output is allocated.
    synthesizer->source = &inputs.source;
    if (!synthesizer->checkSettings())
        return ExitUsage;
    // Made only now, so that a failed run leaves no empty directory, but
    // before the long part, so that an unusable directory fails quickly.
    if (!prepareOutputDir(cl.outputDir))
        return ExitFailure;

    QStringList names;
    for (const std::string& name : inputs.source.names)
        names << QString::fromStdString(name);
    logMessage(Info, "Synthesizing %s to %ux%u (%s).", text(names.join(QStringLiteral(", "))).constData(), cl.width,
               cl.height, method);
    synthesizer->setInputs(&inputs.source, int32_t(cl.width), int32_t(cl.height), inputs.directionMap.get(),
                           inputs.scaleMap.get(), inputs.outputMask.get());
    Velmor::PDG_GridAll destination;
    Velmor::PSGBoundaryAll unmaskedSource;
    Velmor::PSGMasked maskedSource;
    Velmor::PixelSourceGenerator* source = inputs.sourceMask ? static_cast<Velmor::PixelSourceGenerator*>(&maskedSource)
                                                             : &unmaskedSource;
    synthesizer->synthesize(&destination, source, [&console](int percent) { console.progress(percent * synthesisShare / 100); }, 0);
    console.progress(synthesisShare);

    // The inputs are no longer needed: free them before saving.
    synthesizer->forgetInputs();
    inputs.release();

    std::unique_ptr<LayeredImage> output(synthesizer->detachTarget());
    synthesizer.reset();
    if (!output || output->layerCount() == 0) {
        logMessage(Error, "Nothing was written to '%s': the synthesis made no layers.", text(cl.outputDir).constData());
        return ExitFailure;
    }
    return saveOutputLayers(console, std::move(output), cl.outputDir,
                            cl.smallestFiles ? smallestPngLevel : fastPngLevel);
}
