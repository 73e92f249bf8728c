#pragma once

#include <QString>

// The About box's text: the application's version and the versions of the
// libraries it was built with or runs on.
QString aboutText();
