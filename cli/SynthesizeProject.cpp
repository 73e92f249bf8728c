#include "SynthesizeProject.h"

#include "CommandLine.h"
#include "ConsoleLog.h"
#include "ExitStatus.h"
#include "OutputLayers.h"
#include "PatchOptions.h"

#include "CutoutPatchSynthesizer.h"
#include "ImageSynthesizer.h"
#include "MethodNames.h"
#include "LogMessage.h"
#include "ProjectListing.h"
#include "ProjectLoader.h"
#include "ProjectSaver.h"
#include "SurfaceSynthesis.h"
#include "SurfaceSynthesisContext.h"

#include <QFileInfo>

#include <cstdio>
#include <memory>
#include <vector>

using Velmor::ImageSynthesizer;
using Velmor::ProjectData;

namespace {

QByteArray text(const QString& s)
{
    return s.toLocal8Bit();
}

std::unique_ptr<ProjectData> loadProject(const QString& dir)
{
    if (!QFileInfo(dir).isDir()) {
        logMessage(Error, "Cannot read project '%s': no such directory.", text(dir).constData());
        return nullptr;
    }
    return Velmor::ProjectLoader(dir).load();
}

// The synthesizer settings of the surfaces a run uses, so that overrides
// given on the command line do not end up in a saved project.
class SavedSettings
{
public:
    void keep(ProjectData::SurfaceData* surface)
    {
        if (!surface)
            return;
        Entry entry{surface, surface->currentSynthesizerIndex, {}};
        for (const auto& synthesizer : surface->synthesizers)
            entry.copies.emplace_back(synthesizer->clone());
        entries.push_back(std::move(entry));
    }

    void restore()
    {
        for (Entry& entry : entries) {
            entry.surface->currentSynthesizerIndex = entry.index;
            for (size_t i = 0; i < entry.copies.size() && i < entry.surface->synthesizers.size(); ++i)
                if (entry.copies[i])
                    entry.copies[i]->params->copyTo(entry.surface->synthesizers[i]->params);
        }
    }

private:
    struct Entry
    {
        ProjectData::SurfaceData* surface;
        size_t index;
        std::vector<std::unique_ptr<ImageSynthesizer>> copies;
    };
    std::vector<Entry> entries;
};

// The surfaces whose synthesizers do the work: a mixed surface synthesizes
// its white and black surfaces with their own synthesizers.
std::vector<ProjectData::SurfaceData*> workingSurfaces(ProjectData::SurfaceData& surface)
{
    std::vector<ProjectData::SurfaceData*> surfaces{&surface};
    if (auto* mixed = dynamic_cast<ProjectData::MixedSurfaceData*>(&surface)) {
        for (ProjectData::SurfaceData* part : {mixed->whiteSurface, mixed->blackSurface})
            if (part && part != &surface)
                surfaces.push_back(part);
    }
    return surfaces;
}

// Applies the engine options given; returns an ExitStatus, a usage error when
// they do not fit the surface's synthesizer.
int applyOverrides(const CommandLine& cl, ProjectData::SurfaceData& surface)
{
    const char* method = cl.cutout ? Velmor::cutoutMethodName : Velmor::blendedMethodName;
    for (ProjectData::SurfaceData* part : workingSurfaces(surface)) {
        if (cl.methodGiven && !part->selectSynthesizer(method)) {
            logMessage(Error, "The synthesis method '%s' is not available.", method);
            return ExitFailure;
        }
        ImageSynthesizer* synthesizer = part->synthesizer();
        if (!synthesizer)
            continue;
        applyPatchOptions(cl, synthesizer->params);
        synthesizer->setSourceTiles(cl.sourceTiles);
    }
    ImageSynthesizer* own = surface.synthesizer();
    if (!own) {
        logMessage(Error, "Surface '%s' has no synthesizer.", surface.name.c_str());
        return ExitFailure;
    }
    if (cl.sizeGiven) {
        own->params->targetWidth = cl.width;
        own->params->targetHeight = cl.height;
    }
    if (cl.feather && !dynamic_cast<Velmor::CutoutPatchSynthesizer::CutoutPatchSynthesizerParams*>(own->params)) {
        logUsageError(QStringLiteral("--feather needs the cutout method, but surface '%1' uses '%2'")
                          .arg(QString::fromStdString(surface.name), QString::fromStdString(own->params->methodName())));
        return ExitUsage;
    }
    return ExitSuccess;
}

ProjectData::SurfaceData* findSurface(ProjectData& store, const QString& name)
{
    const std::string wanted = name.toStdString();
    for (const auto& surface : store.surfaces)
        if (surface->name == wanted)
            return surface.get();
    return nullptr;
}

} // namespace

int listProject(const CommandLine& cl)
{
    std::unique_ptr<ProjectData> store = loadProject(cl.projectDir);
    if (!store)
        return ExitFailure;
    std::fputs(projectListing(*store).toLocal8Bit().constData(), stdout);
    std::fflush(stdout);
    return ExitSuccess;
}

int synthesizeProjectSurface(const CommandLine& cl, ConsoleLog& console)
{
    std::unique_ptr<ProjectData> store = loadProject(cl.projectDir);
    if (!store)
        return ExitFailure;
    ProjectData::SurfaceData* surface = findSurface(*store, cl.surfaceName);
    if (!surface) {
        logMessage(Error, "Project '%s' has no surface named '%s'.", text(cl.projectDir).constData(),
                   text(cl.surfaceName).constData());
        return ExitFailure;
    }

    SavedSettings saved;
    for (ProjectData::SurfaceData* part : workingSurfaces(*surface))
        saved.keep(part);
    if (const int status = applyOverrides(cl, *surface); status != ExitSuccess)
        return status;
    if (!prepareOutputDir(cl.outputDir))
        return ExitFailure;

    Velmor::SurfaceSynthesisContext& context = *surface->synthesisContext;
    context.seed = cl.seed;
    const bool complete =
        Velmor::synthesizeSurface(context, [&console](int percent) { console.progress(percent * synthesisShare / 100); });
    console.progress(synthesisShare);

    // Detach the output; it is freed layer by layer as it is written.
    ImageSynthesizer* synthesizer = surface->synthesizer();
    std::unique_ptr<LayeredImage> output(synthesizer->detachTarget());
    saved.restore();

    int status = ExitSuccess;
    if (!complete || !output || output->layerCount() == 0) {
        logMessage(Error, "Nothing was written to '%s': surface '%s' could not be synthesized.",
                   text(cl.outputDir).constData(), surface->name.c_str());
        status = ExitFailure;
    } else {
        status = saveOutputLayers(console, std::move(output), cl.outputDir,
                            cl.smallestFiles ? smallestPngLevel : fastPngLevel);
    }

    if (cl.saveProject) {
        if (Velmor::ProjectSaver(cl.projectDir).save(*store)) {
            logMessage(Success, "Saved project '%s'.", text(cl.projectDir).constData());
        } else {
            logMessage(Error, "Cannot save project '%s'.", text(cl.projectDir).constData());
            status = ExitFailure;
        }
    }
    return status;
}
