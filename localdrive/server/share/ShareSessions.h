// The sharing dialogs that are open. Each has a key of its own, good for one file, which its script sends back in a
// header: another site can neither guess it nor send such a header.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <mutex>
#include <optional>

namespace quenby::localdrive {

// What a dialog was opened with. It is asked anew with each request, so that signing out closes the dialog, too.
struct ShareCredential {
    enum class Kind { token, webSession };

    Kind kind = Kind::token;
    QByteArray secret;
};

struct ShareSession {
    ShareCredential credential;
    QString fileId;
};

// Threads: any. Keys are good while the process lives and not too many dialogs were opened after theirs.
class ShareSessions {
public:
    // The new dialog's key.
    QByteArray open(ShareSession session);
    std::optional<ShareSession> find(const QByteArray& key) const;

private:
    struct Entry {
        QByteArray key;
        ShareSession session;
    };

    mutable std::mutex mutex_;
    QList<Entry> entries_; // the oldest first
};

} // namespace quenby::localdrive
