// Streams and pictures of the screen from the desktop's portal, which is played here on the real bus.
#include "platform/linux/portal/PortalRequest.h"
#include "platform/linux/portal/ScreenCastPortal.h"
#include "platform/linux/portal/ScreenshotPortal.h"
#include "tests/platform/portal/FakePortal.h"

#include <QSignalSpy>
#include <QTest>

#include <fcntl.h>

using namespace quenby;
using namespace quenby::testing;
using Does = FakePortal::Does;

namespace {

const QString screenCast = QStringLiteral("org.freedesktop.portal.ScreenCast");
const QString screenshot = QStringLiteral("org.freedesktop.portal.Screenshot");

// Opens a stream, and remembers what was told.
struct Opening {
    ScreenCastPortal portal;
    QList<Result<std::optional<ScreenCastStream>>> outcomes;

    explicit Opening(const QString& token = {}, const QDBusConnection& bus = QDBusConnection::sessionBus())
        : portal(bus) {
        portal.open(token, &portal, [this](const auto& outcome) { outcomes << outcome; });
    }
    bool hasOutcome() const { return !outcomes.isEmpty(); }
    bool wasDeclined() const { return hasOutcome() && outcomes.first() && !outcomes.first().value(); }
    QString reason() const {
        return hasOutcome() && !outcomes.first() ? outcomes.first().error().detail(errorKey::reason).toString()
                                                 : QString();
    }
};

// Words of the sentence that people read.
void failsWith(const Opening& opening, const char* words) {
    QTRY_VERIFY_WITH_TIMEOUT(opening.hasOutcome(), 20'000);
    QVERIFY2(opening.reason().startsWith(QLatin1String("The screen cannot be recorded, because")) &&
                 opening.reason().contains(QLatin1String(words)),
             qPrintable(opening.reason()));
}

} // namespace

class tst_portals : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aStream_data() {
        QTest::addColumn<uint>("version");
        QTest::addColumn<bool>("answersFirst");
        QTest::addColumn<bool>("choosesHandles");
        QTest::newRow("today") << 4U << false << false;
        QTest::newRow("the answer overtakes the reply") << 4U << true << false;
        QTest::newRow("handles of its own") << 4U << false << true;
        QTest::newRow("handles of its own, and the answer first") << 4U << true << true;
        QTest::newRow("without tokens") << 3U << false << false;
        QTest::newRow("without pointers") << 1U << false << false;
    }
    void aStream() {
        QFETCH(uint, version);
        FakePortal fake;
        QFETCH(bool, answersFirst);
        QFETCH(bool, choosesHandles);
        fake.answersBeforeItReplies = answersFirst;
        fake.choosesHandles = choosesHandles;
        fake.interfaces[screenCast][QStringLiteral("version")] = version;
        {
            Opening opening(QStringLiteral("last time"));
            QTRY_COMPARE_WITH_TIMEOUT(opening.outcomes.size(), 1, 20'000);
            QVERIFY2(opening.reason().isEmpty(), qPrintable(opening.reason()));
            QVERIFY(!opening.wasDeclined());
            const ScreenCastStream& stream = *opening.outcomes.first().value();
            QCOMPARE(stream.node, 42U);
            QCOMPARE(stream.frame, QRect(1280, 0, 800, 600));
            // Really the portal's file, and not open for programs that are started.
            const int descriptor = stream.connection.fileDescriptor();
            QCOMPARE(write(descriptor, "frame", 5), 5);
            QCOMPARE(fake.streamFile.readAll().size(), 0);
            fake.streamFile.seek(0);
            QCOMPARE(fake.streamFile.readAll(), QByteArray("frame"));
            QVERIFY(fcntl(descriptor, F_GETFD) & FD_CLOEXEC);
            QCOMPARE(opening.portal.restoreToken(), QStringLiteral("next time"));

            const QVariantMap asked = fake.options[QStringLiteral("SelectSources")];
            QCOMPARE(asked[QStringLiteral("types")].toUInt(), 1U);
            QCOMPARE(asked[QStringLiteral("cursor_mode")].toUInt(), version >= 2 ? 2U : 0U);
            QCOMPARE(asked[QStringLiteral("persist_mode")].toUInt(), version >= 4 ? 2U : 0U);
            QCOMPARE(asked[QStringLiteral("restore_token")].toString(),
                     version >= 4 ? QStringLiteral("last time") : QString());
            QVERIFY(fake.closed.isEmpty());
        }
        QTRY_COMPARE_WITH_TIMEOUT(fake.closed, QStringList{fake.session.path()}, 20'000);
    }

    void aDesktopThatDoesNotSayWhereTheScreenLies() {
        FakePortal fake;
        fake.streamProperties.clear();
        fake.interfaces[screenCast][QStringLiteral("AvailableCursorModes")] = 1U;
        const Opening opening;
        QTRY_VERIFY_WITH_TIMEOUT(opening.hasOutcome(), 20'000);
        QCOMPARE(opening.outcomes.first().value()->frame, QRect());
        QVERIFY(!fake.options[QStringLiteral("SelectSources")].contains(QStringLiteral("cursor_mode")));
    }

    void noStream_data() {
        QTest::addColumn<QString>("method");
        QTest::addColumn<int>("does");
        QTest::addColumn<QByteArray>("words");
        const auto row = [](const char* method, Does does, const char* words) {
            QTest::addRow("%s %d", method, static_cast<int>(does))
                << QString::fromLatin1(method) << static_cast<int>(does) << QByteArray(words);
        };
        row("Start", Does::decline, "");
        row("SelectSources", Does::decline, "");
        row("Start", Does::refuse, "refused");
        row("CreateSession", Does::refuse, "refused");
        row("CreateSession", Does::fail, "it is broken");
        row("Start", Does::fail, "it is broken");
        row("OpenPipeWireRemote", Does::fail, "Install pipewire");
    }
    void noStream() {
        QFETCH(QString, method);
        QFETCH(int, does);
        QFETCH(QByteArray, words);
        FakePortal fake;
        fake.does[method] = static_cast<Does>(does);
        const Opening opening;
        QTRY_VERIFY_WITH_TIMEOUT(opening.hasOutcome(), 20'000);
        QCOMPARE(opening.wasDeclined(), words.isEmpty());
        if (!words.isEmpty())
            failsWith(opening, words.constData());
        // Nothing stays at the desktop.
        if (method != QLatin1String("CreateSession"))
            QTRY_COMPARE_WITH_TIMEOUT(fake.closed, QStringList{fake.session.path()}, 20'000);
        QCOMPARE(opening.outcomes.size(), 1);
    }

    void whatIsMissing() {
        const Opening withoutPortal;
        failsWith(withoutPortal, "Install xdg-desktop-portal");
        const Opening withoutBus({}, QDBusConnection(QStringLiteral("a bus that is not there")));
        QVERIFY(!withoutBus.hasOutcome()); // never from inside of the call
        failsWith(withoutBus, "D-Bus");
        FakePortal fake;
        fake.interfaces.remove(screenCast);
        const Opening withoutInterface;
        failsWith(withoutInterface, "back-end for your desktop");
    }

    void thePortalVanishes_data() {
        QTest::addColumn<QString>("method");
        for (const char* method : {"CreateSession", "SelectSources", "Start"})
            QTest::newRow(method) << QString::fromLatin1(method);
    }
    void thePortalVanishes() {
        QFETCH(QString, method);
        FakePortal fake;
        fake.does[method] = Does::wait;
        const Opening opening;
        QTRY_VERIFY_WITH_TIMEOUT(fake.options.contains(method), 20'000);
        fake.vanish();
        failsWith(opening, "ended in the meantime");
    }

    void anOpenStreamEnds_data() {
        QTest::addColumn<bool>("vanishes");
        QTest::newRow("by the desktop") << false;
        QTest::newRow("with the portal") << true;
    }
    void anOpenStreamEnds() {
        QFETCH(bool, vanishes);
        FakePortal fake;
        Opening opening;
        QSignalSpy closed(&opening.portal, &ScreenCastPortal::closed);
        QTRY_VERIFY_WITH_TIMEOUT(opening.hasOutcome(), 20'000);
        QVERIFY(closed.isEmpty());
        if (vanishes)
            fake.vanish();
        else
            fake.endSession();
        QTRY_COMPARE_WITH_TIMEOUT(closed.size(), 1, 20'000);
    }

    void theSessionEndsWhileTheUserThinks() {
        FakePortal fake;
        fake.does[QStringLiteral("Start")] = Does::wait;
        Opening opening;
        QSignalSpy closed(&opening.portal, &ScreenCastPortal::closed);
        QTRY_VERIFY_WITH_TIMEOUT(fake.options.contains(QStringLiteral("Start")), 20'000);
        fake.endSession();
        failsWith(opening, "refused");
        fake.answerLate(0);
        const Opening next; // with its answer, the late one has arrived
        QTRY_VERIFY_WITH_TIMEOUT(fake.options.contains(QStringLiteral("Start")), 20'000);
        QCOMPARE(opening.outcomes.size(), 1);
        QVERIFY(closed.isEmpty());
    }

    void whoGivesUpTakesTheQuestionBack() {
        FakePortal fake;
        fake.does[QStringLiteral("Start")] = Does::wait;
        fake.does[QStringLiteral("Screenshot")] = Does::wait;
        auto opening = std::make_unique<Opening>();
        QTRY_VERIFY_WITH_TIMEOUT(fake.options.contains(QStringLiteral("Start")), 20'000);
        QStringList questions{fake.waitingHandle(), fake.session.path()};
        opening.reset();
        QTRY_COMPARE_WITH_TIMEOUT(fake.closed, questions, 20'000);

        int told = 0;
        const auto ticket = takeInteractiveScreenshot(this, [&told](const auto&) { ++told; });
        QTRY_VERIFY_WITH_TIMEOUT(fake.options.contains(QStringLiteral("Screenshot")), 20'000);
        questions << fake.waitingHandle();
        QVERIFY(ticket.cancel());
        QTRY_COMPARE_WITH_TIMEOUT(fake.closed, questions, 20'000);
        QCOMPARE(told, 0);
    }

    void aDesktopThatDoesNotAnswer() {
        FakePortal fake;
        fake.does[QStringLiteral("CreateSession")] = Does::wait;
        PortalClient client(QDBusConnection::sessionBus(), {screenCast, QStringLiteral("Nothing works")});
        QString reason;
        int answers = 0;
        client.find([&](const MaybeError&) {
            auto* const request = new PortalRequest(&client, this);
            request->send(QStringLiteral("CreateSession"), {}, {}, std::chrono::milliseconds(1),
                          [&](const PortalRequest::Outcome& outcome) {
                              ++answers;
                              reason = outcome.error().detail(errorKey::reason).toString();
                          });
        });
        QTRY_COMPARE_WITH_TIMEOUT(answers, 1, 20'000);
        QVERIFY2(reason.contains(QLatin1String("does not answer")), qPrintable(reason));
    }

    void aPicture_data() {
        QTest::addColumn<int>("does");
        QTest::addColumn<QString>("address");
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QByteArray>("words");
        const QString address = QStringLiteral("file:///tmp/A%20picture%FF.png");
        const auto row = [](const char* name, Does does, const QString& where, const char* path, const char* words) {
            QTest::newRow(name) << static_cast<int>(does) << where << QByteArray(path) << QByteArray(words);
        };
        row("taken", Does::grant, address, "/tmp/A picture\xFF.png", "");
        row("declined", Does::decline, address, "", "");
        row("refused", Does::refuse, address, "", "refused");
        row("no file", Does::grant, QStringLiteral("https://example.org/a.png"), "", "names no file");
    }
    void aPicture() {
        QFETCH(int, does);
        QFETCH(QByteArray, path);
        QFETCH(QByteArray, words);
        FakePortal fake;
        fake.does[QStringLiteral("Screenshot")] = static_cast<Does>(does);
        QFETCH(QString, address);
        fake.screenshotAddress = address;
        std::optional<Result<QByteArray>> taken;
        takeInteractiveScreenshot(this, [&taken](const auto& result) { taken = result; });
        QVERIFY(!taken);
        QTRY_VERIFY_WITH_TIMEOUT(taken, 20'000);
        QVERIFY(fake.options[QStringLiteral("Screenshot")][QStringLiteral("interactive")].toBool());
        QCOMPARE(taken->ok(), words.isEmpty());
        if (taken->ok())
            QCOMPARE(taken->value(), path);
        else
            QVERIFY(taken->error().detail(errorKey::reason).toString().contains(QLatin1String(words)));
    }
};

QTEST_GUILESS_MAIN(tst_portals)
#include "tst_portals.moc"
