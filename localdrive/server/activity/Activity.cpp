#include "localdrive/server/activity/Activity.h"

#include "localdrive/store/ApiError.h"
#include "localdrive/store/NativeTypes.h"

#include <algorithm>

namespace quenby::localdrive {
namespace {

// However long it goes on, the Drive does not fill up.
constexpr qsizetype mostFiles = 40;
constexpr qsizetype mostInTrash = 15;
constexpr int hoursBetweenStartFiles = 7;

const QList<Account>& people() {
    static const QList<Account> all{
        {QStringLiteral("Mina Okafor"), QStringLiteral("mina.okafor@example.com")},
        {QStringLiteral("Jonas Weber"), QStringLiteral("jonas.weber@example.com")},
        {QStringLiteral("Lucía Ferrer"), QStringLiteral("lucia.ferrer@example.com")},
        {QStringLiteral("Aiko Tanaka"), QStringLiteral("aiko.tanaka@example.com")},
    };
    return all;
}

// A failed API call is part of life; a failed database or disk is not.
void warn(const Error& error) {
    if (error.domain() != apiErrorDomain)
        qWarning("The activity could not go on: %s", qUtf8Printable(error.description()));
}

} // namespace

Activity::Activity(DriveStore& store, const ServerClock& clock, QUrl base, quint32 seed)
    : clock_(clock)
    , acts_(store, clock, std::move(base))
    , random_(seed) {}

Result<void> Activity::prepare() {
    const Result<bool> isEmpty = acts_.isDriveEmpty();
    if (!isEmpty)
        return isEmpty.error();
    if (*isEmpty)
        return makeStart();
    for (const Account& person : people()) {
        const Result<QList<ActivityFile>> theirs = acts_.filesOf(person);
        if (!theirs)
            return theirs.error();
        files_ += *theirs;
    }
    return {};
}

Result<void> Activity::makeStart() {
    const QList<InventedFile> start = inventedStart();
    QString folderId = QStringLiteral("root");
    for (qsizetype i = 0; i < start.size(); ++i) {
        const QDateTime when = clock_.now().addSecs((i - start.size()) * hoursBetweenStartFiles * 3600);
        const Result<ActivityFile> made = acts_.addToStart(start[i], people()[i % people().size()], folderId, when);
        if (!made && made.error().domain() == apiErrorDomain)
            continue; // the quota has no room for it
        if (!made)
            return made.error();
        if (made->mimeType == folderMimeType)
            folderId = made->id;
        else
            files_.append(*made);
    }
    return {};
}

qsizetype Activity::count(bool isTrashed) const {
    return std::count_if(files_.begin(), files_.end(),
                         [isTrashed](const ActivityFile& file) { return file.isTrashed == isTrashed; });
}

Activity::Deed Activity::nextDeed() {
    struct Share {
        Deed deed;
        int percent;
    };
    static constexpr Share shares[] = {
        {Deed::add, 35}, {Deed::edit, 35}, {Deed::trash, 14}, {Deed::restore, 7}, {Deed::remove, 9}};
    if (count(true) >= mostInTrash)
        return Deed::remove;
    int left = random_.bounded(100);
    for (const Share& share : shares) {
        left -= share.percent;
        if (left < 0)
            return share.deed == Deed::add && count(false) >= mostFiles ? Deed::trash : share.deed;
    }
    return Deed::add;
}

qsizetype Activity::pick(Deed deed) {
    QList<qsizetype> possible;
    for (qsizetype i = 0; i < files_.size(); ++i) {
        const ActivityFile& file = files_[i];
        const bool needsTrashed = deed == Deed::restore || deed == Deed::remove;
        if ((file.isOwn || deed == Deed::edit) && file.isTrashed == needsTrashed)
            possible.append(i);
    }
    return possible.isEmpty() ? -1 : possible[random_.bounded(static_cast<int>(possible.size()))];
}

QString Activity::told(const Account& person, Deed deed, const QString& title) {
    const auto line = [&](const char* verb) {
        return QStringLiteral("%1 %2 %3").arg(person.displayName, QLatin1String(verb), title);
    };
    switch (deed) {
    case Deed::add:
        return line("added");
    case Deed::edit:
        return line("edited");
    case Deed::trash:
        return line("trashed");
    case Deed::restore:
        return line("restored");
    case Deed::remove:
        return line("deleted");
    }
    return {};
}

QString Activity::add() {
    const Account& person = people()[random_.bounded(static_cast<int>(people().size()))];
    const Result<ActivityFile> made = acts_.add(inventedFile(random_), person);
    if (!made) {
        warn(made.error());
        return {};
    }
    files_.append(*made);
    return told(person, Deed::add, made->title);
}

Result<void> Activity::apply(Deed deed, ActivityFile& file) {
    switch (deed) {
    case Deed::add:
        break;
    case Deed::edit:
        return acts_.edit(file, inventedContent(file.mimeType, file.title, random_));
    case Deed::trash:
        return acts_.setTrashed(file, true);
    case Deed::restore:
        return acts_.setTrashed(file, false);
    case Deed::remove:
        return acts_.remove(file);
    }
    return {};
}

QString Activity::step() {
    const Deed deed = nextDeed();
    const qsizetype place = deed == Deed::add ? -1 : pick(deed);
    if (place < 0)
        return add();
    ActivityFile& file = files_[place];
    const QString line = told(file.editor, deed, file.title);
    const Result<void> done = apply(deed, file);
    if (!done)
        warn(done.error());
    // What can't be treated as we thought has been treated by others; it is theirs from now on.
    if (!done || deed == Deed::remove)
        files_.removeAt(place);
    return done ? line : QString();
}

} // namespace quenby::localdrive
