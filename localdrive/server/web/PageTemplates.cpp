#include "localdrive/server/web/PageTemplates.h"

#include "localdrive/server/http/HttpMessages.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>

// In a static library, resources are linked in only when they are asked for; from outside any namespace.
static void loadPageResources() { Q_INIT_RESOURCE(localdrive_pages); }

namespace quenby::localdrive {
namespace {

const QString pageFolder = QStringLiteral(":/localdrive/pages");

QByteArray contentOf(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("A page was not built into the program.");
    return file.readAll();
}

const char* assetType(const QString& name) {
    if (name.endsWith(QLatin1String(".css")))
        return "text/css; charset=utf-8";
    if (name.endsWith(QLatin1String(".js")))
        return "text/javascript; charset=utf-8";
    return name.endsWith(QLatin1String(".svg")) ? "image/svg+xml" : "image/png";
}

// Puts the parts in the place of their names, and the parts of parts.
QString withParts(const QString& page, const QHash<QString, QString>& files) {
    static const QRegularExpression partName(QStringLiteral("\\{\\{>(\\w+)\\}\\}\n"));
    QString whole;
    qsizetype from = 0;
    for (auto match = partName.globalMatch(page); match.hasNext();) {
        const auto found = match.next();
        whole += QStringView(page).sliced(from, found.capturedStart() - from);
        whole += withParts(files.value(found.captured(1)), files);
        from = found.capturedEnd();
    }
    return whole + page.mid(from);
}

void sendUnder(const QString& policy, httplib::Response& response, int status, const QString& page) {
    const QString whole =
        QStringLiteral("default-src 'none'; style-src 'self'; img-src 'self'; base-uri 'none'; ") + policy;
    response.set_header("Content-Security-Policy", whole.toStdString());
    response.set_header("X-Content-Type-Options", "nosniff");
    response.set_header("Referrer-Policy", "no-referrer");
    response.set_header("Cache-Control", "no-store");
    localdrive::send(response, status, page.toUtf8(), "text/html; charset=utf-8");
}

} // namespace

PageTemplates::PageTemplates() {
    loadPageResources();
    loadAssets(pageFolder);
    loadPages(pageFolder);
}

void PageTemplates::loadAssets(const QString& folder) {
    QStringList paths;
    for (QDirIterator files(folder, QDir::Files, QDirIterator::Subdirectories); files.hasNext();)
        paths.append(files.next());
    paths.sort();
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (const QString& path : std::as_const(paths)) {
        if (path.endsWith(QLatin1String(".html")))
            continue;
        const QString name = path.mid(folder.size() + 1);
        const PageAsset asset{contentOf(path), assetType(name)};
        hash.addData(asset.bytes);
        assets_.insert(name, asset);
    }
    mark_ = hash.result().toHex().first(12);
    for (PageAsset& asset : assets_)
        if (qstrncmp(asset.type, "text/", 5) == 0)
            asset.bytes = withMarks(QString::fromUtf8(asset.bytes)).toUtf8();
}

void PageTemplates::loadPages(const QString& folder) {
    QHash<QString, QString> files;
    for (const QString& file : QDir(folder).entryList({QStringLiteral("*.html")}))
        files.insert(file.chopped(5), QString::fromUtf8(contentOf(folder + QLatin1Char('/') + file)));

    static const QRegularExpression place(QStringLiteral("\\{\\{(\\{?)(\\w+)\\}?\\}\\}"));
    for (auto file = files.cbegin(); file != files.cend(); ++file) {
        const QString page = withMarks(withParts(*file, files));
        QList<Piece>& pieces = pages_[file.key()];
        qsizetype from = 0;
        for (auto match = place.globalMatch(page); match.hasNext();) {
            const auto found = match.next();
            pieces.append(
                {page.mid(from, found.capturedStart() - from), found.captured(2), !found.captured(1).isEmpty()});
            from = found.capturedEnd();
        }
        pieces.append({page.mid(from), {}, false});
    }
}

QString PageTemplates::withMarks(QString text) const {
    static const QRegularExpression address(QStringLiteral("(/pages/[\\w/-]+\\.(?:css|js|svg|png))(?=[\"')])"));
    return text.replace(address, QStringLiteral("\\1?v=") + QString::fromLatin1(mark_));
}

QString PageTemplates::fill(const QString& name, const Values& values) const {
    const QList<Piece> pieces = pages_.value(name);
    QString filled;
    for (const Piece& piece : pieces) {
        filled += piece.text;
        if (piece.key.isEmpty())
            continue;
        const QString value = values.value(piece.key);
        filled += piece.isHtml ? value : value.toHtmlEscaped();
    }
    return filled;
}

const PageAsset* PageTemplates::asset(const QString& name) const {
    const auto found = assets_.constFind(name);
    return found == assets_.constEnd() ? nullptr : &*found;
}

QString PageTemplates::assetLink(const QString& name) const {
    return QStringLiteral("/pages/%1?v=%2").arg(name, QString::fromLatin1(mark_));
}

void PageTemplates::send(httplib::Response& response, int status, const QString& page, const QString& formTarget) {
    sendUnder(QStringLiteral("frame-ancestors 'none'; form-action 'self' ") + formTarget, response, status, page);
}

void PageTemplates::sendWithScript(httplib::Response& response, int status, const QString& page) {
    sendUnder(QStringLiteral("frame-ancestors 'self'; form-action 'none'; script-src 'self'; connect-src 'self'"),
              response, status, page);
}

void PageTemplates::sendApplication(httplib::Response& response, int status, const QString& page) {
    sendUnder(QStringLiteral("frame-ancestors 'self'; form-action 'self'; script-src 'self'; connect-src 'self'; "
                             "frame-src 'self'"),
              response, status, page);
}

} // namespace quenby::localdrive
