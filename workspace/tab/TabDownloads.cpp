#include "workspace/tab/TabDownloads.h"

#include "workspace/policy/NavigationPolicy.h"

#include <algorithm>

namespace quenby {

TabDownloads::TabDownloads(BrowserView& page, std::shared_ptr<TimeSource> timeSource)
    : page_(page)
    , timeSource_(std::move(timeSource)) {
    page_.setDownloadHandler([self = QPointer(this)](const std::shared_ptr<WebDownload>& download) {
        if (self)
            self->downloadDidBegin(download);
    });
}

void TabDownloads::perform(WebCommand command) {
    ++asked_;
    page_.perform(command);
}

bool TabDownloads::isRunning() const {
    return std::any_of(begun_.begin(), begun_.end(), [](const QPointer<WebDownload>& download) {
        return download &&
               (download->state() == WebDownload::State::running || download->state() == WebDownload::State::paused);
    });
}

void TabDownloads::downloadDidBegin(const std::shared_ptr<WebDownload>& download) {
    const auto askAgain = [this, url = download->url()] {
        if (!isPageAddress(url))
            return; // what a script had made is gone
        ++asked_;
        page_.download(url);
    };
    if (asked_ > 0) {
        --asked_;
        return handOver(download);
    }
    if (unasked_.admits(timeSource_->elapsed(), askAgain))
        return handOver(download);
    QMetaObject::invokeMethod(this, &TabDownloads::downloadBlocked, Qt::QueuedConnection);
}

void TabDownloads::handOver(const std::shared_ptr<WebDownload>& download) {
    std::erase_if(begun_, [](const QPointer<WebDownload>& begun) { return !begun; });
    begun_.emplace_back(download.get());
    connect(download.get(), &WebDownload::ended, this, &TabDownloads::runningChanged);
    connect(download.get(), &QObject::destroyed, this, &TabDownloads::runningChanged);
    Q_EMIT downloadBegun(download);
    Q_EMIT runningChanged();
}

} // namespace quenby
