#include "GenerationPanel.h"

#include "ClearOutputCommand.h"
#include "GeneratedImageSaver.h"
#include "GenerationController.h"
#include "ImageSynthesizer.h"
#include "ParameterCheck.h"
#include "PropertyForm.h"
#include "SynthesizerPanel.h"

#include <QGroupBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

using ProjectData = Velmor::ProjectData;
using SurfaceData = ProjectData::SurfaceData;
using Params = Velmor::ImageSynthesizer::ImageSynthesizerParams;

namespace {
// Wide enough that a refused size can be entered and shown as refused.
constexpr int anySize = 1 << 30;

// "1:05" or "1:02:05".
QString clockText(int64_t ms)
{
    const int64_t seconds = (ms + 500) / 1000;
    const QString minutesAndSeconds
        = QStringLiteral("%1:%2").arg(seconds / 60 % 60).arg(seconds % 60, 2, 10, QLatin1Char('0'));
    if (seconds < 3600)
        return minutesAndSeconds;
    return QStringLiteral("%1:").arg(seconds / 3600) + minutesAndSeconds.rightJustified(5, QLatin1Char('0'));
}
} // namespace

GenerationPanel::GenerationPanel(ProjectDocument* document, Dialogs* dialogs, GenerationController* controller,
                                 QWidget* parent)
    : QWidget(parent)
    , document(document)
    , dialogs(dialogs)
    , controller(controller)
    , form(new PropertyForm(document, [this] { return RecordRef(surface); }))
    , synthesizer(new SynthesizerPanel(document))
    , clearOutput(new QPushButton(tr("Clear Output")))
    , generate(new QPushButton(tr("Generate")))
    , cancel(new QPushButton(tr("Cancel")))
    , progress(new QProgressBar)
    , times(new QLabel)
    , save(new QPushButton(tr("Save Generated Images")))
    , saveAndLoad(new QPushButton(tr("Save Generated Images and Load as Surface")))
    , clock(new QTimer(this))
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(form);

    auto params = [this]() -> Params* {
        return surface && surface->synthesizer() ? surface->synthesizer()->params : nullptr;
    };
    auto sizeProblem = [params]() {
        const Params* p = params();
        return p ? ParameterCheck::targetSize(p->targetWidth, p->targetHeight) : QString();
    };
    form->addInt<uint32_t>(tr("Width"), [params] { return params() ? &params()->targetWidth : nullptr; }, 0, anySize,
                           sizeProblem);
    form->addInt<uint32_t>(tr("Height"), [params] { return params() ? &params()->targetHeight : nullptr; }, 0,
                           anySize, sizeProblem);
    form->addCheck(tr("Make Input Seamless"), [this] { return surface ? &surface->makeInputSeamless : nullptr; });

    auto* similarity = new QComboBox;
    similarity->addItems({tr("First layer only"), tr("All layers")});
    form->addRow(tr("Similarity Mode"), similarity);
    connect(similarity, QOverload<int>::of(&QComboBox::activated), this, [this, params](int row) {
        if (Params* p = params())
            ProjectEdits::setField(*this->document, RecordRef(surface), p->useAllLayers, row == 1,
                                   tr("Set Similarity Mode"));
    });
    form->onRefresh([similarity, params] {
        const QSignalBlocker blocker(similarity);
        similarity->setEnabled(params() != nullptr);
        similarity->setCurrentIndex(params() && !params()->useAllLayers ? 0 : 1);
    });

    addMapChooser<ProjectData::DirectionMapData>(tr("Direction map"), &SurfaceData::directionMap,
                                                 &SurfaceData::useDirectionMap);
    addMapChooser<ProjectData::ScaleMapData>(tr("Scale map"), &SurfaceData::scaleMap, &SurfaceData::useScaleMap);

    auto* methodBox = new QGroupBox(tr("Method Parameters"));
    auto* methodLayout = new QVBoxLayout(methodBox);
    methodLayout->setContentsMargins(2, 2, 2, 2);
    methodLayout->addWidget(synthesizer);
    layout->addWidget(methodBox);

    auto* runRow = new QHBoxLayout;
    runRow->addWidget(clearOutput);
    runRow->addStretch(1);
    runRow->addWidget(generate);
    runRow->addWidget(cancel);
    layout->addLayout(runRow);
    progress->setRange(0, 100);
    progress->setValue(0);
    layout->addWidget(progress);
    layout->addWidget(times);
    save->setObjectName(QStringLiteral("SaveGeneratedImage"));
    saveAndLoad->setObjectName(QStringLiteral("SaveGeneratedImageLoadSurface"));
    layout->addWidget(save);
    layout->addWidget(saveAndLoad);

    connect(generate, &QPushButton::clicked, this, [this] {
        if (surface)
            this->controller->start(surface);
    });
    connect(cancel, &QPushButton::clicked, this, [this] {
        this->controller->cancel();
        updateStates();
    });
    connect(clearOutput, &QPushButton::clicked, this, [this] {
        if (surface && GeneratedImageSaver::outputOf(*surface))
            this->document->push(new ClearOutputCommand(this->document, surface));
    });
    connect(save, &QPushButton::clicked, this, [this] {
        if (surface)
            GeneratedImageSaver::saveImages(*this->document, *this->dialogs, *surface);
    });
    connect(saveAndLoad, &QPushButton::clicked, this, [this] {
        if (!surface)
            return;
        const RecordRef created = GeneratedImageSaver::saveImagesAsSurface(*this->document, *this->dialogs, *surface);
        if (!created.isNull()) {
            emit needRedraw();
            emit surfaceCreated(created);
        }
    });

    connect(controller, &GenerationController::progressChanged, this, &GenerationPanel::updateTimes);
    connect(controller, &GenerationController::needRedraw, this, &GenerationPanel::needRedraw);
    connect(controller, &GenerationController::runningChanged, this, [this](bool running) {
        if (running)
            clock->start();
        else
            clock->stop();
        updateStates();
        updateTimes();
    });
    connect(document, &ProjectDocument::readOnlyChanged, this, &GenerationPanel::updateStates);
    clock->setInterval(1000);
    connect(clock, &QTimer::timeout, this, &GenerationPanel::updateTimes);
    updateStates();
}

template <class Record>
void GenerationPanel::addMapChooser(const QString& label, Record* SurfaceData::*map, bool SurfaceData::*use)
{
    auto* disconnectButton = new QPushButton(tr("Disconnect"));
    form->addRecordChoice<Record>(label, [this, map] { return surface ? &(surface->*map) : nullptr; }, nullptr,
                                  disconnectButton);
    connect(disconnectButton, &QPushButton::clicked, this, [this, map, label] {
        if (surface)
            ProjectEdits::setField<Record*>(*document, RecordRef(surface), surface->*map, nullptr,
                                            tr("Disconnect %1").arg(label));
    });
    form->onRefresh([this, map, disconnectButton] { disconnectButton->setEnabled(surface && surface->*map); });
    form->addCheck(tr("Use %1").arg(label.toLower()), [this, use] { return surface ? &(surface->*use) : nullptr; });
}

void GenerationPanel::setSurface(SurfaceData* shown)
{
    surface = shown;
    synthesizer->setSurface(shown);
    form->refresh();
    updateStates();
    updateTimes();
}

void GenerationPanel::refresh()
{
    synthesizer->refresh();
    form->refresh();
    updateStates();
}

void GenerationPanel::updateStates()
{
    const bool running = controller->isRunning();
    const bool editable = !running && !document->isReadOnly();
    const bool hasOutput = surface && GeneratedImageSaver::outputOf(*surface);
    form->setEnabled(editable);
    synthesizer->setEnabled(editable);
    generate->setEnabled(editable && surface);
    cancel->setEnabled(running && !controller->isCancelling());
    clearOutput->setEnabled(editable && hasOutput);
    save->setEnabled(!running && hasOutput);
    saveAndLoad->setEnabled(editable && hasOutput);
}

void GenerationPanel::updateTimes()
{
    // The bar and times belong to the running or last run; another
    // surface's finished run is not shown on this one's page.
    const SurfaceData* runSurface = controller->surface();
    const bool shown = runSurface && (runSurface == surface || controller->isRunning());
    progress->setValue(shown ? controller->shownProgress() : 0);
    if (!shown) {
        times->clear();
        return;
    }
    QString text = tr("%1 elapsed").arg(clockText(controller->elapsedMs()));
    const int64_t left = controller->remainingMs();
    if (controller->isRunning() && left >= 0)
        text += tr(", about %1 left").arg(clockText(left));
    if (runSurface != surface)
        text = QString::fromStdString(runSurface->name) + QStringLiteral(": ") + text;
    times->setText(text);
}
