// The folder whose screenshots are uploaded: asked for when automatic upload is switched on for the first time.
//
// Threads: the main thread. What it is given outlives it.
#pragma once

#include "core/CompletionGate.h"
#include "platform/FilePanels.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>

namespace quenby {

class Defaults;

class ScreenshotFolder : public QObject {
    Q_OBJECT

public:
    ScreenshotFolder(Defaults& defaults, FilePanels& panels);
    // A panel that nobody answered any more counts as cancelled.
    ~ScreenshotFolder() override;

    // Stores "screenshotShare". When it is on and no folder is known, a panel over the window asks for one; cancelling
    // it switches the setting off again.
    void share_screeshot(bool isOn, QWidget* window);
    // The panel, to choose another folder; cancelling it leaves everything as it is.
    void chooseAnother(QWidget* window);

    // The path of the stored bookmark, as people read it; empty when there is none.
    QString path() const;
    // Why the stored folder cannot be used, and what to do; empty when it can, or when there is none. May wait for the
    // file system.
    void check(QObject* context, std::function<void(const QString& sentence)> checked) const;

    // The user's home, where the panel begins.
    static QByteArray usersHomeDirectory();
    // Only the home folder itself and the folder in which all homes lie may be chosen; the panel stays below the home.
    static FolderPanelRules rules();

private:
    void ask(QWidget* window);
    void store(const QByteArray& folder);

    Defaults& defaults_;
    FilePanels& panels_;
    CompletionTicket panel_;
    QPointer<QWidget> askedOver_; // the panel goes with it
};

} // namespace quenby
