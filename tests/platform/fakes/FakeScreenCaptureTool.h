// A tool that shows nothing. The test says what the user did with it.
#pragma once

#include "platform/ScreenCaptureTool.h"

#include <QFile>
#include <QImage>

#include <cerrno>

namespace quenby::testing {

class FakeScreenCaptureTool final : public ScreenCaptureTool {
public:
    QString unavailableBecause() const override { return unavailableBecause_; }
    void capture(const QByteArray& path, QObject* context, Ended ended) override {
        paths_.append(path);
        const CompletionGate<MaybeError> gate(context, std::move(ended));
        if (!unavailableBecause_.isEmpty())
            return gate.deliver(failure(ENOENT, unavailableBecause_));
        if (isOpen())
            return gate.deliver(failure(EBUSY, QStringLiteral("A part of the screen is being chosen already.")));
        openPath_ = path;
        open_ = gate;
    }

    // Every path that was asked for, also when that came to nothing.
    const QList<QByteArray>& paths() const { return paths_; }
    bool isOpen() const { return !openPath_.isEmpty(); }

    // What the user does. The end arrives through the event loop. False: nothing is open, or the file cannot be
    // written.
    bool take(const QImage& picture = plainPicture()) {
        QFile file(QFile::decodeName(openPath_));
        if (!isOpen() || !file.open(QIODevice::WriteOnly) || !picture.save(&file, "png"))
            return false;
        file.close();
        return end(std::nullopt);
    }
    bool cancel() { return end(std::nullopt); }
    bool fail(const QString& reason) { return end(failure(EIO, reason)); }

    void setUnavailableBecause(const QString& sentence) { unavailableBecause_ = sentence; }

private:
    static QImage plainPicture() {
        QImage picture(4, 3, QImage::Format_RGB32);
        picture.fill(Qt::darkCyan);
        return picture;
    }
    static Error failure(int code, const QString& reason) {
        return Error(errorDomain::posix, code, {{errorKey::reason, reason}});
    }
    bool end(const MaybeError& error) {
        if (!isOpen())
            return false;
        openPath_.clear();
        open_.deliver(error);
        return true;
    }

    QString unavailableBecause_;
    QList<QByteArray> paths_;
    QByteArray openPath_; // empty: nothing is open
    CompletionGate<MaybeError> open_;
};

} // namespace quenby::testing
