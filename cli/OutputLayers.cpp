#include "OutputLayers.h"

#include "ConsoleLog.h"
#include "ExitStatus.h"

#include "ImageFile.h"
#include "LogMessage.h"

#include <QDir>
#include <QFileInfo>

namespace {

QByteArray text(const QString& s)
{
    return s.toLocal8Bit();
}

// The saver writes under a temporary name and renames, so an existing file
// survives a failed save; its errors are folded into one line naming the file.
bool saveLayerFile(ConsoleLog& console, const QString& path, const Image& image)
{
    console.startCapture();
    const bool saved = saveImage(path, image);
    const QStringList errors = console.stopCapture();
    if (saved)
        return true;
    const QString reason = errors.isEmpty() ? QStringLiteral("unknown error") : errors.join(QStringLiteral("; "));
    logMessage(Error, "Cannot write '%s': %s", text(path).constData(), text(reason).constData());
    return false;
}

} // namespace

int saveOutputLayers(ConsoleLog& console, std::unique_ptr<LayeredImage> output, const QString& dir)
{
    int written = 0;
    for (size_t i = 0; i < output->layerCount(); ++i) {
        Image& image = *output->layers[i];
        // Back to colour in place: the layer is freed after saving, and this
        // spares the saver a full-size copy.
        image.fromNormalMap();
        const QString name = QString::fromStdString(output->names[i]) + extensionForFileType(image.fileType);
        const QString path = QDir(dir).filePath(name);
        if (saveLayerFile(console, path, image)) {
            ++written;
            logMessage(Info, "Wrote %s", text(path).constData());
        }
        delete output->layers[i];
        output->layers[i] = nullptr;
    }
    if (written == 0) {
        logMessage(Error, "Nothing was written to '%s'.", text(dir).constData());
        return ExitFailure;
    }
    if (written < int(output->layerCount())) {
        // A layer lost to a full disk or a refused depth fails the run too.
        logMessage(Error, "Wrote only %i of %i layers to '%s'.", written, int(output->layerCount()),
                   text(dir).constData());
        return ExitFailure;
    }
    logMessage(Success, "Wrote %i of %i layers to '%s'.", written, int(output->layerCount()), text(dir).constData());
    return ExitSuccess;
}

bool prepareOutputDir(const QString& dir)
{
    if (!QDir().mkpath(dir)) {
        logMessage(Error, "Cannot create output directory '%s'.", text(dir).constData());
        return false;
    }
    if (!QFileInfo(dir).isWritable()) {
        logMessage(Error, "Cannot write to output directory '%s'.", text(dir).constData());
        return false;
    }
    return true;
}
