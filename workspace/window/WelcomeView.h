// What the workspace window shows while nobody is signed in.
//
// Threads: the main thread.
#pragma once

#include "core/DriveAccess.h"

#include <QWidget>

#include <memory>

class QMenu;

namespace quenby {

struct WelcomeViewUi;

class WelcomeView : public QWidget {
    Q_OBJECT

public:
    explicit WelcomeView(QWidget* parent = nullptr);
    ~WelcomeView() override;

    // Nothing is under way: the buttons wait to be pressed.
    void showReady();
    // Something is under way that a sign-in has to wait for, for example "Waiting for the keyring to be unlocked…". The
    // local Drive can still be chosen.
    void showWaiting(const QString& status);
    // What went wrong and what to do about it; "Try Again" offers itself.
    void showTrouble(const QString& sentence);

    // On at first; for a program that is on the local Drive already there is nothing to offer.
    void setOffersLocalDrive(bool offers);
    // The next two are off at first: they are for a provider that verifies the clients of its users.
    void setOffersAccess(bool offers);
    void setOffersOwnClient(bool offers);
    // What the next sign-in asks for; everything at first.
    void setAccess(DriveAccess access);
    // The identifier of the user's own client that the next sign-in uses; empty: the program's.
    void setOwnClient(const QString& identifier);
    // All commands, behind a button in the corner. Not owned.
    void setCommandsMenu(QMenu* menu);
    // Puts the keyboard's focus where it is wanted first.
    void focusFirst();

Q_SIGNALS:
    void signInRequested();
    void localDriveRequested();
    void tryAgainRequested();
    // By the user; not by setAccess().
    void accessChosen(quenby::DriveAccess access);
    void ownClientRequested();

private:
    const std::unique_ptr<WelcomeViewUi> ui_;
};

} // namespace quenby
