// A file is shown by the file manager on the bus, byte for byte the one that was meant.
#include "platform/linux/desktop/BusFileBrowser.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QTest>
#include <QUrl>

using namespace quenby;

// The other end of the freedesktop.org File Manager D-Bus Interface.
class FileManager : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    QStringList shown;

public Q_SLOTS:
    void ShowItems(const QStringList& addresses, const QString& startupId) {
        Q_UNUSED(startupId)
        shown += addresses;
    }
};

class tst_FileBrowser : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theManagerOnTheBusShowsTheFile() {
        QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("manager"));
        FileManager manager;
        QVERIFY(bus.registerObject(QStringLiteral("/org/freedesktop/FileManager1"), &manager,
                                   QDBusConnection::ExportAllSlots));
        QVERIFY(bus.registerService(QStringLiteral("org.freedesktop.FileManager1")));
        BusFileBrowser browser;
        const QByteArray path = "/tmp/a b#?%/\xff\xc3\xa9.txt"; // not text in any encoding
        QList<bool> answers;
        browser.reveal(path, this, [&](bool isShown) { answers.append(isShown); });
        QVERIFY(answers.isEmpty());
        QTRY_COMPARE(answers, QList<bool>{true});
        QCOMPARE(manager.shown.size(), 1);
        QCOMPARE(QByteArray::fromPercentEncoding(manager.shown.first().toLatin1()), "file://" + path);
        QDBusConnection::disconnectFromBus(QStringLiteral("manager"));
    }
};

QTEST_MAIN(tst_FileBrowser)
#include "tst_FileBrowser.moc"
