#include "CommandLine.h"

#include "LogMessage.h"

#include <QLocale>

#include <cmath>
#include <limits>

namespace {

constexpr uint64_t int32Max = uint64_t(std::numeric_limits<int32_t>::max());
constexpr uint64_t uint32Max = uint64_t(std::numeric_limits<uint32_t>::max());

// Decimal digits only: no sign, no blanks, no trailing text, at most `max`.
bool parseUnsigned(const QString& text, uint64_t max, uint64_t& value)
{
    if (text.isEmpty())
        return false;
    uint64_t v = 0;
    for (const QChar c : text) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return false;
        v = v * 10 + uint64_t(c.unicode() - '0');
        if (v > max)
            return false;
    }
    value = v;
    return true;
}

template <typename T>
bool setWhole(const QString& text, uint64_t min, uint64_t max, std::optional<T>& field)
{
    uint64_t value = 0;
    if (!parseUnsigned(text, max, value) || value < min)
        return false;
    field = T(value);
    return true;
}

// A finite float written with a dot, whatever the user's locale.
bool parseFloat(const QString& text, float& value)
{
    if (text.isEmpty() || text != text.trimmed())
        return false;
    bool ok = false;
    const float v = QLocale::c().toFloat(text, &ok);
    if (!ok || !std::isfinite(v))
        return false;
    value = v;
    return true;
}

bool parseSize(const QString& text, uint32_t& width, uint32_t& height)
{
    const int x = text.indexOf(QLatin1Char('x'), 0, Qt::CaseInsensitive);
    if (x < 0)
        return false;
    uint64_t w = 0, h = 0;
    if (!parseUnsigned(text.left(x), uint32Max, w) || !parseUnsigned(text.mid(x + 1), uint32Max, h))
        return false;
    if (w == 0 || h == 0)
        return false;
    width = uint32_t(w);
    height = uint32_t(h);
    return true;
}

bool isValidLayerName(const QString& name)
{
    // The name becomes an output file name in the output directory.
    return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..") &&
           !name.contains(QLatin1Char('/')) && !name.contains(QLatin1Char('\\'));
}

bool takesValue(const QString& option)
{
    static const char* const withValue[] = {
        "-o", "--output", "--size", "--method", "--patch-size", "--boundary", "--error-threshold",
        "--max-tries", "--feather", "--seed", "--direction-map", "--scale-map", "--output-mask",
        "--source-mask", "--layer", "--project", "--surface"};
    for (const char* name : withValue)
        if (option == QLatin1String(name))
            return true;
    return false;
}

bool isFlag(const QString& option)
{
    static const char* const flags[] = {"-h", "--help", "-q", "--quiet", "--first-layer-only", "--list",
                                        "--save-project", "--smallest-files"};
    for (const char* name : flags)
        if (option == QLatin1String(name))
            return true;
    return false;
}

// Applies one option with its value; returns false with a reason.
bool applyOption(const QString& option, const QString& value, CommandLine& cl, QString& error)
{
    uint64_t n = 0;
    const auto badNumber = [&](const char* what) {
        error = QStringLiteral("%1 must be %2, not '%3'").arg(option, QLatin1String(what), value);
        return false;
    };

    if (option == QLatin1String("-h") || option == QLatin1String("--help")) {
        cl.mode = CommandLine::Mode::Help;
    } else if (option == QLatin1String("-q") || option == QLatin1String("--quiet")) {
        cl.quiet = true;
    } else if (option == QLatin1String("--first-layer-only")) {
        cl.firstLayerOnly = true;
    } else if (option == QLatin1String("--smallest-files")) {
        cl.smallestFiles = true;
    } else if (option == QLatin1String("-o") || option == QLatin1String("--output")) {
        if (value.isEmpty()) {
            error = QStringLiteral("%1 needs a directory").arg(option);
            return false;
        }
        cl.outputDir = value;
    } else if (option == QLatin1String("--project")) {
        cl.projectDir = value;
    } else if (option == QLatin1String("--surface")) {
        cl.surfaceName = value;
    } else if (option == QLatin1String("--list")) {
        cl.mode = CommandLine::Mode::ProjectList;
    } else if (option == QLatin1String("--save-project")) {
        cl.saveProject = true;
    } else if (option == QLatin1String("--size")) {
        if (!parseSize(value, cl.width, cl.height))
            return badNumber("WIDTHxHEIGHT with both at least 1");
        cl.sizeGiven = true;
    } else if (option == QLatin1String("--method")) {
        if (value == QLatin1String("blended"))
            cl.cutout = false;
        else if (value == QLatin1String("cutout"))
            cl.cutout = true;
        else
            return badNumber("blended or cutout");
        cl.methodGiven = true;
    } else if (option == QLatin1String("--patch-size")) {
        if (!setWhole(value, 1, int32Max, cl.patchSize))
            return badNumber("a whole number of at least 1");
    } else if (option == QLatin1String("--boundary")) {
        if (!setWhole(value, 0, int32Max, cl.boundary))
            return badNumber("a whole number of at least 0");
    } else if (option == QLatin1String("--feather")) {
        if (!setWhole(value, 0, int32Max, cl.feather))
            return badNumber("a whole number of at least 0");
    } else if (option == QLatin1String("--max-tries")) {
        if (!setWhole(value, 0, uint32Max, cl.maxTries))
            return badNumber("a whole number of at least 0");
    } else if (option == QLatin1String("--seed")) {
        if (!setWhole(value, 0, uint32Max, cl.seed))
            return badNumber("a whole number from 0 to 4294967295");
    } else if (option == QLatin1String("--error-threshold")) {
        float f = 0.0f;
        if (!parseFloat(value, f) || f < 0.0f)
            return badNumber("a number of at least 0");
        cl.errorThreshold = f;
    } else if (option == QLatin1String("--direction-map")) {
        cl.directionMap = value;
    } else if (option == QLatin1String("--scale-map")) {
        cl.scaleMap = value;
    } else if (option == QLatin1String("--output-mask")) {
        cl.outputMask = value;
    } else if (option == QLatin1String("--source-mask")) {
        // FILE or FILE:CHANNEL; a colon followed by anything but digits is
        // part of the file name.
        const int colon = value.lastIndexOf(QLatin1Char(':'));
        const QString suffix = colon > 0 ? value.mid(colon + 1) : QString();
        const bool numeric = colon > 0 && parseUnsigned(suffix, uint32Max, n);
        if ((numeric && n > 3) || (colon > 0 && suffix.isEmpty())) {
            return badNumber("FILE or FILE:CHANNEL with CHANNEL from 0 to 3");
        } else if (numeric) {
            cl.sourceMask = value.left(colon);
            cl.sourceMaskChannel = uint32_t(n);
        } else {
            cl.sourceMask = value;
            cl.sourceMaskChannel = 0;
        }
        if (cl.sourceMask.isEmpty())
            return badNumber("FILE or FILE:CHANNEL");
    } else if (option == QLatin1String("--layer")) {
        const int equals = value.indexOf(QLatin1Char('='));
        const QString name = value.left(equals);
        const QString file = value.mid(equals + 1);
        if (equals < 0 || file.isEmpty() || !isValidLayerName(name))
            return badNumber("NAME=FILE with a NAME that can be a file name");
        cl.namedLayers.emplace_back(name, file);
    }
    // With the value of a directory or file option, an empty text is an error.
    if (takesValue(option) && value.isEmpty()) {
        error = QStringLiteral("%1 needs a value").arg(option);
        return false;
    }
    return true;
}

// Options that describe inputs of the files mode; a project brings its own.
bool isFileModeOption(const QString& option)
{
    static const char* const options[] = {"--direction-map", "--scale-map", "--output-mask", "--source-mask",
                                          "--layer", "--first-layer-only"};
    for (const char* name : options)
        if (option == QLatin1String(name))
            return true;
    return false;
}

// The rules of --project with --list or --surface; sets the mode.
bool checkProjectMode(CommandLine& cl, QString& error)
{
    const bool list = cl.mode == CommandLine::Mode::ProjectList;
    if (cl.projectDir.isEmpty())
        error = QStringLiteral("%1 needs --project DIR").arg(list ? "--list" : cl.surfaceName.isEmpty() ? "--save-project" : "--surface");
    else if (!cl.files.isEmpty())
        error = QStringLiteral("input files cannot be combined with --project");
    else if (!cl.fileModeOptions.isEmpty())
        error = QStringLiteral("%1 cannot be used with --project").arg(cl.fileModeOptions.first());
    else if (list && !cl.surfaceName.isEmpty())
        error = QStringLiteral("--list and --surface cannot be combined");
    else if (!list && cl.surfaceName.isEmpty())
        error = QStringLiteral("--project needs --list or --surface NAME");
    else if (list && (!cl.outputDir.isEmpty() || cl.saveProject))
        error = QStringLiteral("--list writes nothing; it takes no %1").arg(cl.saveProject ? "--save-project" : "-o");
    else if (!list && cl.outputDir.isEmpty())
        error = QStringLiteral("no output directory given (-o DIR)");
    else if (cl.feather && cl.methodGiven && !cl.cutout)
        error = QStringLiteral("--feather needs --method cutout");
    if (!error.isEmpty())
        return false;
    if (!list)
        cl.mode = CommandLine::Mode::ProjectSurface;
    return true;
}

} // namespace

bool parseCommandLine(const QStringList& arguments, CommandLine& cl, QString& error)
{
    cl = CommandLine();
    bool optionsEnded = false;
    for (int i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        if (optionsEnded || !argument.startsWith(QLatin1Char('-')) || argument == QLatin1String("-")) {
            cl.files << argument;
            continue;
        }
        if (argument == QLatin1String("--")) {
            optionsEnded = true;
            continue;
        }

        QString option = argument;
        QString value;
        bool hasInlineValue = false;
        const int equals = argument.indexOf(QLatin1Char('='));
        if (argument.startsWith(QLatin1String("--")) && equals > 0) {
            option = argument.left(equals);
            value = argument.mid(equals + 1);
            hasInlineValue = true;
        }

        if (isFlag(option)) {
            if (hasInlineValue) {
                error = QStringLiteral("%1 takes no value").arg(option);
                return false;
            }
        } else if (takesValue(option)) {
            if (!hasInlineValue) {
                if (i + 1 >= arguments.size()) {
                    error = QStringLiteral("%1 needs a value").arg(option);
                    return false;
                }
                value = arguments[++i];
            }
        } else {
            error = QStringLiteral("unknown option '%1'").arg(option);
            return false;
        }
        if (!applyOption(option, value, cl, error))
            return false;
        if (isFileModeOption(option))
            cl.fileModeOptions << option;
    }

    if (cl.mode == CommandLine::Mode::Help)
        return true;
    if (!cl.projectDir.isEmpty() || !cl.surfaceName.isEmpty() || cl.saveProject
        || cl.mode == CommandLine::Mode::ProjectList)
        return checkProjectMode(cl, error);
    if (cl.files.isEmpty() && cl.namedLayers.empty()) {
        error = QStringLiteral("no input files given");
        return false;
    }
    if (cl.outputDir.isEmpty()) {
        error = QStringLiteral("no output directory given (-o DIR)");
        return false;
    }
    if (cl.feather && !cl.cutout) {
        error = QStringLiteral("--feather needs --method cutout");
        return false;
    }
    return true;
}

void logUsageError(const QString& reason)
{
    logMessage(Error, "ondrels-synth: %s (see --help)", reason.toLocal8Bit().constData());
}

QString usageText()
{
    return QStringLiteral(
        "Usage: ondrels-synth [options] FILE... -o DIR\n"
        "       ondrels-synth --project DIR --list\n"
        "       ondrels-synth --project DIR --surface NAME -o DIR [--save-project] [options]\n"
        "\n"
        "Synthesizes a larger, seamless set of texture layers from the image files and\n"
        "writes one file per layer to DIR, named after the layer, in the format and depth\n"
        "of its source file.\n"
        "\n"
        "Each FILE's layer comes from its name: a stem containing _col, _color, _diffuse,\n"
        "_diff or _albedo is \"color\"; _norm, _nor, _normal \"normal\"; _displacement,\n"
        "_displ, _disp \"displacement\"; _roughness, _rough \"roughness\"; _metalness,\n"
        "_metal \"metalness\"; _ao, _occlusion, _ambient \"occlusion\" (or a stem equal to\n"
        "one of these without the underscore). Matching is case-sensitive.\n"
        "\n"
        "Options:\n"
        "  -o, --output DIR          output directory (created when missing)\n"
        "  --layer NAME=FILE         add FILE as the layer NAME; the six names above\n"
        "                            take that layer's place, others come last\n"
        "  --size WxH                output size (default 1024x1024)\n"
        "  --method blended|cutout   patch method (default blended)\n"
        "  --patch-size N            patch core size in pixels (default 100)\n"
        "  --boundary N              overlap around each patch (default 20)\n"
        "  --error-threshold X       accepted boundary error (default 0.1)\n"
        "  --max-tries N             candidates tried per patch (default 20)\n"
        "  --feather N               cutout seam feather (cutout only, default 4)\n"
        "  --first-layer-only        compare patches on the first layer only\n"
        "  --seed N                  fixed random seed: same seed, same output\n"
        "  --direction-map FILE      red and green give the patch direction (0..1 = -1..1)\n"
        "  --scale-map FILE          first channel scales the patches (1 = unchanged)\n"
        "  --output-mask FILE        paste only where the first channel is above 0.5\n"
        "  --source-mask FILE[:C]    take patches only where channel C (0-3) is above 0\n"
        "  --project DIR             a saved project: --list prints its records;\n"
        "                            --surface NAME synthesizes that surface or mixed\n"
        "                            surface with its own settings (--size, --method,\n"
        "                            the patch options and --seed override them)\n"
        "  --save-project            with --surface: save the project afterwards, so that\n"
        "                            frozen parts of a mixed surface are kept\n"
        "  --smallest-files          write PNG files as small as possible (slower)\n"
        "  -q, --quiet               show only warnings and errors\n"
        "  -h, --help                show this text\n"
        "\n"
        "Exit status: 0 success, 1 an input could not be read or nothing was written,\n"
        "2 a usage error.\n");
}
