#include "platform/linux/media/engine/player/GstMoviePlayer.h"

#include "platform/linux/media/engine/player/FrameworkThreads.h"
#include "platform/linux/media/engine/player/MovieView.h"
#include "platform/linux/media/engine/player/Playback.h"

#include <QThreadPool>

#include <algorithm>

#include <malloc.h>

namespace quenby {
namespace {

using namespace std::chrono_literals;

// There is no picture at the very end.
constexpr auto endsBefore = 1ms;

} // namespace

GstMoviePlayer::GstMoviePlayer()
    : view_(new MovieView) {}

GstMoviePlayer::~GstMoviePlayer() {
    playback_.reset();
    if (view_ && !view_->parent())
        delete view_;
    // A movie takes and drops large pieces of memory, of which the library keeps a hundred megabytes for no use.
    frameworkThreads().start([] { ::malloc_trim(0); });
}

QWidget* GstMoviePlayer::view() { return view_; }

void GstMoviePlayer::open(const QByteArray& path) {
    setPlaying(false);
    wanted_.reset();
    sought_.reset();
    isReady_ = false;
    duration_ = 0ms;
    position_ = 0ms;
    playback_ = std::make_unique<Playback>();
    if (view_) {
        view_->clear();
        connect(view_, &MovieView::roomChanged, playback_.get(), &Playback::setRoom);
        playback_->setRoom(view_->room());
    }
    connect(playback_.get(), &Playback::pictureCame, this, [this](const MoviePicture& picture) {
        if (view_)
            view_->setPicture(picture);
        if (!wanted_)
            tellPosition(picture.position);
    });
    connect(playback_.get(), &Playback::settled, this, &GstMoviePlayer::settled);
    connect(playback_.get(), &Playback::ended, this, &GstMoviePlayer::ended);
    connect(playback_.get(), &Playback::failed, this, &GstMoviePlayer::fail);
    playback_->open(path);
}

void GstMoviePlayer::play() {
    if (!playback_ || isPlaying_)
        return;
    if (isReady_ && position() >= duration_ - endsBefore)
        setPosition(0ms);
    setPlaying(true);
}

void GstMoviePlayer::pause() { setPlaying(false); }

void GstMoviePlayer::setPosition(Milliseconds position) {
    if (!playback_)
        return;
    wanted_ = withinMovie(position);
    tellPosition(*wanted_);
    seekWanted();
}

std::chrono::milliseconds GstMoviePlayer::position() const { return position_; }

bool GstMoviePlayer::hasSound() const { return playback_ && isReady_ && playback_->hasSound(); }

void GstMoviePlayer::setVolume(double volume) {
    volume_ = std::clamp(volume, 0.0, 1.0);
    if (playback_)
        playback_->setVolume(volume_);
}

void GstMoviePlayer::seekWanted() {
    if (!isReady_ || sought_)
        return;
    wanted_ = withinMovie(*wanted_); // it may have been asked for before the length was known
    sought_ = wanted_;
    playback_->seek(*sought_);
}

GstMoviePlayer::Milliseconds GstMoviePlayer::withinMovie(Milliseconds position) const {
    const Milliseconds last = duration_ - endsBefore;
    return std::max<Milliseconds>(isReady_ ? std::min(position, last) : position, 0ms);
}

void GstMoviePlayer::settled() {
    isReady_ = true;
    playback_->setVolume(volume_);
    if (const Milliseconds duration = playback_->duration(); std::exchange(duration_, duration) != duration)
        Q_EMIT durationChanged();
    const auto reached = std::exchange(sought_, std::nullopt);
    if (wanted_ == reached)
        wanted_.reset();
    else
        seekWanted();
}

void GstMoviePlayer::ended() {
    // It ended before it was sent elsewhere.
    if (wanted_)
        return;
    setPlaying(false);
    tellPosition(duration_);
}

void GstMoviePlayer::fail(const QString& reason) {
    wanted_.reset();
    sought_.reset();
    isReady_ = false;
    // It tells this, and may have more on its way that nobody wants any more.
    playback_->disconnect(this);
    playback_.release()->deleteLater();
    setPlaying(false);
    Q_EMIT failed(reason);
}

void GstMoviePlayer::setPlaying(bool isPlaying) {
    if (playback_)
        playback_->setPlaying(isPlaying);
    if (std::exchange(isPlaying_, isPlaying) != isPlaying)
        Q_EMIT playingChanged();
}

void GstMoviePlayer::tellPosition(Milliseconds position) {
    if (std::exchange(position_, position) != position)
        Q_EMIT positionChanged();
}

} // namespace quenby
