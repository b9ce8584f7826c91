// A file that a test sends. Threads: the main thread.
#pragma once

#include "platform/WebDownload.h"
#include "tests/platform/fakes/FakeWebView.h"

#include <QFile>

namespace quenby::testing {

class FakeWebDownload final : public WebDownload {
public:
    FakeWebDownload(const QUrl& url, const FakeFile& file)
        : url_(url)
        , file_(file) {}

    // --- What it was asked ----------------------------------------------------------------------------------------

    QString path; // by begin(); empty: it was not called
    int pauses = 0;
    int resumes = 0;
    // Nobody took it.
    bool isDropped() const { return isDropped_; }

    // --- What the server does; with holds nothing happens by itself after begin() ----------------------------------

    bool holds = false;
    void receive(const QByteArray& bytes) {
        QFile file(path);
        if (!file.open(QIODevice::Append) || file.write(bytes) != bytes.size())
            qFatal("%s cannot be written", qPrintable(path));
        received_ += bytes.size();
        later([this] { Q_EMIT changed(); });
    }
    void finish() { end(State::finished, {}); }
    void fail(const Error& error) { end(State::failed, error); }

    // --- WebDownload ----------------------------------------------------------------------------------------------

    QUrl url() const override { return url_; }
    QString suggestedFileName() const override { return file_.name; }
    QString mimeType() const override { return file_.mimeType; }
    qint64 receivedBytes() const override { return received_; }
    qint64 totalBytes() const override { return file_.bytes.size(); }
    State state() const override { return state_; }

    void begin(const QString& to) override {
        if (state_ != State::offered)
            return;
        path = to;
        if (!QFile(path).open(QIODevice::WriteOnly | QIODevice::Truncate))
            return fail(Error(URLErrorCode::unknown, {{errorKey::reason, QStringLiteral("It cannot be written.")}}));
        go(State::running);
        later([this] { play(); });
    }
    void pause() override {
        ++pauses;
        if (state_ == State::running)
            go(State::paused);
    }
    void resume() override {
        ++resumes;
        if (state_ != State::paused)
            return;
        go(State::running);
        later([this] { play(); });
    }
    void cancel() override {
        if (state_ != State::running && state_ != State::paused)
            return;
        QFile::remove(path);
        end(State::cancelled, {});
    }
    // By the view that nobody took it from.
    void drop() {
        isDropped_ = true;
        state_ = State::cancelled;
    }

private:
    void play() {
        if (holds || state_ != State::running)
            return;
        receive(file_.bytes.mid(received_));
        if (file_.failure)
            QFile::remove(path);
        if (file_.failure)
            fail(*file_.failure);
        else if (!file_.stalls)
            finish();
    }
    void go(State state) {
        state_ = state;
        later([this] { Q_EMIT changed(); });
    }
    void end(State state, const MaybeError& error) {
        go(state);
        later([this, error] { Q_EMIT ended(error); });
    }
    void later(std::function<void()> function) { QTimer::singleShot(0, this, std::move(function)); }

    const QUrl url_;
    const FakeFile file_;
    State state_ = State::offered;
    bool isDropped_ = false;
    qint64 received_ = 0;
};

} // namespace quenby::testing
