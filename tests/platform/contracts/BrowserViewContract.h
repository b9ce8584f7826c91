// What every BrowserView must do, besides what every WebView must.
#pragma once

#include "platform/BrowserView.h"
#include "tests/platform/contracts/WebViewContract.h"

#include <QDir>
#include <QTemporaryDir>

namespace quenby::testing {

// Somewhere with these pages:
//   /a, /b       pages titled "Page a" and "Page b"
//   /text        has the words "One two one three ONE" and a red icon
//   /file        a file named "file.bin" with the site's bytes
//   /cut         a file whose server loses the connection in the middle
//   /endless     a file of which the first bytes come, and then nothing
struct BrowserSite {
    std::function<QUrl(const QString& path)> url;
    QByteArray bytes;
};

inline void browse(BrowserView& view, const QUrl& url) {
    QSignalSpy finished(&view, &WebView::loadFinished);
    view.load(url);
    QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, 30000);
}

// What arrived at the download handler, and how it ended.
class ReceivedFiles {
public:
    ReceivedFiles(BrowserView& view, bool begins)
        : view_(view) {
        view.setDownloadHandler([this, begins](const std::shared_ptr<WebDownload>& download) {
            files.push_back(download);
            QObject::connect(download.get(), &WebDownload::ended, &context_,
                             [this](const MaybeError& error) { ends.append(error); });
            if (begins)
                download->begin(path());
        });
    }
    ~ReceivedFiles() { view_.setDownloadHandler({}); }

    QString path() const { return folder_.filePath(QStringLiteral("named by the program")); }
    QStringList inFolder() const { return QDir(folder_.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot); }

    std::vector<std::shared_ptr<WebDownload>> files;
    QList<MaybeError> ends;

private:
    BrowserView& view_;
    QTemporaryDir folder_;
    QObject context_;
};

inline void browserGoesBackAndForward(BrowserView& view, const BrowserSite& site) {
    browse(view, site.url(QStringLiteral("/a")));
    browse(view, site.url(QStringLiteral("/b")));
    QTRY_VERIFY(view.canGoBack() && !view.canPerform(WebCommand::forward));
    QSignalSpy changes(&view, &BrowserView::historyChanged);
    view.back();
    QTRY_COMPARE(view.url(), site.url(QStringLiteral("/a")));
    QTRY_VERIFY(!changes.isEmpty() && !view.canGoBack() && view.canPerform(WebCommand::forward));
    changes.clear();
    view.perform(WebCommand::forward);
    QTRY_COMPARE(view.url(), site.url(QStringLiteral("/b")));
    QTRY_VERIFY(!changes.isEmpty() && view.canGoBack() && !view.canPerform(WebCommand::forward));
    QSignalSpy finished(&view, &WebView::loadFinished);
    view.perform(WebCommand::reload);
    QTRY_COMPARE(finished.size(), 1);
    QVERIFY(view.canGoBack());
}

inline void browserFindsText(BrowserView& view, const BrowserSite& site) {
    browse(view, site.url(QStringLiteral("/text")));
    QSignalSpy found(&view, &BrowserView::found);
    const auto answer = [&found] {
        const bool isThere = QTest::qWaitFor([&found] { return !found.isEmpty(); });
        const QList<QVariant> last = isThere ? found.back() : QList<QVariant>{-1, -1};
        found.clear();
        return qMakePair(last.value(0).toInt(), last.value(1).toInt());
    };
    view.find(QStringLiteral("one"), false);
    QCOMPARE(answer(), qMakePair(1, 3));
    view.find(QStringLiteral("one"), false);
    QCOMPARE(answer(), qMakePair(2, 3));
    view.find(QStringLiteral("one"), true);
    QCOMPARE(answer(), qMakePair(1, 3));
    view.find(QStringLiteral("four"), false);
    QCOMPARE(answer(), qMakePair(0, 0));
    view.find({}, false);
}

inline void browserTellsThePagesIcon(BrowserView& view, const BrowserSite& site) {
    QSignalSpy icons(&view, &BrowserView::iconChanged);
    view.load(site.url(QStringLiteral("/text")));
    const auto newest = [&icons] { return icons.isEmpty() ? QImage() : icons.back().front().value<QImage>(); };
    QTRY_VERIFY(!newest().isNull());
    QCOMPARE(newest().pixelColor(newest().rect().center()), QColor(Qt::red));
}

inline void browserReceivesFiles(BrowserView& view, const BrowserSite& site) {
    browse(view, site.url(QStringLiteral("/a")));
    ReceivedFiles received(view, true);
    view.load(site.url(QStringLiteral("/file")));
    QTRY_COMPARE(received.ends.size(), 1);
    view.download(site.url(QStringLiteral("/file"))); // over the first
    QTRY_COMPARE(received.ends.size(), 2);
    for (const auto& file : received.files) {
        QCOMPARE(file->state(), WebDownload::State::finished);
        QCOMPARE(file->suggestedFileName(), QStringLiteral("file.bin"));
        QCOMPARE(file->url(), site.url(QStringLiteral("/file")));
        QCOMPARE(file->receivedBytes(), site.bytes.size());
        QCOMPARE(file->totalBytes(), site.bytes.size());
    }
    QVERIFY(!received.ends.front() && !received.ends.back());
    QFile file(received.path());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), site.bytes);
    QCOMPARE(received.inFolder().size(), 1);
    QCOMPARE(view.url(), site.url(QStringLiteral("/a")));
    QVERIFY(!view.isLoading());
}

inline void browserDropsFilesThatNobodyTakes(BrowserView& view, const BrowserSite& site) {
    {
        ReceivedFiles received(view, false);
        view.load(site.url(QStringLiteral("/file")));
        QTRY_COMPARE(received.files.size(), size_t(1));
        QTRY_COMPARE(received.files.front()->state(), WebDownload::State::cancelled);
        received.files.front()->begin(received.path()); // too late
        browse(view, site.url(QStringLiteral("/b")));
        QCOMPARE(received.ends.size(), 0);
        QCOMPARE(received.inFolder(), QStringList());
    }
    view.load(site.url(QStringLiteral("/file"))); // without a handler
    browse(view, site.url(QStringLiteral("/b")));
}

inline void browserTellsWhyAFileDidNotArrive(BrowserView& view, const BrowserSite& site) {
    ReceivedFiles received(view, true);
    view.load(site.url(QStringLiteral("/cut")));
    QTRY_COMPARE_WITH_TIMEOUT(received.ends.size(), 1, 30000);
    QCOMPARE(received.files.size(), size_t(1)); // also when it was tried several times
    QCOMPARE(received.files.front()->state(), WebDownload::State::failed);
    QVERIFY(received.ends.front().has_value());
    const QString reason = received.ends.front()->detail(errorKey::reason).toString();
    QVERIFY2(!reason.isEmpty() && !reason.contains(QStringLiteral("/cut")), qPrintable(reason));
    QTRY_COMPARE(received.inFolder(), QStringList());
}

inline void browserCancelsFiles(BrowserView& view, const BrowserSite& site) {
    ReceivedFiles received(view, true);
    view.load(site.url(QStringLiteral("/endless")));
    QTRY_VERIFY(!received.files.empty() && received.files.front()->receivedBytes() > 0);
    WebDownload& file = *received.files.front();
    file.pause();
    QTRY_COMPARE(file.state(), WebDownload::State::paused);
    file.resume();
    QTRY_COMPARE(file.state(), WebDownload::State::running);
    file.cancel();
    QTRY_COMPARE(received.ends.size(), 1);
    QVERIFY(!received.ends.front());
    QCOMPARE(file.state(), WebDownload::State::cancelled);
    QTRY_COMPARE(received.inFolder(), QStringList());
}

inline void browserRestsOnlyUnseen(BrowserView& view, const BrowserSite& site) {
    browse(view, site.url(QStringLiteral("/a")));
    view.setLifecycle(WebLifecycle::discarded);
    QCOMPARE(view.lifecycle(), WebLifecycle::active);
    view.widget()->hide();
    view.setLifecycle(WebLifecycle::frozen);
    QCOMPARE(view.lifecycle(), WebLifecycle::frozen);
    view.setLifecycle(WebLifecycle::discarded);
    QCOMPARE(view.lifecycle(), WebLifecycle::discarded);
    QCOMPARE(view.url(), site.url(QStringLiteral("/a")));
    QSignalSpy finished(&view, &WebView::loadFinished);
    QSignalSpy gone(&view, &WebView::processGone);
    view.widget()->show();
    QTRY_COMPARE(finished.size(), 1);
    QCOMPARE(view.lifecycle(), WebLifecycle::active);
    QCOMPARE(gone.size(), 0);
}

inline void browserEndsItsProcess(BrowserView& view, const BrowserSite& site) {
    browse(view, site.url(QStringLiteral("/a")));
    QSignalSpy gone(&view, &WebView::processGone);
    view.endProcess();
    QCOMPARE(gone.size(), 0);
    QTRY_COMPARE(gone.size(), 1);
    browse(view, site.url(QStringLiteral("/b")));
}

} // namespace quenby::testing
