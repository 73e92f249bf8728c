#pragma once

#include "LayeredImage.h"

#include <QString>

#include <memory>

class ConsoleLog;

// Writes every layer of `output` to `dir` as the layer's name plus the
// extension of its source file type, at its sample type (normal layers back
// as colours). Layers are written concurrently, one per core, and each is
// freed once written, so that the peak stays near the output's own size.
// `pngLevel` is the zlib level of PNG files (see saveImage). Returns an
// ExitStatus: failure when nothing was written. Moves the console's progress
// bar from synthesisShare to 100 as the files are written, and ends it.
int saveOutputLayers(ConsoleLog& console, std::unique_ptr<LayeredImage> output, const QString& dir, int pngLevel);

// Percent of the progress bar that the synthesis fills; the rest fills while
// the layers are written (about their share of a 2048 x 2048 run's time).
constexpr int synthesisShare = 70;

// zlib levels for PNG output. On 2048 x 2048 photo-like layers level 1 with
// the Up filter writes about twice as fast as FreeImage's default (level 6,
// adaptive filters) and its files are within 4% of that size (smooth
// pictures are written at level 3 and stay within 13%); 9 gives the smallest
// files.
constexpr int fastPngLevel = 1;
constexpr int smallestPngLevel = 9;

// Creates `dir` when missing and checks that it can be written; logs why not.
bool prepareOutputDir(const QString& dir);
