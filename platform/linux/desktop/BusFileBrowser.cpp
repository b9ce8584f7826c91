#include "platform/linux/desktop/BusFileBrowser.h"

#include "platform/linux/desktop/BusCall.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDesktopServices>
#include <QFile>
#include <QFileInfo>
#include <QUrl>

namespace quenby {
namespace {

// A file manager may have to be started for it.
constexpr int patienceMs = 10'000;

bool openFolder(const QString& path) {
    return QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
}

} // namespace

void BusFileBrowser::reveal(const QByteArray& path, QObject* context, Done done) {
    const CompletionGate<bool> gate(context, std::move(done));
    // The bytes as they are: a name need not be text in any encoding.
    const QByteArray address = "file://" + QByteArray(path).toPercentEncoding("/");
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << QStringList{QString::fromLatin1(address)} << QString();
    whenReplied(QDBusConnection::sessionBus().asyncCall(call, patienceMs), this,
                [path, gate](const QDBusPendingCall& reply) {
                    gate.deliver(!reply.isError() || openFolder(QFile::decodeName(path)));
                });
}

} // namespace quenby
