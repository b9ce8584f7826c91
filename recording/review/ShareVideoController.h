// The review of a recording: a window with the movie, three facts, and what can be done with it.
//
// Threads: the main thread. Destroying it closes its window; a copy that is being saved goes on, and its alert comes
// all the same. Closing the window never deletes the movie.
#pragma once

#include "recording/review/MovieCopy.h"
#include "recording/review/ShareVideoUi.h"

#include <QByteArray>
#include <QObject>

#include <memory>

namespace quenby {

class Alerts;
class FileBrowser;
class FilePanels;
class MoviePlayer;
class MoviePlayers;
class MovieSaving;
class Opener;
struct MovieFacts;

class ShareVideoController final : public QObject {
    Q_OBJECT

public:
    // They outlive the application's event loop.
    struct Services {
        MoviePlayers& moviePlayers;
        Alerts& alerts;
        FilePanels& filePanels;
        FileBrowser& fileBrowser;
        Opener& opener;
    };

    explicit ShareVideoController(const Services& services);
    ~ShareVideoController() override;

    // An absolute path, as bytes; before the window is shown.
    void setUrlVideo(const QByteArray& path) { urlVideo_ = path; }
    const QByteArray& urlVideo() const { return urlVideo_; }

    // Loads the window with the first call.
    void showInFront();
    // Only when it is visible; whether it was.
    bool minimizeWindow();
    QWidget& window() const;

    PlayerPane& playerView() const { return *ui_.playerView; }
    QLabel& videoSize() const { return *ui_.videoSize; }
    QLabel& videoDuration() const { return *ui_.videoDuration; }
    QLabel& videoFileSize() const { return *ui_.videoFileSize; }

public Q_SLOTS:
    void windowDidLoad();
    // The facts and the player.
    void diaplayAndsetAllDataToVideo();

    void newRecordingAction();
    void shareToGoogleDirveAction();
    void discardAndCloseAction();
    // Offers a place; closes the window when the movie was copied there, or could not be.
    void saveToLocalAction();
    void openInQuickTImePlayerAction();

Q_SIGNALS:
    // With the first two the window is closed already.
    void newRecordingRequested();
    void uploadRequested(const QByteArray& path);
    // It goes on when the window is closed.
    void savingStarted(const quenby::MovieSaving* saving);
    // Once; through the event loop, and so after whatever was requested.
    void closed();

private:
    void connectActions();
    void makePlayer();
    void showFacts(const MovieFacts& facts);
    void save(const QByteArray& destination);
    void copyEnded(MovieCopyResult::End end);
    void windowClosed();

    const Services services_;
    QByteArray urlVideo_;
    const std::unique_ptr<ReviewWindow> window_;
    ShareVideoUi ui_;
    // Below the window, because it must go before the widget that it is shown in.
    std::unique_ptr<MoviePlayer> player_;
    bool isLoaded_ = false;
    bool isClosed_ = false;
};

} // namespace quenby
