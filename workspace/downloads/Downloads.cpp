#include "workspace/downloads/Downloads.h"

#include "core/SafeFileName.h"
#include "platform/Alerts.h"
#include "platform/FileBrowser.h"
#include "platform/FilePanels.h"
#include "workspace/downloads/Arrival.h"
#include "workspace/downloads/Landing.h"

#include <QDir>
#include <QFile>

#include <algorithm>

namespace quenby {
namespace {

constexpr std::chrono::milliseconds showingInterval(250);

// A launcher that a page has sent is not to be started by a click on it.
QByteArray nameFor(const QString& suggested) {
    QByteArray name = safeFileName(suggested);
    const QByteArray lower = name.toLower();
    if (lower.endsWith(".desktop") || lower.endsWith(".directory"))
        name = safeFileName(QString::fromUtf8(name) + QStringLiteral(".download"));
    return name;
}

QByteArray nameOf(const QByteArray& path) { return path.mid(path.lastIndexOf('/') + 1); }

} // namespace

struct Downloads::Row {
    std::unique_ptr<Arrival> arrival;
    QByteArray name;
    bool isChanged = false; // since it was last shown
};

Downloads::Downloads(const DownloadServices& services, std::shared_ptr<TimeSource> timeSource,
                     std::function<QWidget*()> window, QObject* parent)
    : QAbstractListModel(parent)
    , services_(services)
    , timeSource_(std::move(timeSource))
    , window_(std::move(window)) {}

Downloads::~Downloads() = default;

// --- A download's life ----------------------------------------------------------------------------------------------

void Downloads::downloadDidBegin(const std::shared_ptr<WebDownload>& download) {
    const QByteArray name = nameFor(download->suggestedFileName());
    if (!QDir().mkpath(services_.folder)) {
        return tellFailed(QString::fromUtf8(name),
                          QStringLiteral("The folder “%1” cannot be made.").arg(services_.folder));
    }
    const QByteArray folder = QFile::encodeName(services_.folder);
    if (!std::exchange(isTidied_, true))
        removeOldArrivals(folder);
    auto arrival = std::make_unique<Arrival>(download, arrivalPath(folder), timeSource_);
    Arrival* begun = arrival.get();
    connect(begun, &Arrival::changed, this, [this, begun] { rowChanged(begun); });
    connect(begun, &Arrival::ended, this, [this, begun] { ended(begun); });
    beginInsertRows({}, rowCount(), rowCount());
    rows_.push_back({std::move(arrival), name});
    endInsertRows();
    if (isAlwaysAskDownlaod)
        askNext();
    else
        begun->setDestination(folder + '/' + name, false);
    Q_EMIT countChanged();
}

void Downloads::askNext() {
    const auto next = std::find_if(rows_.cbegin(), rows_.cend(), [](const Row& row) {
        return !row.arrival->hasEnded() && !row.arrival->hasDestination();
    });
    if (asked_ || next == rows_.cend())
        return;
    asked_ = next->arrival.get();
    const QByteArray proposal = QFile::encodeName(services_.folder) + '/' + next->name;
    services_.filePanels.saveFile(
        window_(), QStringLiteral("Save As"), proposal, asked_,
        [this, arrival = asked_](const QList<QByteArray>& paths) { destinationChosen(arrival, paths); });
}

void Downloads::destinationChosen(Arrival* arrival, const QList<QByteArray>& paths) {
    if (arrival != asked_) // it has ended meanwhile, and the panel that is open now is another one's
        return;
    asked_ = nullptr;
    if (paths.isEmpty()) {
        arrival->cancel();
    } else {
        const QByteArray& path = paths.constFirst();
        rows_[std::size_t(rowOf(arrival))].name = nameOf(path);
        // The panel has asked about what is there now, and about nothing that comes until the file is whole.
        arrival->setDestination(path, QFile::exists(QFile::decodeName(path)));
    }
    askNext();
}

void Downloads::ended(Arrival* arrival) {
    if (arrival == asked_) // what it answers, nobody needs to know any more
        asked_ = nullptr;
    QByteArray& name = rows_[std::size_t(rowOf(arrival))].name;
    if (arrival->state() == Arrival::State::finished)
        name = nameOf(arrival->path()); // another one may have been taken
    if (arrival->state() == Arrival::State::failed)
        tellFailed(QString::fromUtf8(name), arrival->reason());
    else if (arrival->state() == Arrival::State::finished && isOpenAfterDownload)
        services_.fileBrowser.reveal(arrival->path(), this, [](bool) {});
    Q_EMIT countChanged();
    askNext();
}

void Downloads::tellFailed(const QString& name, const QString& reason) {
    const QString sentence = reason.isEmpty() ? QStringLiteral("It broke off.") : reason;
    services_.alerts.show(window_(),
                          {QStringLiteral("Download Failed."), QStringLiteral("“%1”: %2").arg(name, sentence), {}, {}});
}

QList<QVariantMap> Downloads::DownloadFileList() const {
    QList<QVariantMap> records;
    for (const Row& row : rows_) {
        if (!row.arrival->hasEnded())
            records.append(row.arrival->record());
    }
    return records;
}

// --- The rows -------------------------------------------------------------------------------------------------------

int Downloads::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : int(rows_.size()); }

int Downloads::rowOf(const Arrival* arrival) const {
    const auto found =
        std::find_if(rows_.cbegin(), rows_.cend(), [arrival](const Row& row) { return row.arrival.get() == arrival; });
    return int(found - rows_.cbegin());
}

Arrival* Downloads::arrivalAt(int row) const {
    return row >= 0 && row < rowCount() ? rows_[std::size_t(row)].arrival.get() : nullptr;
}

QVariant Downloads::data(const QModelIndex& index, int role) const {
    const Arrival* arrival = arrivalAt(index.row());
    if (!arrival)
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return QString::fromUtf8(rows_[std::size_t(index.row())].name);
    case ReceivedRole:
        return arrival->receivedBytes();
    case TotalRole:
        return arrival->totalBytes();
    case RateRole:
        return arrival->bytesPerSecond() ? QVariant(*arrival->bytesPerSecond()) : QVariant();
    case StateRole:
        return int(arrival->state());
    case ReasonRole:
        return arrival->reason();
    case PathRole:
        return arrival->path();
    default:
        return {};
    }
}

void Downloads::rowChanged(Arrival* arrival) {
    rows_[std::size_t(rowOf(arrival))].isChanged = true;
    if (showing_)
        return;
    showing_ = timeSource_->startTimer(showingInterval, [this] {
        showing_.reset();
        for (int row = 0; row < rowCount(); ++row) {
            if (std::exchange(rows_[std::size_t(row)].isChanged, false))
                Q_EMIT dataChanged(index(row), index(row));
        }
    });
}

void Downloads::pause(int row) {
    if (Arrival* arrival = arrivalAt(row))
        arrival->pause();
}

void Downloads::resume(int row) {
    if (Arrival* arrival = arrivalAt(row))
        arrival->resume();
}

void Downloads::cancel(int row) {
    if (Arrival* arrival = arrivalAt(row))
        arrival->cancel();
}

void Downloads::showInFolder(int row) {
    const Arrival* arrival = arrivalAt(row);
    if (arrival && arrival->state() == Arrival::State::finished)
        services_.fileBrowser.reveal(arrival->path(), this, [](bool) {});
}

void Downloads::clearEnded() {
    for (int row = rowCount() - 1; row >= 0; --row) {
        if (!arrivalAt(row)->hasEnded())
            continue;
        beginRemoveRows({}, row, row);
        // It may be the one that has just ended.
        rows_[std::size_t(row)].arrival->disconnect(this);
        rows_[std::size_t(row)].arrival.release()->deleteLater();
        rows_.erase(rows_.begin() + row);
        endRemoveRows();
    }
    Q_EMIT countChanged();
}

void Downloads::forgetEverything() {
    for (int row = rowCount() - 1; row >= 0; --row)
        cancel(row);
    clearEnded();
}

} // namespace quenby
