// What a recording gets of the screen that the user chose in the desktop's dialog, and what is remembered of it.
#include "platform/linux/media/engine/capture/PortalSource.h"
#include "tests/platform/portal/FakePortal.h"

#include <QGuiApplication>
#include <QTest>

#include <gst/gst.h>

using namespace quenby;
using namespace quenby::testing;
using Does = FakePortal::Does;

namespace {

const QString selectSources = QStringLiteral("SelectSources");
const QString restoreToken = QStringLiteral("restore_token");
constexpr QRect selection(10, 20, 300, 200);

struct Preparing {
    PortalSource source;
    std::optional<CaptureFeed> feed;
    std::optional<Error> error;
    bool hasGone = false;

    // A display of twice as many pixels as points.
    Preparing(const std::shared_ptr<ScreenCastTokens>& tokens, const QPoint& origin)
        : source(tokens) {
        QObject::connect(&source, &CaptureSource::prepared, [this](const CaptureFeed& given) { feed = given; });
        QObject::connect(&source, &CaptureSource::failed, [this](const Error& why) { error = why; });
        QObject::connect(&source, &CaptureSource::gone, [this] { hasGone = true; });
        const quenby::Display display{1, QStringLiteral("DP-1"), QRect(origin, QSize(800, 600)),
                                      QRect(0, 0, 1600, 1200), 2};
        source.prepare({display, selection, 30});
    }
    bool isOver() const { return feed || error; }
};

} // namespace

class tst_portalsource : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(gst_init_check(nullptr, nullptr, nullptr)); }

    void theScreenThatWasChosen_data() {
        // The test's only screen lies at the origin.
        QTest::addColumn<QPoint>("meant");
        QTest::addColumn<QVariantMap>("told");
        QTest::addColumn<bool>("isTheOne");
        const auto at = [](const QPoint& position) {
            return QVariantMap{{QStringLiteral("position"), position}, {QStringLiteral("size"), QSize(800, 600)}};
        };
        QTest::newRow("the one") << QPoint(0, 0) << at({0, 0}) << true;
        QTest::newRow("another") << QPoint(1280, 0) << at({0, 0}) << false;
        QTest::newRow("not said") << QPoint(1280, 0) << QVariantMap() << true;
        QTest::newRow("at a place where none is") << QPoint(0, 0) << at({5, 5}) << true;
    }
    void theScreenThatWasChosen() {
        QFETCH(QPoint, meant);
        QFETCH(QVariantMap, told);
        QFETCH(bool, isTheOne);
        FakePortal fake;
        fake.streamProperties = told;
        const auto tokens = std::make_shared<ScreenCastTokens>();
        tokens->insert(QStringLiteral("DP-1"), QStringLiteral("last time"));
        Preparing preparing(tokens, meant);
        QTRY_VERIFY_WITH_TIMEOUT(preparing.isOver(), 20'000);
        QVERIFY(preparing.feed);
        QCOMPARE(fake.options[selectSources][restoreToken].toString(), QStringLiteral("last time"));
        QCOMPARE(preparing.feed->crop, isTheOne ? selection : QRect());
        QCOMPARE(preparing.feed->cropSize, isTheOne ? QSize(1600, 1200) : QSize());
        // A token for another screen would silently record that one the next time.
        QCOMPARE(tokens->value(QStringLiteral("DP-1")), isTheOne ? QStringLiteral("next time") : QString());

        fake.endSession();
        QTRY_VERIFY_WITH_TIMEOUT(preparing.hasGone, 20'000);
    }

    void theConnectionStaysOpenAsLongAsTheFeed() {
        FakePortal fake;
        std::optional<CaptureFeed> feed;
        {
            Preparing preparing(std::make_shared<ScreenCastTokens>(), {});
            QTRY_VERIFY_WITH_TIMEOUT(preparing.isOver(), 20'000);
            feed = preparing.feed;
        }
        QVERIFY(feed);
        const qsizetype place = feed->description.indexOf("fd=") + 3;
        const int descriptor = feed->description.mid(place).split(' ').first().toInt();
        QCOMPARE(write(descriptor, "frame", 5), 5);
        feed.reset();
        QCOMPARE(write(descriptor, "frame", 5), -1);
    }

    void noScreen_data() {
        QTest::addColumn<int>("does");
        QTest::newRow("declined") << static_cast<int>(Does::decline);
        QTest::newRow("refused") << static_cast<int>(Does::refuse);
    }
    void noScreen() {
        QFETCH(int, does);
        FakePortal fake;
        fake.does[QStringLiteral("Start")] = static_cast<Does>(does);
        const auto tokens = std::make_shared<ScreenCastTokens>();
        tokens->insert(QStringLiteral("DP-1"), QStringLiteral("last time"));
        Preparing preparing(tokens, {});
        QTRY_VERIFY_WITH_TIMEOUT(preparing.isOver(), 20'000);
        QVERIFY(preparing.error);
        QCOMPARE(preparing.error->code() == 0, static_cast<Does>(does) == Does::decline);
        QVERIFY(tokens->isEmpty()); // good for one time
    }
};

QTEST_MAIN(tst_portalsource)
#include "tst_portalsource.moc"
