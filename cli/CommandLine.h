#pragma once

#include "SourceSearch.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

// Everything ondrels-synth was asked to do, as parsed from its arguments.
// Only the syntax and the ranges of single values are checked here; what
// needs the files (layer purposes, sizes) is checked by the mode that runs.
struct CommandLine
{
    enum class Mode { Help, Files, ProjectList, ProjectSurface };

    Mode mode = Mode::Files;

    // Files mode: inputs and output.
    QStringList files;                                     // layer purpose from the file stem
    std::vector<std::pair<QString, QString>> namedLayers;  // --layer NAME=FILE, in order
    QString outputDir;

    // Project modes: --project DIR with --list, or with --surface NAME -o DIR.
    QString projectDir;
    QString surfaceName;
    bool saveProject = false;

    // Synthesis settings; unset ones keep the synthesizer's defaults.
    uint32_t width = 1024;
    uint32_t height = 1024;
    bool sizeGiven = false;   // project modes keep the surface's own size otherwise
    // Files are synthesized with the cutout method unless told otherwise:
    // with the structured search its outputs stay sharper and closer to the
    // source than blended ones.
    bool cutout = true;
    bool methodGiven = false; // ... and its own method
    std::optional<int32_t> patchSize;
    std::optional<int32_t> boundary;
    std::optional<float> errorThreshold;
    std::optional<uint32_t> maxTries;
    std::optional<int32_t> feather;
    bool firstLayerOnly = false;
    std::optional<uint32_t> seed;
    // Unset: the files mode searches structured, a project keeps its own.
    std::optional<Velmor::SourceSearch> sourceSearch;
    std::optional<bool> sourceTiles; // unset: detected

    // How the normal layer's file stores X and Y: flipped or not, or
    // decided from a height layer when automatic.
    enum class NormalFlip { Auto, None, X, Y, XY };
    NormalFlip normalFlip = NormalFlip::Auto;

    // Guidance and masks (empty: none).
    QString directionMap;
    QString scaleMap;
    QString outputMask;
    QString sourceMask;
    uint32_t sourceMaskChannel = 0;

    bool quiet = false;
    bool smallestFiles = false; // PNG at zlib's best compression instead of its fastest

    // Options given that only the files mode understands, for the project
    // modes' usage error.
    QStringList fileModeOptions;
};

// Parses `arguments` (without the program name). On failure returns false
// and a one-line reason in `error`.
bool parseCommandLine(const QStringList& arguments, CommandLine& commandLine, QString& error);

// Logs a usage error as one line that points to --help.
void logUsageError(const QString& reason);

// The text printed by --help.
QString usageText();
