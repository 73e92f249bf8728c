#include "SurfacePanel.h"

#include "LayerList.h"
#include "PropertyForm.h"

#include <QGroupBox>
#include <QVBoxLayout>

using ProjectData = Velmor::ProjectData;

SurfacePanel::SurfacePanel(ProjectDocument* document, Dialogs* dialogs, QWidget* parent)
    : QWidget(parent)
    , form(new PropertyForm(document, [this] { return RecordRef(surface); }))
    , layers(new LayerList(document, dialogs))
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(form);
    form->addName();
    auto* layerBox = new QGroupBox(tr("Layers"));
    auto* layerLayout = new QVBoxLayout(layerBox);
    layerLayout->addWidget(layers);
    form->addWidget(layerBox);

    auto field = [this](auto member) {
        return [this, member]() { return surface ? &(surface->*member) : nullptr; };
    };
    form->addRecordChoice<ProjectData::TextureData>(tr("Mask texture"), field(&ProjectData::SurfaceData::maskTexture));
    form->addInt<int32_t>(tr("Mask channel"), field(&ProjectData::SurfaceData::maskChannel), 0, 3);
    form->addCheck(tr("Masked"), field(&ProjectData::SurfaceData::masked));
}

void SurfacePanel::setSurface(ProjectData::SurfaceData* shown)
{
    surface = shown;
    layers->setSurface(shown);
    form->refresh();
}

void SurfacePanel::refresh()
{
    layers->refresh();
    form->refresh();
}
