// The popover's window: when it goes away, how high it is, what its header shows, and that every key finds its way.
#include "popover/window/CustomButton.h"
#include "popover/window/PopoverWindow.h"
#include "popover/window/ctmView.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/support/Settled.h"
#include "widgets/ActivityIndicator.h"
#include "widgets/QuotaBar.h"

#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

#include <limits>

using namespace quenby;
using namespace quenby::testing;

namespace {

const QString heightKey = QStringLiteral("heightForStatusMenu");
const AccountDisplay ada{QStringLiteral("Ada"), QStringLiteral("ada@example.com"), QStringLiteral("37% of 15 GB used"),
                         37};

// At the edges of the screen, in its middle.
QRect anchorAtTop() { return {QGuiApplication::primaryScreen()->geometry().center().x(), 0, 20, 20}; }
QRect anchorAtBottom() { return anchorAtTop().translated(0, QGuiApplication::primaryScreen()->geometry().bottom()); }

class PaintCounter final : public QObject {
public:
    int count = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
};

} // namespace

class PopoverWindowTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        defaults_ = std::make_unique<FakeDefaults>();
        restart();
    }
    void cleanup() {
        window_.reset();
        defaults_.reset();
    }

    void keptHeight_data() {
        QTest::addColumn<QVariant>("kept");
        QTest::addColumn<int>("height");
        QTest::newRow("absent") << QVariant() << 432;
        QTest::newRow("number") << QVariant(301.4F) << 301;
        QTest::newRow("truth") << QVariant(QStringLiteral("true")) << 432;
        QTest::newRow("not a number") << QVariant(QStringLiteral("nan")) << 432;
        QTest::newRow("endless") << QVariant(std::numeric_limits<double>::infinity()) << 432;
        QTest::newRow("too low") << QVariant(-3) << 250;
        QTest::newRow("too high") << QVariant(1e12) << 550;
    }
    void keptHeight() {
        QFETCH(QVariant, kept);
        QFETCH(int, height);
        defaults_->setValueForKey(heightKey, kept);
        open();
        QCOMPARE(window_->frame().size(), QSize(330, height));
        // Only the grip chooses a height.
        QCOMPARE(defaults_->contains(heightKey), kept.isValid());
    }

    void gripMovesTheEdgeAwayFromTheAnchor_data() {
        QTest::addColumn<QRect>("anchor");
        QTest::addColumn<int>("sign"); // of a pull that makes it higher
        QTest::newRow("below the anchor") << anchorAtTop() << 1;
        QTest::newRow("above the anchor") << anchorAtBottom() << -1;
    }
    void gripMovesTheEdgeAwayFromTheAnchor() {
        QFETCH(QRect, anchor);
        QFETCH(int, sign);
        open(anchor);
        const QRect before = window_->frame();
        const auto fixedEdge = [this, sign] { return sign > 0 ? window_->frame().top() : window_->frame().bottom(); };
        const int fixed = fixedEdge();
        QVERIFY(sign > 0 ? grip().y() > window_->height() / 2 : grip().y() < window_->height() / 2);

        const QPoint start = press();
        QSet<QByteArray> cursors;
        for (const auto& [pull, height] :
             {std::pair{10, 442}, {70, 502}, {400, 550}, {0, 432}, {-900, 250}, {-32, 400}}) {
            dragTo(start + QPoint(0, sign * pull));
            QCOMPARE(window_->frame().height(), height);
            QCOMPARE(fixedEdge(), fixed);
            QCOMPARE(window_->frame().x(), before.x());
            QCOMPARE(defaults_->valueForKey(heightKey).toFloat(), float(height));
            const bool isAtLimit = height == 250 || height == 550;
            QCOMPARE(grip().cursor().shape() == Qt::SizeVerCursor, !isAtLimit);
        }
        release(start);

        dragTo(start + QPoint(0, 40)); // nobody holds it any more
        QCOMPARE(window_->frame().height(), 400);
        restart();
        open(anchor);
        QCOMPARE(window_->frame().height(), 400);
    }

    void closesBy_data() {
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
        QTest::newRow("Escape") << Qt::Key_Escape << Qt::KeyboardModifiers(Qt::NoModifier);
        QTest::newRow("Ctrl+W") << Qt::Key_W << Qt::KeyboardModifiers(Qt::ControlModifier);
    }
    void closesBy() {
        QFETCH(Qt::Key, key);
        QFETCH(Qt::KeyboardModifiers, modifiers);
        QSignalSpy visible(window_.get(), &PopoverWindow::visibleChanged);
        open();
        QTest::keyClick(window_->windowHandle(), key, modifiers);
        QVERIFY(!window_->isVisible());
        QCOMPARE(visible, (QList<QVariantList>{{true}, {false}}));
        open();
        QVERIFY(window_->isVisible());
    }

    void closesWhenAnotherWindowIsActive() {
        open();
        QWidget other;
        activate(other);
        QTRY_VERIFY(!window_->isVisible());
    }

    // A menu of its own takes the keys on some desktops; afterwards it matters who has them.
    void staysWhileItsMenuIsOpen() {
        QMenu menu;
        menu.addAction(QStringLiteral("Quit"));
        connect(window_.get(), &PopoverWindow::gearRequested, this,
                [&menu](QWidget& button) { menu.popup(button.mapToGlobal(QPoint(0, 30))); });
        open();
        CustomButton& gear = button(QStringLiteral("Settings"));
        QTest::mouseClick(&gear, Qt::LeftButton);
        QVERIFY(menu.isVisible() && gear.isDown());
        QApplication::setActiveWindow(nullptr);
        QTest::qWait(0);
        QVERIFY(window_->isVisible());
        menu.close();
        QVERIFY(!gear.isDown());
        QTRY_VERIFY(!window_->isVisible());
    }

    // What was pressed in it is released in it, whatever comes in between.
    void staysUntilTheClickIsOver() {
        int requests = 0;
        connect(window_.get(), &PopoverWindow::addRequested, this, [&requests] { ++requests; });
        open();
        CustomButton& add = button(QStringLiteral("Add to the Drive"));
        const QPoint place = add.mapTo(window_.get(), add.rect().center());
        QTest::mousePress(window_->windowHandle(), Qt::LeftButton, {}, place);
        QWidget other;
        activate(other);
        QTest::qWait(0);
        QVERIFY(window_->isVisible());
        QTest::mouseRelease(window_->windowHandle(), Qt::LeftButton, {}, place);
        QCOMPARE(requests, 1);
        QTRY_VERIFY(!window_->isVisible());
    }

    void headerIsPaintedOnlyWhenItChanges() {
        PaintCounter paints;
        window_->setAccount(ada);
        open();
        for (QWidget* child : window_->findChildren<QWidget*>())
            child->installEventFilter(&paints);
        window_->installEventFilter(&paints);
        // What opening still has to paint.
        QVERIFY(settles([&paints] { return std::exchange(paints.count, 0) == 0; }));
        window_->setAccount(ada);
        window_->setStatusText({});
        window_->setActivityIndicator(false);
        QTest::qWait(0);
        QCOMPARE(paints.count, 0);
        AccountDisplay fuller = ada;
        fuller.percentUsed = 38;
        window_->setAccount(fuller);
        QTRY_VERIFY(paints.count > 0);
    }

    void headerTexts() {
        AccountDisplay account = ada;
        account.userName = QStringLiteral("Augusta Ada Byron King, Countess of Lovelace");
        account.accountName = QString(300, QLatin1Char('a')) + QStringLiteral("@example.com");
        window_->setAccount(account);
        open();
        QCOMPARE(window_->frame().width(), 330);
        for (const QString& text : {account.userName, account.accountName, account.quota}) {
            const QLabel* const label = labelWith(text);
            QVERIFY2(label && label->isVisible(), qPrintable(text));
            const QRect seen(label->mapTo(window_.get(), QPoint(0, 0)), label->size());
            QVERIFY2(window_->rect().contains(seen) && seen.bottom() < 76, qPrintable(text));
        }
        const auto* const bar = window_->findChild<QuotaBar*>();
        QVERIFY(bar->isVisible() && bar->value() == 37);

        const QString nobody = QStringLiteral("No User Login");
        window_->setAccount({nobody, nobody, QStringLiteral("Data not available"), {}});
        QVERIFY(!bar->isVisible());
        QVERIFY(labelWith(nobody) && labelWith(QStringLiteral("Data not available"))->isVisible());
    }

    void statusStandsInForTheList() {
        open();
        auto* const wheel = window_->findChild<ActivityIndicator*>();
        QVERIFY(list_->isVisible() && !wheel->isVisible());
        QCOMPARE(list_->mapTo(window_.get(), QPoint(0, 0)).y(), 76);
        window_->setStatusText(QStringLiteral("Fetching Data..."));
        window_->setActivityIndicator(true);
        QVERIFY(!list_->isVisible() && wheel->isVisible());
        // The keys find the list again, and nobody sees that they were elsewhere.
        QCOMPARE(QApplication::focusWidget(), &button(QStringLiteral("Add to the Drive")));
        QVERIFY(!window_->testAttribute(Qt::WA_KeyboardFocusChange));
        QVERIFY(labelWith(QStringLiteral("Fetching Data..."))->isVisible());
        window_->setStatusText({});
        QVERIFY(list_->isVisible() && wheel->isVisible());
        QCOMPARE(QApplication::focusWidget(), list_);
        window_->setActivityIndicator(false);
        QVERIFY(list_->isVisible() && !wheel->isVisible());
    }

    void keyboard() {
        int adds = 0;
        int gears = 0;
        connect(window_.get(), &PopoverWindow::addRequested, this, [&adds] { ++adds; });
        connect(window_.get(), &PopoverWindow::gearRequested, this, [&gears] { ++gears; });
        open();
        QCOMPARE(QApplication::focusWidget(), list_);
        QTest::keyClick(window_->windowHandle(), Qt::Key_Tab);
        QTest::keyClick(window_->windowHandle(), Qt::Key_Return);
        QCOMPARE(adds, 1);
        QTest::keyClick(window_->windowHandle(), Qt::Key_Tab);
        QTest::keyClick(window_->windowHandle(), Qt::Key_Space);
        QCOMPARE(gears, 1);
        QTest::keyClick(window_->windowHandle(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), list_);
        // The focus does not get lost with the list.
        window_->setStatusText(QStringLiteral("Fetching Data..."));
        QVERIFY(QApplication::focusWidget() && QApplication::focusWidget()->isVisible());
    }

    // The ground is a list's, in the desktop's colours, also when these change.
    void followsThePalette() {
        const QPalette before = QApplication::palette();
        QPalette dark = before;
        dark.setColor(QPalette::Base, QColor(20, 21, 22));
        dark.setColor(QPalette::Text, QColor(240, 241, 242));
        open();
        QApplication::setPalette(dark);
        QTRY_COMPARE(window_->grab().toImage().pixelColor(40, 3), QColor(20, 21, 22));
        QCOMPARE(button(QStringLiteral("Settings")).palette().color(QPalette::WindowText), QColor(240, 241, 242));
        QApplication::setPalette(before);
        QTRY_COMPARE(window_->grab().toImage().pixelColor(40, 3), before.color(QPalette::Base));
    }

private:
    // The window as after a new start of the program: the settings stay.
    void restart() {
        list_ = new QWidget;
        list_->setFocusPolicy(Qt::StrongFocus);
        window_ = std::make_unique<PopoverWindow>(list_, *defaults_);
    }
    void open(const QRect& anchor = anchorAtTop()) {
        window_->open(anchor);
        QVERIFY(QTest::qWaitForWindowActive(window_.get()));
    }
    static void activate(QWidget& window) {
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
    }

    ctmView& grip() { return *window_->findChild<ctmView*>(); }
    // Returns where on the desktop.
    QPoint press() {
        const QPoint place = grip().rect().center();
        QTest::mousePress(&grip(), Qt::LeftButton, {}, place);
        return grip().mapToGlobal(place);
    }
    void dragTo(const QPoint& place) { QTest::mouseMove(&grip(), grip().mapFromGlobal(place)); }
    void release(const QPoint& place) { QTest::mouseRelease(&grip(), Qt::LeftButton, {}, grip().mapFromGlobal(place)); }

    CustomButton& button(const QString& name) {
        for (CustomButton* candidate : window_->findChildren<CustomButton*>()) {
            if (candidate->accessibleName() == name)
                return *candidate;
        }
        qFatal("no such button");
    }
    QLabel* labelWith(const QString& text) {
        for (QLabel* label : window_->findChildren<QLabel*>()) {
            if (label->text() == text)
                return label;
        }
        return nullptr;
    }

    std::unique_ptr<FakeDefaults> defaults_;
    std::unique_ptr<PopoverWindow> window_;
    QWidget* list_ = nullptr;
};

QTEST_MAIN(PopoverWindowTest)
#include "tst_popoverwindow.moc"
