// The layout of what is shown while the user signs in by the browser. It decides nothing.
//
// Threads: the main thread.
#pragma once

#include <QDialog>

class QCheckBox;
class QLabel;
class QPushButton;

namespace quenby {

class LoadingLine;

class BrowserSignInWindow final : public QDialog {
    Q_OBJECT

public:
    // Belongs to the parent's window; without a parent it stands for itself.
    explicit BrowserSignInWindow(QWidget* parent);

    QCheckBox* keychainCheckbox() const { return keychainCheckbox_; }
    QPushButton* openAgainButton() const { return openAgainButton_; }
    QPushButton* copyButton() const { return copyButton_; }
    QPushButton* cancelButton() const { return cancelButton_; }

    // The browser shows a page of this host, which the user is to sign in at.
    void showWaiting(const QString& host);
    // The browser has answered: nothing is left to do for the user.
    void showFinishing();
    // Below the buttons; empty hides it.
    void setNotice(const QString& text);
    QString notice() const;
    QString text() const;
    bool isFinishing() const;
    // Goes without closedByUser().
    void dismiss();

    // Escape, cancelButton and the window manager all come here.
    void reject() override;

Q_SIGNALS:
    // By reject().
    void closedByUser();

private:
    QWidget* makeTexts();
    QWidget* makeButtons();

    LoadingLine* progress_ = nullptr;
    QLabel* title_ = nullptr;
    QLabel* text_ = nullptr;
    QLabel* notice_ = nullptr;
    QCheckBox* keychainCheckbox_ = nullptr;
    QPushButton* openAgainButton_ = nullptr;
    QPushButton* copyButton_ = nullptr;
    QPushButton* cancelButton_ = nullptr;
};

} // namespace quenby
