#include "driveapi/GTLServiceDrive.h"

#include "driveapi/GTLDriveFile.h"
#include "driveapi/GTLResourceKeys.h"
#include "driveapi/GTLServiceRequest.h"

namespace quenby {
namespace {

// No address stays none.
QUrl withQuery(QUrl url, const QString& query) {
    if (!url.isEmpty())
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
    settings().road = endpoints.road;
    settings().restURL = withQuery(endpoints.restURL, QStringLiteral("prettyPrint=false"));
    settings().restUploadURL =
        withQuery(endpoints.restUploadURL, QStringLiteral("uploadType=resumable&prettyPrint=false"));
    settings().restBatchURL = endpoints.restBatchURL;
    settings().allowInsecureQueries = endpoints.isLocal;
}

std::shared_ptr<GTMHTTPFetcher> GTLServiceDrive::downloadFetcherForFile(const GTLDriveFile& file,
                                                                        const QString& destinationPath) const {
    const QUrl url = contentURL(file);
    if (url.isEmpty())
        return nullptr;
    auto fetcher = downloadFetcherForFile(url, destinationPath);
    if (const QByteArray key = resourceKeysHeader({{file.identifier(), file.resourceKey()}}); !key.isEmpty())
        fetcher->mutableRequest().headers.set(gtlResourceKeysHeader, key);
    return fetcher;
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
