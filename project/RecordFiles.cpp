#include "RecordFiles.h"

#include "CacheFiles.h"
#include "ImageSynthesizer.h"
#include "LogMessage.h"
#include "SafeFileWriter.h"
#include "SynthesisLimits.h"

#include <QFile>

#include <tinyxml2.h>

#include <algorithm>

using tinyxml2::XMLDocument;
using tinyxml2::XMLElement;

namespace Velmor {

namespace {

// --- writing ---------------------------------------------------------------

XMLElement* addRoot(XMLDocument& doc, const char* kind, const std::string& name)
{
    XMLElement* root = doc.NewElement(kind);
    root->SetAttribute("Name", name.c_str());
    doc.InsertEndChild(root);
    return root;
}

template <class Value>
void addValue(XMLElement* parent, const char* key, Value value)
{
    parent->InsertNewChildElement(key)->SetText(value);
}

void addText(XMLElement* parent, const char* key, const QString& text)
{
    parent->InsertNewChildElement(key)->SetText(text.toUtf8().constData());
}

template <class Record>
int32_t idOrNone(const Record* record)
{
    return record ? record->id : -1;
}

// Indented, without an XML declaration, through a temporary file.
bool saveDocument(const XMLDocument& doc, const QString& path)
{
    tinyxml2::XMLPrinter printer(nullptr, false);
    doc.Print(&printer);
    return writeFileSafely(path, QByteArray(printer.CStr(), printer.CStrSize() - 1));
}

// The items both surface kinds write after their own ones.
void addSurfaceTail(XMLElement* root, const ProjectData::SurfaceData& surface)
{
    if (surface.directionMap)
        addValue(root, "DirectionMap", surface.directionMap->id);
    if (surface.scaleMap)
        addValue(root, "ScaleMap", surface.scaleMap->id);
    addValue(root, "UseDirectionMap", surface.useDirectionMap);
    addValue(root, "UseScaleMap", surface.useScaleMap);
    addValue(root, "MakeInputSeamless", surface.makeInputSeamless);
    for (const auto& synthesizer : surface.synthesizers) {
        XMLElement* element = root->InsertNewChildElement("Synthesizer");
        element->SetAttribute("Type", synthesizer->params->methodName().c_str());
        synthesizer->params->writeXml(element);
    }
    addText(root, "SynthesizerMode", QString::fromStdString(surface.synthesizerMode()));
}

// --- reading ---------------------------------------------------------------

// A file without an item the record cannot do without is refused like one
// that does not parse, so that no half-made record enters the store.
bool reportMissing(const QString& path, const QString& item)
{
    logMessage(Error, QStringLiteral("XML parse error: %1 has no valid \"%2\"").arg(path, item));
    return false;
}

// Loads `path` and returns its root element when it is `kind` and carries
// the record's "Name". Logs the parser's complaint, or the missing name, and
// returns null when the file is damaged; returns null silently for a root of
// another kind.
const XMLElement* loadRoot(XMLDocument& doc, const QString& path, const char* kind, const char*& name)
{
    name = nullptr;
    if (doc.LoadFile(QFile::encodeName(path).constData()) != tinyxml2::XML_SUCCESS) {
        logMessage(Error, QStringLiteral("XML parse error: %1: %2").arg(path, QString::fromUtf8(doc.ErrorStr())));
        return nullptr;
    }
    const XMLElement* root = doc.FirstChildElement(kind);
    name = root ? root->Attribute("Name") : nullptr;
    if (root && !name)
        return reportMissing(path, "Name"), nullptr;
    return root;
}

// Values whose element is absent or whose text does not parse keep their
// current value.
void readInt(const XMLElement* parent, const char* key, int32_t& value)
{
    if (const XMLElement* element = parent->FirstChildElement(key))
        element->QueryIntText(&value);
}

void readBool(const XMLElement* parent, const char* key, bool& value)
{
    if (const XMLElement* element = parent->FirstChildElement(key))
        element->QueryBoolText(&value);
}

bool hasInt(const XMLElement* parent, const char* key)
{
    int value = 0;
    const XMLElement* element = parent->FirstChildElement(key);
    return element && element->QueryIntText(&value) == tinyxml2::XML_SUCCESS;
}

// Ranges of the values a record file may hold. A value outside its range is
// taken for damage: a warning names the file, the key and the value as
// written, and the record keeps its default. The synthesizer's ranges stand
// beside its settings check (SynthesisLimits.h); the others are:
//   layer Mode 0..5 (color, normal, displacement, roughness, metalness,
//   occlusion), MaskFilterMode 0..1 (nearest, linear).
struct ValueRange
{
    const char* key;
    int64_t low, high;
};
const ValueRange synthesizerRanges[] = {{"PatchSize", 1, maxRecordPatchSize},
                                        {"PatchBoundary", 0, maxRecordPatchBoundary},
                                        {"MaxTries", 1, maxRecordTries}};
const ValueRange layerModeRange = {"Mode", 0, 5};
const ValueRange maskFilterModeRange = {"MaskFilterMode", 0, 1};

// True when `key` under `parent` is absent or holds a whole number in range;
// otherwise warns and returns false.
bool inRange(const QString& path, const XMLElement* parent, const ValueRange& range)
{
    const XMLElement* element = parent->FirstChildElement(range.key);
    if (!element)
        return true;
    int64_t value = 0;
    if (element->QueryInt64Text(&value) == tinyxml2::XML_SUCCESS && value >= range.low && value <= range.high)
        return true;
    logMessage(Warning, QStringLiteral("%1: %2 %3 is out of range (%4 to %5); the default is used.")
                            .arg(path, QLatin1String(range.key),
                                 QString::fromUtf8(element->GetText() ? element->GetText() : ""))
                            .arg(range.low)
                            .arg(range.high));
    return false;
}

// Reads a synthesizer's values; those out of range keep their defaults.
void readSynthesizer(const QString& path, const XMLElement* element, ImageSynthesizer& synthesizer)
{
    auto* patch = dynamic_cast<ImageSynthesizer::PatchSynthesizerParams*>(synthesizer.params);
    const int32_t patchSize = patch ? patch->patchSize : 0;
    const int32_t patchBoundary = patch ? patch->patchBoundary : 0;
    const uint32_t maxTries = patch ? patch->maxTries : 0;
    synthesizer.params->readXml(element);
    if (!patch)
        return;
    if (!inRange(path, element, synthesizerRanges[0]))
        patch->patchSize = patchSize;
    if (!inRange(path, element, synthesizerRanges[1]))
        patch->patchBoundary = patchBoundary;
    if (!inRange(path, element, synthesizerRanges[2]))
        patch->maxTries = maxTries;
    const int64_t full = int64_t(patch->patchSize) + 2 * int64_t(patch->patchBoundary);
    const int64_t target = std::min(int64_t(patch->targetWidth), int64_t(patch->targetHeight));
    if (target > 0 && full > target)
        logMessage(Warning, QStringLiteral("%1: PatchSize %2 with PatchBoundary %3 makes patches of %4 pixels, larger "
                                           "than the target's %5.")
                                .arg(path)
                                .arg(patch->patchSize)
                                .arg(patch->patchBoundary)
                                .arg(full)
                                .arg(target));
}

QString readText(const XMLElement* parent, const char* key)
{
    const XMLElement* element = parent->FirstChildElement(key);
    return element && element->GetText() ? QString::fromUtf8(element->GetText()) : QString();
}

// Resolves an ID element by `lookup`; a missing element leaves `target`.
// Negative IDs mean "none" where `skipNegative` is set.
template <class Record, class Lookup>
void readReference(const XMLElement* parent, const char* key, Record*& target, Lookup lookup, bool skipNegative)
{
    if (!parent->FirstChildElement(key))
        return;
    int32_t id = -1;
    if (parent->FirstChildElement(key)->QueryIntText(&id) != tinyxml2::XML_SUCCESS)
        return;
    target = (skipNegative && id < 0) ? nullptr : lookup(id);
}

void readSurfaceCommon(const QString& path, const XMLElement* root, ProjectData& store,
                       ProjectData::SurfaceData& surface)
{
    readInt(root, "ID", surface.id);
    readReference(root, "MaskTextureID", surface.maskTexture, [&](int32_t id) { return store.textureById(id); }, true);
    readInt(root, "MaskChannel", surface.maskChannel);
    readReference(root, "DirectionMap", surface.directionMap, [&](int32_t id) { return store.directionMapById(id); },
                  false);
    readReference(root, "ScaleMap", surface.scaleMap, [&](int32_t id) { return store.scaleMapById(id); }, false);
    readBool(root, "UseDirectionMap", surface.useDirectionMap);
    readBool(root, "UseScaleMap", surface.useScaleMap);
    readBool(root, "MakeInputSeamless", surface.makeInputSeamless);
    for (const XMLElement* element = root->FirstChildElement("Synthesizer"); element;
         element = element->NextSiblingElement("Synthesizer")) {
        const char* type = element->Attribute("Type");
        if (ImageSynthesizer* synthesizer = type ? surface.synthesizerOfType(type) : nullptr)
            readSynthesizer(path, element, *synthesizer);
    }
    const QString mode = readText(root, "SynthesizerMode");
    if (!mode.isEmpty())
        surface.selectSynthesizer(mode.toStdString());
}

// A mixed surface without the reference, naming itself or a surface that is not loaded
// cannot be synthesized; say so when it is read, naming the reference.
void checkMixedReference(const QString& path, const XMLElement* root, const char* key,
                         const ProjectData::MixedSurfaceData& mixed, const ProjectData::SurfaceData* resolved)
{
    if (resolved)
        return;
    const XMLElement* element = root->FirstChildElement(key);
    int32_t id = -1;
    QString problem;
    if (!element || element->QueryIntText(&id) != tinyxml2::XML_SUCCESS)
        problem = QStringLiteral("has no %1").arg(QLatin1String(key));
    else if (id < 0)
        return; // none chosen yet: a state the editor allows
    else if (id == mixed.id)
        problem = QStringLiteral("has %1 %2, which is the mixed surface itself").arg(QLatin1String(key)).arg(id);
    else
        problem = QStringLiteral("has %1 %2, which names no loaded surface").arg(QLatin1String(key)).arg(id);
    logMessage(Warning, QStringLiteral("%1: mixed surface '%2' %3.").arg(path, QString::fromStdString(mixed.name), problem));
}

} // namespace

QString mixedCachePath(const QString& cacheDir, int32_t surfaceId)
{
    return cacheDir + QStringLiteral("/Surface") + QString::number(surfaceId) + QStringLiteral(".cache");
}

bool writeTextureFile(const QString& path, const ProjectData::TextureData& texture)
{
    XMLDocument doc;
    XMLElement* root = addRoot(doc, "Texture", texture.name);
    addText(root, "TexturePath", texture.path);
    addValue(root, "ID", texture.id);
    const Image& image = texture.image;
    addValue(root, "IsNormalMap", image.format == Normal);
    addValue(root, "FlipNormalX", image.flipNormalX);
    addValue(root, "FlipNormalY", image.flipNormalY);
    addValue(root, "MappedNormalXY", image.mappedNormalXY);
    addValue(root, "MappedNormalZ", image.mappedNormalZ);
    return saveDocument(doc, path);
}

ProjectData::TextureData* readTextureFile(const QString& path, ProjectData& store)
{
    XMLDocument doc;
    const char* name = nullptr;
    const XMLElement* root = loadRoot(doc, path, "Texture", name);
    if (!root)
        return nullptr;
    const QString texturePath = readText(root, "TexturePath");
    if (texturePath.isEmpty())
        return reportMissing(path, "TexturePath"), nullptr;
    if (!hasInt(root, "ID"))
        return reportMissing(path, "ID"), nullptr;

    ProjectData::TextureData* texture = store.addTexture(texturePath);
    texture->name = name;
    readInt(root, "ID", texture->id);
    bool isNormalMap = false, flipX = false, flipY = false, mappedXY = false, mappedZ = false;
    readBool(root, "IsNormalMap", isNormalMap);
    readBool(root, "FlipNormalX", flipX);
    readBool(root, "FlipNormalY", flipY);
    readBool(root, "MappedNormalXY", mappedXY);
    readBool(root, "MappedNormalZ", mappedZ);
    if (isNormalMap)
        texture->image.toNormalMap(flipX, flipY, mappedXY, mappedZ);
    return texture;
}

bool writeModelFile(const QString& path, const ProjectData::ModelData& model)
{
    XMLDocument doc;
    XMLElement* root = addRoot(doc, "Model", model.name);
    addText(root, "ModelPath", model.path);
    XMLElement* transform = root->InsertNewChildElement("Transform");
    transform->SetAttribute("RotX", model.rotationX);
    transform->SetAttribute("RotY", model.rotationY);
    transform->SetAttribute("RotZ", model.rotationZ);
    transform->SetAttribute("Scale", model.scale);
    return saveDocument(doc, path);
}

ProjectData::ModelData* readModelFile(const QString& path, ProjectData& store)
{
    XMLDocument doc;
    const char* name = nullptr;
    const XMLElement* root = loadRoot(doc, path, "Model", name);
    if (!root)
        return nullptr;
    const QString modelPath = readText(root, "ModelPath");
    const XMLElement* transform = root->FirstChildElement("Transform");
    if (modelPath.isEmpty())
        return reportMissing(path, "ModelPath"), nullptr;
    if (!transform)
        return reportMissing(path, "Transform"), nullptr;

    ProjectData::ModelData* model = store.addModel(modelPath);
    model->name = name;
    transform->QueryFloatAttribute("RotX", &model->rotationX);
    transform->QueryFloatAttribute("RotY", &model->rotationY);
    transform->QueryFloatAttribute("RotZ", &model->rotationZ);
    transform->QueryFloatAttribute("Scale", &model->scale);
    return model;
}

bool writeSurfaceFile(const QString& path, const ProjectData::SurfaceData& surface)
{
    XMLDocument doc;
    XMLElement* root = addRoot(doc, "Surface", surface.name);
    addValue(root, "ID", surface.id);
    addValue(root, "Masked", surface.masked);
    addValue(root, "MaskTextureID", idOrNone(surface.maskTexture));
    addValue(root, "MaskChannel", surface.maskChannel);
    for (const ProjectData::SurfaceLayer& layer : surface.layers) {
        XMLElement* element = root->InsertNewChildElement("Layer");
        element->SetAttribute("Name", layer.name.c_str());
        if (layer.texture)
            addValue(element, "TextureID", layer.texture->id);
        addValue(element, "Mode", int32_t(layer.mode));
    }
    addSurfaceTail(root, surface);
    return saveDocument(doc, path);
}

ProjectData::SurfaceData* readSurfaceFile(const QString& path, ProjectData& store)
{
    XMLDocument doc;
    const char* name = nullptr;
    const XMLElement* root = loadRoot(doc, path, "Surface", name);
    if (!root)
        return nullptr;
    for (const XMLElement* layer = root->FirstChildElement("Layer"); layer; layer = layer->NextSiblingElement("Layer")) {
        if (!layer->Attribute("Name"))
            return reportMissing(path, "Layer Name"), nullptr;
        if (!hasInt(layer, "Mode"))
            return reportMissing(path, "Mode"), nullptr;
    }

    ProjectData::SurfaceData* surface = store.addSurface("Surface");
    surface->name = name;
    readBool(root, "Masked", surface->masked);
    for (const XMLElement* element = root->FirstChildElement("Layer"); element;
         element = element->NextSiblingElement("Layer")) {
        ProjectData::SurfaceLayer& layer = surface->addLayer();
        layer.name = element->Attribute("Name");
        readReference(element, "TextureID", layer.texture, [&](int32_t id) { return store.textureById(id); }, false);
        int32_t mode = 0;
        if (inRange(path, element, layerModeRange))
            readInt(element, "Mode", mode);
        layer.mode = ProjectData::LayerMode(mode);
    }
    readSurfaceCommon(path, root, store, *surface);
    return surface;
}

bool writeMixedSurfaceFile(const QString& path, const QString& cacheDir, const ProjectData::MixedSurfaceData& mixed)
{
    XMLDocument doc;
    XMLElement* root = addRoot(doc, "MixedSurface", mixed.name);
    addValue(root, "ID", mixed.id);
    addValue(root, "MaskTextureID", idOrNone(mixed.maskTexture));
    addValue(root, "MaskChannel", mixed.maskChannel);
    addValue(root, "SythesizeMask", mixed.synthesizeMask);
    addValue(root, "TileMask", mixed.tileMask);
    addValue(root, "MaskFilterMode", mixed.maskFilterMode);
    addValue(root, "FreezeMask", mixed.freezeMask);
    addValue(root, "WhiteSurfaceID", idOrNone(mixed.whiteSurface));
    addValue(root, "BlackSurfaceID", idOrNone(mixed.blackSurface));
    addValue(root, "SythesizeWhiteSurface", mixed.synthesizeWhiteSurface);
    addValue(root, "TileWhiteSurface", mixed.tileWhiteSurface);
    addValue(root, "FreezeWhiteSurface", mixed.freezeWhiteSurface);
    addValue(root, "SythesizeBlackSurface", mixed.synthesizeBlackSurface);
    addValue(root, "TileBlackSurface", mixed.tileBlackSurface);
    addValue(root, "FreezeBlackSurface", mixed.freezeBlackSurface);
    addSurfaceTail(root, mixed);
    const bool recordWritten = saveDocument(doc, path);
    const bool cacheWritten = writeMixedCache(mixedCachePath(cacheDir, mixed.id), mixed);
    return recordWritten && cacheWritten;
}

ProjectData::MixedSurfaceData* readMixedSurfaceFile(const QString& path, const QString& cacheDir, ProjectData& store)
{
    XMLDocument doc;
    const char* name = nullptr;
    const XMLElement* root = loadRoot(doc, path, "MixedSurface", name);
    if (!root)
        return nullptr;

    ProjectData::MixedSurfaceData* mixed = store.addMixedSurface("MixedSurface");
    mixed->name = name;
    readBool(root, "SythesizeMask", mixed->synthesizeMask);
    readBool(root, "TileMask", mixed->tileMask);
    if (inRange(path, root, maskFilterModeRange))
        readInt(root, "MaskFilterMode", mixed->maskFilterMode);
    readBool(root, "FreezeMask", mixed->freezeMask);
    // The new record carries ID 0 until its own is read; it must never
    // resolve to itself when the surfaces it names are not loaded.
    auto surfaceById = [&](int32_t id) -> ProjectData::SurfaceData* {
        for (const auto& surface : store.surfaces)
            if (surface->id == id && surface.get() != mixed)
                return surface.get();
        return nullptr;
    };
    readReference(root, "WhiteSurfaceID", mixed->whiteSurface, surfaceById, true);
    readReference(root, "BlackSurfaceID", mixed->blackSurface, surfaceById, true);
    // The older single flag first, so that the two newer ones win.
    bool frozen = false;
    if (root->FirstChildElement("FreezeSurfaces")
        && root->FirstChildElement("FreezeSurfaces")->QueryBoolText(&frozen) == tinyxml2::XML_SUCCESS) {
        mixed->freezeWhiteSurface = frozen;
        mixed->freezeBlackSurface = frozen;
    }
    readBool(root, "SythesizeWhiteSurface", mixed->synthesizeWhiteSurface);
    readBool(root, "TileWhiteSurface", mixed->tileWhiteSurface);
    readBool(root, "FreezeWhiteSurface", mixed->freezeWhiteSurface);
    readBool(root, "SythesizeBlackSurface", mixed->synthesizeBlackSurface);
    readBool(root, "TileBlackSurface", mixed->tileBlackSurface);
    readBool(root, "FreezeBlackSurface", mixed->freezeBlackSurface);
    readSurfaceCommon(path, root, store, *mixed);
    checkMixedReference(path, root, "WhiteSurfaceID", *mixed, mixed->whiteSurface);
    checkMixedReference(path, root, "BlackSurfaceID", *mixed, mixed->blackSurface);

    readMixedCache(mixedCachePath(cacheDir, mixed->id), *mixed);
    mixed->updateMixedLayers();
    return mixed;
}

} // namespace Velmor
