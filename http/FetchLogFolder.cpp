#include "http/FetchLogFolder.h"

#include <QDir>
#include <QFile>
#include <QLoggingCategory>

#include <cerrno>
#include <cstdio>

#include <unistd.h>

namespace quenby {
namespace {

Q_LOGGING_CATEGORY(fetchLog, "quenby.http.fetchlog")

constexpr QFileDevice::Permissions ownerOnlyFile = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
constexpr QFileDevice::Permissions ownerOnlyFolder = ownerOnlyFile | QFileDevice::ExeOwner;

QByteArray beginningOfPage(const QString& processName, const QString& dateStamp) {
    return QStringLiteral("<html><head><meta http-equiv=\"content-type\" content=\"text/html; charset=UTF-8\">"
                          "<title>%1 HTTP fetch log %2</title></head>\n<body>\n")
        .arg(processName.toHtmlEscaped(), dateStamp.toHtmlEscaped())
        .toUtf8();
}

} // namespace

FetchLogFolder::FetchLogFolder(QString loggingDirectory, QString processName, QString dateStamp)
    : loggingDirectory_(std::move(loggingDirectory))
    , processName_(std::move(processName))
    , dateStamp_(std::move(dateStamp)) {}

bool FetchLogFolder::writeFile(const QString& name, const QByteArray& contents) {
    return prepare() && put(runFolder_ + QLatin1Char('/') + name, contents, false);
}

bool FetchLogFolder::appendToPage(const QByteArray& html) { return prepare() && put(pagePath(), html, true); }

QString FetchLogFolder::pagePath() const {
    return runFolder_.isEmpty() ? QString() : QString(runFolder_ + QStringLiteral("/aperçu_http_log.html"));
}

bool FetchLogFolder::prepare() {
    if (!runFolder_.isEmpty())
        return true;
    if (!makeRunFolder())
        return false;
    linkNewestPage();
    return put(pagePath(), beginningOfPage(processName_, dateStamp_), true);
}

bool FetchLogFolder::makeRunFolder() {
    const bool isNew = !QFile::exists(loggingDirectory_);
    if (!QDir().mkpath(loggingDirectory_))
        return report(QStringLiteral("the folder cannot be made"), loggingDirectory_);
    if (isNew)
        QFile::setPermissions(loggingDirectory_, ownerOnlyFolder);
    const QString wanted = loggingDirectory_ + QLatin1Char('/') + processName_ + QStringLiteral("_log_") + dateStamp_;
    QString folder = wanted;
    for (int number = 1; QFile::exists(folder); ++number)
        folder = wanted + QLatin1Char('_') + QString::number(number);
    if (!QDir().mkdir(folder, ownerOnlyFolder))
        return report(qt_error_string(errno), folder);
    runFolder_ = folder;
    return true;
}

// Renamed into place, so that the link is never missing.
void FetchLogFolder::linkNewestPage() {
    const QString link = loggingDirectory_ + QLatin1Char('/') + processName_ + QStringLiteral("_log_newest.html");
    const QByteArray next = QFile::encodeName(runFolder_ + QStringLiteral("/newest"));
    if (::symlink(QFile::encodeName(pagePath()).constData(), next.constData()) != 0 ||
        std::rename(next.constData(), QFile::encodeName(link).constData()) != 0)
        report(qt_error_string(errno), link);
}

bool FetchLogFolder::put(const QString& path, const QByteArray& contents, bool append) {
    QFile file(path);
    const auto mode = append ? QIODevice::Append : QIODevice::WriteOnly | QIODevice::Truncate;
    if (!file.open(mode | QIODevice::Unbuffered, ownerOnlyFile) || file.write(contents) != contents.size())
        return report(file.errorString(), path);
    return true;
}

bool FetchLogFolder::report(const QString& problem, const QString& path) {
    if (!hasReportedError_)
        qCWarning(fetchLog).noquote()
            << QStringLiteral("%1 logging write error:%2 (%3)").arg(QStringLiteral("GTMHTTPFetcher"), problem, path);
    hasReportedError_ = true;
    return false;
}

} // namespace quenby
