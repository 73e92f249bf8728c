#include "CommandLine.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

QStringList split(const char* text)
{
    return QString::fromUtf8(text).split(' ', Qt::SkipEmptyParts);
}

// Parses and returns the error text, empty on success.
QString parseError(const char* text, CommandLine* out = nullptr)
{
    CommandLine cl;
    QString error;
    const bool ok = parseCommandLine(split(text), cl, error);
    if (out)
        *out = cl;
    EXPECT_EQ(ok, error.isEmpty()) << text;
    return error;
}

} // namespace

TEST(CommandLine, ParsesEveryOptionInBothSpellings)
{
    CommandLine cl;
    ASSERT_EQ(parseError("a_col.png --size=96x48 --method cutout --patch-size 16 --boundary=0 --error-threshold 0.25 "
                         "--max-tries 0 --feather 3 --first-layer-only --seed 4294967295 --direction-map d.png "
                         "--scale-map=s.png --output-mask m.png --source-mask src.png:2 -q "
                         "--layer height=h.tif b_normal.png -o out",
                         &cl),
              "");
    EXPECT_EQ(cl.mode, CommandLine::Mode::Files);
    EXPECT_EQ(cl.files, QStringList({"a_col.png", "b_normal.png"}));
    ASSERT_EQ(cl.namedLayers.size(), 1u);
    EXPECT_EQ(cl.namedLayers[0].first, "height");
    EXPECT_EQ(cl.namedLayers[0].second, "h.tif");
    EXPECT_EQ(cl.outputDir, "out");
    EXPECT_EQ(cl.width, 96u);
    EXPECT_EQ(cl.height, 48u);
    EXPECT_TRUE(cl.cutout);
    EXPECT_EQ(cl.patchSize, 16);
    EXPECT_EQ(cl.boundary, 0);
    EXPECT_FLOAT_EQ(*cl.errorThreshold, 0.25f);
    EXPECT_EQ(cl.maxTries, 0u);
    EXPECT_EQ(cl.feather, 3);
    EXPECT_TRUE(cl.firstLayerOnly);
    EXPECT_EQ(cl.seed, 4294967295u);
    EXPECT_EQ(cl.directionMap, "d.png");
    EXPECT_EQ(cl.scaleMap, "s.png");
    EXPECT_EQ(cl.outputMask, "m.png");
    EXPECT_EQ(cl.sourceMask, "src.png");
    EXPECT_EQ(cl.sourceMaskChannel, 2u);
    EXPECT_TRUE(cl.quiet);

    // Defaults, and "--" ending the options.
    ASSERT_EQ(parseError("-o out -- -odd_col.png", &cl), "");
    EXPECT_EQ(cl.files, QStringList({"-odd_col.png"}));
    EXPECT_EQ(cl.width, 1024u);
    EXPECT_EQ(cl.height, 1024u);
    EXPECT_FALSE(cl.cutout || cl.firstLayerOnly || cl.quiet);
    EXPECT_FALSE(cl.patchSize || cl.seed || cl.feather);
    EXPECT_TRUE(cl.directionMap.isEmpty());

    // A colon that is not followed by a channel belongs to the file name.
    ASSERT_EQ(parseError("a_col.png -o out --source-mask C:mask.png", &cl), "");
    EXPECT_EQ(cl.sourceMask, "C:mask.png");
    EXPECT_EQ(cl.sourceMaskChannel, 0u);

    ASSERT_EQ(parseError("--help", &cl), "");
    EXPECT_EQ(cl.mode, CommandLine::Mode::Help);
}

TEST(CommandLine, RejectsBadValuesWithAReasonThatNamesThem)
{
    // Each bad value, with the option whose name the reason must give.
    const std::pair<const char*, const char*> bad[] = {
        {"--patch-size", "--patch-size 0"},
        {"--patch-size", "--patch-size 12abc"},
        {"--patch-size", "--patch-size -3"},
        {"--patch-size", "--patch-size=+3"},
        {"--patch-size", "--patch-size 2147483648"},
        {"--size", "--size 0x5"},
        {"--size", "--size 64"},
        {"--size", "--size 64x"},
        {"--size", "--size 4294967296x4"},
        {"--seed", "--seed 4294967296"},
        {"--error-threshold", "--error-threshold nan"},
        {"--error-threshold", "--error-threshold inf"},
        {"--error-threshold", "--error-threshold -0.5"},
        {"--error-threshold", "--error-threshold 0,5"},
        {"--method", "--method fancy"},
        {"--source-mask", "--source-mask m.png:4"},
        {"--source-mask", "--source-mask m.png:"},
        {"--layer", "--layer =h.png"},
        {"--layer", "--layer h.png"},
        {"--layer", "--layer ../up=h.png"},
        {"--layer", "--layer ..=h.png"},
    };
    for (const auto& [option, args] : bad) {
        const QString error = parseError((std::string("a_col.png -o out ") + args).c_str());
        ASSERT_FALSE(error.isEmpty()) << args;
        EXPECT_FALSE(error.contains('\n')) << args;
        EXPECT_TRUE(error.startsWith(option)) << args << " gave: " << error.toStdString();
    }
}

TEST(CommandLine, RejectsMalformedCommandLines)
{
    EXPECT_EQ(parseError("a_col.png -o out --frobnicate"), "unknown option '--frobnicate'");
    EXPECT_EQ(parseError("a_col.png -o out -x"), "unknown option '-x'");
    EXPECT_EQ(parseError("a_col.png -o out --seed=1=2"), "--seed must be a whole number from 0 to 4294967295, not '1=2'");
    EXPECT_EQ(parseError("a_col.png -o"), "-o needs a value");
    EXPECT_EQ(parseError("a_col.png -o out --quiet=yes"), "--quiet takes no value");
    EXPECT_EQ(parseError("a_col.png"), "no output directory given (-o DIR)");
    EXPECT_EQ(parseError("-o out"), "no input files given");
    EXPECT_EQ(parseError("a_col.png -o out --feather 2"), "--feather needs --method cutout");
    EXPECT_EQ(parseError("a_col.png -o out --direction-map="), "--direction-map needs a value");
    // --layer alone is an input.
    EXPECT_EQ(parseError("--layer x=y.png -o out"), "");
}

TEST(CommandLine, ProjectModesAndTheirRules)
{
    CommandLine cl;
    ASSERT_EQ(parseError("--project p --list", &cl), "");
    EXPECT_EQ(cl.mode, CommandLine::Mode::ProjectList);
    EXPECT_EQ(cl.projectDir, "p");

    ASSERT_EQ(parseError("--project=p --surface Rock -o out --size 64x32 --seed 3 --save-project", &cl), "");
    EXPECT_EQ(cl.mode, CommandLine::Mode::ProjectSurface);
    EXPECT_EQ(cl.surfaceName, "Rock");
    EXPECT_TRUE(cl.saveProject);
    EXPECT_TRUE(cl.sizeGiven);
    EXPECT_FALSE(cl.methodGiven);
    EXPECT_EQ(cl.width, 64u);
    // Without --size or --method the surface keeps its own.
    ASSERT_EQ(parseError("--project p --surface Rock -o out --feather 2", &cl), "");
    EXPECT_FALSE(cl.sizeGiven);

    const std::pair<const char*, const char*> wrong[] = {
        {"--list", "--project"},
        {"--surface Rock -o out", "--project"},
        {"--project p", "--list or --surface"},
        {"--project p --list --surface Rock", "cannot be combined"},
        {"--project p --list -o out", "-o"},
        {"--project p --list --save-project", "--save-project"},
        {"--project p --surface Rock", "-o DIR"},
        {"--project p --surface Rock -o out a_col.png", "input files"},
        {"--project p --surface Rock -o out --direction-map d.png", "--direction-map"},
        {"--project p --surface Rock -o out --method blended --feather 2", "--feather"},
        {"--project p --surface", "needs a value"},
    };
    for (const auto& [line, part] : wrong) {
        const QString error = parseError(line);
        EXPECT_TRUE(error.contains(QLatin1String(part))) << line << ": " << error.toStdString();
    }
}
