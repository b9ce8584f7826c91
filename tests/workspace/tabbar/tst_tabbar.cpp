// The tab bar: what each option does, and what mouse, keys and drags do to it.

#include "workspace/tabbar/DemoModel.h"
#include "workspace/tabbar/TabBar.h"
#include "workspace/tabbar/TabDrop.h"
#include "workspace/tabbar/TabTexts.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QDropEvent>
#include <QMenu>
#include <QMimeData>
#include <QPaintEvent>
#include <QProxyStyle>
#include <QSignalSpy>
#include <QStyleFactory>
#include <QTest>
#include <QToolTip>

#include <deque>

using namespace quenby;

namespace {

// The desktop has animations switched on or off, whatever the machine of the test says.
class AnimationStyle : public QProxyStyle {
public:
    explicit AnimationStyle(int duration)
        : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion")))
        , duration_(duration) {}
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* more) const override {
        return hint == SH_Widget_Animation_Duration ? duration_ : QProxyStyle::styleHint(hint, option, widget, more);
    }

private:
    int duration_;
};

// A bar with tabs "0", "1", ... of which the first is selected.
struct Shown {
    explicit Shown(int tabs, int width = 900) {
        bar.configAutomaticallyAnimates(false);
        for (int index = 0; index < tabs; ++index)
            bar.addModel(models.emplace_back(QString::number(index), QUrl()));
        bar.resize(width, bar.sizeHint().height());
        bar.show();
        if (!QTest::qWaitForWindowActive(&bar))
            qFatal("the window is not shown");
    }
    QPoint middle(int index) const { return bar.frameOf(index).center(); }
    QString order() const {
        QString titles;
        for (int index = 0; index < bar.count(); ++index)
            titles += bar.modelAt(index)->title();
        return titles;
    }
    bool showsClose(int index) const { return !bar.partsOf(index).closeButton.isNull(); }
    QAbstractButton* button(const char* words) const {
        for (auto* button : bar.findChildren<QAbstractButton*>()) {
            if (button->accessibleName() == QLatin1String(words))
                return button;
        }
        return nullptr;
    }
    void clickClose(int index) {
        moveWith(Qt::NoButton, middle(index));
        QTest::mouseClick(&bar, Qt::LeftButton, {}, bar.partsOf(index).closeButton.center());
    }
    void send(QEvent&& event) { QCoreApplication::sendEvent(&bar, &event); }
    void moveWith(Qt::MouseButton held, QPoint to) {
        send(QMouseEvent(QEvent::MouseMove, to, bar.mapToGlobal(to), Qt::NoButton, held, Qt::NoModifier));
    }
    void wheel(QPoint angle) {
        const QPoint at = bar.rect().center();
        send(QWheelEvent(at, bar.mapToGlobal(at), {}, angle, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false));
    }

    std::deque<DemoModel> models;
    TabBar bar;
};

// What a widget was asked to paint again.
class Painted : public QObject {
public:
    explicit Painted(QWidget& widget)
        : widget_(widget) {
        settle();
        widget.installEventFilter(this);
    }
    QRegion taken() {
        settle();
        return std::exchange(region_, QRegion());
    }
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint)
            region_ += static_cast<QPaintEvent*>(event)->region();
        return false;
    }

private:
    void settle() const {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }

    QWidget& widget_;
    QRegion region_;
};

QMenu* openMenu() { return qobject_cast<QMenu*>(QApplication::activePopupWidget()); }

QAction* entry(const char* text) {
    for (QAction* action : openMenu() ? openMenu()->actions() : QList<QAction*>()) {
        if (action->text() == QLatin1String(text))
            return action;
    }
    return nullptr;
}

void closeMenu() { delete openMenu(); }

} // namespace

class TabBarTest : public QObject {
    Q_OBJECT

public:
    static void initMain() { qputenv("QT_QPA_PLATFORM", "offscreen"); }

private Q_SLOTS:
    void initTestCase() { QApplication::setStyle(new AnimationStyle(200)); }
    void cleanup() { closeMenu(); }

    void widths() {
        Shown shown(2);
        TabBar& bar = shown.bar;
        bar.configTabOptimumWidth(150);
        QCOMPARE(bar.frameOf(0).width(), 150);
        bar.configTabMaxWidth(120);
        QCOMPARE(bar.frameOf(1).width(), 120);
        bar.configTabMinWidth(130);
        QCOMPARE(bar.frameOf(1).width(), 130);
        QCOMPARE(bar.tabRect(1),
                 QRect(bar.frameOf(1).left(), 0, 130, bar.height()).translated(-bar.frameOf(0).left(), 0));
        bar.configTabMinWidth(1);
        bar.configTabMaxWidth(400);
        bar.configTabSizeToFit(true);
        shown.models[1].setTitle(QStringLiteral("A much longer title than the other"));
        QVERIFY(bar.frameOf(1).width() > bar.frameOf(0).width() + 50);
        QVERIFY(bar.partsOf(1).title.width() >= bar.fontMetrics().horizontalAdvance(shown.models[1].title()));
    }

    void sharingTheRoom_data() {
        QTest::addColumn<int>("tabs");
        QTest::addColumn<bool>("overflows");
        QTest::newRow("one") << 1 << false;
        QTest::newRow("five") << 5 << false;
        QTest::newRow("twenty") << 20 << false;
        QTest::newRow("a hundred") << 100 << true;
    }

    void sharingTheRoom() {
        QFETCH(int, tabs);
        QFETCH(bool, overflows);
        for (const Qt::LayoutDirection direction : {Qt::LeftToRight, Qt::RightToLeft}) {
            Shown shown(tabs);
            shown.bar.setLayoutDirection(direction);
            shown.bar.setCurrentIndex(tabs - 1);
            const int sign = direction == Qt::RightToLeft ? -1 : 1;
            QRect last;
            int count = 0;
            for (int index = 0; index < tabs; ++index) {
                const QRect frame = shown.bar.frameOf(index);
                if (frame.isNull())
                    continue;
                ++count;
                QVERIFY(shown.bar.rect().contains(frame) && frame.width() >= 32);
                QVERIFY(last.isNull() || (!last.intersects(frame) && (frame.x() - last.x()) * sign > 0));
                last = frame;
            }
            QCOMPARE(count < tabs, overflows);
            QVERIFY(!shown.bar.frameOf(tabs - 1).isNull()); // the current one
            QVERIFY(!shown.bar.partsOf(tabs - 1).icon.isNull());
            const QRect add = shown.button("New Tab")->geometry();
            QVERIFY((add.center().x() - last.center().x()) * sign > 0 && shown.bar.rect().contains(add));
            QCOMPARE(shown.button("All Tabs")->isVisible(), overflows);
            QVERIFY(!overflows || !shown.button("All Tabs")->geometry().intersects(add));
        }
    }

    void overflowMenu() {
        Shown shown(60, 500);
        shown.models[7].setTitle(QStringLiteral("Plans & <b>more</b>"));
        QVERIFY(shown.bar.frameOf(50).isNull());
        QTest::mouseClick(shown.button("All Tabs"), Qt::LeftButton);
        QVERIFY(openMenu());
        QCOMPARE(openMenu()->actions().size(), 60);
        QVERIFY(entry("0")->isChecked() && !entry("1")->isChecked());
        QVERIFY(entry("Plans && <b>more</b>"));
        entry("50")->trigger();
        QCOMPARE(shown.bar.currentIndex(), 50);
        QVERIFY(!shown.bar.frameOf(50).isNull());
        shown.bar.configUseOverflowMenu(false);
        QVERIFY(!shown.button("All Tabs")->isVisible() && !shown.bar.frameOf(50).isNull());
    }

    void addTabButton() {
        Shown shown(2);
        QSignalSpy added(&shown.bar, &TabBar::addTabRequested);
        QAbstractButton* add = shown.button("New Tab");
        QTest::mouseClick(add, Qt::LeftButton);
        QCOMPARE(added.count(), 1);
        QTest::mouseDClick(&shown.bar, Qt::LeftButton, {}, shown.bar.rect().center() + QPoint(200, 0));
        QCOMPARE(added.count(), 2);
        QTest::mouseDClick(&shown.bar, Qt::LeftButton, {}, shown.middle(1));
        QCOMPARE(added.count(), 2);
        const int before = add->x();
        shown.bar.removeTab(0);
        QVERIFY(add->x() < before);
        shown.bar.configAddTabButton(false);
        QVERIFY(!add->isVisible());
    }

    void closeButtonOnHoverOnly() {
        Shown shown(3);
        TabBar& bar = shown.bar;
        QVERIFY(!shown.showsClose(0) && !shown.showsClose(1));
        shown.moveWith(Qt::NoButton, shown.middle(1));
        QVERIFY(!shown.showsClose(0) && shown.showsClose(1));
        shown.moveWith(Qt::NoButton, bar.rect().center() + QPoint(250, 0));
        QVERIFY(!shown.showsClose(1));
        bar.clearFocus();
        bar.setFocus(Qt::TabFocusReason);
        QVERIFY(shown.showsClose(0) && !shown.showsClose(1));
        bar.clearFocus();
        bar.configOnlyShowCloseOnHover(false);
        QVERIFY(shown.showsClose(0) && shown.showsClose(1));
        shown.models[1].setHasCloseButton(false);
        QVERIFY(!shown.showsClose(1));
    }

    // Every way to close a tab obeys the same options.
    void closing() {
        Shown shown(3);
        TabBar& bar = shown.bar;
        QSignalSpy closed(&bar, &TabBar::closeRequested);
        const auto closedTabs = [&](int index) {
            closed.clear();
            shown.clickClose(index);
            QTest::mouseClick(&bar, Qt::MiddleButton, {}, shown.middle(index));
            if (index == bar.currentIndex())
                QTest::keyClick(&bar, Qt::Key_Delete);
            QString tabs;
            for (const QList<QVariant>& arguments : closed)
                tabs += QString::number(arguments.first().toInt());
            return tabs;
        };
        QCOMPARE(closedTabs(1), QStringLiteral("11"));
        QCOMPARE(bar.currentIndex(), 0); // closing does not select
        QCOMPARE(closedTabs(0), QStringLiteral("000"));
        bar.configAllowBackgroundClosing(false);
        QCOMPARE(closedTabs(0), QStringLiteral("000"));
        QTest::mouseClick(&bar, Qt::MiddleButton, {}, shown.middle(1));
        QCOMPARE(closed.count(), 3);
        bar.configAllowBackgroundClosing(true);
        bar.configDisableTabClose(true);
        QTest::mouseClick(&bar, Qt::MiddleButton, {}, shown.middle(0));
        QTest::keyClick(&bar, Qt::Key_Delete);
        QCOMPARE(closed.count(), 3);
        bar.configDisableTabClose(false);

        bar.removeTab(2);
        bar.removeTab(0);
        QVERIFY(!bar.mayClose(0));
        QTest::keyClick(&bar, Qt::Key_Delete);
        QCOMPARE(closed.count(), 3);
        bar.configCanCloseOnlyTab(true);
        QCOMPARE(closedTabs(0), QStringLiteral("000"));
        // Let go beside the button, it is not a click.
        shown.moveWith(Qt::NoButton, shown.middle(0));
        QTest::mousePress(&bar, Qt::LeftButton, {}, bar.partsOf(0).closeButton.center());
        QTest::mouseRelease(&bar, Qt::LeftButton, {}, shown.middle(0));
        QCOMPARE(closed.count(), 3);
    }

    void hiddenForSingleTab() {
        Shown shown(1);
        shown.bar.configHideForSingleTab(true);
        QVERIFY(!shown.bar.isVisible());
        shown.bar.addModel(shown.models.emplace_back(QStringLiteral("1"), QUrl()));
        QVERIFY(shown.bar.isVisible());
        shown.bar.removeTab(1);
        QVERIFY(!shown.bar.isVisible());
        shown.bar.configHideForSingleTab(false);
        QVERIFY(shown.bar.isVisible());
    }

    void dragging_data() {
        QTest::addColumn<Qt::LayoutDirection>("direction");
        QTest::newRow("left to right") << Qt::LeftToRight;
        QTest::newRow("right to left") << Qt::RightToLeft;
    }

    // A tab goes where it is dragged, but never out of the bar.
    void dragging() {
        QFETCH(Qt::LayoutDirection, direction);
        Shown shown(4);
        TabBar& bar = shown.bar;
        bar.setLayoutDirection(direction);
        QSignalSpy moved(&bar, &QTabBar::tabMoved);
        QTest::mousePress(&bar, Qt::LeftButton, {}, shown.middle(1));
        QCOMPARE(bar.currentIndex(), 1);
        const QPoint third = shown.middle(2);
        shown.moveWith(Qt::LeftButton, (shown.middle(1) + third) / 2);
        shown.moveWith(Qt::LeftButton, third);
        QCOMPARE(shown.order(), QStringLiteral("0213"));
        QCOMPARE(bar.currentIndex(), 2);
        const QPoint outside(direction == Qt::LeftToRight ? -400 : 1400, -300);
        shown.moveWith(Qt::LeftButton, outside);
        QVERIFY(bar.rect().contains(bar.partsOf(0).icon) && bar.frameOf(0).contains(bar.partsOf(0).icon));
        QTest::mouseRelease(&bar, Qt::LeftButton, {}, outside);
        QCOMPARE(shown.order(), QStringLiteral("1023"));
        QCOMPARE(moved.count(), 3);
        QCOMPARE(bar.currentIndex(), 0);
        shown.moveWith(Qt::NoButton, third);
        QCOMPARE(moved.count(), 3);
    }

    // Held beyond the end of the row, it goes on among the tabs that are not shown.
    void draggingBeyondTheRow() {
        Shown shown(40, 400);
        QTest::mousePress(&shown.bar, Qt::LeftButton, {}, shown.middle(0));
        const QPoint beyond(shown.bar.width() + 50, 10);
        shown.moveWith(Qt::LeftButton, beyond - QPoint(20, 0));
        shown.moveWith(Qt::LeftButton, beyond);
        QTRY_COMPARE(shown.bar.indexOf(shown.models[0]), 12);
        QVERIFY(!shown.bar.frameOf(12).isNull());
        shown.bar.removeTab(12); // from under the hand
        QCOMPARE(shown.bar.count(), 39);
        shown.moveWith(Qt::LeftButton, beyond);
        QTest::mouseRelease(&shown.bar, Qt::LeftButton, {}, beyond);
    }

    void scrubbing() {
        Shown shown(5);
        TabBar& bar = shown.bar;
        QSignalSpy closed(&bar, &TabBar::closeRequested);
        const auto scrub = [&] {
            QTest::mousePress(&bar, Qt::MiddleButton, {}, shown.middle(0));
            shown.moveWith(Qt::MiddleButton, shown.middle(2));
            shown.moveWith(Qt::MiddleButton, shown.middle(0));
            shown.moveWith(Qt::MiddleButton, shown.middle(3));
            QTest::mouseRelease(&bar, Qt::MiddleButton, {}, shown.middle(3));
        };
        QSignalSpy selected(&bar, &QTabBar::currentChanged);
        scrub();
        QCOMPARE(selected.count(), 3);
        QCOMPARE(bar.currentIndex(), 3);
        QCOMPARE(closed.count(), 0);
        shown.wheel({0, 120});
        QCOMPARE(bar.currentIndex(), 2);
        for (int part = 0; part < 4; ++part) // a touch pad's small turns
            shown.wheel({0, -30});
        QCOMPARE(bar.currentIndex(), 3);
        shown.wheel({0, -1200});
        QCOMPARE(bar.currentIndex(), 4);
        bar.configAllowsScrubbing(false);
        shown.wheel({0, 120});
        scrub();
        QCOMPARE(bar.currentIndex(), 4);
    }

    void keys() {
        Shown shown(3);
        TabBar& bar = shown.bar;
        const auto after = [&](Qt::Key key) {
            QTest::keyClick(&bar, key);
            return bar.currentIndex();
        };
        QCOMPARE(after(Qt::Key_Left), 0);
        QCOMPARE(after(Qt::Key_Right), 1);
        QCOMPARE(after(Qt::Key_End), 2);
        QCOMPARE(after(Qt::Key_Home), 0);
        bar.setLayoutDirection(Qt::RightToLeft);
        QCOMPARE(after(Qt::Key_Left), 1);
    }

    void contextMenu() {
        Shown shown(3);
        TabBar& bar = shown.bar;
        QSignalSpy closed(&bar, &TabBar::closeRequested);
        QSignalSpy others(&bar, &TabBar::closeOthersRequested);
        QSignalSpy reloaded(&bar, &TabBar::reloadRequested);
        const auto open = [&](QPoint at) {
            closeMenu();
            shown.send(QContextMenuEvent(QContextMenuEvent::Mouse, at, bar.mapToGlobal(at)));
        };
        open(shown.middle(2));
        bar.moveTab(2, 0); // the menu means the tab, not its place
        entry("&Reload")->trigger();
        QCOMPARE(reloaded.takeFirst(), QList<QVariant>{0});
        open(shown.middle(1));
        entry("&Close")->trigger();
        QCOMPARE(closed.takeFirst(), QList<QVariant>{1});
        open(shown.middle(1));
        entry("Close &Others")->trigger();
        QCOMPARE(others.takeFirst(), QList<QVariant>{1});
        open(shown.middle(1));
        bar.removeTab(1);
        entry("&Close")->trigger();
        QCOMPARE(closed.count(), 0);
        bar.removeTab(1);
        open(shown.middle(0));
        QVERIFY(!entry("&Close")->isEnabled() && !entry("Close &Others")->isEnabled());
        open(bar.rect().center() + QPoint(200, 0));
        QVERIFY(entry("&New Tab") && !entry("&Close"));
    }

    void animation_data() {
        QTest::addColumn<bool>("isOn");
        QTest::addColumn<int>("desktopDuration");
        QTest::newRow("on") << true << 200;
        QTest::newRow("off") << false << 200;
        QTest::newRow("off by the desktop") << true << 0;
    }

    void animation() {
        QFETCH(bool, isOn);
        QFETCH(int, desktopDuration);
        QApplication::setStyle(new AnimationStyle(desktopDuration));
        Shown shown(3);
        shown.bar.configAutomaticallyAnimates(isOn);
        const bool slides = isOn && desktopDuration > 0;
        const auto iconIsInPlace = [&] { return shown.bar.frameOf(0).contains(shown.bar.partsOf(0).icon); };
        shown.bar.removeTab(0);
        QCOMPARE(iconIsInPlace(), !slides);
        QTRY_VERIFY(iconIsInPlace());
        QApplication::setStyle(new AnimationStyle(200));
    }

    // One timer, and only while one that turns can be seen; what it paints is the spinner and nothing else.
    void spinner() {
        Shown shown(40, 500);
        TabBar& bar = shown.bar;
        shown.models[39].setProcessing(true); // there is no room for it
        QVERIFY(!bar.isSpinning());
        Painted painted(bar);
        shown.models[1].setProcessing(true);
        QVERIFY(bar.isSpinning());
        painted.taken();
        QRegion turned;
        QVERIFY(QTest::qWaitFor([&] { return !(turned = painted.taken()).isEmpty(); }));
        QCOMPARE(turned.boundingRect(), bar.partsOf(1).icon);
        bar.hide();
        QVERIFY(!bar.isSpinning());
        bar.show();
        QVERIFY(bar.isSpinning());
        shown.models[1].setProcessing(false);
        QVERIFY(!bar.isSpinning());
        bar.setCurrentIndex(39);
        QVERIFY(bar.isSpinning());
        bar.removeTab(39);
        QVERIFY(!bar.isSpinning());
    }

    void repaintsOnlyWhatChanged() {
        Shown shown(5);
        TabBar& bar = shown.bar;
        Painted painted(bar);
        const auto isOnly = [&](std::initializer_list<int> tabs) {
            QRegion allowed;
            for (const int tab : tabs)
                allowed += bar.frameOf(tab).adjusted(-1, 0, 1, 0);
            const QRegion region = painted.taken();
            return !region.isEmpty() && region.subtracted(allowed).isEmpty();
        };
        QVERIFY(painted.taken().isEmpty());
        shown.models[3].setTitle(QStringLiteral("new"));
        QVERIFY(isOnly({3}));
        shown.models[3].setTitle(QStringLiteral("new"));
        shown.models[3].setIcon(shown.models[3].icon());
        QVERIFY(painted.taken().isEmpty());
        shown.moveWith(Qt::NoButton, shown.middle(1));
        QVERIFY(isOnly({1}));
        shown.moveWith(Qt::NoButton, shown.middle(1) - QPoint(5, 0));
        QVERIFY(painted.taken().isEmpty());
        shown.moveWith(Qt::NoButton, shown.middle(2));
        QVERIFY(isOnly({1, 2}));
        bar.removeTab(4);
        painted.taken();
        shown.models[4].setTitle(QStringLiteral("gone")); // it is no business of the bar any more
        QVERIFY(painted.taken().isEmpty());
    }

    void texts() {
        DemoModel model(QStringLiteral(" a\n&b \u202Efdp.\u2066<b>exe\u2069 "), QUrl());
        QCOMPARE(tabLabel(model), QStringLiteral("a &b fdp.<b>exe"));
        QCOMPARE(toolTipOf(model), QStringLiteral("<p>a &amp;b fdp.&lt;b&gt;exe</p>"));
        QCOMPARE(tabLabel(DemoModel(QStringLiteral("\u200F\n"), QUrl())), QStringLiteral("Untitled"));
        QCOMPARE(tabLabel(DemoModel(QString(100'000, QLatin1Char('x')), QUrl())).size(), 300);
        Shown shown(1);
        DemoModel& shownModel = shown.models[0];
        shownModel.setShowObjectCount(true);
        shownModel.setObjectCount(1);
        QCOMPARE(shown.bar.accessibleTabName(0), QStringLiteral("0, 1 item"));
        shownModel.setObjectCount(2);
        shownModel.setProcessing(true);
        shownModel.setEdited(true);
        QCOMPARE(shown.bar.accessibleTabName(0), QStringLiteral("0, loading, 2 items, edited"));
        QVERIFY(!shown.bar.partsOf(0).badge.isNull() && !shown.bar.partsOf(0).editedMark.isNull());
        const QPoint at = shown.middle(0);
        shown.send(QHelpEvent(QEvent::ToolTip, at, shown.bar.mapToGlobal(at)));
        QCOMPARE(QToolTip::text(), QStringLiteral("<p>0</p>"));
        QToolTip::hideText();
    }

    void accessibility() {
        Shown shown(30, 400);
        TabBar& bar = shown.bar;
        QSignalSpy closed(&bar, &TabBar::closeRequested);
        QAccessibleInterface* list = QAccessible::queryAccessibleInterface(&bar);
        QCOMPARE(list->role(), QAccessible::PageTabList);
        QCOMPARE(list->childCount(), 32);
        QCOMPARE(list->child(31)->text(QAccessible::Name), QStringLiteral("All Tabs"));
        QAccessibleInterface* second = list->child(1);
        QCOMPARE(second->text(QAccessible::Name), QStringLiteral("1"));
        QCOMPARE(list->childAt(second->rect().center().x(), second->rect().center().y()), second);
        QVERIFY(!second->state().selected && !second->state().offscreen && list->child(29)->state().offscreen);
        second->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QCOMPARE(bar.currentIndex(), 1);
        QVERIFY(second->state().selected);
        bar.moveTab(1, 0);
        QCOMPARE(list->indexOfChild(second), 0);
        second->actionInterface()->doAction(QStringLiteral("Close"));
        QCOMPARE(closed.takeFirst(), QList<QVariant>{0});
        bar.removeTab(0);
        QVERIFY(!second->isValid() && list->indexOfChild(second) < 0);
        QVERIFY(second->actionInterface()->actionNames().isEmpty());
    }

    void drops() {
        Shown shown(3);
        TabBar& bar = shown.bar;
        QSignalSpy files(&bar, &TabBar::filesDropped);
        QSignalSpy addresses(&bar, &TabBar::addressDropped);
        const auto drop = [&](const QMimeData& data, QPoint at) {
            QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
            enter.ignore();
            QCoreApplication::sendEvent(&bar, &enter);
            if (!enter.isAccepted())
                return false;
            shown.send(QDragMoveEvent(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier));
            shown.send(QDropEvent(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier));
            return true;
        };
        QMimeData data;
        data.setData(QStringLiteral("text/uri-list"), "file:///tmp/a%20b\r\nhttps://a.example/\r\nfile:///tmp/%ff\r\n");
        QVERIFY(drop(data, shown.middle(1)));
        QCOMPARE(files.takeFirst(),
                 (QList<QVariant>{1, QVariant::fromValue(QList<QByteArray>{"/tmp/a b", "/tmp/\xff"})}));
        QMimeData text;
        text.setText(QStringLiteral(" https://a.example/x\n"));
        QVERIFY(drop(text, bar.rect().center() + QPoint(250, 0)));
        QCOMPARE(addresses.takeFirst(), (QList<QVariant>{-1, QUrl(QStringLiteral("https://a.example/x"))}));
        for (const char* useless : {"some words", "javascript:alert(1)", "file://elsewhere.example/tmp/a", ""}) {
            text.setText(QLatin1String(useless));
            QVERIFY2(!drop(text, shown.middle(1)), useless);
        }
        // A drag that stays above a tab shows its page.
        text.setText(QStringLiteral("https://a.example/"));
        shown.send(QDragEnterEvent(shown.middle(2), Qt::CopyAction, &text, Qt::LeftButton, Qt::NoModifier));
        shown.send(QDragMoveEvent(shown.middle(2), Qt::CopyAction, &text, Qt::LeftButton, Qt::NoModifier));
        QCOMPARE(bar.currentIndex(), 0);
        QTRY_COMPARE(bar.currentIndex(), 2);
        shown.send(QDragLeaveEvent());
    }

    // Whoever hears that another tab is current finds that tab's model, also while tabs come and go.
    void modelsFollowTheirTabs() {
        Shown shown(0);
        QStringList current;
        connect(&shown.bar, &QTabBar::currentChanged, &shown.bar, [&](int index) {
            const DemoModel* model = shown.bar.modelAt(index);
            current += model ? model->title() : QStringLiteral("-");
        });
        for (const char* title : {"a", "b", "c"})
            shown.bar.addModel(shown.models.emplace_back(QLatin1String(title), QUrl()));
        shown.bar.setCurrentIndex(1);
        shown.bar.removeTab(1);
        shown.bar.removeTab(0);
        shown.bar.removeTab(0);
        QCOMPARE(current.join(QString()), QStringLiteral("abcc-"));
        DemoModel* last = new DemoModel(QStringLiteral("d"), QUrl());
        shown.bar.addModel(*last);
        delete last;
        QVERIFY(!shown.bar.grab().isNull() && !shown.bar.modelAt(0) && !shown.bar.mayClose(0));
        shown.bar.removeTab(0);
    }
};

QTEST_MAIN(TabBarTest)
#include "tst_tabbar.moc"
