// The login item as a file in the user's autostart folder.
//
// Switching it off removes a file that is as it was written here; what people or desktops changed is kept, and hidden.
// An entry of the same name that the system has for all users is hidden likewise, because it would come back otherwise.
#pragma once

#include "platform/LoginItem.h"

#include <QString>
#include <QStringList>

#include <memory>

namespace quenby {

struct AutostartOptions {
    QString path;          // of the entry: the user's autostart folder and "org.quenby.Quenby.desktop"
    QString program;       // absolute path of the program that runs
    QStringList arguments; // "--hidden" among them
    QString name = QStringLiteral("Quenby"); // for people, who see it in their session's settings
};

// For the profile of the program ("quenby", "quenby-local"): an entry of its own, which starts it the same way, hidden
// and with these arguments. The program's path is the one that lasts longest: the package's AppImage, else the link in
// $PATH that leads here, which stays when versions come and go, else where it lies.
AutostartOptions autostartOptions(const QString& profile, const QStringList& arguments);

class AutostartLoginItem final : public LoginItem {
    Q_OBJECT

public:
    explicit AutostartLoginItem(AutostartOptions options);
    ~AutostartLoginItem() override;

    QString unavailableBecause() const override;
    bool isEnabled() const override;
    MaybeError setEnabled(bool isEnabled) override;
    void followProgram() override;

private:
    class Private;
    const std::unique_ptr<Private> d_;
};

} // namespace quenby
