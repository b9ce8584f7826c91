// Programs that start what a session has in its autostart folders, and the entry as it is written here: whether the
// program is really started, from wherever it lies, and with its arguments.
#include "platform/linux/login/AutostartEntry.h"
#include "platform/linux/login/AutostartLoginItem.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace quenby;

namespace {

constexpr int patience = 60'000; // ms

void run(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(program, arguments);
    QVERIFY(process.waitForFinished(patience));
    QCOMPARE(process.exitCode(), 0);
}

} // namespace

class tst_sessionstart : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        folder_ = std::make_unique<QTemporaryDir>();
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(folder_->filePath(QStringLiteral("config"))));
        qputenv("XDG_CONFIG_DIRS", QFile::encodeName(folder_->filePath(QStringLiteral("system"))));
        qputenv("QUENBY_TEST_RECORD", QFile::encodeName(record()));
    }

    // The library that several desktops start programs with keeps to every rule; the starter of small window managers
    // knows blanks alone.
    void isStarted_data() {
        QTest::addColumn<QString>("place");
        QTest::addColumn<QString>("starter");
        const QString blanks = QStringLiteral("my own  programs");
        QTest::newRow("dex: plain") << QStringLiteral("opt") << QStringLiteral("dex");
        QTest::newRow("dex: blanks") << blanks << QStringLiteral("dex");
        QTest::newRow("gio: plain") << QStringLiteral("opt") << QStringLiteral("gio");
        for (const char* place : {"my own  programs", "a\"b'c", "100%u %%", "$HOME `x`", "a\\b\\\\c", "k=v",
                                  "\xc3\xbc&;(*", "$50% \"=\\\\n"})
            QTest::addRow("gio: %s", place) << QString::fromUtf8(place) << QStringLiteral("gio");
    }
    void isStarted() {
        QFETCH(QString, place);
        QFETCH(QString, starter);
        const AutostartOptions options = optionsFor(place);
        AutostartLoginItem item(options);
        QVERIFY(!item.setEnabled(true));
        if (starter == QLatin1String("dex"))
            run(starter, {QStringLiteral("--autostart")});
        else
            run(starter, {QStringLiteral("launch"), options.path});
        QStringList expected{options.program};
        expected += options.arguments;
        QTRY_COMPARE_WITH_TIMEOUT(recorded(), expected.join(QLatin1Char('\n')) + QStringLiteral("\nend\n"), patience);
    }

    // What was started is told apart from what was not by a second entry, which is always started and comes last.
    void isNotStarted_data() {
        QTest::addColumn<QString>("how");
        for (const char* how :
             {"switched off", "switched off, with additions", "removed by hand", "hidden by the desktop",
              "hidden although the system has one", "the program is gone", "for another desktop"})
            QTest::newRow(how) << QString::fromLatin1(how);
    }
    void isNotStarted() {
        QFETCH(QString, how);
        const auto is = [&](const char* name) { return how == QLatin1String(name); };
        const AutostartOptions options = optionsFor(QStringLiteral("opt"));
        AutostartLoginItem item(options);
        QVERIFY(!item.setEnabled(true));
        const auto change = [&](const QByteArray& key, const QByteArray& value) {
            QFile file(options.path);
            QVERIFY(file.open(QIODevice::ReadWrite));
            AutostartEntry entry(file.readAll());
            entry.setValue(key, value);
            file.resize(0);
            file.seek(0);
            file.write(entry.text());
        };
        if (is("switched off, with additions"))
            change("X-Mine", "1");
        if (is("hidden although the system has one")) {
            QVERIFY(QDir().mkpath(folder_->filePath(QStringLiteral("system/autostart"))));
            QVERIFY(QFile::copy(options.path, folder_->filePath(QStringLiteral("system/autostart/") +
                                                                QFileInfo(options.path).fileName())));
        }
        if (is("removed by hand"))
            QVERIFY(QFile::remove(options.path));
        else if (is("hidden by the desktop"))
            change("Hidden", "true");
        else if (is("the program is gone"))
            QVERIFY(QFile::remove(options.program));
        else if (is("for another desktop"))
            change("OnlyShowIn", "GNOME;");
        else
            QVERIFY(!item.setEnabled(false));

        QFile last(QFileInfo(options.path).path() + QStringLiteral("/zz.desktop"));
        QVERIFY(last.open(QIODevice::WriteOnly));
        last.write("[Desktop Entry]\nType=Application\nName=Z\nExec=sh -c 'echo last >> \"" +
                   QFile::encodeName(record()) + "\"'\n");
        last.close();
        run(QStringLiteral("dex"),
            {QStringLiteral("--autostart"), QStringLiteral("--environment"), QStringLiteral("OPENBOX")});
        QTRY_VERIFY_WITH_TIMEOUT(recorded().endsWith(QLatin1String("last\n")), patience);
        QCOMPARE(recorded(), QStringLiteral("last\n"));
    }

private:
    QString record() const { return folder_->filePath(QStringLiteral("record")); }
    QString recorded() const {
        QFile file(record());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    // A program there that writes down how it was started.
    AutostartOptions optionsFor(const QString& place) const {
        AutostartOptions options =
            autostartOptions(QStringLiteral("quenby"), {QStringLiteral("--hidden"), QStringLiteral("--local")});
        options.program = folder_->filePath(place + QStringLiteral("/quenby"));
        QDir().mkpath(QFileInfo(options.program).path());
        QFile program(options.program);
        if (program.open(QIODevice::WriteOnly))
            program.write("#!/bin/sh\nprintf '%s\\n' \"$0\" \"$@\" end >> \"$QUENBY_TEST_RECORD\"\n");
        program.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return options;
    }

    std::unique_ptr<QTemporaryDir> folder_;
};

QTEST_GUILESS_MAIN(tst_sessionstart)
#include "tst_sessionstart.moc"
