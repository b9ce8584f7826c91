// Screen recording in the program: the command, the stop item in the status bar, and the review window at the end.
//
// Threads: the main thread. What it is given outlives it. At most one recording and one review window at a time.
#pragma once

#include "app/recording/StopItem.h"
#include "core/CompletionGate.h"
#include "core/TimeSource.h"
#include "recording/RecordingState.h"
#include "recording/session/ScreenRecording.h"

#include <QObject>
#include <QSet>

#include <functional>
#include <memory>

namespace quenby {

class Alerts;
class FileBrowser;
class FilePanels;
class MovieSaving;
class MoviePlayers;
class Opener;
class ShareVideoController;

class RecordingFlow : public QObject {
    Q_OBJECT

public:
    struct Surroundings {
        CaptureSessions& captureSessions;
        MoviePlayers& moviePlayers;
        Displays& displays;
        CacheFolders& cacheFolders;
        Alerts& alerts;
        FilePanels& filePanels;
        FileBrowser& fileBrowser;
        Opener& opener;
        StopItem::MakeHosts makeStopItemHosts;
        std::shared_ptr<TimeSource> timeSource;
        // Of all windows of the program; whether one was visible.
        std::function<bool()> minimizeAllWindows;
    };

    explicit RecordingFlow(const Surroundings& surroundings);
    ~RecordingFlow() override;

    // The command: shows the overlay, on which the user chooses what to record.
    void startRecordingSelf();
    // The stop item: ends the recording, and shows the movie.
    void stopRecordingSelf();
    // The selection was abandoned: nothing was ever recorded.
    void stopMannually();
    // Shows a movie in the review window.
    void openShareVideoController(const QByteArray& path);

    const RecordingState& state() const { return state_; }
    // From the start of a recording until its movie is in the review window.
    bool isRecording() const { return isMovieAwaited_; }
    // A movie is being copied to where the user wants it.
    bool isSaving() const { return savings_ > 0; }
    // Only when it is visible; whether it was.
    bool minimizeReviewWindow();
    // Movies that a run of the program which did not end well has left. Before anything is recorded.
    void findInterruptedRecordings();
    // Those that somebody else sees to already.
    void leaveInterrupted(const QSet<QByteArray>& others);
    // The newest of them, above the windows that were shown just now. They wait on when there is something newer to
    // look at already.
    void showInterruptedRecordings();
    // Found, and not shown yet.
    bool areInterruptedWaiting() const { return !interrupted_.isEmpty(); }

Q_SIGNALS:
    // The movie, to be uploaded into the folder of the recordings.
    void uploadRequested(const QByteArray& path);
    // For whoever measures: "selected", "recording", "stopped", "review".
    void reached(const char* moment);

protected:
    // The keys of the whole program while something is selected.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void connectRecording();
    void becomeIdle();
    void sessionNotMade(const Error& error);
    void selectionTooSmall();
    void recordingFinished(const QByteArray& path, const QString& note);
    void recordingFailed(const QString& message, const QString& information);
    void releaseRecording();
    void savingStarted(const MovieSaving* saving);

    const Surroundings surroundings_;
    RecordingState state_;
    std::unique_ptr<ScreenRecording> ScreenRecordingObj_;
    std::unique_ptr<ShareVideoController> shareVideoControllerObj_;
    StopItem myStatusItemRemove_;
    std::unique_ptr<Timer> soon_;   // the stop, or the review window
    CompletionTicket notMade_;      // while the message that nothing can be recorded is what ends the recording
    QList<QByteArray> interrupted_; // paths, oldest first
    bool isMovieAwaited_ = false;
    int savings_ = 0; // that run; they outlive their review window
};

} // namespace quenby
