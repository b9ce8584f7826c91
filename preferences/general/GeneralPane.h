// The pane of what the program does and shows. Every control is a setting: it writes it at once, and follows it when
// somebody else does.
//
// Threads: the main thread. What it is given outlives it.
#pragma once

#include <QWidget>

#include <memory>

namespace quenby {

class CustomShortcut;
class Defaults;
class ScreenshotFolder;
struct GeneralPaneUi;

class GeneralPane : public QWidget {
    Q_OBJECT

public:
    struct Services {
        Defaults& defaults;
        CustomShortcut& shortcut;
        ScreenshotFolder& screenshotFolder;
        QString noShortcutsBecause; // from the platform: why there are no global shortcuts; else empty
        QString placeDecidedBy;     // why the place of the status item is not to be chosen here; else empty
    };

    explicit GeneralPane(const Services& services, QWidget* parent = nullptr);
    ~GeneralPane() override;

    // Shows every setting as it is.
    void setValue();

Q_SIGNALS:
    void screenshotFoldersRequested();

protected:
    bool event(QEvent* event) override;

private:
    void connectControls();
    void connectShortcut();
    void settingChanged(const QString& key);
    void setRecording(bool isRecording);
    void showStatusItem();
    void showFolder();
    void checkFolder();
    void showShortcut();
    QString shortcutTrouble() const;

    const Services services_;
    const std::unique_ptr<GeneralPaneUi> ui_;
    int folderChecks_ = 0; // begun; only the last one counts
    QString keysRefused_;  // by the view that records them
    bool isRecording_ = false;
};

} // namespace quenby
