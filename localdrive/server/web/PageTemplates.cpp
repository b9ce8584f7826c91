#include "localdrive/server/web/PageTemplates.h"

#include "localdrive/server/http/HttpMessages.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

// In a static library, resources are linked in only when they are asked for; from outside any namespace.
static void loadPages() { Q_INIT_RESOURCE(localdrive_pages); }

namespace quenby::localdrive {
namespace {

const QString pageFolder = QStringLiteral(":/localdrive/pages");

QByteArray contentOf(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("A page was not built into the program.");
    return file.readAll();
}

void sendUnder(const QString& policy, httplib::Response& response, int status, const QString& page) {
    const QString whole =
        QStringLiteral("default-src 'none'; style-src 'self'; img-src 'self'; frame-ancestors 'none'; "
                       "base-uri 'none'; ") +
        policy;
    response.set_header("Content-Security-Policy", whole.toStdString());
    response.set_header("X-Content-Type-Options", "nosniff");
    response.set_header("Referrer-Policy", "no-referrer");
    response.set_header("Cache-Control", "no-store");
    localdrive::send(response, status, page.toUtf8(), "text/html; charset=utf-8");
}

} // namespace

PageTemplates::PageTemplates() {
    loadPages();
    const QDir folder(pageFolder);
    for (const QString& file : folder.entryList({QStringLiteral("*.html")}))
        pages_.insert(file.chopped(5), QString::fromUtf8(contentOf(folder.filePath(file))));
    const auto parts = pages_;
    for (QString& page : pages_)
        for (auto part = parts.begin(); part != parts.end(); ++part)
            page.replace(QStringLiteral("{{>%1}}\n").arg(part.key()), part.value());
    styleSheet_ = contentOf(folder.filePath(QStringLiteral("style.css")));
    shareScript_ = contentOf(folder.filePath(QStringLiteral("share.js")));
}

QString PageTemplates::fill(const QString& name, const Values& values) const {
    static const QRegularExpression place(QStringLiteral("\\{\\{(\\{?)(\\w+)\\}?\\}\\}"));
    const QString page = pages_.value(name);
    QString filled;
    qsizetype from = 0;
    for (auto match = place.globalMatch(page); match.hasNext();) {
        const auto found = match.next();
        const QString value = values.value(found.captured(2));
        filled += QStringView(page).sliced(from, found.capturedStart() - from);
        filled += found.captured(1).isEmpty() ? value.toHtmlEscaped() : value;
        from = found.capturedEnd();
    }
    return filled + page.mid(from);
}

void PageTemplates::send(httplib::Response& response, int status, const QString& page, const QString& formTarget) {
    sendUnder(QStringLiteral("form-action 'self' ") + formTarget, response, status, page);
}

void PageTemplates::sendWithScript(httplib::Response& response, int status, const QString& page) {
    sendUnder(QStringLiteral("form-action 'none'; script-src 'self'; connect-src 'self'"), response, status, page);
}

} // namespace quenby::localdrive
