// Plays the system's browser in front of a sign-in page: keeps cookies, and goes wherever the test sends it, redirects
// included, one step at a time.
#pragma once

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTest>
#include <QUrl>

#include <memory>

namespace quenby::testing {

struct PlayedPage {
    int status = 0; // 0: no answer
    QUrl url;
    QUrl location; // where it redirects to, absolute; empty for nowhere
    QByteArray body;
    QList<QNetworkReply::RawHeaderPair> headers;

    QByteArray header(const QByteArray& name) const {
        for (const auto& [key, value] : headers) {
            if (key.compare(name, Qt::CaseInsensitive) == 0)
                return value;
        }
        return {};
    }
};

// Threads: the main thread. The calls run the event loop until the answer is there, for 30 seconds at most.
class PlayedBrowser {
public:
    PlayedPage get(const QUrl& url) { return wait(manager_.get(request(url))); }
    PlayedPage post(const QUrl& url, const QByteArray& form) {
        QNetworkRequest posting = request(url);
        posting.setHeader(QNetworkRequest::ContentTypeHeader, QByteArray("application/x-www-form-urlencoded"));
        return wait(manager_.post(posting, form));
    }

private:
    static QNetworkRequest request(const QUrl& url) {
        QNetworkRequest made(url);
        made.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
        return made;
    }
    static PlayedPage wait(QNetworkReply* reply) {
        const std::unique_ptr<QNetworkReply> owned(reply);
        (void)QTest::qWaitFor([reply] { return reply->isFinished(); }, 30'000);
        PlayedPage page{reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(),
                        reply->url(),
                        {},
                        reply->readAll(),
                        reply->rawHeaderPairs()};
        if (const QByteArray location = page.header("Location"); !location.isEmpty())
            page.location = page.url.resolved(QUrl::fromEncoded(location));
        return page;
    }

    QNetworkAccessManager manager_;
};

} // namespace quenby::testing
