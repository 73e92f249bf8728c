// Runs the built ondrels-synth as a subprocess, the way scripts use it.
#include "SynthRun.h"

#include "NormalConvention.h"

#include <QDir>
#include <QTemporaryDir>

#include <algorithm>
#include <tuple>

TEST(SynthCli, BadCommandLinesAndInputsFailWithOneLineAndTheirStatus)
{
    QTemporaryDir dir;
    const QString colour = writePattern(dir.filePath("wall_col.png"), 32, RGB);
    const QString grey = writePattern(dir.filePath("grey.png"), 8, Gray);
    const QString out = dir.filePath("out");
    const QString junk = dir.filePath("junk_normal.png");
    QFile file(junk);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("this is not a PNG file, only text that pretends to be one");
    file.close();

    const std::tuple<QStringList, int, QString> cases[] = {
        {{colour, dir.filePath("missing_normal.png"), "-o", out}, 1, "missing_normal.png': no such file"},
        {{colour, junk, "-o", out}, 1, "Cannot read input file '" + junk + "': "},
        {{colour, "--direction-map", dir.filePath("nothere.png"), "-o", out}, 1, "nothere.png': no such file"},
        // A one-channel direction map cannot hold a direction.
        {{colour, "--direction-map", grey, "-o", out}, 1, "grey.png"},
        {{colour, "--bogus", "-o", out}, 2, "unknown option '--bogus'"},
        {{colour, "--patch-size", "0", "-o", out}, 2, "--patch-size must be"},
        {{colour, dir.filePath("plain.png"), "-o", out}, 2, "--layer NAME="},
        {{colour}, 2, "-o DIR"},
        // The output directory's place is taken by a file.
        {{colour, "-o", colour}, 1, "Cannot create output directory"},
    };
    for (const auto& [arguments, exitCode, reasonPart] : cases) {
        const RunResult result = runSynth(arguments);
        SCOPED_TRACE(arguments.join(' ').toStdString());
        EXPECT_EQ(result.exitCode, exitCode);
        ASSERT_EQ(result.errorLines.size(), 1) << result.errorLines.join('\n').toStdString();
        EXPECT_TRUE(result.errorLines[0].contains(reasonPart)) << result.errorLines[0].toStdString();
        EXPECT_FALSE(result.errorLines[0].contains('\033')); // not a terminal: no colour codes
        EXPECT_FALSE(QDir(out).exists()); // everything is checked before any work is done
    }
}

TEST(SynthCli, SmallRunWritesEachLayerInItsSourceFormatAndRepeatsWithTheSameSeed)
{
    QTemporaryDir dir;
    // Bumps as a tangent-space normal map stored as colour, and 16-bit grey steps.
    const auto bumps = [](float x, float y, float k) { return k == 2 ? 0.9f : 0.5f + 0.3f * std::sin(x + k * y); };
    const auto steps = [](float x, float y, float) { return 0.3f + 0.4f * std::fmod(x + 48 * y, 97.0f) / 97.0f; };
    // Given out of PBR order, with a freely named layer of a smaller size.
    const QString height = writeImage(dir.filePath("h.tif"), 48, Gray, steps, FileTIFF, UInt16);
    const QStringList inputs = {writeImage(dir.filePath("rock_normal.png"), 64, RGB, bumps),
                                writePattern(dir.filePath("rock_col.png"), 64, RGB), "--layer", "height=" + height,
                                "--size", "96x96", "--patch-size", "16", "--boundary", "4", "--max-tries", "4"};
    const auto run = [&](const char* name, const char* seed) {
        const RunResult result = runSynth(inputs + QStringList{"--seed", seed, "-o", dir.filePath(name)});
        EXPECT_EQ(result.exitCode, 0) << result.errorLines.join('\n').toStdString();
        // The sizes differ: a warning names both, and the smallest is used.
        EXPECT_EQ(result.errorLines.filter("48x48").filter("64x64").size(), 1);
        return dir.filePath(name) + "/";
    };
    const QString first = run("first", "11"), second = run("second", "11"), other = run("other", "12");

    // Only the finished files, named after the layers, with the source's extension.
    EXPECT_EQ(QDir(first).entryList(QDir::Files | QDir::Hidden, QDir::Name),
              QStringList({"color.png", "height.tif", "normal.png"}));
    const std::tuple<const char*, PixelFormat, uint32_t> formats[] = {
        {"color.png", RGB, UInt8}, {"normal.png", RGB, UInt8}, {"height.tif", Gray, UInt16}};
    for (const auto& [file, format, sampleType] : formats) {
        SCOPED_TRACE(file);
        const Image image = loadOutput(first + file);
        EXPECT_TRUE(image.width == 96u && image.height == 96u);
        EXPECT_EQ(image.format, format);
        EXPECT_EQ(image.sampleType, sampleType);
        // Every output pixel was filled from the source, whose values all lie well above zero.
        EXPECT_GT(*std::min_element(image.data, image.data + image.floatCount()), 0.1f);
        EXPECT_EQ(fileBytes(first + file), fileBytes(second + file)) << "differs with the same seed";
    }
    EXPECT_NE(fileBytes(first + "color.png"), fileBytes(other + "color.png"));
}

TEST(SynthCli, GuidanceAndMasksReachTheSynthesizer)
{
    QTemporaryDir dir;
    const auto half = [](float x, float, float) { return x < 16 ? 0.0f : 1.0f; };
    const auto ramps = [](float x, float y, float k) { return k == 0 ? x / 15.0f : k == 1 ? y / 15.0f : 0.0f; };
    const auto greenMask = [](float x, float, float k) { return k == 1 && x < 40 ? 1.0f : 0.0f; };
    const QStringList common = {writePattern(dir.filePath("t_col.png"), 48, RGB), "--size", "96x96", "--patch-size",
                                "12", "--boundary", "3", "--seed", "5"};

    // Paste only where the output mask (black left half, white right half) is white.
    const QString masked = dir.filePath("masked"), outputMask = writeImage(dir.filePath("half.png"), 32, Gray, half);
    RunResult result = runSynth(common + QStringList{"--output-mask", outputMask, "-o", masked});
    ASSERT_EQ(result.exitCode, 0) << result.errorLines.join('\n').toStdString();
    const Image image = loadOutput(masked + "/color.png");
    ASSERT_EQ(image.width, 96u);
    float leftMax = 0.0f;
    int rightEmpty = 0;
    for (uint32_t y = 0; y < 96; ++y)
        for (uint32_t x = 0; x < 96; ++x) {
            const float value = image.data[3 * (x + 96 * y)];
            if (x < 40)
                leftMax = std::max(leftMax, value);
            else if (x >= 56 && x < 88) // the mask repeats: its last column blends into the first
                rightEmpty += value < 0.1f;
        }
    EXPECT_EQ(leftMax, 0.0f) << "pasted where the output mask is black";
    EXPECT_EQ(rightEmpty, 0) << "pixels left empty where the output mask is white";

    // Every guidance option at once, with the cutout method, runs to the end;
    // the source mask is in the green channel only.
    const QString guided = dir.filePath("guided");
    result = runSynth(common + QStringList{"--method", "cutout", "--feather", "2", "--direction-map",
                                           writeImage(dir.filePath("dir.png"), 16, RGB, ramps), "--scale-map",
                                           writeImage(dir.filePath("scale.png"), 16, Gray, ramps), "--source-mask",
                                           writeImage(dir.filePath("src.png"), 48, RGB, greenMask) + ":1",
                                           "--first-layer-only", "-o", guided},
                      dir.path());
    ASSERT_EQ(result.exitCode, 0) << result.errorLines.join('\n').toStdString();
    EXPECT_EQ(loadOutput(guided + "/color.png").width, 96u);
}

// Layers are written side by side: a layer that cannot be written gets its
// own single error line while the others are still written, and
// --smallest-files gives the same pixels in files no larger.
TEST(SynthCli, LayersWrittenSideBySideFailAloneAndSmallestFilesKeepPixels)
{
    QTemporaryDir dir;
    const QStringList inputs = {writePattern(dir.filePath("rock_col.png"), 64, RGB),
                                writePattern(dir.filePath("rock_disp.png"), 64, Gray, 1.0f),
                                writePattern(dir.filePath("rock_rough.png"), 64, Gray, 2.0f),
                                "--size", "160x160", "--patch-size", "16", "--boundary", "4", "--seed", "3",
                                // The content these file sizes were judged on.
                                "--method", "blended", "--search", "random"};
    const QString fast = dir.filePath("fast"), small = dir.filePath("small"), blocked = dir.filePath("blocked");
    ASSERT_EQ(runSynth(inputs + QStringList{"-o", fast}).exitCode, 0);
    ASSERT_EQ(runSynth(inputs + QStringList{"--smallest-files", "-o", small}).exitCode, 0);
    for (const char* file : {"color.png", "displacement.png", "roughness.png"}) {
        SCOPED_TRACE(file);
        const Image a = loadOutput(fast + "/" + file), b = loadOutput(small + "/" + file);
        ASSERT_EQ(a.floatCount(), b.floatCount());
        EXPECT_TRUE(std::equal(a.data, a.data + a.floatCount(), b.data));
        EXPECT_LE(fileBytes(small + "/" + file).size(), fileBytes(fast + "/" + file).size());
    }

    ASSERT_TRUE(QDir().mkpath(blocked + "/displacement.png"));
    const RunResult result = runSynth(inputs + QStringList{"-q", "-o", blocked});
    // The other two layers are still written, but a lost layer fails the run.
    EXPECT_EQ(result.exitCode, 1);
    ASSERT_EQ(result.errorLines.size(), 2) << result.errorLines.join('\n').toStdString();
    EXPECT_TRUE(result.errorLines[0].contains("displacement.png"));
    EXPECT_TRUE(result.errorLines[1].startsWith("Wrote only 2 of 3 layers"));
    EXPECT_EQ(QDir(blocked).entryList(QDir::Files | QDir::Hidden, QDir::Name),
              QStringList({"color.png", "roughness.png"}));
}

// A normal map with green pointing down is recognised from the displacement
// layer, read the common way and written back pointing down; without a
// displacement layer, or told so, the tool says what it does.
TEST(SynthCli, NormalConventionIsReadFromTheDisplacementAndKeptInTheOutput)
{
    QTemporaryDir dir;
    const auto bumps = [](float x, float y) {
        return 0.5f + 0.2f * std::sin(0.3f * x) * std::cos(0.25f * y) + 0.1f * std::sin(0.07f * (x + 2 * y));
    };
    const auto height = [&](float x, float y, float) { return bumps(x, y); };
    // Rows count from the bottom, so "up" is y + 1; green is negated.
    const auto greenDown = [&](float x, float y, float k) {
        const float nx = -6.0f * (bumps(x + 1, y) - bumps(x - 1, y));
        const float ny = 6.0f * (bumps(x, y + 1) - bumps(x, y - 1));
        const float length = std::sqrt(nx * nx + ny * ny + 1.0f);
        return (k == 0 ? nx : k == 1 ? ny : 1.0f) / length * 0.5f + 0.5f;
    };
    const QString normal = writeImage(dir.filePath("bumps_normal.png"), 64, RGB, greenDown);
    const QString displacement = writeImage(dir.filePath("bumps_disp.png"), 64, Gray, height);
    const QStringList settings = {"--size", "96x96", "--patch-size", "16", "--boundary", "4", "--seed", "2"};

    const QString out = dir.filePath("out");
    RunResult result = runSynth(QStringList{normal, displacement, "-o", out} + settings);
    ASSERT_EQ(result.exitCode, 0) << result.errorLines.join('\n').toStdString();
    EXPECT_EQ(result.errorLines.filter("green points down").size(), 1) << result.errorLines.join('\n').toStdString();
    // The synthesized pair still shows green pointing down.
    Image written = loadOutput(out + "/normal.png");
    written.toNormalMap(false, false, true, true);
    const NormalConvention kept = detectNormalConvention(written, loadOutput(out + "/displacement.png"));
    EXPECT_TRUE(kept.decided && kept.flipY && !kept.flipX) << kept.correlationX << " " << kept.correlationY;

    // Told explicitly, and with no displacement layer to look at.
    result = runSynth(QStringList{normal, "--normal-flip", "y", "-o", dir.filePath("told")} + settings);
    ASSERT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.errorLines.filter("reading X as stored and Y flipped").size(), 1)
        << result.errorLines.join('\n').toStdString();
    result = runSynth(QStringList{normal, "-o", dir.filePath("alone")} + settings);
    ASSERT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.errorLines.filter("no displacement layer").size(), 1);
}
