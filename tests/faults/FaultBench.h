// The whole client, put together as the program does it, against a real local Drive that is told to misbehave.
#pragma once

#include "app/uploads/transfer/UploadRun.h"
#include "core/Endpoints.h"
#include "driveapi/GTLQueryDrive.h"
#include "driveapi/GTLServiceDrive.h"
#include "http/FetchLog.h"
#include "oauth2/GTMOAuth2Authentication.h"
#include "tests/support/HastyTimeSource.h"
#include "tests/support/LocalDriveProcess.h"

#include <QTemporaryDir>

#include <memory>

namespace quenby::testing {

// What a row expects: success, or an error of a domain and code. The domain's last component is enough.
struct Expected {
    QString domain; // empty: success
    qint64 code = 0;

    static Expected success() { return {}; }
    // An empty text when the outcome is the expected one, else what it was instead.
    QString differenceTo(const MaybeError& error) const;
};

class FaultBench {
public:
    FaultBench();
    ~FaultBench();

    // A local Drive that runs and has no faults ordered, and a client that is signed in.
    bool prepare();

    LocalDriveProcess& drive() { return drive_; }
    GTLServiceDrive& service() { return *service_; }
    GTMOAuth2Authentication& authentication() { return *authentication_; }
    std::shared_ptr<GTMOAuth2Authentication> sharedAuthentication() { return authentication_; }
    std::shared_ptr<TimeSource> timeSource() { return time_; }
    // Everything that the client sent and received in this run, as its own log tells it, is searched for secrets.
    void noteText(const QString& text) { texts_ += text + QLatin1Char('\n'); }
    // The secrets that were found where none may be; empty when all is well.
    QStringList leakedSecrets();

    // --- Operations, each run to its end; a hang is an error of the bench's own domain ----------------------------

    // The path of a file with this content, replaced when it was there.
    QByteArray makeFile(const QByteArray& name, const QByteArray& content);
    // meanwhile is called at every report of progress, with the bytes sent so far.
    Result<UploadRun::Outcome> upload(const QByteArray& path, std::function<void(qint64)> meanwhile = {});
    Result<GTLObjectPtr> call(const std::shared_ptr<GTLQueryProtocol>& query);
    MaybeError download(const QString& identifier, const QString& destination);

    // The MD5 sums of the files with this title that are on the Drive, faults cleared first.
    QStringList copiesOf(const QString& title);
    // Bytes that arrived at the Drive although it held them.
    qint64 duplicateBytes();
    int requestCount(const QString& methodAndPath);

private:
    void compose();

    QTemporaryDir folder_;
    LocalDriveProcess drive_;
    std::shared_ptr<HastyTimeSource> time_ = std::make_shared<HastyTimeSource>();
    std::shared_ptr<FetchLog> fetchLog_;
    std::shared_ptr<GTMHTTPFetcherService> accountFetcherService_; // the authorizer holds it weakly
    std::shared_ptr<GTMOAuth2Authentication> authentication_;
    std::shared_ptr<GTLServiceDrive> service_;
    QString texts_;
};

// Random bytes, the same in every run.
QByteArray sampleBytes(qsizetype length);
QString md5Of(const QByteArray& bytes);

} // namespace quenby::testing
