// A file that a web page sends.
//
// It goes on when its page is closed, but not when it is let go of: then what has arrived is removed. It must be gone
// before the WebViews are.
//
// Threads: the main thread. It begins within the call that hands it over (see BrowserView::setDownloadHandler) or not
// at all; its bytes then go to the path that was named, and its owner moves the file to where it is wanted when it is
// whole.
#pragma once

#include "core/Error.h"

#include <QObject>
#include <QString>
#include <QUrl>

namespace quenby {

class WebDownload : public QObject {
    Q_OBJECT

public:
    enum class State { offered, running, paused, finished, failed, cancelled };

    virtual QUrl url() const = 0;                  // that was asked for, before redirects where that is known
    virtual QString suggestedFileName() const = 0; // as the page says; anything may stand in it
    virtual QString mimeType() const = 0;
    virtual qint64 receivedBytes() const = 0;
    virtual qint64 totalBytes() const = 0; // -1: not known
    virtual State state() const = 0;

    // An absolute path, in a folder that exists, that no other download is being written to. A file that is there is
    // overwritten.
    virtual void begin(const QString& path) = 0;
    virtual void pause() = 0;
    virtual void resume() = 0;
    // Removes what has arrived.
    virtual void cancel() = 0;

Q_SIGNALS:
    // Bytes or state; told through the event loop.
    void changed();
    // Once, after begin(), when the state is finished, failed (with the reason, which holds no address) or cancelled
    // (without).
    void ended(const quenby::MaybeError& error);
};

} // namespace quenby
