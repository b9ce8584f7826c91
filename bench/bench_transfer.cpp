// One whole transfer in one process, to be timed from outside against curl doing the same.
//
//   bench_transfer upload BASE FILE       announces an upload at BASE/announce and sends the file
//   bench_transfer download URL FILE      streams the address into the file
//
// The trust store is taken from SSL_CERT_FILE, as curl does.

#include "http/GTMHTTPFetcherService.h"
#include "http/GTMHTTPUploadFetcher.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdio>
#include <limits>

using namespace quenby;

namespace {

std::shared_ptr<GTMHTTPFetcher> uploadFetcher(const QString& base, const QString& path,
                                              const std::shared_ptr<GTMHTTPFetcherService>& service) {
    const auto file = std::make_shared<QFile>(path);
    if (!file->open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return nullptr;
    URLRequest announcement(QUrl(base + QStringLiteral("/announce")));
    announcement.httpMethod = "POST";
    return GTMHTTPUploadFetcher::uploadFetcherWithRequest(announcement, file, "application/octet-stream",
                                                          std::numeric_limits<quint64>::max(), service);
}

} // namespace

int main(int argc, char** argv) {
    // Nothing here needs GLib's loop; the toolkit's own wakes up with less ado.
    qputenv("QT_NO_GLIB", "1");
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 4) {
        std::fputs("usage: bench_transfer upload BASE FILE | download URL FILE\n", stderr);
        return 2;
    }
    const auto service = GTMHTTPFetcherService::create();
    service->setAllowLocalhostRequest(true);
    std::shared_ptr<GTMHTTPFetcher> fetcher;
    if (arguments.at(1) == QLatin1String("upload")) {
        fetcher = uploadFetcher(arguments.at(2), arguments.at(3), service);
    } else {
        fetcher = service->fetcherWithRequest(URLRequest(QUrl(arguments.at(2))));
        fetcher->setDownloadPath(arguments.at(3));
    }
    if (!fetcher) {
        std::fputs("bench_transfer: the file cannot be read\n", stderr);
        return 1;
    }
    fetcher->beginFetchWithCompletionHandler(&application, [](const QByteArray&, const MaybeError& error) {
        if (error)
            std::fprintf(stderr, "bench_transfer: %s\n", qUtf8Printable(error->description()));
        QCoreApplication::exit(error ? 1 : 0);
    });
    return QCoreApplication::exec();
}
