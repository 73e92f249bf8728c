#include "SynthesizerPanel.h"

#include "CutoutPatchSynthesizer.h"
#include "ImageSynthesizer.h"
#include "ParameterCheck.h"
#include "PropertyForm.h"

#include <QVBoxLayout>

using ProjectData = Velmor::ProjectData;
using Params = Velmor::ImageSynthesizer::ImageSynthesizerParams;
using PatchParams = Velmor::ImageSynthesizer::PatchSynthesizerParams;
using CutoutParams = Velmor::CutoutPatchSynthesizer::CutoutPatchSynthesizerParams;

namespace {
// Wide enough that a refused value can be entered and shown as refused.
constexpr int anyInt = 1 << 30;
}

SynthesizerPanel::SynthesizerPanel(ProjectDocument* document, QWidget* parent)
    : QWidget(parent)
    , form(new PropertyForm(document, [this] { return RecordRef(surface); }))
    , method(new QComboBox)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(form);

    form->addRow(tr("Method"), method);
    connect(method, QOverload<int>::of(&QComboBox::activated), this, [this, document](int row) {
        if (surface)
            ProjectEdits::setField(*document, RecordRef(surface), surface->currentSynthesizerIndex, size_t(row),
                                   tr("Set Method"));
    });
    form->onRefresh([this] {
        const QSignalBlocker blocker(method);
        method->clear();
        if (!surface)
            return;
        for (const auto& synthesizer : surface->synthesizers)
            method->addItem(QString::fromStdString(synthesizer->params ? synthesizer->params->methodName() : ""));
        method->setCurrentIndex(int(surface->currentSynthesizerIndex));
    });

    auto params = [this]() -> Params* {
        return surface && surface->synthesizer() ? surface->synthesizer()->params : nullptr;
    };
    auto patch = [params]() { return dynamic_cast<PatchParams*>(params()); };
    auto cutout = [params]() { return dynamic_cast<CutoutParams*>(params()); };
    form->addInt<int32_t>(tr("Patch size"), [patch] { return patch() ? &patch()->patchSize : nullptr; }, -anyInt,
                          anyInt, [patch] {
                              return patch() ? ParameterCheck::patchSize(patch()->patchSize, patch()->patchBoundary)
                                             : QString();
                          });
    form->addInt<int32_t>(tr("Boundary"), [patch] { return patch() ? &patch()->patchBoundary : nullptr; }, -anyInt,
                          anyInt, [patch] {
                              return patch() ? ParameterCheck::patchBoundary(patch()->patchSize, patch()->patchBoundary)
                                             : QString();
                          });
    form->addFloat(tr("Error threshold"), [patch] { return patch() ? &patch()->errorThreshold : nullptr; }, 0.0, 1000.0,
                   4);
    form->addInt<uint32_t>(tr("Max tries"), [patch] { return patch() ? &patch()->maxTries : nullptr; }, 0, anyInt);
    // Random keeps the plain random tries; Structured continues the placed
    // neighbours, so grids and courses line up across patch borders.
    auto* search = new QComboBox;
    search->setObjectName(QStringLiteral("SourceSearch"));
    search->addItem(tr("Random tries"));
    search->addItem(tr("Structured"));
    search->setToolTip(tr("Structured: tries the positions that continue the neighbouring patches, searches the "
                          "whole source and refines the best; keeps grids, bricks and planks in line."));
    form->addRow(tr("Source search"), search);
    connect(search, QOverload<int>::of(&QComboBox::activated), this, [this, patch, document](int row) {
        if (PatchParams* p = patch())
            ProjectEdits::setField(*document, RecordRef(surface), p->sourceSearch,
                                   row == 1 ? Velmor::SourceSearch::Structured : Velmor::SourceSearch::Random,
                                   tr("Set Source search"));
    });
    form->onRefresh([search, patch] {
        const QSignalBlocker blocker(search);
        PatchParams* p = patch();
        search->setEnabled(p != nullptr);
        search->setCurrentIndex(p && p->sourceSearch == Velmor::SourceSearch::Structured ? 1 : 0);
    });
    form->addInt<int32_t>(tr("Feather (cutout)"), [cutout] { return cutout() ? &cutout()->feather : nullptr; }, 0,
                          anyInt);
}

void SynthesizerPanel::setSurface(ProjectData::SurfaceData* shown)
{
    surface = shown;
    form->refresh();
}

void SynthesizerPanel::refresh()
{
    form->refresh();
}
