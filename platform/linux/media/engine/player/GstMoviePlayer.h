// Plays movies by the media framework.
//
// The pictures are converted and made smaller on the framework's threads, and painted by a plain widget: no graphics
// library is needed, and a recording of a whole screen leaves most of one core to others.
#pragma once

#include "platform/MoviePlayer.h"

#include <QPointer>

#include <optional>

namespace quenby {

class MovieView;
class Playback;

class GstMoviePlayer final : public MoviePlayer {
    Q_OBJECT

public:
    GstMoviePlayer();
    ~GstMoviePlayer() override;

    QWidget* view() override;
    void open(const QByteArray& path) override;
    void play() override;
    void pause() override;
    bool isPlaying() const override { return isPlaying_; }
    void setPosition(std::chrono::milliseconds position) override;
    std::chrono::milliseconds position() const override;
    std::chrono::milliseconds duration() const override { return duration_; }
    bool hasSound() const override;
    void setVolume(double volume) override;

private:
    using Milliseconds = std::chrono::milliseconds;

    void settled();
    void ended();
    void fail(const QString& reason);
    void seekWanted();
    Milliseconds withinMovie(Milliseconds position) const;
    void setPlaying(bool isPlaying);
    void tellPosition(Milliseconds position);

    QPointer<MovieView> view_;
    std::unique_ptr<Playback> playback_;
    double volume_ = 1;
    bool isPlaying_ = false;
    Milliseconds duration_{0};
    Milliseconds position_{0};
    // A position that was asked for and is not shown yet. One search runs at a time, for the last position that was
    // asked for: a slider that is dragged asks faster than any movie can follow.
    std::optional<Milliseconds> wanted_;
    std::optional<Milliseconds> sought_;
    bool isReady_ = false; // the first picture has come
};

} // namespace quenby
