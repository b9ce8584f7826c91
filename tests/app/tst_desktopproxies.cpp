// What a desktop's own settings say, by way of the system's library: GSettings in a file of this test's, and a script
// that never comes.
#include "app/account/SystemProxies.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>

using namespace quenby;
using namespace Qt::StringLiterals;

namespace {

// This program itself, as one that ends while the system is being asked.
constexpr const char* leaveWhileAsking = "--leave-while-asking";
constexpr int leftAsTold = 7;

} // namespace

class DesktopProxiesTest : public QObject {
    Q_OBJECT

public:
    // The library reads all of it when it is first asked.
    static void useOwnDesktop() {
        static const QTemporaryDir folder;
        QDir(folder.path()).mkpath(u"glib-2.0/settings"_s);
        QFile file(folder.filePath(u"glib-2.0/settings/keyfile"_s));
        if (!file.open(QIODevice::WriteOnly))
            qFatal("no settings");
        file.write("[system/proxy]\nmode='manual'\nignore-hosts=['direct.example']\n"
                   "[system/proxy/https]\nhost='desk.example'\nport=3129\n"
                   "[system/proxy/socks]\nhost='socks.example'\nport=1081\n");
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(folder.path()));
        qputenv("GSETTINGS_BACKEND", "keyfile");
        qputenv("XDG_CURRENT_DESKTOP", "GNOME");
        qputenv("DESKTOP_SESSION", "gnome");
        for (const char* const name : {"http_proxy", "https_proxy", "HTTPS_PROXY", "HTTP_PROXY", "all_proxy",
                                       "ALL_PROXY", "no_proxy", "NO_PROXY"})
            qunsetenv(name);
    }

private Q_SLOTS:
    void manualProxies_data() {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("proxies");
        QTest::newRow("https") << u"https://drive.example/"_s
                               << u"http://desk.example:3129 socks5h://socks.example:1081"_s;
        QTest::newRow("without one of its own") << u"http://drive.example/"_s << u"socks5h://socks.example:1081"_s;
        QTest::newRow("excepted") << u"https://direct.example/"_s << u"none"_s;
        QTest::newRow("loopback") << u"http://127.0.0.1:80/"_s << u"none"_s;
    }
    void manualProxies() {
        QFETCH(QString, url);
        QString answer;
        SystemProxies source(makeSystemTimeSource());
        source.findProxies(QUrl(url), this, [&answer](const ProxyChoice& choice) {
            QStringList all;
            for (const QUrl& proxy : choice.proxies)
                all.append(proxy.toString());
            answer = all.isEmpty() ? u"none"_s : all.join(u' ');
        });
        QTRY_VERIFY_WITH_TIMEOUT(!answer.isEmpty(), 30'000);
        QTEST(answer, "proxies");
    }

    // The library waits for a script for ever, and lets nobody end the program meanwhile.
    void aScriptThatNeverComesKeepsNobodyFromLeaving() {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        QSignalSpy asked(&server, &QTcpServer::newConnection);
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const QString& name : {u"XDG_CURRENT_DESKTOP"_s, u"DESKTOP_SESSION"_s, u"GSETTINGS_BACKEND"_s})
            environment.remove(name); // another desktop's word would count for more
        environment.insert(u"https_proxy"_s, u"pac+http://127.0.0.1:%1/script"_s.arg(server.serverPort()));
        program.setProcessEnvironment(environment);
        program.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(leaveWhileAsking)});
        QTRY_VERIFY_WITH_TIMEOUT(!asked.isEmpty(), 30'000);
        program.write("\n");
        QTRY_COMPARE_WITH_TIMEOUT(program.state(), QProcess::NotRunning, 30'000);
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), leftAsTold);
    }
};

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    if (application.arguments().contains(QLatin1String(leaveWhileAsking))) {
        QObject context;
        SystemProxies source(makeSystemTimeSource());
        source.findProxies(QUrl(u"https://drive.example/"_s), &context, [](const ProxyChoice&) {});
        std::getchar();
        return leftAsTold;
    }
    DesktopProxiesTest::useOwnDesktop();
    DesktopProxiesTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_desktopproxies.moc"
