// The desktop's own tools, run for real: what they save is noticed as theirs, and what is made of it is not.
#include "core/TimeSource.h"
#include "platform/linux/screenshots/FolderScreenshotQuery.h"

#include <QDir>
#include <QProcess>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

using namespace quenby;

namespace {

constexpr int patience = 30'000; // ms

constexpr ScreenshotFacts allFacts =
    ScreenshotFact::isScreenCapture | ScreenshotFact::captureType | ScreenshotFact::capturedRectangle;

bool run(const QString& program, const QStringList& arguments, const QString& folder) {
    QProcess process;
    process.setWorkingDirectory(folder);
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(program, arguments);
    return process.waitForFinished(patience) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

} // namespace

class ScreenshotToolsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // The session's home is fresh: the folders are those that tools fall back to without any settings.
    void initTestCase() {
        QVERIFY(QDir::home().mkpath(QStringLiteral("Pictures")));
        QVERIFY(QDir::home().mkpath(QStringLiteral("Desktop")));
        query_.start();
    }

    void noticedOnceWithAllFacts_data() {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QStringList>("arguments");
        const QString pictures = QDir::home().filePath(QStringLiteral("Pictures"));
        QTest::newRow("scrot") << "scrot" << QStringList();
        QTest::newRow("gnome-screenshot") << "gnome-screenshot" << QStringList();
        QTest::newRow("flameshot") << "flameshot"
                                   << QStringList{QStringLiteral("full"), QStringLiteral("-p"), pictures};
    }
    void noticedOnceWithAllFacts() {
        QFETCH(QString, program);
        QFETCH(QStringList, arguments);
        const QList<ScreenshotItem> before = query_.results();
        QSignalSpy updates(&query_, &ScreenshotQuery::updated);
        QVERIFY(run(program, arguments, QDir::homePath()));
        QVERIFY(QTest::qWaitFor([&] { return updates.count() == 1; }, patience));
        const QList<ScreenshotItem> after = query_.results();
        QCOMPARE(after.size(), before.size() + 1);
        QCOMPARE(after.last().facts, allFacts);

        // A copy in another folder, one with a part cut away in the same folder, and the file itself, cut in place.
        const QString path = QFile::decodeName(after.last().path);
        const QString name = QFileInfo(path).fileName();
        const QString copy = QDir::home().filePath(QStringLiteral("Desktop/") + name);
        QVERIFY(run(QStringLiteral("cp"), {path, copy}, QDir::homePath()));
        QVERIFY(knows(copy));
        const QString cut = QFileInfo(path).path() + QLatin1Char('/') +
                            QString(name).replace(QStringLiteral(".png"), QStringLiteral("-9.png"));
        const QStringList crop{QStringLiteral("-crop"), QStringLiteral("50x40+0+0"), QStringLiteral("+repage")};
        QVERIFY(run(QStringLiteral("convert"), QStringList{path} + crop + QStringList{cut}, QDir::homePath()));
        QVERIFY(knows(cut));
        QCOMPARE(freshCount(), 1);
        QVERIFY(run(QStringLiteral("mogrify"), crop + QStringList{path}, QDir::homePath()));
        QVERIFY(QTest::qWaitFor([&] { return freshCount() == 0; }, patience));
    }

private:
    bool knows(const QString& path) {
        return QTest::qWaitFor(
            [&] {
                const QList<ScreenshotItem> results = query_.results();
                return std::any_of(results.begin(), results.end(),
                                   [&](const auto& item) { return item.path == QFile::encodeName(path); });
            },
            patience);
    }
    qsizetype freshCount() const {
        const QList<ScreenshotItem> results = query_.results();
        return std::count_if(results.begin(), results.end(), [](const auto& item) { return item.facts == allFacts; });
    }

    FolderScreenshotQuery query_{makeSystemTimeSource(), screenshotPlaces()};
};

QTEST_MAIN(ScreenshotToolsTest)
#include "tst_screenshottools.moc"
