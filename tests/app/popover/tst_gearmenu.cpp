// The gear button's menu: what can be chosen there and by whom; and where the menus of the popover's buttons go.
#include "app/popover/GearMenu.h"
#include "app/statusitem/StatusMenus.h"
#include "tests/app/statusitem/FakeStatusItemInputs.h"
#include "tests/platform/fakes/FakeDefaults.h"

#include <QPushButton>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;

class GearMenuTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        inputs_ = {};
        menus_ = std::make_unique<StatusMenus>(inputs_, defaults_);
        for (const MenuCommand command : {MenuCommand::captureAndUploadScreenshot, MenuCommand::preferences})
            menus_->enable(command, true);
        gear_ = std::make_unique<GearMenu>(*menus_, inputs_);
    }
    void cleanup() {
        gear_.reset();
        menus_.reset();
    }

    void states_data() {
        QTest::addColumn<bool>("signedIn");
        QTest::addColumn<bool>("complete");
        QTest::addColumn<QString>("line");
        QTest::newRow("signed in") << true << true << QStringLiteral("37% of 15 GB used");
        QTest::newRow("on its way") << true << false << QStringLiteral("Fetching...");
        QTest::newRow("signed out") << false << true << QStringLiteral("Data not available");
    }
    void states() {
        QFETCH(bool, signedIn);
        QFETCH(bool, complete);
        QFETCH(QString, line);
        inputs_.signedIn = signedIn;
        if (!complete)
            inputs_.summary = {};
        popUp(QPoint(100, 100));
        const QList<QAction*> items = gear_->menu().actions();
        QCOMPARE(items.size(), 7);
        QVERIFY(items[0]->text() == line && !items[0]->isEnabled());
        QVERIFY(items[2]->menu() == &menus_->addFileMenu() && items[2]->isEnabled() == signedIn);
        QVERIFY(items[3] == menus_->action(MenuCommand::uploadFile) && items[3]->isEnabled() == signedIn);
        QVERIFY(items[5]->isEnabled() && items[6]->isEnabled());
        // The add button's own menu needs no account.
        QVERIFY(menus_->addFileMenu().isEnabled());
        // And when it opens another time.
        inputs_.signedIn = !signedIn;
        popUp(QPoint(100, 100));
        QCOMPARE(items[2]->isEnabled(), !signedIn);
    }

    // Under the button, towards the middle of the window.
    void place() {
        for (const bool isForAdding : {false, true}) {
            const QRect left = popUp(QPoint(10, 100), isForAdding);
            QCOMPARE(left.topLeft(), button_.mapToGlobal(QPoint(0, button_.height())));
            const QRect right = popUp(QPoint(460, 100), isForAdding);
            QCOMPARE(right.topRight(), button_.mapToGlobal(QPoint(button_.width() - 1, button_.height())));
        }
    }

private:
    QRect popUp(const QPoint& button, bool isForAdding = false) {
        window_.resize(500, 300);
        button_.setGeometry(QRect(button, QSize(28, 28)));
        window_.show();
        if (isForAdding)
            menus_->AddNewFile(button_);
        else
            gear_->setting_btn_click(button_);
        QMenu& menu = isForAdding ? menus_->addFileMenu() : gear_->menu();
        const QRect shown = menu.geometry();
        menu.close();
        return shown;
    }

    FakeStatusItemInputs inputs_;
    FakeDefaults defaults_;
    QWidget window_;
    QPushButton button_{&window_};
    std::unique_ptr<StatusMenus> menus_;
    std::unique_ptr<GearMenu> gear_;
};

QTEST_MAIN(GearMenuTest)
#include "tst_gearmenu.moc"
