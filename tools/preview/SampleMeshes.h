#pragma once

#include "ObjWriter.h"

// Our own sample models for the 3D preview.
// A stone arch bridge: deck, arch vault, spandrel walls with the arch cut
// out, abutment ends and parapets, each part its own UV islands.
ObjWriter makeBridge();
// A tree: a bent, tapered trunk, branches and leaf cards.
ObjWriter makeTree();
