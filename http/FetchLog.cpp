#include "http/FetchLog.h"

#include "http/FetchLogEntry.h"
#include "http/GTMReadMonitorInputStream.h"

#include <QLocale>
#include <QStandardPaths>

namespace quenby {
namespace {

// Keeps the first bytes that are read from a request's body.
class LoggedBodyStream final : public GTMReadMonitorInputStream {
public:
    explicit LoggedBodyStream(std::shared_ptr<QIODevice> stream)
        : GTMReadMonitorInputStream(std::move(stream)) {
        setReadDelegate(this, [this](QByteArrayView bytes) {
            beginning_ += bytes.first(std::min(bytes.size(), longestBeginning - beginning_.size()));
        });
    }

    bool seek(qint64 position) override {
        beginning_.clear();
        return GTMReadMonitorInputStream::seek(position);
    }

    const QByteArray& beginning() const { return beginning_; }

private:
    static constexpr qsizetype longestBeginning = 4096;

    QByteArray beginning_;
};

SentBody bodyOf(const URLRequest& request) {
    if (!request.bodyStream)
        return {request.body, request.body.size(), false};
    const auto* logged = dynamic_cast<const LoggedBodyStream*>(request.bodyStream.get());
    const QByteArray beginning = logged ? logged->beginning() : QByteArray();
    const qint64 length = request.bodyLength >= 0 ? request.bodyLength : request.bodyStream->size();
    return {beginning, length, beginning.size() < length};
}

} // namespace

QString FetchLog::defaultLoggingDirectory() {
    return QStandardPaths::writableLocation(QStandardPaths::DesktopLocation) + QStringLiteral("/GTMHTTPDebugLogs");
}

QString FetchLog::loggingDateStamp(const QDateTime& start) {
    return QLocale::c().toString(start.toLocalTime(), QStringLiteral("M-dd_hh-mm-ssAP"));
}

FetchLog::FetchLog(const QString& loggingDirectory, const QString& loggingProcessName, const QString& loggingDateStamp)
    : folder_(loggingDirectory, loggingProcessName, loggingDateStamp) {
    writer_.setMaxThreadCount(1);
}

FetchLog::~FetchLog() { flush(); }

std::shared_ptr<QIODevice> FetchLog::willSendStream(const std::shared_ptr<QIODevice>& stream) {
    if (dynamic_cast<LoggedBodyStream*>(stream.get()))
        return stream;
    return std::make_shared<LoggedBodyStream>(stream);
}

void FetchLog::attemptDidEnd(const FetchRecord& record) {
    FetchRecord kept = record;
    kept.request.bodyStream.reset(); // stays on the fetcher's thread
    writer_.start([this, kept, sent = bodyOf(record.request), number = ++lastNumber_] { write(kept, sent, number); });
}

void FetchLog::write(const FetchRecord& record, const SentBody& sent, int number) {
    const FetchLogEntry entry = makeFetchLogEntry(record, sent, number, bodies_);
    if (const QString name = entry.responseFileName(); !name.isEmpty())
        folder_.writeFile(name, entry.response.body.file);
    folder_.writeFile(entry.textFileName(), textOf(entry).toUtf8());
    folder_.appendToPage(htmlOf(entry).toUtf8());
}

} // namespace quenby
