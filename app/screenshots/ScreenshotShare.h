// The screenshot watcher: uploads what the desktop's own tools save while the program runs, once the user has switched
// that on and chosen the folder.
//
// Threads: the main thread. What it is given outlives it. Nothing is told when the folder cannot be reached.
#pragma once

#include "platform/ScreenshotQuery.h"

#include <QDateTime>
#include <QVariantMap>

namespace quenby {

class Defaults;

namespace defaultsKey {
// A map: what the folder's path reads like for people, and the bookmark by which it is found.
inline const QString DirectoryBookmark = QStringLiteral("DirectoryBookmark");
inline const QString path = QStringLiteral("path");
inline const QString bookmarkData = QStringLiteral("bookmarkData");
} // namespace defaultsKey

class ScreenshotShare : public QObject {
    Q_OBJECT

public:
    // Screenshots from before the launch are never uploaded. Whoever made the query starts it.
    ScreenshotShare(ScreenshotQuery& query, Defaults& defaults, const QDateTime& launchDate, QObject* parent = nullptr);
    ~ScreenshotShare() override;

    // Opens the folder of a "DirectoryBookmark"; files in it may be uploaded from then on. Whether that succeeded; when
    // not, none may.
    bool makeBookMarkURLAccessible(const QVariantMap& bookmark);

    // The results that are known so far.
    const QList<ScreenshotItem>& queryResults() const { return queryResults_; }

public Q_SLOTS:
    // The query has other results.
    void queryUpdated();

Q_SIGNALS:
    // Into the Drive's folder "Screen Shot". The file was there a moment ago, in the folder that the user chose.
    void uploadRequested(const QByteArray& path);

private:
    void uploadIfThere(const QByteArray& path);

    ScreenshotQuery& query_;
    Defaults& defaults_;
    const QDateTime launchDate_;
    QList<ScreenshotItem> queryResults_;
    QByteArray accessibleFolder_; // null while there is none
};

} // namespace quenby
