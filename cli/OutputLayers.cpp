#include "OutputLayers.h"

#include "ConsoleLog.h"
#include "ExitStatus.h"

#include "ImageFile.h"
#include "LogMessage.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <atomic>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace {

QByteArray text(const QString& s)
{
    return s.toLocal8Bit();
}

// The saver writes under a temporary name and renames, so an existing file
// survives a failed save; its errors are folded into one line naming the file.
bool saveLayerFile(ConsoleLog& console, const QString& path, const Image& image, int pngLevel,
                   const std::function<void(double)>& progress)
{
    console.startCapture();
    const bool saved = saveImage(path, image, pngLevel, progress);
    const QStringList errors = console.stopCapture();
    if (saved)
        return true;
    const QString reason = errors.isEmpty() ? QStringLiteral("unknown error") : errors.join(QStringLiteral("; "));
    logMessage(Error, "Cannot write '%s': %s", text(path).constData(), text(reason).constData());
    return false;
}

} // namespace

int saveOutputLayers(ConsoleLog& console, std::unique_ptr<LayeredImage> output, const QString& dir, int pngLevel)
{
    const size_t count = output->layerCount();
    std::atomic<size_t> next{0};
    std::atomic<int> written{0};
    // Written fraction of every layer, weighted by its pixel data.
    std::mutex progressLock;
    std::vector<double> done(count, 0.0);
    std::vector<double> weight(count, 0.0);
    double totalWeight = 0.0;
    for (size_t i = 0; i < count; ++i)
        totalWeight += weight[i] = double(output->layers[i]->floatCount());
    const auto report = [&](size_t layer, double fraction) {
        std::lock_guard<std::mutex> guard(progressLock);
        done[layer] = fraction;
        double sum = 0.0;
        for (size_t i = 0; i < count; ++i)
            sum += done[i] * weight[i];
        console.progress(synthesisShare + int((100 - synthesisShare) * sum / std::max(1.0, totalWeight)));
    };
    // The layers are independent: each worker encodes whole files, taking the
    // next unwritten layer, so deflating runs on every core.
    const auto work = [&] {
        for (size_t i = next++; i < count; i = next++) {
            Image& image = *output->layers[i];
            // Back to colour in place: the layer is freed after saving, and
            // this spares the saver a full-size copy.
            image.fromNormalMap();
            const QString name = QString::fromStdString(output->names[i]) + extensionForFileType(image.fileType);
            const QString path = QDir(dir).filePath(name);
            if (saveLayerFile(console, path, image, pngLevel, [&report, i](double f) { report(i, f); })) {
                ++written;
                logMessage(Info, "Wrote %s", text(path).constData());
            }
            report(i, 1.0);
            delete output->layers[i];
            output->layers[i] = nullptr;
        }
    };
    // One worker per core at most: each holds an encoded copy of its layer.
    const size_t workers = std::min<size_t>(count, std::max(1u, std::thread::hardware_concurrency()));
    std::vector<std::thread> helpers;
    for (size_t w = 1; w < workers; ++w)
        helpers.emplace_back(work);
    work();
    for (std::thread& helper : helpers)
        helper.join();
    console.progress(100);
    console.endProgress();

    if (written == 0) {
        logMessage(Error, "Nothing was written to '%s'.", text(dir).constData());
        return ExitFailure;
    }
    if (written < int(count)) {
        // A layer lost to a full disk or a refused depth fails the run too.
        logMessage(Error, "Wrote only %i of %i layers to '%s'.", written.load(), int(count), text(dir).constData());
        return ExitFailure;
    }
    logMessage(Success, "Wrote %i of %i layers to '%s'.", written.load(), int(count), text(dir).constData());
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
