// The screenshot watcher: uploads what the desktop's own tools save while the program runs, once the user has switched
// that on and chosen the folder. Files in the folders of the setting "screenshotFolders" are uploaded as well, which
// the query is told to look into.
//
// Threads: the main thread. What it is given outlives it. Folders and files are looked at on other threads, which
// nobody waits for. When the chosen folder cannot be reached (it is gone, another one took its place, its disk is out),
// nothing is uploaded and nobody is told.
#pragma once

#include "core/CompletionGate.h"
#include "platform/ScreenshotQuery.h"

#include <QDateTime>
#include <QVariantMap>

#include <functional>

namespace quenby {

class Defaults;

class ScreenshotShare : public QObject {
    Q_OBJECT

public:
    // Screenshots from before the launch are never uploaded. Whoever made the query starts it.
    ScreenshotShare(ScreenshotQuery& query, Defaults& defaults, const QDateTime& launchDate, QObject* parent = nullptr);
    ~ScreenshotShare() override;

    // Opens the folder of a "DirectoryBookmark"; files in it may be uploaded from then on. Tells whether that
    // succeeded; when not, none may.
    using Opened = std::function<void(bool succeeded)>;
    CompletionTicket makeBookMarkURLAccessible(const QVariantMap& bookmark, QObject* context, Opened opened);

    // The results that are known so far.
    const QList<ScreenshotItem>& queryResults() const { return queryResults_; }

public Q_SLOTS:
    // The query has other results.
    void queryUpdated();

Q_SIGNALS:
    // Into the Drive's folder "Screen Shot". The file was there a moment ago, in the folder that the user chose.
    void uploadRequested(const QByteArray& path);

private:
    bool isSwitchedOn() const;
    void settingChanged(const QString& key);
    void openFolder();
    void take(const QList<ScreenshotItem>& results);
    void uploadIfThere(const QByteArray& path);

    ScreenshotQuery& query_;
    Defaults& defaults_;
    const QDateTime launchDate_;
    QList<ScreenshotItem> queryResults_;
    QByteArray accessibleFolder_; // null while there is none
    QList<QByteArray> addedFolders_;
    QList<QList<ScreenshotItem>> updates_; // which wait for the folder, oldest first
    CompletionTicket opening_;
};

} // namespace quenby
