#include "MixedSurfacePanel.h"

#include "PropertyForm.h"

#include <QVBoxLayout>

using ProjectData = Velmor::ProjectData;
using Mixed = ProjectData::MixedSurfaceData;

MixedSurfacePanel::MixedSurfacePanel(ProjectDocument* document, QWidget* parent)
    : QWidget(parent)
    , form(new PropertyForm(document, [this] { return RecordRef(static_cast<ProjectData::SurfaceData*>(surface)); }))
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(form);

    auto field = [this](auto member) { return [this, member]() { return surface ? &(surface->*member) : nullptr; }; };
    // A mixed surface mixes plain surfaces, never itself.
    auto plain = [](const ProjectData::SurfaceData* s) { return dynamic_cast<const Mixed*>(s) == nullptr; };
    auto whiteField = [this]() { return surface ? &surface->whiteSurface : nullptr; };
    auto blackField = [this]() { return surface ? &surface->blackSurface : nullptr; };
    auto maskField = [this]() { return surface ? &surface->maskTexture : nullptr; };
    auto channelField = [this]() { return surface ? &surface->maskChannel : nullptr; };

    form->addName();
    form->addRecordChoice<ProjectData::SurfaceData>(tr("White surface"), whiteField, plain);
    form->addRecordChoice<ProjectData::SurfaceData>(tr("Black surface"), blackField, plain);
    form->addRecordChoice<ProjectData::TextureData>(tr("Mask texture"), maskField);
    form->addInt<int32_t>(tr("Mask channel"), channelField, 0, 3);
    form->addCheck(tr("Synthesize mask"), field(&Mixed::synthesizeMask));
    form->addCheck(tr("Synthesize white surface"), field(&Mixed::synthesizeWhiteSurface));
    form->addCheck(tr("Synthesize black surface"), field(&Mixed::synthesizeBlackSurface));
    form->addCheck(tr("Tile mask"), field(&Mixed::tileMask));
    form->addCheck(tr("Tile white surface"), field(&Mixed::tileWhiteSurface));
    form->addCheck(tr("Tile black surface"), field(&Mixed::tileBlackSurface));
    form->addCheck(tr("Freeze mask"), field(&Mixed::freezeMask));
    form->addCheck(tr("Freeze white surface"), field(&Mixed::freezeWhiteSurface));
    form->addCheck(tr("Freeze black surface"), field(&Mixed::freezeBlackSurface));
    form->addInt<int32_t>(tr("Mask filter mode"), field(&Mixed::maskFilterMode), 0, 16);
}

void MixedSurfacePanel::setSurface(Mixed* shown)
{
    surface = shown;
    form->refresh();
}

void MixedSurfacePanel::refresh()
{
    form->refresh();
}
