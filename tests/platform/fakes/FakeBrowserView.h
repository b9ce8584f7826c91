// A page to browse with, without an engine.
//
// A test emits by itself the signals that no function here plays: windowRequested(), contextMenuRequested(),
// linkHovered(), consoleMessage(), fullScreenRequested(), printRequested(). Threads: the main thread.
#pragma once

#include "platform/BrowserView.h"
#include "tests/platform/fakes/FakeWebDownload.h"

#include <QEvent>

#include <algorithm>

namespace quenby::testing {

class FakeBrowserView final : public FakeView<BrowserView> {
public:
    explicit FakeBrowserView(const WebViewProfile& asked, FakePages pages = std::make_shared<QHash<QUrl, FakePage>>())
        : FakeView(asked, std::move(pages)) {
        widget()->installEventFilter(this);
    }

    // --- What it was asked, in order ------------------------------------------------------------------------------

    struct Search {
        QString text;
        bool isBackward = false;
        friend bool operator==(const Search&, const Search&) = default;
    };
    QList<WebCommand> commands;
    QList<Search> searches;
    QList<WebLifecycle> lifecycles; // also those that it did not follow, because it is visible
    QList<QUrl> downloads;          // by download()
    int prints = 0;
    int endings = 0; // of the process

    QList<WebCommand> impossible; // besides those that the history forbids

    // --- What the page does ---------------------------------------------------------------------------------------

    void progress(int percent) { Q_EMIT progressChanged(percent); }
    void changeIcon(const QImage& icon) { Q_EMIT iconChanged(icon); }
    void tellFound(int current, int total) { Q_EMIT found(current, total); }
    // The page sends a file; see isDropped() for whether anybody took it. What is held is the test's to play.
    std::shared_ptr<FakeWebDownload> offer(const QUrl& url, const FakeFile& file, bool holds = true) {
        auto download = std::make_shared<FakeWebDownload>(url, file);
        download->holds = holds;
        if (const DownloadHandler handler = downloadHandler_)
            handler(download);
        if (download->state() == WebDownload::State::offered)
            download->drop();
        return download;
    }

    // --- BrowserView ----------------------------------------------------------------------------------------------

    void perform(WebCommand command) override {
        commands.append(command);
        if (command == WebCommand::forward)
            goForward();
        else if (command == WebCommand::reload || command == WebCommand::reloadFromOrigin)
            navigate(url(), WebNavigation::Kind::reload);
    }
    bool canPerform(WebCommand command) const override {
        return !impossible.contains(command) && (command != WebCommand::forward || canGoForward());
    }
    // By itself only in a page that has a text.
    void find(const QString& text, bool backward) override {
        searches.append({text, backward});
        const int total = text.isEmpty() ? 0 : static_cast<int>(page().text.count(text, Qt::CaseInsensitive));
        if (page().text.isEmpty())
            return;
        const int first = backward ? total : 1;
        const int next = place_ + (backward ? -1 : 1);
        place_ = total == 0 || text != sought_ || next < 1 || next > total ? std::min(first, total) : next;
        sought_ = text;
        later([this, current = place_, total] { tellFound(current, total); });
    }
    qreal zoomFactor() const override { return zoomFactor_; }
    void setZoomFactor(qreal factor) override { zoomFactor_ = std::clamp(factor, 0.25, 5.0); }
    void setLifecycle(WebLifecycle lifecycle) override {
        lifecycles.append(lifecycle);
        if (lifecycle == WebLifecycle::active)
            wake();
        else if (!widget()->isVisible())
            lifecycle_ = lifecycle;
    }
    WebLifecycle lifecycle() const override { return lifecycle_; }
    void print() override { ++prints; }
    void endProcess() override {
        ++endings;
        later([this] { loseProcess(); });
    }
    void setDownloadHandler(DownloadHandler handler) override { downloadHandler_ = std::move(handler); }
    void download(const QUrl& url) override {
        downloads.append(url);
        if (const auto page = pageAt(url); page.file)
            later([this, url, file = *page.file] { offer(url, file, false); });
    }

    bool eventFilter(QObject* object, QEvent* event) override {
        if (object == widget() && event->type() == QEvent::Show)
            wake();
        return FakeView::eventFilter(object, event);
    }

protected:
    void didChangePlace() override {
        later([this] { Q_EMIT historyChanged(); });
    }
    void didFinish() override {
        if (!page().icon.isNull())
            changeIcon(page().icon);
    }
    void didReceive(const QUrl& url, const FakeFile& file) override { offer(url, file, false); }

private:
    void wake() {
        if (std::exchange(lifecycle_, WebLifecycle::active) == WebLifecycle::discarded)
            navigate(url(), WebNavigation::Kind::reload);
    }
    void later(std::function<void()> function) { QTimer::singleShot(0, this, std::move(function)); }

    DownloadHandler downloadHandler_;
    qreal zoomFactor_ = 1;
    WebLifecycle lifecycle_ = WebLifecycle::active;
    QString sought_;
    int place_ = 0; // of what was sought, from 1
};

} // namespace quenby::testing
