// The review's window: what the keyboard does in it, and how it fills the screen.
//
// Threads: the main thread.
#pragma once

#include <QDialog>

namespace quenby {

class PlayerPane;

class ReviewWindow final : public QDialog {
    Q_OBJECT

public:
    ReviewWindow();

    // The keys without another meaning are the player's.
    void setPlayerPane(PlayerPane* player) { player_ = player; }
    void toggleFullScreen();

    // Escape leaves the full screen, and does not throw a recording away.
    void reject() override;

Q_SIGNALS:
    void fullScreenChanged(bool isOn);
    // By the user or by the program.
    void closed();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    PlayerPane* player_ = nullptr;
    bool wasFullScreen_ = false;
};

} // namespace quenby
