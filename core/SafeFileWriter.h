#pragma once

#include <QByteArray>
#include <QString>

#include <string>

namespace Velmor {

// Every project and image file goes through here: deliberately, a save never
// writes over the old file in place.
// Writes `bytes` to a temporary file beside `path` and renames it into place
// only when every byte was written, flushed to the disk and the file has the
// expected size: a full disk or an interrupted save leaves the previous file
// as it was and no temporary file behind. Logs an Error naming the file and
// the system's reason, and returns false, when anything fails.
bool writeFileSafely(const QString& path, const QByteArray& bytes);

// A file name for a record name: characters that some file system refuses
// (path separators, control characters, Windows' reserved ones) become "_",
// and names that are empty or only dots get a leading "_". The record keeps
// its own name; only the file is named this way.
QString safeFileName(const std::string& recordName);

} // namespace Velmor
