// Uploads what was copied last: files, after a question, into the Drive's folder "Clip board". A picture is kept in the
// cache folder "Copied", and is not offered.
//
// Threads: the main thread. What it is given outlives it. One command at a time: while one is at work, or its alert
// waits for an answer, others do nothing.
#pragma once

#include "app/uploads/FailureAlerts.h"
#include "core/CompletionGate.h"
#include "core/TimeSource.h"

#include <QByteArray>
#include <QList>
#include <QObject>

#include <memory>

namespace quenby {

class CacheFolders;
class Pasteboard;
enum class FileKind : quint8;

class ClipboardUpload : public QObject {
    Q_OBJECT

public:
    struct Services {
        Pasteboard& pasteboard;
        Alerts& alerts;
        CacheFolders& cacheFolders;
        std::shared_ptr<TimeSource> timeSource;
    };

    // The alerts belong to the window.
    ClipboardUpload(const Services& services, WindowProvider window, QObject* parent = nullptr);

    void fetchLastFromClipBoard();
    // At sign-out: whatever is answered now uploads nothing.
    void cancel();

Q_SIGNALS:
    // Into the folder of this name at the top of the Drive; what is gone by then is left out.
    void uploadRequested(const QString& folderName, const QList<QByteArray>& paths);

private:
    void lookForFiles();
    void filesLookedAt(const QList<QByteArray>& paths, const QList<FileKind>& kinds);
    void keepPicture();
    void tellThatThereIsNone();
    void ask(const QList<QByteArray>& candidates);

    const Services services_;
    const WindowProvider window_;
    // One for each command that was not cancelled, and its context: what belongs to it ends with it.
    std::unique_ptr<QObject> command_;
};

} // namespace quenby
