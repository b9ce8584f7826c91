// The files that the workspace's pages send: where they go, how far they are, and what became of them. As a model, its
// rows are those that run and those that ended since the list was last cleared, oldest first.
//
// A file gets its final name when it is whole and not before; until then it lies in the folder for downloads, hidden,
// under a name of its own.
//
// Threads: the main thread. The services outlive it. Downloads that run end with it, and leave nothing.
#pragma once

#include "core/TimeSource.h"
#include "platform/WebDownload.h"

#include <QAbstractListModel>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <vector>

class QWidget;

namespace quenby {

class Alerts;
class Arrival;
class FileBrowser;
class FilePanels;

struct DownloadServices {
    FilePanels& filePanels;
    FileBrowser& fileBrowser;
    Alerts& alerts;
    QString folder; // the platform's own for downloads; it is made when it is not there
};

class Downloads final : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role {
        ReceivedRole = Qt::UserRole, // qint64
        TotalRole,                   // qint64; -1: not known
        RateRole,                    // qint64 bytes per second; invalid: not known
        StateRole,                   // int of Arrival::State
        ReasonRole,                  // QString: why it failed
        PathRole,                    // QByteArray; empty: none yet
    };

    // `window` has the panels and alerts as its sheets.
    Downloads(const DownloadServices& services, std::shared_ptr<TimeSource> timeSource,
              std::function<QWidget*()> window, QObject* parent = nullptr);
    ~Downloads() override;

    // The switches of a run; both are on at launch.
    bool isAlwaysAskDownlaod = true; // where a file is to go
    bool isOpenAfterDownload = true; // the file manager, with the file selected

    // Within the call that offers it.
    void downloadDidBegin(const std::shared_ptr<WebDownload>& download);

    // Those that run, oldest first: "DownloadURL" and, once it is known, "DownloadPath".
    QList<QVariantMap> DownloadFileList() const;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    void pause(int row);
    void resume(int row);
    void cancel(int row);
    void showInFolder(int row);
    void clearEnded();
    // For whoever leaves: cancels what runs and clears the list.
    void forgetEverything();

Q_SIGNALS:
    // One has begun or ended, or the list was cleared.
    void countChanged();

private:
    struct Row;

    int rowOf(const Arrival* arrival) const;
    Arrival* arrivalAt(int row) const;
    void askNext();
    void destinationChosen(Arrival* arrival, const QList<QByteArray>& paths);
    void rowChanged(Arrival* arrival);
    void ended(Arrival* arrival);
    void tellFailed(const QString& name, const QString& reason);

    const DownloadServices services_;
    const std::shared_ptr<TimeSource> timeSource_;
    const std::function<QWidget*()> window_;
    std::vector<Row> rows_;
    Arrival* asked_ = nullptr; // whose panel is open: there is one at a time
    bool isTidied_ = false;
    std::unique_ptr<Timer> showing_; // bytes come more often than anybody can read
};

} // namespace quenby
