// A capture's link on the clipboard, and the way back: with files in a real local Drive.

#include "app/uploads/CaptureLinks.h"
#include "app/uploads/FailureAlerts.h"
#include "app/uploads/UploadRequest.h"
#include "core/DefaultsKeys.h"
#include "driveapi/GTLDriveFile.h"
#include "tests/faults/FaultBench.h"
#include "tests/platform/fakes/FakeAlerts.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/platform/fakes/FakeNotifications.h"
#include "tests/platform/fakes/FakeOpener.h"
#include "tests/platform/fakes/FakePasteboard.h"
#include "tests/support/ManualTimeSource.h"

#include <QSignalSpy>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int patiently = 60000; // ms; only a hang takes so long

UploadRequest capture(const QByteArray& name) {
    UploadRequest request{"/tmp/" + name};
    request.isCapture = true;
    return request;
}

// Of a file that no Drive has.
UploadRun::Outcome outcomeOf(const QString& identifier) {
    UploadRun::Outcome outcome;
    outcome.identifier = identifier;
    outcome.alternateLink = u"https://drive.example/"_s + identifier;
    return outcome;
}

} // namespace

class CaptureLinksTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        QVERIFY2(bench_.prepare(), bench_.drive().log().constData());
        bench_.service().fetcherService()->setTimeout(60s); // of real time: a busy computer is no fault
        defaults_ = std::make_unique<FakeDefaults>();
        notifications_ = std::make_unique<FakeNotifications>();
        pasteboard_ = std::make_unique<FakePasteboard>();
        opener_ = std::make_unique<FakeOpener>();
        alerts_ = std::make_unique<FakeAlerts>();
        failures_ = std::make_unique<FailureAlerts>(*alerts_, [] { return nullptr; });
        time_ = std::make_shared<ManualTimeSource>();
        isSignedIn_ = true;
        const auto driveService = [this] {
            // The bench keeps the service.
            return isSignedIn_ ? std::shared_ptr<GTLServiceDrive>(std::shared_ptr<void>(), &bench_.service()) : nullptr;
        };
        links_ = std::make_unique<CaptureLinks>(
            CaptureLinkServices{driveService, time_, *defaults_, *notifications_, *pasteboard_, *opener_, *failures_});
        pasteboard_->setText(before);
    }
    void cleanup() { links_.reset(); }

    void whatIsNoneOfItsBusiness() {
        QVERIFY(!links_->captured(UploadRequest{"/tmp/report.pdf"}, outcomeOf(u"1"_s)));
        UploadRun::Outcome withoutLink = outcomeOf(u"2"_s);
        withoutLink.alternateLink.clear();
        QVERIFY(!links_->captured(capture("shot.png"), withoutLink));
        defaults_->setValueForKey(defaultsKey::captureToLink, false);
        QVERIFY(!links_->captured(capture("shot.png"), outcomeOf(u"3"_s)));
        QCOMPARE(pasteboard_->text(), before);
        QCOMPARE(notifications_->posted().size(), 0);
    }

    void linkIsCopiedAndShown() {
        QVERIFY(links_->captured(capture("a <b>.png"), outcomeOf(u"1"_s)));
        QCOMPARE(pasteboard_->text(), u"https://drive.example/1"_s);
        const auto [identifier, notification] = notifications_->posted().last();
        QCOMPARE(notification.title, u"Quenby New Update!"_s);
        QCOMPARE(notification.text, u" \n a <b>.png added\nIts link is on the clipboard"_s);
        notifications_->click(identifier);
        QCOMPARE(opener_->opened(), QList<QUrl>{QUrl(u"https://drive.example/1"_s)});

        defaults_->setValueForKey(defaultsKey::notificationDisplay, false);
        time_->advance(10s);
        QVERIFY(links_->captured(capture("b.png"), outcomeOf(u"2"_s)));
        QCOMPARE(pasteboard_->text(), u"https://drive.example/2"_s);
        QCOMPARE(notifications_->posted().size(), 1);
    }

    void undoTakesItBack_data() {
        QTest::addColumn<QString>("meanwhile");
        QTest::addColumn<QString>("after");
        const auto row = [](const char* what, const QString& after) {
            QTest::newRow(what) << QString::fromLatin1(what) << after;
        };
        row("text before", before);
        row("a picture before", {});
        row("another text since then", u"mine"_s);
        row("files since then", {});
    }
    void undoTakesItBack() {
        QFETCH(QString, meanwhile);
        if (meanwhile.startsWith(u"a picture"))
            pasteboard_->copyPicture(QImage(2, 2, QImage::Format_RGB32));
        const auto uploaded = bench_.upload(bench_.makeFile("shot.png", sampleBytes(1000)));
        QVERIFY(uploaded);
        QSignalSpy moved(links_.get(), &CaptureLinks::movedToTrash);
        QVERIFY(links_->captured(capture("shot.png"), *uploaded));
        if (meanwhile.startsWith(u"another"))
            pasteboard_->setText(u"mine"_s);
        if (meanwhile.startsWith(u"files"))
            pasteboard_->copyFiles({"/tmp/a"});
        const quint64 notice = notifications_->lastIdentifier();
        Q_EMIT notifications_->actionInvoked(notice, u"undo"_s);
        Q_EMIT notifications_->actionInvoked(notice, u"undo"_s); // some services are not to be trusted
        QTEST(pasteboard_->text(), "after");
        QCOMPARE(pasteboard_->filePaths().size(), meanwhile.startsWith(u"files") ? 1 : 0);
        QTRY_COMPARE_WITH_TIMEOUT(textOfLast(), u" \n shot.png was moved to the trash"_s, patiently);
        QVERIFY(isTrashed(uploaded->identifier));
        QCOMPARE(moved.size(), 1);
        QCOMPARE(alerts_->shown().size(), 0);
    }

    void severalAtOnceShareTheirNotice() {
        QStringList identifiers;
        for (const char* name : {"1.png", "2.png", "3.png"}) {
            const auto uploaded = bench_.upload(bench_.makeFile(name, sampleBytes(1000)));
            QVERIFY(uploaded);
            identifiers << uploaded->identifier;
            QVERIFY(links_->captured(capture(name), *uploaded));
            QCOMPARE(pasteboard_->text(), uploaded->alternateLink);
            time_->advance(100ms);
        }
        QCOMPARE(notifications_->posted().size(), 1); // the desktop is not flooded
        time_->advance(1s);
        QCOMPARE(notifications_->posted().size(), 2);
        QCOMPARE(notifications_->onScreen().size(), 1);
        QCOMPARE(textOfLast(), u" \n 3 captures added\nThe link of the last one is on the clipboard"_s);
        notifications_->invoke(notifications_->lastIdentifier(), u"undo"_s);
        QCOMPARE(pasteboard_->text(), before);
        QTRY_COMPARE_WITH_TIMEOUT(textOfLast(), u" \n 3 captures were moved to the trash"_s, patiently);
        for (const QString& identifier : identifiers)
            QVERIFY(isTrashed(identifier));
    }

    void laterOnesStandAlone() {
        links_->captured(capture("1.png"), outcomeOf(u"1"_s));
        const quint64 first = notifications_->lastIdentifier();
        time_->advance(5s);
        links_->captured(capture("2.png"), outcomeOf(u"2"_s));
        QCOMPARE(notifications_->onScreen().size(), 2);
        notifications_->invoke(first, u"undo"_s); // works still, and leaves the other's link
        QCOMPARE(pasteboard_->text(), u"https://drive.example/2"_s);
        QTRY_COMPARE_WITH_TIMEOUT(alerts_->shown().size(), 1, patiently); // there is no such file
        QVERIFY(alerts_->shown().first().alert.details.contains(u"1.png"_s));
    }

    void undoWithoutItsAccount() {
        links_->captured(capture("1.png"), outcomeOf(u"1"_s));
        isSignedIn_ = false;
        notifications_->invoke(notifications_->lastIdentifier(), u"undo"_s);
        QCOMPARE(pasteboard_->text(), before);
        QCOMPARE(alerts_->shown().size(), 1);

        links_->captured(capture("2.png"), outcomeOf(u"2"_s));
        const quint64 notice = notifications_->lastIdentifier();
        links_->forget();
        QCOMPARE(notifications_->onScreen().size(), 0);
        Q_EMIT notifications_->actionInvoked(notice, u"undo"_s);
        QCOMPARE(pasteboard_->text(), u"https://drive.example/2"_s);
        QCOMPARE(alerts_->shown().size(), 1);
    }

private:
    static inline const QString before = u"what was there"_s;

    QString textOfLast() const { return notifications_->posted().last().notification.text; }
    bool isTrashed(const QString& identifier) {
        const auto reply = bench_.call(GTLQueryDrive::queryForFilesGetWithFileId(identifier));
        const auto file = std::dynamic_pointer_cast<GTLDriveFile>(reply.valueOr(nullptr));
        return file && file->labels() && file->labels()->trashed();
    }

    FaultBench bench_;
    std::unique_ptr<FakeDefaults> defaults_;
    std::unique_ptr<FakeNotifications> notifications_;
    std::unique_ptr<FakePasteboard> pasteboard_;
    std::unique_ptr<FakeOpener> opener_;
    std::unique_ptr<FakeAlerts> alerts_;
    std::unique_ptr<FailureAlerts> failures_;
    std::shared_ptr<ManualTimeSource> time_;
    std::unique_ptr<CaptureLinks> links_;
    bool isSignedIn_ = true;
};

QTEST_GUILESS_MAIN(CaptureLinksTest)
#include "tst_capturelinks.moc"
