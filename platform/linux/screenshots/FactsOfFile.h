// What is to be said of a file that has a screenshot's name. Pure functions. Threads: any.
#pragma once

#include "platform/ScreenshotQuery.h"
#include "platform/linux/screenshots/CapturedPicture.h"
#include "platform/linux/screenshots/FileStamp.h"

namespace quenby {

// Whether the file was made at the moment that its name tells, and left alone since. Only then it is worth a look at
// its contents: a copy of an old screenshot is none that somebody has just taken.
bool wasMadeWhenNamed(const QByteArray& fileName, const FileStamp& stamp);

// The picture is whole or strange. Nothing on the desktop is wider or higher than these pixels.
ScreenshotFacts factsOfFile(const QByteArray& fileName, const FileStamp& stamp, const CapturedPicture& picture,
                            const QSize& desktopPixels);

} // namespace quenby
