// One picture of an X desktop, from the command to the file: takes the desktop's picture, lets the user choose, and
// saves what was chosen. Threads: the main thread.
#pragma once

#include "core/Error.h"
#include "platform/linux/screencapture/CaptureOverlay.h"

#include <QObject>

#include <memory>

namespace quenby {

class DesktopCapture final : public QObject {
    Q_OBJECT

public:
    explicit DesktopCapture(const QByteArray& path);
    ~DesktopCapture() override;

    // Once. The picture is of this moment.
    void start();
    // The screen is as before; nothing is saved.
    void cancel();

Q_SIGNALS:
    // Once, never from inside start(). Without an error, there is a picture or the user cancelled.
    void ended(const quenby::MaybeError& error);

private:
    void watchScreens();
    void save(const QRect& rectangle);
    void fail(int code, const QString& reason);
    void end(const MaybeError& error);

    QByteArray path_;
    QImage picture_;
    QList<CaptureScreen> screens_;
    std::unique_ptr<CaptureOverlay> overlay_;
    bool hasEnded_ = false;
};

} // namespace quenby
