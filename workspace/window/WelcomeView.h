// What the workspace window shows while nobody is signed in.
//
// Threads: the main thread.
#pragma once

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
    // All commands, behind a button in the corner. Not owned.
    void setCommandsMenu(QMenu* menu);
    // Puts the keyboard's focus where it is wanted first.
    void focusFirst();

Q_SIGNALS:
    void signInRequested();
    void localDriveRequested();
    void tryAgainRequested();

private:
    const std::unique_ptr<WelcomeViewUi> ui_;
};

} // namespace quenby
