// The settings that the whole program shares, and their first values.
#pragma once

#include <QString>

namespace quenby {

class Defaults;

namespace defaultsKey {
inline const QString notificationDisplay = QStringLiteral("notificationDisplay"); // post notifications
inline const QString launchAtLogin = QStringLiteral("launchAtLogin");
inline const QString screenshotShare = QStringLiteral("screenshotShare"); // upload new screenshots
inline const QString showMenubarIcon = QStringLiteral("showMenubarIcon"); // the status item shows the gauge
inline const QString showUsegeText = QStringLiteral("showUsegeText");     // the status item shows the used share
} // namespace defaultsKey

// Writes each first value whose key is absent; a value that was chosen stays. Whether launchAtLogin was absent: then
// the login item is to be switched off once.
bool CheckDefaultsValue(Defaults& defaults);

} // namespace quenby
