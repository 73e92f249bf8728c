#include "CommandLine.h"

#include "LogMessage.h"

#include <QLocale>
#include <QRegularExpression>

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

// A whole number, signed or not: a channel written after the colon of
// --source-mask (and refused unless it is 0 to 3).
bool looksLikeChannel(const QString& text)
{
    static const QRegularExpression number(QStringLiteral("^[+-]?[0-9]+$"));
    return number.match(text).hasMatch();
}

// FILE or FILE:CHANNEL; a colon followed by anything but a whole number is
// part of the file name.
bool applySourceMask(const QString& value, CommandLine& cl)
{
    const int colon = value.lastIndexOf(QLatin1Char(':'));
    const QString suffix = colon > 0 ? value.mid(colon + 1) : QString();
    if (colon > 0 && suffix.isEmpty())
        return false;
    cl.sourceMask = value;
    cl.sourceMaskChannel = 0;
    if (colon > 0 && looksLikeChannel(suffix)) {
        uint64_t channel = 0;
        if (!parseUnsigned(suffix, 3, channel))
            return false;
        cl.sourceMask = value.left(colon);
        cl.sourceMaskChannel = uint32_t(channel);
    }
    return !cl.sourceMask.isEmpty();
}

bool applyLayer(const QString& value, CommandLine& cl)
{
    const int equals = value.indexOf(QLatin1Char('='));
    const QString name = value.left(equals);
    const QString file = value.mid(equals + 1);
    if (equals < 0 || file.isEmpty() || !isValidLayerName(name))
        return false;
    cl.namedLayers.emplace_back(name, file);
    return true;
}

// One option of ondrels-synth. Parsing, the project modes' check and --help
// all come from the table below.
struct Option
{
    const char* shortName;  // "-o", or null
    const char* longName;   // "--output"
    const char* valueName;  // "DIR" in the help; null for a flag
    bool filesModeOnly;     // an input of the files mode; a project brings its own
    const char* help;       // lines after the first are indented under it
    const char* expected;   // what a bad value must be instead, for the error
    // Stores the value (empty for a flag); false when the value is bad.
    bool (*apply)(const QString& value, CommandLine& cl);
};

const Option options[] = {
    {"-o", "--output", "DIR", false, "output directory (created when missing)", "a directory",
     [](const QString& v, CommandLine& cl) { cl.outputDir = v; return true; }},
    {nullptr, "--layer", "NAME=FILE", true,
     "add FILE as the layer NAME; the six names above\ntake that layer's place, others come last",
     "NAME=FILE with a NAME that can be a file name", applyLayer},
    {nullptr, "--size", "WxH", false, "output size (default 1024x1024)", "WIDTHxHEIGHT with both at least 1",
     [](const QString& v, CommandLine& cl) {
         cl.sizeGiven = true;
         return parseSize(v, cl.width, cl.height);
     }},
    {nullptr, "--method", "blended|cutout", false, "patch method (default cutout)", "blended or cutout",
     [](const QString& v, CommandLine& cl) {
         if (v != QLatin1String("blended") && v != QLatin1String("cutout"))
             return false;
         cl.cutout = v == QLatin1String("cutout");
         cl.methodGiven = true;
         return true;
     }},
    {nullptr, "--patch-size", "N", false, "patch core size in pixels (default 100)", "a whole number of at least 1",
     [](const QString& v, CommandLine& cl) { return setWhole(v, 1, int32Max, cl.patchSize); }},
    {nullptr, "--boundary", "N", false, "overlap around each patch (default 20)", "a whole number of at least 0",
     [](const QString& v, CommandLine& cl) { return setWhole(v, 0, int32Max, cl.boundary); }},
    {nullptr, "--error-threshold", "X", false,
     "accepted boundary error of the random search\n(default 0.1); the structured one sets its own",
     "a number of at least 0",
     [](const QString& v, CommandLine& cl) {
         float f = 0.0f;
         if (!parseFloat(v, f) || f < 0.0f)
             return false;
         cl.errorThreshold = f;
         return true;
     }},
    {nullptr, "--max-tries", "N", false, "candidates tried per patch (default 20)", "a whole number of at least 0",
     [](const QString& v, CommandLine& cl) { return setWhole(v, 0, uint32Max, cl.maxTries); }},
    {nullptr, "--feather", "N", false, "cutout seam feather (cutout only, default 4)", "a whole number of at least 0",
     [](const QString& v, CommandLine& cl) { return setWhole(v, 0, int32Max, cl.feather); }},
    {nullptr, "--first-layer-only", nullptr, true, "compare patches on the first layer only", nullptr,
     [](const QString&, CommandLine& cl) { cl.firstLayerOnly = true; return true; }},
    {nullptr, "--seed", "N", false, "fixed random seed: same seed, same output", "a whole number from 0 to 4294967295",
     [](const QString& v, CommandLine& cl) { return setWhole(v, 0, uint32Max, cl.seed); }},
    {nullptr, "--search", "structured|random", false,
     "source search: structured (default) continues the\nneighbour patches and searches the whole source,\n"
     "comparing a fifth of --max-tries positions in full;\nrandom draws --max-tries positions, as projects do\n"
     "unless set otherwise",
     "structured or random",
     [](const QString& v, CommandLine& cl) {
         Velmor::SourceSearch search = Velmor::SourceSearch::Structured;
         if (!Velmor::sourceSearchFromName(v == QLatin1String("structured") ? "Structured"
                                           : v == QLatin1String("random")   ? "Random"
                                                                            : "",
                                           search))
             return false;
         cl.sourceSearch = search;
         return true;
     }},
    {nullptr, "--source-tiles", "auto|yes|no", false,
     "whether the source repeats seamlessly, so that\nstructured patches may wrap around its edges\n(default auto: "
     "compare its edges)",
     "auto, yes or no",
     [](const QString& v, CommandLine& cl) {
         if (v == QLatin1String("auto"))
             cl.sourceTiles.reset();
         else if (v == QLatin1String("yes") || v == QLatin1String("no"))
             cl.sourceTiles = v == QLatin1String("yes");
         else
             return false;
         return true;
     }},
    {nullptr, "--normal-flip", "auto|none|x|y|xy", true,
     "the normal map's file has X or Y (or both) pointing\nthe other way (y: green down); auto (default)\ndecides "
     "from the displacement layer, else none;\noutputs keep the file's convention",
     "auto, none, x, y or xy",
     [](const QString& v, CommandLine& cl) {
         using Flip = CommandLine::NormalFlip;
         static const std::pair<const char*, Flip> names[] = {
             {"auto", Flip::Auto}, {"none", Flip::None}, {"x", Flip::X}, {"y", Flip::Y}, {"xy", Flip::XY}};
         for (const auto& [name, flip] : names)
             if (v == QLatin1String(name)) {
                 cl.normalFlip = flip;
                 return true;
             }
         return false;
     }},
    {nullptr, "--direction-map", "FILE", true, "red and green give the patch direction (0..1 = -1..1)", "a file",
     [](const QString& v, CommandLine& cl) { cl.directionMap = v; return true; }},
    {nullptr, "--scale-map", "FILE", true, "first channel scales the patches (1 = unchanged)", "a file",
     [](const QString& v, CommandLine& cl) { cl.scaleMap = v; return true; }},
    {nullptr, "--output-mask", "FILE", true, "paste only where the first channel is above 0.5", "a file",
     [](const QString& v, CommandLine& cl) { cl.outputMask = v; return true; }},
    {nullptr, "--source-mask", "FILE[:C]", true, "take patches only where channel C (0-3) is above 0",
     "FILE or FILE:CHANNEL with CHANNEL from 0 to 3", applySourceMask},
    {nullptr, "--project", "DIR", false, "a saved project, with --list or --surface", "a directory",
     [](const QString& v, CommandLine& cl) { cl.projectDir = v; return true; }},
    {nullptr, "--list", nullptr, false, "with --project: print the project's records", nullptr,
     [](const QString&, CommandLine& cl) { cl.mode = CommandLine::Mode::ProjectList; return true; }},
    {nullptr, "--surface", "NAME", false,
     "with --project: synthesize that surface or mixed\nsurface with its own settings (--size, --method,\nthe "
     "patch options and --seed override them)",
     "a surface name", [](const QString& v, CommandLine& cl) { cl.surfaceName = v; return true; }},
    {nullptr, "--save-project", nullptr, false,
     "with --surface: save the project afterwards, so that\nfrozen parts of a mixed surface are kept", nullptr,
     [](const QString&, CommandLine& cl) { cl.saveProject = true; return true; }},
    {nullptr, "--smallest-files", nullptr, false, "write PNG files as small as possible (slower)", nullptr,
     [](const QString&, CommandLine& cl) { cl.smallestFiles = true; return true; }},
    {"-q", "--quiet", nullptr, false, "show only warnings and errors", nullptr,
     [](const QString&, CommandLine& cl) { cl.quiet = true; return true; }},
    {"-h", "--help", nullptr, false, "show this text", nullptr,
     [](const QString&, CommandLine& cl) { cl.mode = CommandLine::Mode::Help; return true; }},
};

const Option* findOption(const QString& name)
{
    for (const Option& option : options)
        if (name == QLatin1String(option.longName) || (option.shortName && name == QLatin1String(option.shortName)))
            return &option;
    return nullptr;
}

// "  -o, --output DIR" and the help text in a column beside it.
QString optionHelp()
{
    constexpr int column = 28;
    QString text;
    for (const Option& option : options) {
        QString names = QStringLiteral("  ");
        if (option.shortName)
            names += QLatin1String(option.shortName) + QStringLiteral(", ");
        names += QLatin1String(option.longName);
        if (option.valueName)
            names += QLatin1Char(' ') + QLatin1String(option.valueName);
        names = names.size() < column ? names.leftJustified(column) : names + QLatin1Char(' ');
        const QStringList lines = QString::fromLatin1(option.help).split(QLatin1Char('\n'));
        text += names + lines.first() + QLatin1Char('\n');
        for (int i = 1; i < lines.size(); ++i)
            text += QString(column, QLatin1Char(' ')) + lines[i] + QLatin1Char('\n');
    }
    return text;
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

        const Option* known = findOption(option);
        if (!known) {
            error = QStringLiteral("unknown option '%1'").arg(option);
            return false;
        }
        if (!known->valueName && hasInlineValue) {
            error = QStringLiteral("%1 takes no value").arg(option);
            return false;
        }
        if (known->valueName && !hasInlineValue) {
            if (i + 1 >= arguments.size()) {
                error = QStringLiteral("%1 needs a value").arg(option);
                return false;
            }
            value = arguments[++i];
        }
        if (known->valueName && value.isEmpty()) {
            error = QStringLiteral("%1 needs a value").arg(option);
            return false;
        }
        if (!known->apply(value, cl)) {
            error = QStringLiteral("%1 must be %2, not '%3'").arg(option, QLatin1String(known->expected), value);
            return false;
        }
        if (known->filesModeOnly)
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
        "Options:\n")
        + optionHelp()
        + QStringLiteral(
        "\n"
        "Exit status: 0 success, 1 an input could not be read or nothing was written,\n"
        "2 a usage error.\n");
}
