#pragma once

#include "RecordRef.h"

#include <QIcon>

// Small drawn icons for the kinds of record and the browser's groups, so
// that the browser needs no image files. Needs a QGuiApplication.
namespace RecordIcons {

QIcon forRecord(const RecordRef& record);
QIcon forGroup(int group);

} // namespace RecordIcons
