// Writes every attempt of every fetch into a folder of its own for this run: a text file for each and one HTML page
// over all of them. A debugging aid, there only when somebody made one and gave it to the fetchers.
//
// No secret is written: headers, addresses, forms, JSON, pages and error texts pass core/Redaction.h, and of an upload
// location only the host is shown. Files have mode 0600, the folder 0700.
//
// Threads: any. Nothing is written on the caller's thread; a thread of the log's own does it, in the order of the
// calls, each attempt at once and not only at the end of the run.
//
// Errors: the first file that cannot be written is reported to the process log; then logging goes on.
#pragma once

#include "http/FetchLogBody.h"
#include "http/FetchLogFolder.h"
#include "http/FetchLogger.h"

#include <QThreadPool>

#include <atomic>

namespace quenby {

class FetchLog final : public FetchLogger {
public:
    // The folder "GTMHTTPDebugLogs" on the user's desktop.
    static QString defaultLoggingDirectory();
    // How a run is named after its start, in local time.
    static QString loggingDateStamp(const QDateTime& start);

    FetchLog(const QString& loggingDirectory, const QString& loggingProcessName, const QString& loggingDateStamp);
    ~FetchLog() override; // waits until everything is written

    std::shared_ptr<QIODevice> willSendStream(const std::shared_ptr<QIODevice>& stream) override;
    void attemptDidEnd(const FetchRecord& record) override;

    // Waits until everything that was told so far is written. Where it is: pagePath().
    void flush() { writer_.waitForDone(); }
    QString pagePath() const { return folder_.pagePath(); } // after flush()

private:
    void write(const FetchRecord& record, const SentBody& sent, int number);

    std::atomic<int> lastNumber_ = 0;
    FetchLogFolder folder_;        // used by the writer's thread alone
    FetchLogBodyFormatter bodies_; // likewise
    QThreadPool writer_;           // of one thread
};

} // namespace quenby
