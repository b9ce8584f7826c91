#include "platform/linux/screenshots/FolderWatch.h"

#include "platform/linux/screenshots/ScreenshotTools.h"

#include <system_error>
#include <thread>
#include <utility>

#include <sys/stat.h>
#include <sys/vfs.h>

namespace quenby {
namespace {

using namespace std::chrono_literals;

constexpr auto betweenQuestions = 3s;

QByteArray parentOf(const QByteArray& path) { return path.left(qMax<qsizetype>(path.lastIndexOf('/'), 1)); }
QByteArray nameOf(const QByteArray& path) { return path.mid(path.lastIndexOf('/') + 1); }

bool isFolder(const QByteArray& path) {
    struct ::stat about {};
    return ::stat(path.constData(), &about) == 0 && S_ISDIR(about.st_mode);
}

// Itself, or what it would be made in.
QByteArray nearestFolder(QByteArray path) {
    while (path != "/" && !isFolder(path))
        path = parentOf(path);
    return path;
}

} // namespace

bool isBehindNetwork(const QByteArray& folder) {
    struct statfs about {};
    if (::statfs(folder.constData(), &about) != 0)
        return false;
    switch (static_cast<quint32>(about.f_type)) {
    case 0x6969:     // NFS
    case 0x517b:     // SMB
    case 0xff534d42: // CIFS
    case 0xfe534d42: // SMB 2 and 3
    case 0x65735546: // FUSE: sshfs, cloud folders
    case 0x01021997: // 9P
    case 0x786f4256: // shared folders of virtual machines
    case 0x00c36400: // Ceph
    case 0x5346414f: // AFS
    case 0x73757245: // Coda
        return true;
    default:
        return false;
    }
}

struct FolderWatch::Order {
    Kind kind;
    FolderLook look;
    FolderContents known;
    QSet<QByteArray> names;
    std::shared_ptr<NoticeBoard> board;
    TellsNoChanges tellsNoChanges;
};

// Given back when nobody hears of them: the watch may end while it is being looked.
struct FolderWatch::TakenPosts {
    std::shared_ptr<NoticeBoard> board;
    Posts posts;
    bool isKept = false;

    ~TakenPosts() {
        if (!isKept)
            release(*board, posts);
    }
};

struct FolderWatch::Report {
    FolderContents contents;
    bool isDifferent = false;
    std::shared_ptr<TakenPosts> posts; // taken anew
};

FolderWatch::FolderWatch(const QByteArray& folder, const FolderWatchInputs& inputs, QObject* parent)
    : QObject(parent)
    , folder_(folder)
    , inputs_(inputs) {
    connect(&inputs_.notices, &FolderNotices::changed, this, &FolderWatch::somethingChanged);
    connect(&inputs_.notices, &FolderNotices::displaced, this, &FolderWatch::displaced);
    connect(&inputs_.notices, &FolderNotices::overflowed, this, [this] { look(Kind::whole); });
    look(Kind::whole);
}

FolderWatch::~FolderWatch() { release(*inputs_.notices.board(), posts_); }

void FolderWatch::somethingChanged(int number, const QByteArray& name) {
    if (isLooking_)
        heardOf_.insert(number);
    if (number == posts_.above && name == posts_.awaited)
        look(Kind::whole);
    if (number == posts_.folder && isScreenshotName(name)) {
        namesWanted_.insert(name);
        look(Kind::files);
    }
}

void FolderWatch::displaced(int number) {
    if (isLooking_)
        heardOf_.insert(number);
    if (number == posts_.folder || number == posts_.above)
        look(Kind::whole);
}

void FolderWatch::look(Kind kind) {
    if (isLooking_)
        isWholeWanted_ = isWholeWanted_ || kind == Kind::whole;
    else
        lookNow(kind);
}

void FolderWatch::lookNow(Kind kind) {
    question_.reset();
    const FolderLook look{folder_, inputs_.notBefore, inputs_.desktopPixels()};
    const Order order{
        kind, look, contents_, std::exchange(namesWanted_, {}), inputs_.notices.board(), inputs_.tellsNoChanges};
    CompletionGate<Report> gate(this, [this](const Report& report) { looked(report); });
    isLooking_ = true;
    try {
        std::thread([gate, order] { gate.deliver(carryOut(order)); }).detach();
    } catch (const std::system_error&) {
        // The computer can start no more threads now.
        gate.ticket().cancel();
        isLooking_ = false;
        namesWanted_ = order.names;
        isWholeWanted_ = isWholeWanted_ || kind == Kind::whole;
        askLater();
    }
}

FolderWatch::Posts FolderWatch::takePosts(NoticeBoard& board, const QByteArray& folder,
                                          const TellsNoChanges& tellsNoChanges) {
    constexpr int mostAttempts = 5; // for folders that are made and removed meanwhile
    if (tellsNoChanges(nearestFolder(folder)))
        return {-1, -1, {}, true};
    Posts posts;
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        posts.folder = board.watch(folder);
        QByteArray below = folder;
        posts.above = board.watch(parentOf(below));
        while (posts.folder < 0 && posts.above < 0 && below != "/") {
            below = parentOf(below);
            posts.above = board.watch(parentOf(below));
        }
        posts.awaited = nameOf(below);
        if (posts.folder >= 0)
            return posts;
        posts.mustAsk = posts.above < 0;
        if (!isFolder(below))
            return posts;
        // It came just now, or there are no more notices for it.
        board.release(posts.above);
    }
    return {-1, -1, {}, true};
}

FolderWatch::Report FolderWatch::carryOut(const Order& order) {
    if (order.kind == Kind::ask && !mayHaveChanged(order.look, order.known))
        return {order.known, false, {}};
    Report report;
    if (order.kind == Kind::files) {
        report.contents = lookAtFiles(order.look, order.known, order.names);
    } else {
        // First the posts, so that nothing comes unnoticed between the two.
        report.posts.reset(
            new TakenPosts{order.board, takePosts(*order.board, order.look.folder, order.tellsNoChanges)});
        report.contents = lookAtFolder(order.look, order.known);
    }
    report.isDifferent = report.contents.pictures != order.known.pictures;
    return report;
}

void FolderWatch::looked(const Report& report) {
    isLooking_ = false;
    contents_ = report.contents;
    if (report.posts) {
        report.posts->isKept = true;
        const Posts former = std::exchange(posts_, report.posts->posts);
        release(*inputs_.notices.board(), former);
        // What was told of a new post before we knew that it is ours may have come after the look.
        const auto isMissed = [&](int number) {
            return number != former.folder && number != former.above && heardOf_.contains(number);
        };
        isWholeWanted_ = isWholeWanted_ || isMissed(posts_.folder) || isMissed(posts_.above);
    }
    heardOf_.clear();
    if (isWholeWanted_ || !namesWanted_.isEmpty())
        lookNow(std::exchange(isWholeWanted_, false) ? Kind::whole : Kind::files);
    else if (posts_.mustAsk)
        askLater();
    if (report.isDifferent)
        Q_EMIT changed();
}

void FolderWatch::askLater() {
    question_ = inputs_.timeSource.startTimer(
        betweenQuestions, [this] { lookNow(std::exchange(isWholeWanted_, false) ? Kind::whole : Kind::ask); });
}

void FolderWatch::release(NoticeBoard& board, const Posts& posts) {
    board.release(posts.folder);
    board.release(posts.above);
}

} // namespace quenby
