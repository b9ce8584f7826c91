// Movies that nobody sees: the test says how long they are and how far they have come.
#pragma once

#include "platform/MoviePlayer.h"

#include <QPointer>
#include <QWidget>

#include <optional>

namespace quenby::testing {

class FakeMoviePlayer final : public MoviePlayer {
public:
    ~FakeMoviePlayer() override {
        if (view_ && !view_->parent())
            delete view_;
    }

    QWidget* view() override { return view_; }
    void open(const QByteArray& path) override { path_ = path; }
    void play() override { setPlaying(true); }
    void pause() override { setPlaying(false); }
    bool isPlaying() const override { return isPlaying_; }
    void setPosition(std::chrono::milliseconds position) override {
        position_ = position;
        Q_EMIT positionChanged();
    }
    std::chrono::milliseconds position() const override { return position_; }
    std::chrono::milliseconds duration() const override { return duration_; }
    bool hasSound() const override { return hasSound_; }
    void setVolume(double volume) override { volume_ = volume; }

    const QByteArray& path() const { return path_; }
    double volume() const { return volume_; }
    // The first picture has come.
    void load(std::chrono::milliseconds duration, bool hasSound = false) {
        duration_ = duration;
        hasSound_ = hasSound;
        Q_EMIT durationChanged();
    }

private:
    void setPlaying(bool isPlaying) {
        isPlaying_ = isPlaying;
        Q_EMIT playingChanged();
    }

    QPointer<QWidget> view_ = new QWidget;
    QByteArray path_;
    bool isPlaying_ = false;
    bool hasSound_ = false;
    double volume_ = 1;
    std::chrono::milliseconds position_{0};
    std::chrono::milliseconds duration_{0};
};

class FakeMoviePlayers final : public MoviePlayers {
public:
    Result<std::unique_ptr<MoviePlayer>> create() override {
        if (failure_)
            return *failure_;
        auto player = std::make_unique<FakeMoviePlayer>();
        last_ = player.get();
        return std::unique_ptr<MoviePlayer>(std::move(player));
    }
    void readFacts(const QByteArray& path, QObject* context, FactsRead read) override {
        factsReadOf_ = path;
        CompletionGate<const MovieFacts&>(context, std::move(read)).deliver(facts_);
    }

    // Null when it is gone.
    FakeMoviePlayer* last() const { return last_; }
    const QByteArray& factsReadOf() const { return factsReadOf_; }
    void setFacts(const MovieFacts& facts) { facts_ = facts; }
    void setFailure(const std::optional<Error>& failure) { failure_ = failure; }

private:
    QPointer<FakeMoviePlayer> last_;
    QByteArray factsReadOf_;
    MovieFacts facts_;
    std::optional<Error> failure_;
};

} // namespace quenby::testing
