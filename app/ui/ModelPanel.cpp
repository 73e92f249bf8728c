#include "ModelPanel.h"

#include "PropertyForm.h"

#include <QVBoxLayout>

using ModelData = Velmor::ProjectData::ModelData;

ModelPanel::ModelPanel(ProjectDocument* document, QWidget* parent)
    : QWidget(parent)
    , form(new PropertyForm(document, [this] { return RecordRef(model); }))
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(form);

    auto field = [this](float ModelData::*member) {
        return [this, member]() { return model ? &(model->*member) : nullptr; };
    };
    form->addName();
    auto* path = new QLabel;
    path->setWordWrap(true);
    path->setTextInteractionFlags(Qt::TextSelectableByMouse);
    form->addRow(tr("Path"), path);
    form->onRefresh([this, path] { path->setText(model ? model->path : QString()); });
    form->addFloat(tr("Rotation X"), field(&ModelData::rotationX), -360.0, 360.0, 1);
    form->addFloat(tr("Rotation Y"), field(&ModelData::rotationY), -360.0, 360.0, 1);
    form->addFloat(tr("Rotation Z"), field(&ModelData::rotationZ), -360.0, 360.0, 1);
    form->addFloat(tr("Scale"), field(&ModelData::scale), 0.001, 1000.0, 3);
}

void ModelPanel::setModel(ModelData* shown)
{
    model = shown;
    form->refresh();
}

void ModelPanel::refresh()
{
    form->refresh();
}
