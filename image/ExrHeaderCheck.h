#pragma once

#include <QString>

// Walks the header of an OpenEXR file before FreeImage reads it. FreeImage's
// stream wrapper does not stop OpenEXR at the end of a file, so a header cut
// short makes it loop forever, and a corrupt preview or tile size makes it
// allocate without bound. Returns true when every attribute lies within the
// file, the channel list is well formed and the data window is within the
// loader's size limits; otherwise logs an error naming the file.
bool checkExrHeader(const QString& path);
