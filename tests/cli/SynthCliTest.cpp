// Runs the built ondrels-synth as a subprocess, the way scripts use it.
#include "ImageFile.h"

#include "SynthRun.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <cmath>

namespace {

// An 8-bit RGB PNG whose pixel (x, y) is colour(x, y).
template <typename Colour>
void writeRgbPng(const QString& path, uint32_t size, Colour colour)
{
    Image image(size, size, RGB);
    for (uint32_t y = 0; y < size; ++y)
        for (uint32_t x = 0; x < size; ++x)
            colour(float(x), float(y), image.data + 3 * (x + size * y));
    image.fileType = 3;
    image.sampleType = 1;
    ASSERT_TRUE(saveImage(path, image));
}

// A smooth, non-repeating pattern with every channel in 0.25..0.75.
void writeColour(const QString& path, uint32_t size)
{
    writeRgbPng(path, size, [](float x, float y, float* p) {
        p[0] = 0.5f + 0.25f * std::sin(0.31f * x);
        p[1] = 0.5f + 0.25f * std::cos(0.17f * y);
        p[2] = 0.5f + 0.25f * std::sin(0.05f * x * y);
    });
}

// Bumps as a tangent-space normal map stored as colour.
void writeNormal(const QString& path, uint32_t size)
{
    writeRgbPng(path, size, [](float x, float y, float* p) {
        p[0] = 0.5f + 0.3f * std::sin(0.4f * x);
        p[1] = 0.5f + 0.3f * std::sin(0.3f * y);
        p[2] = 0.9f;
    });
}

// 16-bit grey TIFF.
void writeDisplacement(const QString& path, uint32_t size)
{
    Image image(size, size, Gray);
    for (uint32_t i = 0; i < size * size; ++i)
        image.data[i] = 0.3f + 0.4f * float(i % 97) / 97.0f;
    image.fileType = 5;
    image.sampleType = 2;
    ASSERT_TRUE(saveImage(path, image));
}

QByteArray fileBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

TEST(SynthCli, BadCommandLinesAndInputsFailWithOneLineAndTheirStatus)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString colour = dir.filePath("wall_col.png");
    writeColour(colour, 32);
    const QString out = dir.filePath("out");
    QFile junk(dir.filePath("junk_normal.png"));
    ASSERT_TRUE(junk.open(QIODevice::WriteOnly));
    junk.write("this is not a PNG file, only text that pretends to be one");
    junk.close();
    Image grey(8, 8, Gray);
    grey.fileType = 3;
    grey.sampleType = 1;
    ASSERT_TRUE(saveImage(dir.filePath("grey.png"), grey));

    struct Case
    {
        QStringList arguments;
        int exitCode;
        QString reasonPart;
    };
    const Case cases[] = {
        {{colour, dir.filePath("missing_normal.png"), "-o", out}, 1, "missing_normal.png': no such file"},
        {{colour, junk.fileName(), "-o", out}, 1, "Cannot read input file '" + junk.fileName() + "': "},
        {{colour, "--direction-map", dir.filePath("nothere.png"), "-o", out}, 1, "nothere.png': no such file"},
        // A one-channel direction map cannot hold a direction.
        {{colour, "--direction-map", dir.filePath("grey.png"), "-o", out}, 1, "grey.png"},
        {{colour, "--bogus", "-o", out}, 2, "unknown option '--bogus'"},
        {{colour, "--patch-size", "0", "-o", out}, 2, "--patch-size must be"},
        {{colour, "--size", "0x5", "-o", out}, 2, "--size must be"},
        {{colour, dir.filePath("plain.png"), "-o", out}, 2, "--layer NAME="},
        {{colour}, 2, "-o DIR"},
        // The output directory's place is taken by a file.
        {{colour, "-o", colour}, 1, "Cannot create output directory"},
    };
    for (const Case& c : cases) {
        const RunResult result = runSynth(c.arguments);
        const QString args = c.arguments.join(' ');
        EXPECT_EQ(result.exitCode, c.exitCode) << args.toStdString();
        ASSERT_EQ(result.errorLines.size(), 1) << args.toStdString() << "\n" << result.errorLines.join('\n').toStdString();
        EXPECT_TRUE(result.errorLines[0].contains(c.reasonPart)) << result.errorLines[0].toStdString();
        // Not a terminal: no colour codes.
        EXPECT_FALSE(result.errorLines[0].contains('\033'));
        // Everything is checked before any work is done.
        EXPECT_FALSE(QDir(out).exists()) << args.toStdString();
    }

    const RunResult help = runSynth({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.output.startsWith("Usage: ondrels-synth"));
    EXPECT_TRUE(help.errorLines.isEmpty());
}

TEST(SynthCli, LayersOfDifferentSizesSynthesizeWithAWarning)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    writeColour(dir.filePath("a_col.png"), 48);
    writeNormal(dir.filePath("a_normal.png"), 40);
    const QString out = dir.filePath("out");
    const RunResult result = runSynth({dir.filePath("a_col.png"), dir.filePath("a_normal.png"), "--size", "40x40",
                                       "--patch-size", "8", "--boundary", "2", "--seed", "3", "-q", "-o", out});
    EXPECT_EQ(result.exitCode, 0) << result.errorLines.join('\n').toStdString();
    // -q leaves only warnings, and at least ours names both sizes.
    EXPECT_FALSE(result.errorLines.isEmpty());
    EXPECT_TRUE(result.errorLines.filter("40x40").size() >= 1 && result.errorLines.filter("48x48").size() >= 1)
        << result.errorLines.join('\n').toStdString();
    EXPECT_TRUE(QFile::exists(QDir(out).filePath("color.png")));
    EXPECT_TRUE(QFile::exists(QDir(out).filePath("normal.png")));
}

TEST(SynthCli, SmallRunWritesEachLayerInItsSourceFormatAndRepeatsWithTheSameSeed)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    // Given out of PBR order and with a freely named layer.
    const QStringList inputs = {dir.filePath("rock_normal.png"), dir.filePath("rock_col.png"), "--layer",
                                "height=" + dir.filePath("h.tif")};
    writeNormal(dir.filePath("rock_normal.png"), 64);
    writeColour(dir.filePath("rock_col.png"), 64);
    writeDisplacement(dir.filePath("h.tif"), 64);
    const QStringList settings = {"--size", "96x96", "--patch-size", "16", "--boundary", "4", "--max-tries", "4"};

    const auto run = [&](const QString& out, const char* seed) {
        const RunResult result = runSynth(inputs + settings + QStringList{"--seed", seed, "-o", out});
        EXPECT_EQ(result.exitCode, 0) << result.errorLines.join('\n').toStdString();
    };
    const QString first = dir.filePath("first"), second = dir.filePath("second"), other = dir.filePath("other");
    run(first, "11");
    run(second, "11");
    run(other, "12");

    // Only the finished files, named after the layers, with the source's extension.
    const QStringList expected = {"color.png", "height.tif", "normal.png"};
    EXPECT_EQ(QDir(first).entryList(QDir::Files | QDir::Hidden, QDir::Name), expected);

    struct Format
    {
        const char* file;
        PixelFormat format;
        uint32_t sampleType;
    };
    const Format formats[] = {{"color.png", RGB, 1}, {"normal.png", RGB, 1}, {"height.tif", Gray, 2}};
    for (const Format& f : formats) {
        const QString path = QDir(first).filePath(f.file);
        Image image;
        ImageFileInfo info;
        ASSERT_TRUE(loadImage(info, path, image)) << f.file;
        EXPECT_EQ(image.width, 96u);
        EXPECT_EQ(image.height, 96u);
        EXPECT_EQ(image.format, f.format) << f.file;
        EXPECT_EQ(image.sampleType, f.sampleType) << f.file;
        // Every output pixel was filled from the source, whose values all
        // lie well above zero.
        float smallest = 1.0f;
        for (uint64_t i = 0; i < image.floatCount(); ++i)
            smallest = std::min(smallest, image.data[i]);
        EXPECT_GT(smallest, 0.1f) << f.file;

        EXPECT_EQ(fileBytes(path), fileBytes(QDir(second).filePath(f.file))) << f.file << " differs with the same seed";
    }
    EXPECT_NE(fileBytes(QDir(first).filePath("color.png")), fileBytes(QDir(other).filePath("color.png")));
}

TEST(SynthCli, GuidanceAndMasksReachTheSynthesizer)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString colour = dir.filePath("t_col.png");
    writeColour(colour, 48);
    // Output mask: black left half, white right half.
    writeRgbPng(dir.filePath("half.png"), 32, [](float x, float, float* p) { p[0] = p[1] = p[2] = x < 16 ? 0.0f : 1.0f; });
    writeRgbPng(dir.filePath("dir.png"), 16, [](float x, float y, float* p) {
        p[0] = x / 15.0f;
        p[1] = y / 15.0f;
        p[2] = 0.0f;
    });
    writeRgbPng(dir.filePath("scale.png"), 16, [](float x, float, float* p) { p[0] = p[1] = p[2] = x / 15.0f; });
    // Source mask in the green channel only.
    writeRgbPng(dir.filePath("src.png"), 48, [](float x, float, float* p) {
        p[0] = 0.0f;
        p[1] = x < 40 ? 1.0f : 0.0f;
        p[2] = 0.0f;
    });
    const QStringList common = {colour, "--size", "96x96", "--patch-size", "12", "--boundary", "3", "--seed", "5"};

    // Paste only where the output mask is white.
    const QString masked = dir.filePath("masked");
    RunResult result = runSynth(common + QStringList{"--output-mask", dir.filePath("half.png"), "-o", masked});
    ASSERT_EQ(result.exitCode, 0) << result.errorLines.join('\n').toStdString();
    Image image;
    ImageFileInfo info;
    ASSERT_TRUE(loadImage(info, QDir(masked).filePath("color.png"), image));
    ASSERT_EQ(image.width, 96u);
    double leftMax = 0.0, rightEmpty = 0.0;
    for (uint32_t y = 0; y < 96; ++y)
        for (uint32_t x = 0; x < 96; ++x) {
            const float value = image.data[3 * (x + 96 * y)];
            if (x < 40)
                leftMax = std::max(leftMax, double(value));
            else if (x >= 56 && x < 88) // the mask repeats: its last column blends into the first
                rightEmpty += value < 0.1f ? 1.0 : 0.0;
        }
    EXPECT_EQ(leftMax, 0.0) << "pasted where the output mask is black";
    EXPECT_EQ(rightEmpty, 0.0) << "pixels left empty where the output mask is white";

    // Every guidance option at once, with the cutout method, runs to the end.
    const QString guided = dir.filePath("guided");
    result = runSynth(common + QStringList{"--method", "cutout", "--feather", "2", "--direction-map",
                                           dir.filePath("dir.png"), "--scale-map", dir.filePath("scale.png"),
                                           "--source-mask", dir.filePath("src.png") + ":1", "--first-layer-only",
                                           "-o", guided},
                      dir.path());
    ASSERT_EQ(result.exitCode, 0) << result.errorLines.join('\n').toStdString();
    ASSERT_TRUE(loadImage(info, QDir(guided).filePath("color.png"), image));
    EXPECT_EQ(image.width, 96u);
    EXPECT_EQ(image.height, 96u);
}
