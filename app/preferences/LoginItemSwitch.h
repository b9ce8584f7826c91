// The setting "launchAtLogin" and the desktop's own switch: either follows the other.
//
// Threads: the main thread. What it is given outlives it.
#pragma once

#include "platform/LoginItem.h"

#include <QObject>

namespace quenby {

class Defaults;

class LoginItemSwitch : public QObject {
    Q_OBJECT

public:
    LoginItemSwitch(LoginItem& item, Defaults& defaults);

    // At the launch, once the first values of the settings are there. On the very first one the item is switched off.
    void begin(bool isFirstLogin);
    // Of this program; failures are told by failed(). The setting keeps its value regardless.
    void setStartAtLogin(bool isEnabled);

Q_SIGNALS:
    // An alert's texts: "Error", and what did not work.
    void failed(const QString& informativeText, const QString& details);

private:
    void followDesktop();

    LoginItem& item_;
    Defaults& defaults_;
    bool isFollowing_ = false; // the setting is being written because the desktop's switch moved
    bool hasBegun_ = false;
};

} // namespace quenby
