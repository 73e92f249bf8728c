#include "ProjectEdits.h"

#include "Dialogs.h"
#include "ImageSynthesizer.h"
#include "NormalMap.h"
#include "RecordCommands.h"

#include <QUndoStack>

namespace ProjectEdits {

namespace {

using TextureData = ProjectData::TextureData;
using SurfaceData = ProjectData::SurfaceData;
using MixedSurfaceData = ProjectData::MixedSurfaceData;
using SurfaceLayer = ProjectData::SurfaceLayer;

QString kindName(RecordKind kind)
{
    switch (kind) {
    case RecordKind::Surface: return QStringLiteral("Surface");
    case RecordKind::Texture: return QStringLiteral("Texture");
    case RecordKind::DirectionMap: return QStringLiteral("Direction Map");
    case RecordKind::ScaleMap: return QStringLiteral("Scale Map");
    case RecordKind::Model: return QStringLiteral("Model");
    case RecordKind::ProjectMask:
    case RecordKind::None: break;
    }
    return QString();
}

// Like ProjectData::makeUniqueName, but the record being renamed does not
// collide with itself.
template <class Record>
std::string uniqueNameFor(const std::string& base, const std::vector<std::unique_ptr<Record>>& records,
                          const void* self)
{
    std::string candidate = base;
    int counter = 1;
    for (bool taken = true; taken;) {
        taken = false;
        for (const auto& record : records) {
            if (record.get() != self && record->name == candidate) {
                candidate = base + "_" + std::to_string(counter++);
                taken = true;
                break;
            }
        }
    }
    return candidate;
}

template <class Record>
void renameIn(ProjectDocument& document, Record* record, const RecordRef& ref, const std::string& name)
{
    const std::string unique = uniqueNameFor(name, RecordList<Record>::of(document.store()), record);
    setField(document, ref, record->name, unique, QStringLiteral("Rename %1").arg(kindName(ref.kind)));
}

template <class Record>
int indexOf(ProjectDocument& document, const Record* record)
{
    const auto& list = RecordList<Record>::of(document.store());
    for (size_t i = 0; i < list.size(); ++i)
        if (list[i].get() == record)
            return int(i);
    return -1;
}

template <class Record>
RecordRef pushCopy(ProjectDocument& document, const Record* original, std::unique_ptr<Record> copy)
{
    Record* result = copy.get();
    document.push(new AddRecordCommand<Record>(&document, std::move(copy), indexOf(document, original) + 1,
                                               QStringLiteral("Duplicate %1").arg(kindName(RecordRef(result).kind))));
    return RecordRef(result);
}

void copySurfaceFields(const SurfaceData& from, SurfaceData& to)
{
    to.layers = from.layers;
    to.maskTexture = from.maskTexture;
    to.directionMap = from.directionMap;
    to.scaleMap = from.scaleMap;
    to.useDirectionMap = from.useDirectionMap;
    to.useScaleMap = from.useScaleMap;
    to.makeInputSeamless = from.makeInputSeamless;
    to.masked = from.masked;
    to.maskChannel = from.maskChannel;
    for (size_t i = 0; i < from.synthesizers.size() && i < to.synthesizers.size(); ++i)
        if (from.synthesizers[i]->params && to.synthesizers[i]->params)
            from.synthesizers[i]->params->copyTo(to.synthesizers[i]->params);
    to.currentSynthesizerIndex = from.currentSynthesizerIndex;
}

std::unique_ptr<SurfaceData> copySurface(ProjectData& store, const SurfaceData& from)
{
    const std::string name = ProjectData::makeUniqueName(from.name, store.surfaces);
    std::unique_ptr<SurfaceData> copy;
    if (const auto* mixed = dynamic_cast<const MixedSurfaceData*>(&from)) {
        auto mixedCopy = std::make_unique<MixedSurfaceData>(&store, name);
        mixedCopy->whiteSurface = mixed->whiteSurface;
        mixedCopy->blackSurface = mixed->blackSurface;
        mixedCopy->synthesizeMask = mixed->synthesizeMask;
        mixedCopy->synthesizeWhiteSurface = mixed->synthesizeWhiteSurface;
        mixedCopy->synthesizeBlackSurface = mixed->synthesizeBlackSurface;
        mixedCopy->tileMask = mixed->tileMask;
        mixedCopy->tileWhiteSurface = mixed->tileWhiteSurface;
        mixedCopy->tileBlackSurface = mixed->tileBlackSurface;
        mixedCopy->freezeBlackSurface = mixed->freezeBlackSurface;
        mixedCopy->freezeWhiteSurface = mixed->freezeWhiteSurface;
        mixedCopy->freezeMask = mixed->freezeMask;
        mixedCopy->maskFilterMode = mixed->maskFilterMode;
        copy = std::move(mixedCopy);
    } else {
        copy = std::make_unique<SurfaceData>(&store, name);
    }
    copySurfaceFields(from, *copy);
    // A mixed surface's layers are generated from its two surfaces.
    if (dynamic_cast<const MixedSurfaceData*>(&from))
        copy->layers.clear();
    return copy;
}

// Pushes a command that sets a pointer field of a surface to null.
template <class T>
void clearReference(ProjectDocument& document, SurfaceData* surface, T*& field)
{
    setField<T*>(document, RecordRef(surface), field, nullptr, QStringLiteral("Clear Reference"));
}

QString surfaceLabel(const SurfaceData* surface)
{
    const bool mixed = dynamic_cast<const MixedSurfaceData*>(surface) != nullptr;
    return QStringLiteral("%1 '%2'").arg(mixed ? "Mixed surface" : "Surface", QString::fromStdString(surface->name));
}

// Walks every reference to `record`; `visit` gets the referring surface, a
// description and, for layers, the layer index (-1 otherwise).
template <class Visit>
void forEachReference(ProjectDocument& document, const RecordRef& record, Visit visit)
{
    for (const auto& owned : document.store().surfaces) {
        SurfaceData* surface = owned.get();
        const QString label = surfaceLabel(surface);
        const bool mixed = dynamic_cast<MixedSurfaceData*>(surface) != nullptr;
        switch (record.kind) {
        case RecordKind::Texture:
            // A mixed surface's layers hold its generated images, not records.
            if (!mixed)
                for (size_t i = 0; i < surface->layers.size(); ++i)
                    if (surface->layers[i].texture == record.texture())
                        visit(surface, label + QStringLiteral(", layer '%1'").arg(QString::fromStdString(
                                                                  surface->layers[i].name)),
                              int(i));
            if (surface->maskTexture == record.texture())
                visit(surface, label + QStringLiteral(", mask texture"), -1);
            break;
        case RecordKind::DirectionMap:
            if (surface->directionMap == record.directionMap())
                visit(surface, label + QStringLiteral(", direction map"), -1);
            break;
        case RecordKind::ScaleMap:
            if (surface->scaleMap == record.scaleMap())
                visit(surface, label + QStringLiteral(", scale map"), -1);
            break;
        case RecordKind::Surface:
            if (auto* m = dynamic_cast<MixedSurfaceData*>(surface)) {
                if (m->whiteSurface == record.surface())
                    visit(surface, label + QStringLiteral(", white surface"), -1);
                if (m->blackSurface == record.surface())
                    visit(surface, label + QStringLiteral(", black surface"), -1);
            }
            break;
        case RecordKind::Model:
        case RecordKind::ProjectMask:
        case RecordKind::None: break;
        }
    }
}

} // namespace

void rename(ProjectDocument& document, const RecordRef& record, const QString& name)
{
    const std::string base = name.trimmed().toStdString();
    if (base.empty())
        return;
    switch (record.kind) {
    case RecordKind::Surface: renameIn(document, record.surface(), record, base); break;
    case RecordKind::Texture: renameIn(document, record.texture(), record, base); break;
    case RecordKind::DirectionMap: renameIn(document, record.directionMap(), record, base); break;
    case RecordKind::ScaleMap: renameIn(document, record.scaleMap(), record, base); break;
    case RecordKind::Model: renameIn(document, record.model(), record, base); break;
    case RecordKind::ProjectMask:
    case RecordKind::None: break;
    }
}

RecordRef duplicate(ProjectDocument& document, const RecordRef& record)
{
    if (document.isReadOnly())
        return RecordRef();
    ProjectData& store = document.store();
    switch (record.kind) {
    case RecordKind::Surface: return pushCopy(document, record.surface(), copySurface(store, *record.surface()));
    case RecordKind::Texture: {
        auto copy = std::make_unique<TextureData>();
        copy->name = ProjectData::makeUniqueName(record.texture()->name, store.textures);
        copy->path = record.texture()->path;
        copy->image = record.texture()->image;
        copy->loadFailed = record.texture()->loadFailed;
        return pushCopy(document, record.texture(), std::move(copy));
    }
    case RecordKind::DirectionMap: {
        auto copy = std::make_unique<ProjectData::DirectionMapData>();
        copy->name = ProjectData::makeUniqueName(record.directionMap()->name, store.directionMaps);
        copy->image = record.directionMap()->image;
        return pushCopy(document, record.directionMap(), std::move(copy));
    }
    case RecordKind::ScaleMap: {
        auto copy = std::make_unique<ProjectData::ScaleMapData>();
        copy->name = ProjectData::makeUniqueName(record.scaleMap()->name, store.scaleMaps);
        copy->image = record.scaleMap()->image;
        return pushCopy(document, record.scaleMap(), std::move(copy));
    }
    case RecordKind::Model: {
        auto copy = std::make_unique<ProjectData::ModelData>(*record.model());
        copy->name = ProjectData::makeUniqueName(record.model()->name, store.models);
        return pushCopy(document, record.model(), std::move(copy));
    }
    case RecordKind::ProjectMask:
    case RecordKind::None: break;
    }
    return RecordRef();
}

QStringList referrers(ProjectDocument& document, const RecordRef& record)
{
    QStringList found;
    forEachReference(document, record, [&found](SurfaceData*, const QString& what, int) { found << what; });
    return found;
}

void remove(ProjectDocument& document, const RecordRef& record)
{
    if (record.isNull() || document.isReadOnly())
        return;
    QUndoStack* stack = document.undoStack();
    stack->beginMacro(QStringLiteral("Delete %1 '%2'").arg(kindName(record.kind), QString::fromStdString(record.name())));

    // Clear the references first, so that undo restores them after the
    // record is back. Layers of one surface are cleared in one layer-list edit.
    std::vector<std::pair<SurfaceData*, int>> layerRefs;
    forEachReference(document, record, [&](SurfaceData* surface, const QString&, int layer) {
        if (layer >= 0) {
            layerRefs.emplace_back(surface, layer);
            return;
        }
        if (record.kind == RecordKind::Texture)
            clearReference(document, surface, surface->maskTexture);
        else if (record.kind == RecordKind::DirectionMap)
            clearReference(document, surface, surface->directionMap);
        else if (record.kind == RecordKind::ScaleMap)
            clearReference(document, surface, surface->scaleMap);
        else if (auto* mixed = dynamic_cast<MixedSurfaceData*>(surface)) {
            if (mixed->whiteSurface == record.surface())
                clearReference(document, surface, mixed->whiteSurface);
            if (mixed->blackSurface == record.surface())
                clearReference(document, surface, mixed->blackSurface);
        }
    });
    for (size_t i = 0; i < layerRefs.size();) {
        SurfaceData* surface = layerRefs[i].first;
        std::vector<SurfaceLayer> layers = surface->layers;
        for (; i < layerRefs.size() && layerRefs[i].first == surface; ++i)
            layers[size_t(layerRefs[i].second)].texture = nullptr;
        setLayers(document, surface, layers, QStringLiteral("Clear Layer Texture"));
    }

    const QString text = QStringLiteral("Delete %1").arg(kindName(record.kind));
    switch (record.kind) {
    case RecordKind::Surface: document.push(new RemoveRecordCommand(&document, record.surface(), text)); break;
    case RecordKind::Texture: document.push(new RemoveRecordCommand(&document, record.texture(), text)); break;
    case RecordKind::DirectionMap:
        document.push(new RemoveRecordCommand(&document, record.directionMap(), text));
        break;
    case RecordKind::ScaleMap: document.push(new RemoveRecordCommand(&document, record.scaleMap(), text)); break;
    case RecordKind::Model: document.push(new RemoveRecordCommand(&document, record.model(), text)); break;
    case RecordKind::ProjectMask:
    case RecordKind::None: break;
    }
    stack->endMacro();
}

RecordRef newSurface(ProjectDocument& document)
{
    if (document.isReadOnly())
        return RecordRef();
    SurfaceData* surface = document.store().addSurface("NewSurface");
    document.push(new AddRecordCommand<SurfaceData>(&document, surface, QStringLiteral("New Surface")));
    return RecordRef(surface);
}

RecordRef newMixedSurface(ProjectDocument& document)
{
    if (document.isReadOnly())
        return RecordRef();
    SurfaceData* surface = document.store().addMixedSurface("NewMixedSurface");
    document.push(new AddRecordCommand<SurfaceData>(&document, surface, QStringLiteral("New Mixed Surface")));
    return RecordRef(surface);
}

RecordRef newDirectionMap(ProjectDocument& document)
{
    if (document.isReadOnly())
        return RecordRef();
    auto* map = document.store().addDirectionMap("Direction Map");
    document.push(new AddRecordCommand(&document, map, QStringLiteral("New Direction Map")));
    return RecordRef(map);
}

RecordRef newScaleMap(ProjectDocument& document)
{
    if (document.isReadOnly())
        return RecordRef();
    auto* map = document.store().addScaleMap("Scale Map");
    document.push(new AddRecordCommand(&document, map, QStringLiteral("New Scale Map")));
    return RecordRef(map);
}

std::vector<RecordRef> importImages(ProjectDocument& document, const QStringList& paths)
{
    std::vector<RecordRef> added;
    if (paths.isEmpty() || document.isReadOnly())
        return added;
    document.undoStack()->beginMacro(QStringLiteral("Import Images"));
    for (const QString& path : paths) {
        TextureData* texture = document.store().addTexture(path, "Texture");
        document.push(new AddRecordCommand(&document, texture, QStringLiteral("Import Image")));
        added.emplace_back(texture);
    }
    document.undoStack()->endMacro();
    return added;
}

std::vector<RecordRef> importModels(ProjectDocument& document, const QStringList& paths)
{
    std::vector<RecordRef> added;
    if (paths.isEmpty() || document.isReadOnly())
        return added;
    document.undoStack()->beginMacro(QStringLiteral("Import Models"));
    for (const QString& path : paths) {
        ProjectData::ModelData* model = document.store().addModel(path, "Model");
        document.push(new AddRecordCommand(&document, model, QStringLiteral("Import Model")));
        added.emplace_back(model);
    }
    document.undoStack()->endMacro();
    return added;
}

void setLayers(ProjectDocument& document, SurfaceData* surface, const std::vector<SurfaceLayer>& layers,
               const QString& text)
{
    std::vector<SurfaceLayer>* target = &surface->layers;
    document.push(new SetValueCommand<std::vector<SurfaceLayer>>(
        &document, RecordRef(surface), [target]() -> std::vector<SurfaceLayer>& { return *target; }, layers, text));
}

void setLayerMode(ProjectDocument& document, Dialogs& dialogs, SurfaceData* surface, int layer,
                  ProjectData::LayerMode mode)
{
    if (document.isReadOnly() || layer < 0 || layer >= int(surface->layers.size())
        || surface->layers[size_t(layer)].mode == mode)
        return;
    std::vector<SurfaceLayer> layers = surface->layers;
    layers[size_t(layer)].mode = mode;
    TextureData* texture = layers[size_t(layer)].texture;

    bool convert = false;
    if (mode == ProjectData::LayerMode::Normal && texture && texture->image.format != Normal) {
        if (normalLayerRule(texture->image).convertible)
            convert = dialogs.ask(QString::fromUtf8(normalLayerQuestion), Dialogs::Yes | Dialogs::No, Dialogs::Yes)
                      == Dialogs::Yes;
        else
            dialogs.inform(QString::fromUtf8(normalLayerNotConvertible));
    }
    document.undoStack()->beginMacro(QStringLiteral("Change Layer Mode"));
    if (convert) {
        Image converted = texture->image;
        convertToNormalLayer(converted);
        replaceImage(document, RecordRef(texture), texture->image, std::move(converted),
                     QStringLiteral("Convert to Normal Map"));
    }
    setLayers(document, surface, layers, QStringLiteral("Change Layer Mode"));
    document.undoStack()->endMacro();
}

void replaceImage(ProjectDocument& document, const RecordRef& owner, Image& image, Image replacement,
                  const QString& text)
{
    Image* target = &image;
    document.push(
        new SetValueCommand<Image>(&document, owner, [target]() -> Image& { return *target; }, std::move(replacement), text));
}

bool reloadTexture(ProjectDocument& document, TextureData* texture, const QString& path)
{
    if (document.isReadOnly())
        return false;
    TextureData fresh(path);
    if (fresh.loadFailed)
        return false;
    // The normal-map flags describe how the stored vectors were mapped: a
    // reloaded normal map is converted back the same way.
    if (texture->image.format == Normal && (fresh.image.format == RGB || fresh.image.format == RGBA))
        fresh.image.toNormalMap(texture->image.flipNormalX, texture->image.flipNormalY, texture->image.mappedNormalXY,
                                texture->image.mappedNormalZ);
    document.undoStack()->beginMacro(QStringLiteral("Reload Texture"));
    setField(document, RecordRef(texture), texture->path, path, QStringLiteral("Set Texture Path"));
    setField(document, RecordRef(texture), texture->loadFailed, false, QStringLiteral("Reload Texture"));
    replaceImage(document, RecordRef(texture), texture->image, std::move(fresh.image), QStringLiteral("Reload Texture"));
    document.undoStack()->endMacro();
    return true;
}

} // namespace ProjectEdits
