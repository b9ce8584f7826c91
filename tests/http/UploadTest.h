// What the tests of the resumable upload share: the server's answers, a body, and one upload with its outcome.
#pragma once

#include "http/GTMHTTPUploadFetcher.h"
#include "tests/support/FakeAuthorizer.h"
#include "tests/support/ScriptedServer.h"

#include <QTemporaryDir>
#include <QTest>

#include <limits>

namespace quenby::testing {

inline constexpr quint64 noChunking = std::numeric_limits<quint64>::max();
inline const QString session = QStringLiteral("/s/S3CRET?id=S3CRET");

inline const QByteArray sessionHeader = "/s/S3CRET?id=S3CRET";

inline Answer announced(const QByteArray& location = sessionHeader) {
    return Answer::with(200, {}, {{"Location", location}});
}

inline Answer incomplete(const QByteArray& range, const QByteArray& location = {}) {
    std::vector<HeaderFields::Field> fields;
    if (!range.isEmpty())
        fields.emplace_back("Range", range);
    if (!location.isEmpty())
        fields.emplace_back("Location", location);
    return Answer::with(308, {}, fields);
}

inline Answer holding(qint64 bytes) { return incomplete("bytes=0-" + QByteArray::number(bytes - 1)); }

inline Answer created() { return Answer::with(200, "{\"id\":\"f1\"}", {{"Content-Type", "application/json"}}); }

inline Answer lost() { return Answer::nothing(Answer::Then::reset); }

class UploadServer : public ScriptedServer {
public:
    explicit UploadServer(const QList<Answer>& script = {}) {
        for (const Answer& answer : script)
            enqueue(answer);
    }

    // Of a request: "PUT bytes 0-9/10", or "POST" without a range.
    static QByteArray lineOf(const ReceivedRequest& request) {
        const QByteArray range = request.header("Content-Range");
        return range.isEmpty() ? request.method : QByteArray(request.method + ' ' + range);
    }
    QByteArrayList lines() const {
        QByteArrayList lines;
        for (const ReceivedRequest& request : requests()) {
            if (request.isComplete)
                lines.append(lineOf(request));
        }
        return lines;
    }
};

inline QByteArray pattern(qsizetype length) {
    QByteArray bytes(length, Qt::Uninitialized);
    for (qsizetype i = 0; i < length; ++i)
        bytes[i] = static_cast<char>(i * 31 + i / 251);
    return bytes;
}

inline std::shared_ptr<FakeAuthorizer> refreshingAuthorizer() {
    auto authorizer = std::make_shared<FakeAuthorizer>();
    authorizer->canRefresh = true;
    return authorizer;
}

// One upload at a time. The secret part of every location is "S3CRET".
class UploadTest : public QObject {
protected:
    QTemporaryDir folder_;
    std::shared_ptr<GTMHTTPUploadFetcher> fetcher_;
    int callbacks_ = 0;
    QByteArray data_;
    MaybeError error_;
    QStringList locations_;

    std::shared_ptr<QFile> file(const QByteArray& bytes) {
        const auto made = std::make_shared<QFile>(folder_.filePath(QStringLiteral("body")));
        made->open(QIODevice::ReadWrite | QIODevice::Truncate);
        made->write(bytes);
        made->flush();
        return made;
    }

    static URLRequest announcement(const UploadServer& server) {
        URLRequest request(server.url(QStringLiteral("/upload/rpc")));
        request.httpMethod = "POST";
        request.body = "{\"m\":1}";
        request.headers.set("User-Agent", "tester");
        return request;
    }

    GTMHTTPUploadFetcher& use(std::shared_ptr<GTMHTTPUploadFetcher> fetcher) {
        fetcher_ = std::move(fetcher);
        fetcher_->setAllowLocalhostRequest(true);
        fetcher_->setLocationChangeBlock([this](const QUrl& location) { locations_.append(location.path()); });
        return *fetcher_;
    }
    GTMHTTPUploadFetcher& upload(const UploadServer& server, const QByteArray& bytes, quint64 chunkSize) {
        return use(GTMHTTPUploadFetcher::uploadFetcherWithRequest(announcement(server), bytes, "x/y", chunkSize, {}));
    }
    GTMHTTPUploadFetcher& resumed(const UploadServer& server, const QByteArray& bytes, const QUrl& base = {}) {
        return use(GTMHTTPUploadFetcher::uploadFetcherWithLocation(server.url(session), file(bytes), "x/y", noChunking,
                                                                   {}, base));
    }

    void begin() {
        fetcher_->beginFetchWithDelegate(this,
                                         [this](GTMHTTPFetcher&, const QByteArray& data, const MaybeError& error) {
                                             ++callbacks_;
                                             data_ = data;
                                             error_ = error;
                                         });
    }
    // Whether it called back once, and showed no secret.
    bool finish() {
        begin();
        return fetcher_->waitForCompletionWithTimeout(std::chrono::seconds(20)) && callbacks_ == 1 && isDiscreet();
    }
    bool isDiscreet() const {
        if (!error_)
            return true;
        QString all = error_->description();
        for (const QVariant& detail : error_->details())
            all += detail.toString();
        return !all.contains(QStringLiteral("S3CRET"));
    }
    QString failure() const { return error_ ? error_->description() : QStringLiteral("no error"); }

    void reset() {
        fetcher_.reset();
        callbacks_ = 0;
        data_.clear();
        error_.reset();
        locations_.clear();
    }
};

} // namespace quenby::testing
