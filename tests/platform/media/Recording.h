// A recording that a test makes, and what can be said of its movie.
#pragma once

#include "platform/linux/media/engine/capture/GstCaptureSession.h"
#include "platform/linux/media/engine/capture/MoviePieces.h"
#include "tests/support/MovieFrames.h"

#include <QFile>
#include <QTest>
#include <QtEndian>

namespace quenby::testing {

inline constexpr int patience = 60'000; // ms; only a hang takes so long
inline const QRect desktop(0, 0, 1280, 800);

// A session that records a part of the screen, and what it told.
class Recording {
public:
    explicit Recording(QString path, CaptureOptions options = {}, const QRect& crop = QRect(101, 73, 400, 302),
                       const QRect& display = desktop)
        : path_(std::move(path))
        , session(engine_.createSession(options)) {
        QObject::connect(session.get(), &CaptureSession::recordingStarted, [this] { ++started; });
        QObject::connect(session.get(), &CaptureSession::recordingFinished,
                         [this](const QByteArray& movie, RecordingEnd how) {
                             ++ended;
                             named = QFile::decodeName(movie);
                             end = how;
                         });
        QObject::connect(session.get(), &CaptureSession::recordingFailed, [this](const Error& error) {
            ++ended;
            reason = error.detail(errorKey::reason).toString();
        });
        CaptureInput input;
        input.display.identifier = 1;
        input.display.pixels = display;
        input.cropRect = crop;
        session->setScreenInput(input);
        session->startRecording(QFile::encodeName(path_));
    }

    QString hiddenPath() const { return QFile::decodeName(unfinishedMoviePath(QFile::encodeName(path_))); }
    bool hasStarted() const {
        return QTest::qWaitFor([this] { return started > 0 || ended > 0; }, patience) && started > 0;
    }
    // So many seconds of it can be played, whatever happens.
    bool hasPieces(int pieces) const;
    bool hasEnded() const {
        return QTest::qWaitFor([this] { return ended > 0; }, patience);
    }
    bool stop() const {
        session->stopRecording();
        return hasEnded();
    }

private:
    const QString path_;
    CaptureEngine engine_;

public:
    std::unique_ptr<CaptureSession> session;
    int started = 0;
    int ended = 0;
    QString named;
    RecordingEnd end = RecordingEnd::asked;
    QString reason;
};

inline bool growsByPieces(const QString& path, int pieces) {
    QList<qint64> lengths;
    return QTest::qWaitFor(
        [&] {
            QFile file(path);
            if (!file.open(QIODevice::ReadOnly))
                return false;
            const qint64 length = playableLength(file.handle());
            if (length > 0 && !lengths.contains(length))
                lengths.append(length);
            return lengths.size() >= pieces;
        },
        patience);
}

inline bool Recording::hasPieces(int pieces) const { return growsByPieces(hiddenPath(), pieces); }

// The types of a movie's outermost parts.
inline QByteArrayList parts(const QString& path) {
    QFile file(path);
    QByteArrayList types;
    while (file.isOpen() ? !file.atEnd() : file.open(QIODevice::ReadOnly)) {
        const QByteArray header = file.read(16);
        qint64 length = qFromBigEndian<quint32>(header.constData());
        if (length == 1)
            length = qFromBigEndian<qint64>(header.constData() + 8);
        types.append(header.mid(4, 4));
        if (length < 8 || !file.seek(file.pos() - header.size() + length))
            break;
    }
    return types;
}

// An ordinary movie at a constant rate, which any player takes.
inline bool isWhole(const QString& path, int leastFrames) {
    const auto facts = movieFacts(path);
    if (!facts)
        return false;
    qInfo("%d frames, steps of %f to %f s, %s", facts->frameCount(), facts->leastStep(), facts->greatestStep(),
          parts(path).join(' ').constData());
    constexpr double step = 1.0 / 30;
    constexpr double exactly = 0.0001;
    return facts->frameCount() >= leastFrames && facts->greatestStep() < step + exactly &&
           facts->leastStep() > step - exactly && parts(path).count("moov") == 1 && !parts(path).contains("moof");
}

} // namespace quenby::testing
