#pragma once

#include "LayeredImage.h"

#include <QString>

#include <memory>

class ConsoleLog;

// Writes every layer of `output` to `dir` as the layer's name plus the
// extension of its source file type, at its sample type (normal layers back
// as colours). Each layer is freed once written, so that the peak stays near
// the output's own size. Returns an ExitStatus: failure when nothing was
// written.
int saveOutputLayers(ConsoleLog& console, std::unique_ptr<LayeredImage> output, const QString& dir);

// Creates `dir` when missing and checks that it can be written; logs why not.
bool prepareOutputDir(const QString& dir);
