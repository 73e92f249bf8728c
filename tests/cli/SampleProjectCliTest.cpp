// Runs the built ondrels-synth on every surface of the generated sample
// project, at a small size so that the whole project takes seconds.
#include "SynthRun.h"

#include <QDir>
#include <QTemporaryDir>

TEST(SampleProjectCli, EverySurfaceWritesItsLayersAtTheRequestedSize)
{
    const std::pair<const char*, const char*> runs[] = {
        {"Cobblestones", "blended"}, {"Moss", "cutout"}, {"MossyCobblestones", "blended"}};
    // The sample maps are 8-bit PNG files: so are the outputs, the normal
    // layer written back as colour.
    const std::pair<const char*, PixelFormat> layers[] = {
        {"color.png", RGB}, {"normal.png", RGB}, {"displacement.png", Gray}, {"roughness.png", Gray}};
    QTemporaryDir work;
    for (const auto& [surface, method] : runs) {
        SCOPED_TRACE(surface);
        const QString out = work.filePath(surface);
        const RunResult result = runSynth({"--project", ONDRELS_SAMPLE_PROJECT_DIR, "--surface", surface, "-o", out,
                                           "--size", "160x96", "--method", method, "--patch-size", "24",
                                           "--boundary", "6", "--seed", "5", "-q"},
                                          work.path());
        ASSERT_EQ(result.exitCode, 0) << result.errorLines.join('\n').toStdString();
        EXPECT_EQ(QDir(out).entryList(QDir::Files).size(), 4);
        for (const auto& [file, format] : layers) {
            const Image image = loadOutput(out + "/" + file);
            EXPECT_TRUE(image.width == 160u && image.height == 96u) << file;
            EXPECT_EQ(image.format, format) << file;
            EXPECT_TRUE(image.fileType == FilePNG && image.sampleType == UInt8) << file;
        }
    }
}

// The generator's own options print or refuse; they never become a folder.
TEST(SampleProjectCli, MakeSampleTakesNoOptionForAFolder)
{
    QTemporaryDir work;
    for (const auto& [argument, exitCode] : {std::pair{"--help", 0}, std::pair{"-h", 0}, std::pair{"--bogus", 2}}) {
        QProcess process;
        process.setWorkingDirectory(work.path());
        process.start(QStringLiteral(ONDRELS_MAKE_SAMPLE_PATH), {QString::fromLatin1(argument)});
        ASSERT_TRUE(process.waitForFinished(60000)) << argument;
        EXPECT_EQ(process.exitCode(), exitCode) << argument;
        const QByteArray text = exitCode == 0 ? process.readAllStandardOutput() : process.readAllStandardError();
        EXPECT_TRUE(text.startsWith("usage: ")) << argument << ": " << text.constData();
        EXPECT_TRUE(QDir(work.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).isEmpty()) << argument;
    }
}
