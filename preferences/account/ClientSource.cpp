#include "preferences/account/ClientSource.h"

#include "preferences/account/OwnClient.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMimeData>
#include <QUrl>

#include <cerrno>

namespace quenby {
namespace {

QString tr(const char* text) { return QCoreApplication::translate("quenby::ClientSource", text); }

Error fault(const QString& sentence) { return Error(errorDomain::posix, EINVAL, {{errorKey::reason, sentence}}); }

Error notHere() {
    return fault(tr("This is the address of something on the web, not the file itself. Download it, and drop or choose "
                    "the file."));
}

Result<ClientSource> fileAt(const QUrl& url) {
    if (!url.isLocalFile() || url.toLocalFile().isEmpty())
        return notHere();
    return ClientSource{QFile::encodeName(url.toLocalFile()), {}};
}

// A path as a file manager or a terminal has it.
QString pathIn(const QString& line) {
    const bool isQuoted = line.size() > 1 && line.front() == line.back() &&
                          (line.front() == QLatin1Char('\'') || line.front() == QLatin1Char('"'));
    const QString path = isQuoted ? line.sliced(1, line.size() - 2) : line;
    if (path.startsWith(QLatin1String("~/")))
        return QDir::homePath() + path.sliced(1);
    return path.startsWith(QLatin1Char('/')) ? path : QString();
}

Result<ClientSource> inText(const QString& text) {
    const bool isOneLine = !text.contains(QLatin1Char('\n'));
    if (isOneLine && text.startsWith(QLatin1String("file:")))
        return fileAt(QUrl(text));
    if (isOneLine && (text.startsWith(QLatin1String("https://")) || text.startsWith(QLatin1String("http://"))))
        return notHere();
    if (const QString path = isOneLine ? pathIn(text) : QString(); !path.isEmpty())
        return ClientSource{QFile::encodeName(path), {}};
    return ClientSource{{}, text.toUtf8()};
}

} // namespace

Result<ClientSource> clientSource(const QMimeData& data) {
    const QList<QUrl> urls = data.urls();
    if (urls.size() > 1)
        return fault(tr("These are several files. Choose the one of the client."));
    if (urls.size() == 1)
        return fileAt(urls.first());
    const QString text = data.hasText() ? data.text().trimmed() : QString();
    if (text.isEmpty())
        return fault(tr("There is no text and no file to paste. Copy the client's file, or its text, first."));
    return inText(text);
}

Result<QByteArray> readClientFile(const QByteArray& path) {
    const QString name = QFile::decodeName(path);
    const QFileInfo info(name);
    const QString shown = info.fileName();
    if (!info.exists())
        return fault(tr("There is no file “%1” any more. Choose it again.").arg(shown));
    // Opening a pipe would wait for whoever writes to it.
    if (!info.isFile())
        return fault(tr("“%1” is no file. Choose the file of the client.").arg(shown));
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        return fault(tr("“%1” cannot be read: %2. Check its permissions.").arg(shown, file.errorString()));
    QByteArray bytes = file.read(mostOwnClientBytes + 1);
    if (file.error() != QFileDevice::NoError)
        return fault(tr("“%1” cannot be read: %2.").arg(shown, file.errorString()));
    return bytes;
}

} // namespace quenby
