// The sign-in window's layout: the provider's page, or a message in its place, between a line that says whose page it
// is and a line with the buttons. It decides nothing.
//
// Threads: the main thread.
#pragma once

#include <QDialog>

class QCheckBox;
class QLabel;
class QPushButton;
class QStackedWidget;

namespace quenby {

class HostLine;
class LoadingLine;

class GTMOAuth2Window final : public QDialog {
    Q_OBJECT

public:
    // Belongs to the parent's window; without a parent it stands for itself.
    explicit GTMOAuth2Window(QWidget* parent);

    QCheckBox* keychainCheckbox() const { return keychainCheckbox_; }
    QPushButton* webBackButton() const { return webBackButton_; }
    QPushButton* webCloseButton() const { return webCloseButton_; }
    QPushButton* tryAgainButton() const { return tryAgainButton_; }

    // Takes the page's widget in; the one before must be gone.
    void setWebWidget(QWidget* widget);
    void showWeb();
    // An empty area instead of a page that has nothing to show yet.
    void showWaiting();
    void showMessage(const QString& title, const QString& text);
    bool showsMessage() const;
    QString messageText() const;
    void setLoading(bool isLoading);
    // Whose page it is; empty for nobody's.
    void setHost(const QString& host, bool isSecure);
    // One line above the page; empty hides it.
    void setNotice(const QString& text);
    QString notice() const;
    // Goes without asking and without closedByUser().
    void dismiss();

    QSize sizeHint() const override { return {520, 704}; }
    // Escape, webCloseButton and the window manager all come here.
    void reject() override;

protected:
    void showEvent(QShowEvent* event) override;

Q_SIGNALS:
    // By reject().
    void closedByUser();

private:
    QWidget* makeHeader();
    QWidget* makeMessage();
    QWidget* makeFooter();

    HostLine* host_ = nullptr;
    QLabel* notice_ = nullptr;
    LoadingLine* progress_ = nullptr;
    QStackedWidget* pages_ = nullptr;
    QWidget* waiting_ = nullptr;
    QWidget* message_ = nullptr;
    QLabel* messageTitle_ = nullptr;
    QLabel* messageText_ = nullptr;
    QWidget* web_ = nullptr;
    QPushButton* tryAgainButton_ = nullptr;
    QCheckBox* keychainCheckbox_ = nullptr;
    QPushButton* webBackButton_ = nullptr;
    QPushButton* webCloseButton_ = nullptr;
};

} // namespace quenby
