// The kernel's notices of what changes in folders. One for all folders: a user has few of them.
//
// Threads: made and destroyed on the main thread, which gets the signals; watch() and release() may be called from any,
// since adding a folder may wait for a disk. Where the kernel has no more notices to give, watch() says so.
#pragma once

#include <QByteArray>
#include <QHash>
#include <QObject>

#include <memory>
#include <mutex>

class QSocketNotifier;

namespace quenby {

// The part that other threads use; it stays as long as one of them does.
class NoticeBoard {
public:
    NoticeBoard();
    ~NoticeBoard();
    NoticeBoard(const NoticeBoard&) = delete;
    NoticeBoard& operator=(const NoticeBoard&) = delete;

    int descriptor() const { return descriptor_; } // -1: the kernel has none left
    // A number for the folder, the same for everybody who asks for it; -1 when it is none, or cannot be watched.
    int watch(const QByteArray& folder);
    // As often as it was watched.
    void release(int number);

private:
    const int descriptor_;
    std::mutex mutex_; // guards what follows
    QHash<int, int> users_;
};

class FolderNotices : public QObject {
    Q_OBJECT

public:
    explicit FolderNotices(QObject* parent = nullptr);
    ~FolderNotices() override;

    const std::shared_ptr<NoticeBoard>& board() const { return board_; }

Q_SIGNALS:
    // Something of this name in the folder came, went, or was written.
    void changed(int number, const QByteArray& name);
    // The folder itself went, or is somewhere else now.
    void displaced(int number);
    // Notices were lost.
    void overflowed();

private:
    void read();

    std::shared_ptr<NoticeBoard> board_;
    QSocketNotifier* notifier_ = nullptr;
};

} // namespace quenby
