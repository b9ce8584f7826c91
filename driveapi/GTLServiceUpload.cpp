#include "driveapi/GTLServiceUpload.h"

namespace quenby {
namespace {

// The file behind the parameters; null when the media are bytes in memory. Whether a file that was given open can be
// read is checked by the upload itself.
Result<std::shared_ptr<QFile>> fileOf(const GTLUploadParameters& parameters) {
    const auto* url = std::get_if<QUrl>(&parameters.media);
    if (!url)
        return parameters.fileHandle();
    auto file = std::make_shared<QFile>(url->toLocalFile());
    if (file->open(QIODevice::ReadOnly))
        return file;
    const QString reason = QStringLiteral("The file %1 cannot be opened for the upload: %2. Check that it exists and "
                                          "may be read.");
    return Error(URLErrorCode::requestBodyUnreadable,
                 {{errorKey::reason, reason.arg(url->toLocalFile(), file->errorString())}});
}

} // namespace

Result<std::shared_ptr<GTMHTTPUploadFetcher>>
uploadFetcherWithRequest(const URLRequest& request, const GTLUploadParameters& parameters, quint64 chunkSize,
                         const std::shared_ptr<GTMHTTPFetcherService>& fetcherService) {
    const bool isInMemory = std::holds_alternative<QByteArray>(parameters.media);
    const auto file = fileOf(parameters);
    if (!file)
        return file.error();
    if (parameters.uploadLocationURL.isEmpty() && isInMemory)
        return GTMHTTPUploadFetcher::uploadFetcherWithRequest(request, parameters.data(), parameters.MIMEType,
                                                              chunkSize, fetcherService);
    if (parameters.uploadLocationURL.isEmpty())
        return GTMHTTPUploadFetcher::uploadFetcherWithRequest(request, *file, parameters.MIMEType, chunkSize,
                                                              fetcherService);
    if (isInMemory) {
        return Error(
            FetcherErrorCode::fetchCouldNotBegin,
            {{errorKey::reason, QStringLiteral("Only an upload from a file can be resumed; begin this one again.")}});
    }
    auto resumed = GTMHTTPUploadFetcher::uploadFetcherWithLocation(
        parameters.uploadLocationURL, *file, parameters.MIMEType, chunkSize, fetcherService, request.url);
    resumed->mutableRequest().headers.set("User-Agent", request.headers.value("User-Agent"));
    return resumed;
}

} // namespace quenby
