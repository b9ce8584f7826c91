// The screenshots in the folders in which this desktop's tools save them.
//
// Threads: the main thread. Folders and files are looked at on other threads, which nobody waits for. Pictures that
// were there long before the start have the one fact that their name tells: nobody reads ten thousand files for what
// can be no news. Links, devices and pipes are no pictures, whatever their names are.
//
// A name says that it is a screenshot's, whichever folder it lies in: so an added folder counts for every tool. It is
// kept up with from when it is added, or from the start; what lies there already counts as from long before.
#pragma once

#include "core/TimeSource.h"
#include "platform/ScreenshotQuery.h"
#include "platform/linux/screenshots/FolderNotices.h"
#include "platform/linux/screenshots/FolderWatch.h"
#include "platform/linux/screenshots/Originals.h"

#include <memory>
#include <vector>

namespace quenby {

struct ScreenshotPlaces {
    QList<QByteArray> folders;            // absolute and clean; they may come and go
    std::function<QSize()> desktopPixels; // nothing on the desktop is wider or higher
    TellsNoChanges tellsNoChanges;
};

// This desktop's own; needs the application object.
ScreenshotPlaces screenshotPlaces();

class FolderScreenshotQuery final : public ScreenshotQuery {
    Q_OBJECT

public:
    FolderScreenshotQuery(std::shared_ptr<TimeSource> timeSource, ScreenshotPlaces places, QObject* parent = nullptr);
    ~FolderScreenshotQuery() override;

    void start() override;
    QList<QByteArray> knownFolders() const override { return places_.folders; }
    void setAddedFolders(const QList<QByteArray>& folders) override;
    QList<ScreenshotItem> results() const override { return results_; }

private:
    using Watches = std::vector<std::unique_ptr<FolderWatch>>;

    // The contents of files from before are not read.
    std::unique_ptr<FolderWatch> watch(const QByteArray& folder, qint64 notBefore);
    void tellSoon();
    void tell();
    QList<ScreenshotItem> gather();

    const std::shared_ptr<TimeSource> timeSource_;
    const ScreenshotPlaces places_;
    FolderNotices notices_;
    bool isStarted_ = false;
    QList<QByteArray> addedFolders_; // clean, none of those that are known anyway
    Watches watches_;                // of the known folders
    Watches addedWatches_;
    Originals originals_;
    QList<ScreenshotItem> results_;
    std::unique_ptr<Timer> telling_;
};

} // namespace quenby
