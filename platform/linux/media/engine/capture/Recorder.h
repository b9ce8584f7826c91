// One recording from the first picture to the named file, on a thread of its own.
//
// Threads: made anywhere, then moved to its thread; everything public is called there. Nothing here knows the session,
// so that a recording whose session is gone can still be brought to its end.
#pragma once

#include "platform/linux/media/MediaModule.h"
#include "platform/linux/media/engine/capture/EncoderChoice.h"
#include "platform/linux/media/engine/capture/FreeSpaceWatch.h"
#include "platform/linux/media/engine/capture/MovieOnDisk.h"
#include "platform/linux/media/engine/capture/MoviePipeline.h"
#include "platform/linux/media/engine/capture/PicturePipeline.h"

#include <QTimer>

#include <vector>

namespace quenby {

class Recorder final : public QObject {
    Q_OBJECT

public:
    explicit Recorder(CaptureOptions options);
    ~Recorder() override;

    // Makes ready: the framework, its plug-ins, the encoders. ready() tells, also when something is missing: start()
    // will say what.
    void warmUp();
    // Once. started(), finished() and failed() tell the rest.
    void start(const CaptureFeed& feed, int frameRate, const QByteArray& path);
    // Ends the recording; the first reason counts.
    void end(RecordingEnd end);
    // Ends it as if it had been asked to, and says so with idle() when nothing is left to do.
    void retire();

Q_SIGNALS:
    void ready();
    void started();
    void finished(const QByteArray& path, quenby::RecordingEnd end);
    void failed(const quenby::Error& error);
    void idle();

private:
    // What was taken when the end was asked for is first handed on, then encoded, then written.
    enum class State { ready, waiting, recording, handingOn, encoding, writing, over };
    bool isEnding() const { return state_ >= State::handingOn && state_ <= State::writing; }

    void dropIdleEncoders();
    void startMovie();
    void firstCame();
    void movieEnded(MoviePipeline::End end, const QString& text);
    void encoderFailed(const QString& text);
    void tryNextEncoder(const QString& text);
    void screenEnded(const QString& text);
    void finishMovie();
    void patienceEnded();
    // Ends it with the file as it is now.
    void conclude(bool isWhole);
    void fail(const QString& reason);
    void fail(const Error& error);
    void release();

    const CaptureOptions options_;
    QString notReadyBecause_; // a sentence
    QList<Encoder> encoders_; // those that have not failed

    State state_ = State::ready;
    RecordingEnd end_ = RecordingEnd::asked;
    QString trouble_; // what ended it, in the framework's words
    bool isRetired_ = false;
    int frameRate_ = 0;
    std::unique_ptr<MovieOnDisk> file_;
    std::unique_ptr<FreeSpaceWatch> freeSpace_;
    std::shared_ptr<void> keptOpen_;
    std::shared_ptr<PictureHandover> handover_;
    std::unique_ptr<PicturePipeline> screen_;
    std::unique_ptr<MoviePipeline> movie_;
    int movieNumber_ = 0; // of movie_; the ones before have nothing to tell
    // Stopped; whoever tells of its own end cannot be destroyed by that.
    std::vector<std::unique_ptr<MoviePipeline>> failedMovies_;
    QTimer patience_;
};

} // namespace quenby
