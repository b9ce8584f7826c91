// The program's folders below the user's caches. All of them go at the end of the program.
#pragma once

#include <QString>

namespace quenby::cacheFolderName {

inline const QString screenshots = QStringLiteral("ScreenShotCaches");
inline const QString recordings = QStringLiteral("ScreenCastCache");
inline const QString copiedPictures = QStringLiteral("Copied");
inline const QString images = QStringLiteral("imageCache"); // also emptied at the start

} // namespace quenby::cacheFolderName
