#include "platform/linux/screenshots/FolderNotices.h"

#include <QSocketNotifier>

#include <array>
#include <cstring>

#include <sys/inotify.h>
#include <unistd.h>

namespace quenby {
namespace {

constexpr quint32 displacements = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED;
// The same for every folder: one that is asked for twice keeps one number and one set of notices.
constexpr quint32 interests =
    IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

} // namespace

NoticeBoard::NoticeBoard()
    : descriptor_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {}

NoticeBoard::~NoticeBoard() {
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

int NoticeBoard::watch(const QByteArray& folder) {
    if (descriptor_ < 0)
        return -1;
    const std::lock_guard lock(mutex_);
    const int number = ::inotify_add_watch(descriptor_, folder.constData(), interests);
    if (number >= 0)
        ++users_[number];
    return number;
}

void NoticeBoard::release(int number) {
    if (number < 0)
        return;
    const std::lock_guard lock(mutex_);
    if (--users_[number] > 0)
        return;
    users_.remove(number);
    ::inotify_rm_watch(descriptor_, number);
}

FolderNotices::FolderNotices(QObject* parent)
    : QObject(parent)
    , board_(std::make_shared<NoticeBoard>()) {
    if (board_->descriptor() < 0)
        return;
    notifier_ = new QSocketNotifier(board_->descriptor(), QSocketNotifier::Read, this);
    connect(notifier_, &QSocketNotifier::activated, this, &FolderNotices::read);
}

FolderNotices::~FolderNotices() {
    // Before the descriptor can be closed.
    delete notifier_;
}

void FolderNotices::read() {
    alignas(inotify_event) std::array<char, 16 * 1024> buffer;
    const ssize_t length = ::read(board_->descriptor(), buffer.data(), buffer.size());
    for (ssize_t offset = 0; offset < length;) {
        inotify_event event;
        std::memcpy(&event, buffer.data() + offset, sizeof event);
        const char* const name = buffer.data() + offset + sizeof event;
        offset += static_cast<ssize_t>(sizeof event + event.len);
        if ((event.mask & IN_Q_OVERFLOW) != 0)
            Q_EMIT overflowed();
        else if ((event.mask & displacements) != 0)
            Q_EMIT displaced(event.wd);
        else if (event.len > 0)
            Q_EMIT changed(event.wd, QByteArray(name));
    }
}

} // namespace quenby
