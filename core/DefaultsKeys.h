// The keys of the settings that more than one part of the program reads or writes, spelled as they are stored.
#pragma once

#include <QString>

namespace quenby::defaultsKey {

// Booleans with first values; see app/agent/DefaultsTable.
inline const QString notificationDisplay = QStringLiteral("notificationDisplay"); // post notifications
inline const QString launchAtLogin = QStringLiteral("launchAtLogin");
inline const QString screenshotShare = QStringLiteral("screenshotShare"); // upload new screenshots
inline const QString showMenubarIcon = QStringLiteral("showMenubarIcon"); // the status item shows the gauge
inline const QString showUsegeText = QStringLiteral("showUsegeText");     // the status item shows the used share

// A map: what the folder's path reads like for people, and the bookmark by which it is found (core/FolderBookmark.h).
// Screenshots in it are uploaded.
inline const QString DirectoryBookmark = QStringLiteral("DirectoryBookmark");
inline const QString path = QStringLiteral("path");
inline const QString bookmarkData = QStringLiteral("bookmarkData");
// A list of paths: folders in which screenshots are looked for besides those of the desktop's own tools.
inline const QString screenshotFolders = QStringLiteral("screenshotFolders");

// The keys that bring the workspace window to the front from anywhere: QKeySequence::PortableText, one chord.
inline const QString customShortcut = QStringLiteral("customShortcut");
inline const QString customShortcutEnabled = QStringLiteral("customShortcutEnabled"); // a boolean

// Where the status item stands: "tray", "strip"; anything else: a tray where there is one.
inline const QString statusItemPlace = QStringLiteral("statusItemPlace");
// How the Drive is reached: "none" for no proxy; anything else: as the system has it.
inline const QString proxy = QStringLiteral("proxy");

// The service has lost its first road: "rest" begins with the second.
inline const QString apiRoad = QStringLiteral("apiRoad");
// What the next sign-in asks for: "files" for the files that this program made; anything else: the whole Drive.
inline const QString driveAccess = QStringLiteral("driveAccess");
// Where the user signs in: "browser" for the system's browser; anything else: where the service wants it.
inline const QString signInPlace = QStringLiteral("signInPlace");
// Uploads. A boolean; bytes per second for all of them, 0 for no limit; a boolean.
inline const QString uploadsPaused = QStringLiteral("uploadsPaused");
inline const QString uploadRateLimit = QStringLiteral("uploadRateLimit");
inline const QString uploadsRestOnMetered = QStringLiteral("uploadsRestOnMetered");
// A boolean: a capture's link is put on the clipboard.
inline const QString captureToLink = QStringLiteral("captureToLink");

// Of a client that the user registered with the provider, in place of the program's own.
inline const QString clientID = QStringLiteral("clientID");
inline const QString clientSecret = QStringLiteral("clientSecret");

} // namespace quenby::defaultsKey
