// The Drive's own service: its addresses, its version, and downloads.
#pragma once

#include "core/Endpoints.h"
#include "driveapi/GTLService.h"

namespace quenby {

class GTLDriveFile;

class GTLServiceDrive : public GTLService {
    Q_OBJECT

public:
    explicit GTLServiceDrive(const Endpoints& endpoints,
                             std::shared_ptr<GTMHTTPFetcherService> fetcherService = GTMHTTPFetcherService::create(),
                             QObject* parent = nullptr);

    // A fetcher, not yet begun, that puts a file's contents at the destination once they are whole. Null for a file
    // that has neither a download address nor an identifier.
    std::shared_ptr<GTMHTTPFetcher> downloadFetcherForFile(const GTLDriveFile& file,
                                                           const QString& destinationPath) const;
    std::shared_ptr<GTMHTTPFetcher> downloadFetcherForFile(const QUrl& downloadURL,
                                                           const QString& destinationPath) const;

private:
    QUrl contentURL(const GTLDriveFile& file) const;

    const QUrl downloadBaseURL_;
};

} // namespace quenby
