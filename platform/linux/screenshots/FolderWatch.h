// Keeps up with one folder that tools may save screenshots in: from its beginning, or from when it appears, through its
// removal and its coming back. Where the file system tells of changes it is told; elsewhere it asks every few seconds.
//
// Threads: the main thread. Each look is taken on a thread of its own, one at a time, which nobody waits for: a network
// folder that does not answer holds up itself alone.
#pragma once

#include "core/CompletionGate.h"
#include "core/TimeSource.h"
#include "platform/linux/screenshots/FolderLook.h"
#include "platform/linux/screenshots/FolderNotices.h"

#include <QObject>

#include <functional>
#include <memory>

namespace quenby {

// Whether the file system of an existing folder tells nothing of what others change in it. Called on other threads.
using TellsNoChanges = std::function<bool(const QByteArray& folder)>;
// By the kind of the file system: those that lie behind a network.
bool isBehindNetwork(const QByteArray& folder);

// Everything referred to outlives it.
struct FolderWatchInputs {
    FolderNotices& notices;
    TimeSource& timeSource;
    TellsNoChanges tellsNoChanges;
    std::function<QSize()> desktopPixels; // asked before each look
    qint64 notBefore = 0;                 // as FolderLook has it
};

class FolderWatch : public QObject {
    Q_OBJECT

public:
    // The folder's path is absolute and clean. It begins with a look at the whole folder.
    FolderWatch(const QByteArray& folder, const FolderWatchInputs& inputs, QObject* parent = nullptr);
    ~FolderWatch() override;

    const QByteArray& folder() const { return folder_; }
    const FolderContents& contents() const { return contents_; }

Q_SIGNALS:
    // There are other pictures than before, or other facts about them.
    void changed();

private:
    // Where the kernel tells of the folder; numbers of the notice board.
    struct Posts {
        int folder = -1;
        int above = -1;       // its parent; while it is missing, the nearest one that is there
        QByteArray awaited;   // the name in there that leads to the folder
        bool mustAsk = false; // nobody would tell
    };
    enum class Kind { files, ask, whole };
    struct Order;
    struct TakenPosts;
    struct Report;

    static Posts takePosts(NoticeBoard& board, const QByteArray& folder, const TellsNoChanges& tellsNoChanges);
    static Report carryOut(const Order& order);

    void somethingChanged(int number, const QByteArray& name);
    void displaced(int number);
    void look(Kind kind);
    void lookNow(Kind kind);
    void looked(const Report& report);
    void askLater();
    static void release(NoticeBoard& board, const Posts& posts);

    const QByteArray folder_;
    const FolderWatchInputs inputs_;
    FolderContents contents_;
    Posts posts_;
    bool isLooking_ = false;
    QSet<int> heardOf_;          // numbers of no post of ours; a look may be taking one that is
    bool isWholeWanted_ = false; // as soon as this look is over
    QSet<QByteArray> namesWanted_;
    std::unique_ptr<Timer> question_;
};

} // namespace quenby
