#include "CommandLine.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

// Parses and returns the error text, empty on success.
QString parseError(const QByteArray& text, CommandLine* out = nullptr)
{
    CommandLine cl;
    QString error;
    const bool ok = parseCommandLine(QString::fromUtf8(text).split(' ', Qt::SkipEmptyParts), cl, error);
    if (out)
        *out = cl;
    EXPECT_EQ(ok, error.isEmpty()) << text.constData();
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
    EXPECT_EQ(cl.namedLayers, decltype(cl.namedLayers)({{"height", "h.tif"}}));
    EXPECT_EQ(cl.outputDir, "out");
    EXPECT_TRUE(cl.width == 96u && cl.height == 48u);
    EXPECT_TRUE(cl.cutout && cl.firstLayerOnly && cl.quiet);
    EXPECT_TRUE(cl.patchSize == 16 && cl.boundary == 0 && cl.maxTries == 0u && cl.feather == 3);
    EXPECT_FLOAT_EQ(*cl.errorThreshold, 0.25f);
    EXPECT_EQ(cl.seed, 4294967295u);
    EXPECT_TRUE(cl.directionMap == "d.png" && cl.scaleMap == "s.png" && cl.outputMask == "m.png");
    EXPECT_TRUE(cl.sourceMask == "src.png" && cl.sourceMaskChannel == 2u);

    // Defaults, and "--" ending the options.
    ASSERT_EQ(parseError("-o out -- -odd_col.png", &cl), "");
    EXPECT_TRUE(cl.files == QStringList({"-odd_col.png"}) && cl.width == 1024u);
    EXPECT_FALSE(cl.firstLayerOnly || cl.quiet || cl.patchSize || cl.seed);
    EXPECT_TRUE(cl.cutout && !cl.methodGiven);

    // A colon that is not followed by a channel belongs to the file name.
    ASSERT_EQ(parseError("a_col.png -o out --source-mask C:mask.png", &cl), "");
    EXPECT_TRUE(cl.sourceMask == "C:mask.png" && cl.sourceMaskChannel == 0u);

    // The search, the source's tiling and the normal map's convention.
    EXPECT_FALSE(cl.sourceSearch || cl.sourceTiles);
    EXPECT_EQ(cl.normalFlip, CommandLine::NormalFlip::Auto);
    ASSERT_EQ(parseError("a_col.png -o out --search random --source-tiles=yes --normal-flip xy", &cl), "");
    EXPECT_TRUE(cl.sourceSearch == Velmor::SourceSearch::Random && cl.sourceTiles == true);
    EXPECT_EQ(cl.normalFlip, CommandLine::NormalFlip::XY);
    ASSERT_EQ(parseError("a_col.png -o out --search structured --source-tiles no --normal-flip none", &cl), "");
    EXPECT_TRUE(cl.sourceSearch == Velmor::SourceSearch::Structured && cl.sourceTiles == false);
    EXPECT_EQ(cl.normalFlip, CommandLine::NormalFlip::None);
    ASSERT_EQ(parseError("a_col.png -o out --source-tiles no --source-tiles auto", &cl), "");
    EXPECT_FALSE(cl.sourceTiles);
    EXPECT_TRUE(parseError("a_col.png -o out --search Structured").startsWith("--search must be structured or random"));
    EXPECT_TRUE(parseError("a_col.png -o out --normal-flip yx").startsWith("--normal-flip must be"));
    EXPECT_TRUE(parseError("a_col.png -o out --source-tiles maybe").startsWith("--source-tiles must be"));
    EXPECT_TRUE(parseError("--project p --surface s -o out --normal-flip y").contains("--normal-flip cannot be used"));

    EXPECT_TRUE(parseError("--help", &cl).isEmpty() && cl.mode == CommandLine::Mode::Help);
    EXPECT_TRUE(parseError("-h", &cl).isEmpty() && cl.mode == CommandLine::Mode::Help);
    EXPECT_EQ(parseError("--layer x=y.png -o out"), ""); // --layer alone is an input
}

TEST(CommandLine, RejectsBadCommandLinesWithOneLineThatStartsWithTheReason)
{
    // Every bad value gives a reason that starts with its option's name.
    const std::pair<const char*, std::vector<const char*>> badValues[] = {
        {"--patch-size", {"0", "12abc", "-3", "+3", "2147483648"}},
        {"--size", {"0x5", "64", "64x", "4294967296x4"}},
        {"--seed", {"4294967296", "-1"}},
        {"--error-threshold", {"nan", "inf", "-0.5", "0,5"}},
        {"--method", {"fancy"}},
        {"--source-mask", {"m.png:4", "m.png:", "m.png:-1", "m.png:+2", "m.png:99999999999999999999"}},
        {"--layer", {"=h.png", "h.png", "../up=h.png", "..=h.png"}},
    };
    for (const auto& [option, values] : badValues)
        for (const char* value : values) {
            const QString error = parseError(QByteArray("a_col.png -o out ") + option + " " + value);
            EXPECT_TRUE(error.startsWith(option) && !error.contains('\n')) << value << ": " << error.toStdString();
        }

    const std::pair<const char*, const char*> badLines[] = {
        {"a_col.png -o out --frobnicate", "unknown option '--frobnicate'"},
        {"a_col.png -o out -x", "unknown option '-x'"},
        {"a_col.png -o out --seed=1=2", "--seed must be a whole number from 0 to 4294967295, not '1=2'"},
        {"a_col.png -o out --quiet=yes", "--quiet takes no value"},
        {"a_col.png -o out --method blended --feather 2", "--feather needs --method cutout"},
        {"a_col.png -o out --direction-map=", "--direction-map needs a value"},
        {"a_col.png -o", "-o needs a value"},
        {"a_col.png", "no output directory given (-o DIR)"},
        {"-o out", "no input files given"},
    };
    for (const auto& [line, reason] : badLines)
        EXPECT_EQ(parseError(line), reason) << line;
}

TEST(CommandLine, ProjectModesAndTheirRules)
{
    CommandLine cl;
    ASSERT_EQ(parseError("--project p --list", &cl), "");
    EXPECT_TRUE(cl.mode == CommandLine::Mode::ProjectList && cl.projectDir == "p");

    ASSERT_EQ(parseError("--project=p --surface Rock -o out --size 64x32 --seed 3 --save-project", &cl), "");
    EXPECT_TRUE(cl.mode == CommandLine::Mode::ProjectSurface && cl.surfaceName == "Rock");
    EXPECT_TRUE(cl.saveProject && cl.sizeGiven && !cl.methodGiven && cl.width == 64u);
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

// Every option the parser knows has its line in --help, names and value
// first, the text in one column beside them.
TEST(CommandLine, HelpListsEveryOption)
{
    const QString help = usageText();
    const char* const lines[] = {
        "  -o, --output DIR          output directory (created when missing)\n",
        "  --layer NAME=FILE         add FILE as the layer NAME; the six names above\n"
        "                            take that layer's place, others come last\n",
        "  --method blended|cutout   patch method (default cutout)\n",
        "  --first-layer-only        compare patches on the first layer only\n",
        "  --source-mask FILE[:C]    take patches only where channel C (0-3) is above 0\n",
        "  --list                    with --project: print the project's records\n",
        "  -h, --help                show this text\n",
    };
    for (const char* line : lines)
        EXPECT_TRUE(help.contains(QLatin1String(line))) << line;
    const char* const names[] = {"--output", "--layer", "--size", "--method", "--patch-size", "--boundary",
                                 "--error-threshold", "--max-tries", "--feather", "--first-layer-only", "--seed",
                                 "--direction-map", "--scale-map", "--output-mask", "--source-mask", "--project",
                                 "--list", "--surface", "--save-project", "--smallest-files", "--quiet", "--help",
                                 "--search", "--source-tiles", "--normal-flip"};
    for (const char* name : names) {
        EXPECT_TRUE(help.contains(QStringLiteral(" %1 ").arg(QLatin1String(name)))
                    || help.contains(QStringLiteral(" %1\n").arg(QLatin1String(name))))
            << name;
        // The parser knows it: whatever else is wrong, it is not unknown.
        EXPECT_FALSE(parseError(QByteArray("a_col.png -o out ") + name).startsWith("unknown")) << name;
    }
    EXPECT_TRUE(parseError("a_col.png -o out --bogus").startsWith("unknown"));
}
