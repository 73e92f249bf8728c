#pragma once

namespace Velmor {

// How the patch synthesizers look for source positions. Random draws
// maxTries positions from the source generator and keeps the first good
// one; Structured also tries the positions that continue the placed
// neighbour patches, searches the whole source at a reduced density and
// refines the best position pixel by pixel.
enum class SourceSearch { Random, Structured };

// "Random" and "Structured": the text of the record's "SourceSearch".
const char* sourceSearchName(SourceSearch search);
// False, leaving `search` alone, for any other text.
bool sourceSearchFromName(const char* name, SourceSearch& search);

} // namespace Velmor
