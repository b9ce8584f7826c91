// Message boxes on a real screen; and the fake beside them.
#include "platform/linux/desktop/MessageBoxAlerts.h"
#include "tests/platform/contracts/AlertsContract.h"
#include "tests/platform/desktop/VirtualDesktop.h"
#include "tests/platform/fakes/FakeAlerts.h"

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

using namespace quenby;
using namespace quenby::testing;

namespace {

constexpr int patience = 20'000; // ms

QList<QMessageBox*> boxesOnScreen() {
    QList<QMessageBox*> boxes;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* box = qobject_cast<QMessageBox*>(widget); box && box->isVisible())
            boxes.append(box);
    }
    return boxes;
}

// The one that takes the keys.
QMessageBox* activeBox() { return qobject_cast<QMessageBox*>(QApplication::activeWindow()); }

const Alert question{QStringLiteral("Sure?"),
                     QStringLiteral("It is <b>big</b>."),
                     QStringLiteral("Details & more"),
                     {QStringLiteral("Yes"), QStringLiteral("Perhaps"), QStringLiteral("No & never")}};

} // namespace

class tst_Alerts : public QObject {
    Q_OBJECT

    std::unique_ptr<QWidget> window_;

private Q_SLOTS:
    void initTestCase() { QApplication::setQuitOnLastWindowClosed(false); }
    void init() {
        window_ = std::make_unique<QWidget>();
        window_->resize(400, 300);
        window_->show();
        QVERIFY(QTest::qWaitForWindowActive(window_.get()));
    }
    void cleanup() { QTRY_VERIFY_WITH_TIMEOUT(boxesOnScreen().isEmpty(), patience); }

    void theFakeKeepsTheContract() {
        FakeAlerts fake;
        const auto press = [&fake](int button) { QVERIFY(fake.answer(button)); };
        const auto dismissAll = [&fake] {
            while (fake.waiting() > 0)
                fake.answer(1);
        };
        alertsKeepTheirContract(fake, *window_, {press, dismissAll});
    }

    void messageBoxesKeepTheContract() {
        MessageBoxAlerts alerts;
        const auto press = [](int button) {
            QTRY_COMPARE_WITH_TIMEOUT(boxesOnScreen().size(), 1, patience);
            const QMessageBox* box = boxesOnScreen().first();
            (button == 0 ? static_cast<QAbstractButton*>(box->defaultButton()) : box->escapeButton())->click();
        };
        const auto dismissAll = [] {
            const auto isNothingLeft = [] {
                for (const QMessageBox* box : boxesOnScreen())
                    box->escapeButton()->click();
                return QApplication::activeModalWidget() == nullptr;
            };
            QTRY_VERIFY_WITH_TIMEOUT(isNothingLeft(), patience);
        };
        alertsKeepTheirContract(alerts, *window_, {press, dismissAll});
    }

    void keysAnswer_data() {
        QTest::addColumn<QString>("keys");
        QTest::addColumn<int>("answer");
        QTest::newRow("Return is the first") << QStringLiteral("key Return") << 0;
        QTest::newRow("Escape is the last") << QStringLiteral("key Escape") << 2;
        QTest::newRow("closing the window is the last") << QStringLiteral("key alt+F4") << 2;
    }
    void keysAnswer() {
        QFETCH(QString, keys);
        MessageBoxAlerts alerts;
        QList<int> answers;
        alerts.show(window_.get(), question, this, [&answers](int button) { answers.append(button); });
        QTRY_VERIFY_WITH_TIMEOUT(activeBox(), patience);
        QCOMPARE(activeBox()->windowModality(), Qt::WindowModal);
        useInput(keys);
        QTRY_COMPARE_WITH_TIMEOUT(answers.size(), 1, patience);
        QTEST(answers.first(), "answer");
    }

    void nothingInItIsReadAsMarkup() {
        MessageBoxAlerts alerts;
        alerts.show(window_.get(), question);
        QTRY_VERIFY_WITH_TIMEOUT(activeBox(), patience);
        bool isInformationSeen = false;
        for (const QLabel* label : activeBox()->findChildren<QLabel*>()) {
            QCOMPARE(label->textFormat(), Qt::PlainText);
            isInformationSeen |= label->isVisible() && label->text() == question.informativeText;
        }
        QVERIFY(isInformationSeen);
    }

    void aWindowThatDiesTakesItsAlertsAlong() {
        MessageBoxAlerts alerts;
        int answers = 0;
        for (int i = 0; i < 3; ++i)
            alerts.show(window_.get(), question, this, [&answers](int) { ++answers; });
        QTRY_VERIFY_WITH_TIMEOUT(activeBox(), patience);
        window_.reset();
        QVERIFY(boxesOnScreen().isEmpty());
        QCoreApplication::processEvents();
        QCOMPARE(answers, 0);
    }

    void withoutAWindowOnScreenTheyStandForThemselves() {
        MessageBoxAlerts alerts;
        int answers = 0;
        const auto answered = [&answers](int) { ++answers; };
        window_->hide();
        alerts.show(window_.get(), question, this, answered);
        QTRY_VERIFY_WITH_TIMEOUT(activeBox(), patience);
        QVERIFY(!activeBox()->isModal());
        QVERIFY(!window_->isVisible());
        alerts.show(nullptr, question, this, answered);
        alerts.show(nullptr, question, this, answered);
        QTRY_COMPARE_WITH_TIMEOUT(boxesOnScreen().size(), 3, patience);
        while (!boxesOnScreen().isEmpty())
            boxesOnScreen().first()->escapeButton()->click();
        QTRY_COMPARE_WITH_TIMEOUT(answers, 3, patience);
    }
};

QTEST_MAIN(tst_Alerts)
#include "tst_Alerts.moc"
