#include "PropertiesDock.h"

#include "GenerationPanel.h"
#include "MapPanel.h"
#include "MixedSurfacePanel.h"
#include "ModelPanel.h"
#include "ProjectDocument.h"
#include "SurfacePanel.h"
#include "SynthesizerPanel.h"
#include "TexturePanel.h"

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QGroupBox>
#include <QScrollBar>
#include <QWheelEvent>
#include <QLabel>
#include <QScrollArea>
#include <QVBoxLayout>

PropertiesDock::PropertiesDock(ProjectDocument* document, Dialogs* dialogs, GenerationController* controller,
                               QWidget* parent)
    : QDockWidget(tr("Properties"), parent)
    , document(document)
    , panels(new QWidget)
    , emptyNote(new QLabel(tr("Select a record in the project browser to edit it.")))
    , surface(new SurfacePanel(document, dialogs))
    , generation(new GenerationPanel(document, dialogs, controller))
    , mixed(new MixedSurfacePanel(document))
    , texture(new TexturePanel(document, dialogs))
    , model(new ModelPanel(document))
    , map(new MapPanel(document))
{
    setObjectName(QStringLiteral("Properties"));
    auto* layout = new QVBoxLayout(panels);
    emptyNote->setWordWrap(true);
    layout->addWidget(emptyNote);
    surfaceBox = box(tr("Surface"), surface);
    mixedBox = box(tr("Mixed Surface"), mixed);
    generationBox = box(tr("Generation"), generation);
    textureBox = box(tr("Texture"), texture);
    modelBox = box(tr("Model"), model);
    mapBox = box(tr("Map"), map);
    layout->addStretch(1);

    scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    // Panels wrap and squeeze to the dock's width; only a dock narrower than
    // their smallest size scrolls sideways.
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    scroll->setWidget(panels);
    setWidget(scroll);
    for (QWidget* field : panels->findChildren<QWidget*>()) {
        if (qobject_cast<QAbstractSpinBox*>(field) || qobject_cast<QComboBox*>(field)) {
            field->setFocusPolicy(Qt::StrongFocus);
            field->installEventFilter(this);
        }
    }

    connect(document, &ProjectDocument::recordChanged, this, [this] { refresh(); });
    connect(document, &ProjectDocument::recordInserted, this, [this] { refresh(); });
    connect(document, &ProjectDocument::recordRemoved, this, [this] { refresh(); });
    connect(document, &ProjectDocument::recordAboutToBeRemoved, this, [this](const RecordRef& removed) {
        if (removed == record)
            showRecord(RecordRef());
    });
    connect(document, &ProjectDocument::projectAboutToBeReplaced, this, [this] { showRecord(RecordRef()); });
    // The generation panel disables its own controls but keeps Cancel.
    connect(document, &ProjectDocument::readOnlyChanged, panels, [this](bool readOnly) {
        for (QGroupBox* editing : {surfaceBox, mixedBox, textureBox, modelBox, mapBox})
            editing->setEnabled(!readOnly);
    });
    showRecord(RecordRef());
}

SynthesizerPanel* PropertiesDock::synthesizerPanel() const
{
    return generation->synthesizerPanel();
}

QGroupBox* PropertiesDock::box(const QString& title, QWidget* panel)
{
    auto* group = new QGroupBox(title);
    auto* layout = new QVBoxLayout(group);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->addWidget(panel);
    panels->layout()->addWidget(group);
    return group;
}

void PropertiesDock::showRecord(const RecordRef& shown)
{
    record = shown;
    auto* mixedRecord = record.mixedSurface();
    auto* plainSurface = mixedRecord ? nullptr : record.surface();
    surface->setSurface(plainSurface);
    mixed->setSurface(mixedRecord);
    generation->setSurface(record.surface());
    texture->setTexture(record.texture());
    model->setModel(record.model());
    map->setMap(record.directionMap() || record.scaleMap() ? record : RecordRef());

    emptyNote->setVisible(record.isNull());
    surfaceBox->setVisible(plainSurface);
    mixedBox->setVisible(mixedRecord);
    generationBox->setVisible(record.surface());
    textureBox->setVisible(record.texture());
    modelBox->setVisible(record.model());
    mapBox->setVisible(record.directionMap() || record.scaleMap());
    mapBox->setTitle(record.scaleMap() ? tr("Scale Map") : tr("Direction Map"));
}

void PropertiesDock::refresh()
{
    if (record.mixedSurface())
        mixed->refresh();
    else if (record.surface())
        surface->refresh();
    if (record.surface())
        generation->refresh();
    if (record.texture())
        texture->refresh();
    if (record.model())
        model->refresh();
    if (record.directionMap() || record.scaleMap())
        map->refresh();
}

bool PropertiesDock::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Wheel) {
        auto* field = qobject_cast<QWidget*>(watched);
        if (field && !field->hasFocus()) {
            QCoreApplication::sendEvent(scroll->verticalScrollBar(), event);
            return true;
        }
    }
    return QDockWidget::eventFilter(watched, event);
}
