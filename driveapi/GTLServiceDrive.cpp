#include "driveapi/GTLServiceDrive.h"

#include "driveapi/GTLDriveFile.h"
#include "driveapi/GTLServiceRequest.h"

namespace quenby {
namespace {

QUrl withQuery(QUrl url, const QString& query) {
    url.setQuery(query);
    return url;
}

} // namespace

GTLServiceDrive::GTLServiceDrive(const Endpoints& endpoints, std::shared_ptr<GTMHTTPFetcherService> fetcherService,
                                 QObject* parent)
    : GTLService(std::move(fetcherService), parent)
    , downloadBaseURL_(endpoints.downloadBaseURL) {
    settings().apiVersion = QStringLiteral("v2");
    settings().rpcURL = withQuery(endpoints.rpcURL, QStringLiteral("prettyPrint=false"));
    settings().rpcUploadURL =
        withQuery(endpoints.rpcUploadURL, QStringLiteral("uploadType=resumable&prettyPrint=false"));
    settings().allowInsecureQueries = endpoints.isLocal;
}

std::shared_ptr<GTMHTTPFetcher> GTLServiceDrive::downloadFetcherForFile(const GTLDriveFile& file,
                                                                        const QString& destinationPath) const {
    const QUrl url = contentURL(file);
    return url.isEmpty() ? nullptr : downloadFetcherForFile(url, destinationPath);
}

std::shared_ptr<GTMHTTPFetcher> GTLServiceDrive::downloadFetcherForFile(const QUrl& downloadURL,
                                                                        const QString& destinationPath) const {
    auto fetcher = fetcherWithRequest(requestForURL(settings(), downloadURL, "GET", {}));
    fetcher->setDownloadPath(destinationPath);
    fetcher->setComment(QStringLiteral("download"));
    return fetcher;
}

QUrl GTLServiceDrive::contentURL(const GTLDriveFile& file) const {
    if (!file.downloadUrl().isEmpty())
        return QUrl(file.downloadUrl());
    if (file.identifier().isEmpty())
        return {};
    QUrl url = downloadBaseURL_;
    url.setPath(url.path() + QLatin1Char('/') + GTLUtilities::stringByURLEncodingForURI(file.identifier()),
                QUrl::TolerantMode);
    url.setQuery(QStringLiteral("alt=media"));
    return url;
}

} // namespace quenby
