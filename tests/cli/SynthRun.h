#pragma once

#include "ImageFile.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QStringList>

#include <cmath>

struct RunResult
{
    int exitCode = -1;
    QStringList errorLines; // stderr, one entry per line
    QString output;         // stdout
};

// Runs the built ondrels-synth, in `workDir` when given: a masked run leaves
// its diagnostic mask image in the working directory.
inline RunResult runSynth(const QStringList& arguments, const QString& workDir = QString())
{
    QProcess process;
    if (!workDir.isEmpty())
        process.setWorkingDirectory(workDir);
    process.start(QStringLiteral(ONDRELS_SYNTH_PATH), arguments);
    RunResult result;
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit) {
        ADD_FAILURE() << "ondrels-synth did not finish normally";
        process.kill();
        process.waitForFinished();
        return result;
    }
    result.exitCode = process.exitCode();
    result.errorLines = QString::fromLocal8Bit(process.readAllStandardError()).split('\n', Qt::SkipEmptyParts);
    result.output = QString::fromLocal8Bit(process.readAllStandardOutput());
    return result;
}

// Saves a square image whose channel k at (x, y) is value(x, y, k).
template <typename Value>
QString writeImage(const QString& path, uint32_t size, PixelFormat format, Value value,
                   uint32_t fileType = FilePNG, uint32_t sampleType = UInt8)
{
    Image image(size, size, format);
    const uint32_t c = image.channels();
    for (uint32_t y = 0; y < size; ++y)
        for (uint32_t x = 0; x < size; ++x)
            for (uint32_t k = 0; k < c; ++k)
                image.data[c * (x + size * y) + k] = value(float(x), float(y), float(k));
    image.fileType = fileType;
    image.sampleType = sampleType;
    EXPECT_TRUE(saveImage(path, image)) << path.toStdString();
    return path;
}

// A smooth, non-repeating 8-bit PNG with every channel in 0.25..0.75.
inline QString writePattern(const QString& path, uint32_t size, PixelFormat format, float phase = 0.0f)
{
    return writeImage(path, size, format, [phase](float x, float y, float k) {
        return 0.5f + 0.25f * std::sin(0.3f * x * (k + 1) + 0.2f * y + phase);
    });
}

inline QByteArray fileBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline Image loadOutput(const QString& path)
{
    Image image;
    ImageFileInfo info;
    EXPECT_TRUE(loadImage(info, path, image)) << path.toStdString();
    return image;
}
