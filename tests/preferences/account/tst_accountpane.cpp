// The account pane: what it shows of whom, the pieces of the bar, and what its buttons ask for.
#include "preferences/account/AccountFace.h"
#include "preferences/account/AccountPane.h"
#include "preferences/account/ServiceUsageBar.h"

#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <limits>

using namespace quenby;
using namespace Qt::StringLiterals;

namespace {

constexpr qint64 gigabyte = qint64{1} << 30;

const AccountDisplay robin{u"Robin Hale"_s, u"robin.hale@example.com"_s, u"28% of 15 GB used"_s, 28};
const AccountUsage usage{
    15 * gigabyte, 4 * gigabyte, {{u"Drive"_s, 3 * gigabyte}, {u"Gmail"_s, gigabyte / 2}, {u"Photos"_s, gigabyte / 2}}};

QStringList namesOf(const ServiceUsageBar& bar) {
    QStringList names;
    for (const auto& piece : bar.pieces())
        names.append(piece.name);
    return names;
}

// How many pixels of the bar's middle line are its ground, which the last pixel shows.
int emptyPixels(ServiceUsageBar& bar, bool isMirrored) {
    const QImage picture = bar.grab().toImage();
    const auto at = [&](int x) { return picture.pixel(isMirrored ? picture.width() - 1 - x : x, 4); };
    int last = picture.width() - 5; // before the round end
    const QRgb ground = at(last);
    while (last >= 0 && at(last) == ground)
        --last;
    return picture.width() - 1 - last;
}

} // namespace

class AccountPaneTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void showsTheAccountAsItBecomesKnown() {
        AccountPane pane;
        const auto text = [&pane](const QString& name) {
            const auto* label = pane.findChild<QLabel*>(name);
            return label->isVisibleTo(&pane) ? label->text() : QString();
        };
        auto* bar = pane.findChild<ServiceUsageBar*>();
        QCOMPARE(text(u"user_name"_s), u"No User Login"_s);
        pane.setAccount({u"Fetching..."_s, u"robin.hale@example.com"_s, u"Fetching..."_s, {}}, true);
        QCOMPARE(text(u"quota"_s), u"Fetching..."_s);
        QVERIFY(bar->pieces().isEmpty());
        pane.setAccount(robin, true);
        pane.setUsage(usage);
        QCOMPARE(text(u"user_name"_s), u"Robin Hale"_s);
        QCOMPARE(text(u"account_name"_s), u"robin.hale@example.com"_s);
        QCOMPARE(text(u"quota"_s), u"4 GB of 15 GB used"_s);
        QCOMPARE(bar->accessibleDescription(), u"4 GB of 15 GB used: Drive 3 GB, Gmail 512 MB, Photos 512 MB"_s);
        QCOMPARE(text(u"access"_s), QString()); // where there is no choice
        pane.setAccess(DriveAccess::everything);
        QVERIFY(text(u"access"_s).contains("everything"_L1));
        pane.setAccess(DriveAccess::ownFiles);
        QVERIFY(text(u"access"_s).contains("only files"_L1));
        pane.setAccess(std::nullopt);
        QVERIFY(text(u"access"_s).contains("Sign in again"_L1));
        QVERIFY2(pane.sizeHint().height() <= 174, qPrintable(QString::number(pane.sizeHint().height())));
        pane.setAccount({u"No User Login"_s, u"No User Login"_s, u"Data not available"_s, {}}, false);
        QCOMPARE(text(u"user_name"_s), u"No User Login"_s);
        QCOMPARE(text(u"account_name"_s), QString()); // not twice
        QCOMPARE(text(u"access"_s), QString());
        QCOMPARE(text(u"quota"_s), u"Data not available"_s);
        QVERIFY(bar->pieces().isEmpty());
    }

    void buttonsAskForWhatFits() {
        AccountPane pane;
        auto* logoutButton = pane.findChild<QPushButton*>(u"logoutButton"_s);
        QSignalSpy logout(&pane, &AccountPane::logout_click);
        QSignalSpy signIn(&pane, &AccountPane::signInRequested);
        QSignalSpy signInAgain(&pane, &AccountPane::signInAgainRequested);
        QSignalSpy ownClient(&pane, &AccountPane::ownClientRequested);
        const auto pressAll = [&pane] {
            for (auto* button : pane.findChildren<QPushButton*>()) {
                if (button->isVisibleTo(&pane))
                    button->click();
            }
        };
        QVERIFY(!logoutButton->isVisibleTo(&pane));
        pressAll();
        pane.setAccount(robin, true);
        QCOMPARE(logoutButton->text().remove('&'_L1), u"Sign Out"_s);
        pane.setOwnClientRefused(u"Not here."_s);
        pressAll();
        QCOMPARE(signInAgain.size(), 0);
        logout.clear();
        pane.setAccess(DriveAccess::ownFiles);
        pressAll();
        QCOMPARE(signInAgain.size(), 1);
        QCOMPARE(signIn.size(), 1);
        QCOMPARE(ownClient.size(), 1); // not after it was refused
        QCOMPARE(logout.size(), 1);
    }

    void usageInWords_data() {
        QTest::addColumn<qint64>("used");
        QTest::addColumn<qint64>("total");
        QTest::addColumn<QString>("text");
        QTest::newRow("nothing") << qint64{0} << 15 * gigabyte << u"0 bytes of 15 GB used"_s;
        QTest::newRow("no limit") << 3 * gigabyte << qint64{0} << u"3 GB used"_s;
        QTest::newRow("over") << 16 * gigabyte << 15 * gigabyte << u"16 GB of 15 GB used: no room is left"_s;
    }
    void usageInWords() {
        QFETCH(qint64, used);
        QFETCH(qint64, total);
        QTEST(usageText({total, used, {}}), "text");
    }

    void manyServicesShareTheRest() {
        AccountUsage many{0, 0, {}};
        for (int i = 1; i <= 9; ++i) {
            many.services.append({QString::number(i), i * gigabyte});
            many.used += i * gigabyte;
        }
        ServiceUsageBar bar(nullptr);
        bar.setUsage(many);
        QCOMPARE(namesOf(bar), (QStringList{u"6"_s, u"7"_s, u"8"_s, u"9"_s, u"Other"_s}));
        QCOMPARE(bar.pieces().last().bytes, 15 * gigabyte);
        // Nobody hears of "Other" instead of names.
        QVERIFY(bar.accessibleDescription().contains("1 1 GB, 2 2 GB"_L1));
        AccountUsage equal{0, 14 * gigabyte, {}};
        for (const auto& name : {u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"5"_s})
            equal.services.append({name, gigabyte});
        equal.services.append({u"large"_s, 9 * gigabyte}); // has its place before them
        bar.setUsage(equal);
        QCOMPARE(namesOf(bar), (QStringList{u"1"_s, u"2"_s, u"3"_s, u"large"_s, u"Other"_s}));
        for (ServiceUsage& service : many.services)
            service.bytes = 5 * gigabyte;
        bar.setUsage(many);
        QCOMPARE(bar.pieces().size(), 5);
        const qint64 most = std::numeric_limits<qint64>::max();
        bar.setUsage(AccountUsage{1, most, {{u"a"_s, most}, {u"b"_s, most}}});
        QCOMPARE(namesOf(bar), (QStringList{u"a"_s, u"b"_s}));
    }

    void barIsAsFullAsTheAccount() {
        ServiceUsageBar bar(nullptr);
        bar.resize(400, 60);
        for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
            bar.setLayoutDirection(direction);
            const bool isMirrored = direction == Qt::RightToLeft;
            bar.setUsage(AccountUsage{4 * gigabyte, gigabyte, {{u"Drive"_s, gigabyte}}});
            QVERIFY(std::abs(emptyPixels(bar, isMirrored) - 300) <= 3);
            bar.setUsage(AccountUsage{4 * gigabyte, 9 * gigabyte, {{u"Drive"_s, 9 * gigabyte}}});
            QVERIFY(emptyPixels(bar, isMirrored) > 390); // one colour from end to end
        }
        // Captions take the lines that they need.
        bar.setUsage(usage);
        QVERIFY(bar.heightForWidth(100) > bar.heightForWidth(400));
    }

    void pictureIsCutRound() {
        AccountFace face(nullptr);
        const QImage drawn = face.grab().toImage();
        QImage red(150, 90, QImage::Format_RGB32);
        red.fill(Qt::red);
        face.setPicture(red);
        const QImage shown = face.grab().toImage();
        QCOMPARE(shown.pixelColor(32, 32), QColor(Qt::red));
        QCOMPARE(shown.pixelColor(1, 1), drawn.pixelColor(1, 1));
        QVERIFY(shown.pixelColor(32, 2).red() > 200);
        face.setPicture({});
        QCOMPARE(face.grab().toImage(), drawn);
    }
};

QTEST_MAIN(AccountPaneTest)
#include "tst_accountpane.moc"
