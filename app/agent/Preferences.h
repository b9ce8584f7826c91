// The preferences in the program: the window, made anew for each opening, and what acts on its settings without it: the
// global shortcut, the login item, the client, the place of the status item.
//
// Threads: the main thread. What it is given outlives it.
#pragma once

#include "app/diagnostics/Diagnostics.h"
#include "app/preferences/AccessChoice.h"
#include "app/preferences/AccountPicture.h"
#include "app/preferences/ClientChoice.h"
#include "app/preferences/LoginItemSwitch.h"
#include "app/statusitem/StatusItemPlaceSetting.h"
#include "core/AccountDisplay.h"
#include "preferences/shortcut/CustomShortcut.h"

#include <QIcon>
#include <QObject>
#include <QPointer>

#include <memory>

class QWidget;

namespace quenby {

class AccountDetails;
class AccountSession;
class DriveConnection;
class OwnClientDialog;
class PreferenceWindowController;
struct PlatformServices;

class Preferences : public QObject {
    Q_OBJECT

public:
    struct Surroundings {
        PlatformServices& platform;
        DriveConnection& drive;
        AccountSession& session;
        AccountDetails& details;
        QIcon icon;             // the program's
        QString placeDecidedBy; // why the place of the status item is not to be chosen; else empty
    };

    explicit Preferences(const Surroundings& surroundings);
    ~Preferences() override;

    // At the launch, once the first values of the settings are there.
    void begin(bool isFirstLogin);
    // A fresh window in front, in place of one that is open.
    void OpenPreferenceWindow();
    void OpenPref() { OpenPreferenceWindow(); }
    // Whether there was one to be seen.
    bool minimizeWindow();

    // Signed out: what is known of the user is forgotten, and the next sign-in is as the client that was chosen.
    void leaveAccount();
    // Who is signed in, or why nobody is.
    void setAccount(const AccountDisplay& account);

    // How much of the Drive the next sign-in asks for.
    AccessChoice& access() { return access_; }
    // Whether the next sign-in may be as a client of the user's own, and its identifier; empty: the program's.
    bool offersOwnClient() const { return client_.decidedElsewhere().isEmpty(); }
    QString ownClient() const { return client_.isProgramsOwn() ? QString() : client_.clientID(); }
    // The way to one, as a sheet of that window. Once at a time.
    void showOwnClient(QWidget* window);
    // Another client was chosen, but whoever is signed in stays so.
    void keepFormerClient() { client_.keepFormer(); }

Q_SIGNALS:
    // The global shortcut.
    void ShowMainWindow();
    // A window has opened and shows no account yet.
    void accountDataWanted();
    void logoutUser();
    void signInRequested();
    // By somebody who is signed in, with other access.
    void signInAgainRequested();
    // Another client was chosen: who is signed in is so as the former one, until leaveAccount() or keepFormerClient().
    void clientChanged();

private:
    void connectWindow();
    void showAccountDetails();
    void tellLoginItemFailed(const QString& informativeText, const QString& details);
    void copyDiagnostics();

    const Surroundings surroundings_;
    PlatformServices& platform_;
    CustomShortcut shortcut_;
    LoginItemSwitch loginItem_;
    StatusItemPlaceSetting itemPlace_;
    ClientChoice client_;
    AccessChoice access_;
    AccountPicture picture_;
    Diagnostics diagnostics_;
    CompletionTicket diagnosticsTicket_;
    std::unique_ptr<PreferenceWindowController> preference_; // from the first opening on
    QPointer<OwnClientDialog> ownClientSheet_;
};

} // namespace quenby
