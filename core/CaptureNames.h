// The names of what is captured: of screenshots, copied pictures and recordings. They tell when, to the second, in the
// system's time zone, in English whatever the language: "Screen Shot 2026-03-09 at 03.07.41 PM.png".
//
// Two captures within one second have the same name; whoever writes the file chooses a free one (numberedFileName() of
// core/SafeFileName.h). Threads: any.
#pragma once

#include <QDateTime>
#include <QString>

namespace quenby {

// The time may be in any zone.
QString screenShotName(const QDateTime& time);
QString copiedPictureName(const QDateTime& time);
// Without an extension: a recording's movie and what belongs to it share the name.
QString screenCastName(const QDateTime& time);

} // namespace quenby
