// Runs the built ondrels-synth on every surface of the generated sample
// project, at a small size so that the whole project takes seconds.
#include "ImageFile.h"

#include "SynthRun.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

TEST(SampleProjectCli, EverySurfaceWritesItsLayersAtTheRequestedSize)
{
    const QString project = QStringLiteral(ONDRELS_SAMPLE_PROJECT_DIR);
    const struct
    {
        const char* surface;
        const char* method;
    } runs[] = {{"Cobblestones", "blended"}, {"Moss", "cutout"}, {"MossyCobblestones", "blended"}};
    // The sample maps are 8-bit PNG files: so are the outputs, the normal
    // layer written back as colour.
    const struct
    {
        const char* file;
        PixelFormat format;
    } layers[] = {{"color.png", RGB}, {"normal.png", RGB}, {"displacement.png", Gray}, {"roughness.png", Gray}};

    QTemporaryDir work;
    for (const auto& run : runs) {
        SCOPED_TRACE(run.surface);
        const QString out = QDir(work.path()).filePath(QString::fromLatin1(run.surface));
        const RunResult result = runSynth({"--project", project, "--surface", run.surface, "-o", out, "--size",
                                           "160x96", "--method", run.method, "--patch-size", "24", "--boundary",
                                           "6", "--seed", "5", "-q"},
                                          work.path());
        ASSERT_EQ(result.exitCode, 0) << result.errorLines.join('\n').toStdString();
        for (const auto& layer : layers) {
            SCOPED_TRACE(layer.file);
            ImageFileInfo info;
            Image image;
            ASSERT_TRUE(loadImage(info, QDir(out).filePath(QString::fromLatin1(layer.file)), image));
            EXPECT_EQ(image.width, 160u);
            EXPECT_EQ(image.height, 96u);
            EXPECT_EQ(image.format, layer.format);
            EXPECT_EQ(image.fileType, uint32_t(FilePNG));
            EXPECT_EQ(image.sampleType, uint32_t(UInt8));
        }
        EXPECT_EQ(QDir(out).entryList(QDir::Files).size(), 4);
    }
}
