// The preferences window on a real desktop: its heights, the keyboard, and what it tells.
#include "core/DefaultsKeys.h"
#include "preferences/account/AccountPane.h"
#include "preferences/account/OwnClient.h"
#include "preferences/account/OwnClientDialog.h"
#include "preferences/general/ScreenshotFoldersDialog.h"
#include "preferences/shortcut/CustomShortcut.h"
#include "preferences/window/PaneBar.h"
#include "preferences/window/PreferenceWindow.h"
#include "preferences/window/PreferenceWindowController.h"
#include "tests/desktop/support/DesktopInput.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/platform/fakes/FakeFilePanels.h"
#include "tests/platform/fakes/FakeGlobalShortcuts.h"
#include "tests/platform/fakes/FakeOpener.h"
#include "tests/platform/fakes/FakeScreenshotQuery.h"
#include "tests/support/Settled.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProxyStyle>
#include <QScreen>
#include <QScrollBar>
#include <QSet>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <functional>

using namespace quenby;
using namespace quenby::testing;

namespace {

const QString keysQ = QStringLiteral("Ctrl+Alt+Q");

class FakeOwnClients final : public OwnClients {
public:
    bool isProgramsOwn() const override { return false; }
    QString clientID() const override { return {}; }
    QString decidedElsewhere() const override { return {}; }
    CompletionTicket tryClient(const OwnClient&, QObject* context, Tried tried) override {
        return CompletionGate<const MaybeError&>(context, std::move(tried)).ticket();
    }
    void use(const std::optional<OwnClient>&) override {}
    bool isSignedIn() const override { return true; }
};

// How long the desktop lets things move.
class TimedStyle final : public QProxyStyle {
public:
    explicit TimedStyle(int duration)
        : duration_(duration) {}
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override {
        return hint == SH_Widget_Animation_Duration ? duration_ : QProxyStyle::styleHint(hint, option, widget, data);
    }

private:
    const int duration_; // milliseconds
};

// Where something in the window has been, as long as this lives.
class Places final : public QObject {
public:
    Places(QWidget* widget, QWidget* window)
        : widget_(widget)
        , window_(window) {
        window->installEventFilter(this);
    }
    QSet<QPoint> seen;

private:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint || event->type() == QEvent::Resize)
            seen.insert(widget_->mapTo(window_, QPoint()));
        return false;
    }
    QWidget* widget_;
    QWidget* window_;
};

struct Stage {
    explicit Stage(bool isShortcutOn = false) {
        defaults.setValueForKey(defaultsKey::customShortcut, keysQ);
        defaults.setValueForKey(defaultsKey::customShortcutEnabled, isShortcutOn);
        controller = std::make_unique<PreferenceWindowController>(PreferenceWindowController::Services{
            defaults,
            panels,
            opener,
            query,
            shortcut,
            clients,
            ProgramFacts{{}, QStringLiteral("Quenby"), QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("©")},
            {},
            {}});
        controller->setAccount({QStringLiteral("Ada"), QStringLiteral("ada@example.org"), {}, {}}, true);
    }
    bool show() {
        controller->show();
        return QTest::qWaitForWindowActive(&window());
    }
    QWidget& window() { return *controller->window(); }
    QAbstractButton* button(const char* text) {
        for (auto* candidate : window().findChildren<QAbstractButton*>()) {
            if (candidate->text().remove(QLatin1Char('&')) == QString::fromUtf8(text))
                return candidate;
        }
        qFatal("there is no %s", text);
    }
    // The window, as the window manager has it, in logical pixels.
    bool comesToRestAt(int height) {
        return settles([&] { return window().height() == height && isAsHighAs(height); });
    }
    bool isAsHighAs(int height) {
        return input.geometry(WindowId(window().winId())).height() == qRound(height * window().devicePixelRatio());
    }
    void click(QWidget* widget) {
        input.click(widget->mapToGlobal(widget->rect().center()) * widget->devicePixelRatio());
    }

    DesktopInput input;
    FakeDefaults defaults;
    FakeFilePanels panels;
    FakeOpener opener;
    FakeScreenshotQuery query;
    FakeGlobalShortcuts shortcuts;
    CustomShortcut shortcut{shortcuts, defaults};
    FakeOwnClients clients;
    std::unique_ptr<PreferenceWindowController> controller;
};

// As an assistive program reads it. A combo box has its value there, and its name from its caption.
QString nameOf(QWidget* widget) {
    return widget->accessibleName().isEmpty() ? QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name)
                                              : widget->accessibleName();
}

// What the Tab key reaches, in its order, until it comes round.
QList<QWidget*> tabOrder(QWidget& window) {
    QList<QWidget*> order;
    while (window.focusWidget() && !order.contains(window.focusWidget())) {
        order += window.focusWidget();
        QTest::keyClick(window.focusWidget(), Qt::Key_Tab);
    }
    return order;
}

// What the user could do in the pane that is seen.
QList<QWidget*> controlsIn(QWidget& window) {
    QList<QWidget*> controls;
    for (QWidget* widget : window.findChildren<QWidget*>()) {
        const bool isControl = qobject_cast<const QAbstractButton*>(widget) || qobject_cast<const QComboBox*>(widget) ||
                               qobject_cast<const QLineEdit*>(widget);
        const QWidget* parent = widget->parentWidget();
        const bool isPart = qobject_cast<const PaneBar*>(parent) || qobject_cast<const QLineEdit*>(parent);
        if (isControl && !isPart && widget->isVisible() && widget->isEnabled())
            controls += widget;
    }
    return controls;
}

} // namespace

class tst_preferencewindow : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { DesktopInput().savePictureOfFailure(); }

    void heightsWithTheTopEdgeAtRest() {
        Stage stage;
        QVERIFY(stage.show());
        QVERIFY(stage.comesToRestAt(332));
        const QPoint corner = stage.window().frameGeometry().topLeft();
        const int width = stage.window().width();
        const QRect room = stage.window().screen()->availableGeometry();
        QVERIFY(qAbs(stage.window().geometry().center().x() - room.center().x()) < 10);

        const std::pair<const char*, int> panes[] = {{"Account", 230}, {"About", 260}, {"General", 332}};
        for (const auto& [name, height] : panes) {
            stage.click(stage.button(name));
            QVERIFY2(stage.comesToRestAt(height), name);
            QCOMPARE(stage.window().frameGeometry().topLeft(), corner);
            QCOMPARE(stage.window().width(), width);
            QCOMPARE(stage.window().minimumSize(), stage.window().maximumSize());
        }
    }

    void switchingInTheMiddleEndsRightAndNothingJumps() {
        TimedStyle slow(5'000);
        TimedStyle usual(200);
        Stage stage;
        QVERIFY(stage.show() && stage.comesToRestAt(332));
        const Places places(stage.button("Sign Out"), &stage.window());
        stage.window().setStyle(&slow);
        stage.controller->accountClick();
        QTRY_VERIFY(stage.window().height() < 330);
        QVERIFY(stage.window().height() > 230);
        stage.window().setStyle(&usual);
        stage.controller->aboutClick();
        stage.controller->accountClick();
        QVERIFY(stage.comesToRestAt(230));
        QCOMPARE(places.seen.size(), 1);

        stage.window().setStyle(&slow);
        stage.controller->generalClick();
        QTRY_VERIFY(stage.window().height() > 232);
        stage.window().setStyle(&usual);
        stage.controller->accountClick();
        stage.controller->generalClick();
        QVERIFY(stage.comesToRestAt(332));
    }

    void withoutAnimationsItIsThereAtOnce() {
        TimedStyle still(0);
        Stage stage;
        QVERIFY(stage.show());
        stage.window().setStyle(&still);
        stage.controller->aboutClick();
        QCOMPARE(stage.window().height(), 260);
        QVERIFY(stage.comesToRestAt(260));
    }

    void aPaneGetsWhatItNeeds() {
        PreferenceWindow window;
        auto* tall = new QWidget;
        window.addPane({QStringLiteral("Tall"), {}, tall, 200});
        auto* view = new QWidget;
        auto* lines = new QLabel(view);
        auto* words = new QLabel(QStringLiteral("word ").repeated(200), view);
        words->setWordWrap(true);
        auto* outer = new QVBoxLayout(view);
        auto* inner = new QHBoxLayout;
        inner->addWidget(lines);
        outer->addLayout(inner);
        outer->addWidget(words);
        window.addPane({QStringLiteral("Texts"), {}, view, 200});
        window.showPane(0);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        const auto restsAt = [&](int height) { return settles([&] { return window.height() == height; }); };
        QVERIFY(restsAt(200));
        const int bar = 200 - tall->height();
        tall->setMinimumHeight(400);
        QVERIFY(restsAt(400 + bar));
        tall->setMinimumHeight(50);
        QVERIFY(restsAt(200));
        tall->setMinimumHeight(5000); // of which the screen shows a part, and the rest by scrolling
        QVERIFY(settles([&] { return window.height() > 400 && tall->height() == 5000; }));
        QVERIFY(window.frameGeometry().height() <= window.screen()->availableGeometry().height());
        tall->setMinimumSize(5000, 250); // likewise, with all of its height above the scroll bar
        const auto* viewport = tall->parentWidget();
        QVERIFY(settles([&] { return tall->width() == 5000 && viewport->height() == 250; }));
        QVERIFY(window.width() <= window.screen()->availableGeometry().width());
        tall->setMinimumSize(0, 0);
        QVERIFY(restsAt(200));

        lines->setText(QStringLiteral("line\n").repeated(20)); // while nobody sees it, deep in the view's layouts
        window.showPane(1);
        QVERIFY(settles([&] { return lines->height() >= lines->sizeHint().height(); }));
        QVERIFY(restsAt(view->heightForWidth(window.width()) + bar));
        const auto bars = window.findChildren<QScrollBar*>();
        QVERIFY(std::none_of(bars.begin(), bars.end(), [](QScrollBar* scroll) { return scroll->isVisible(); }));
    }

    void keyboard() {
        Stage stage(true);
        QVERIFY(stage.show());
        stage.input.key(QStringLiteral("Tab"));
        QTRY_VERIFY(stage.button("General")->hasFocus());
        const QList<QWidget*> order = tabOrder(stage.window());
        QCOMPARE(nameOf(order.at(1)), QStringLiteral("Show the icon"));
        QCOMPARE(nameOf(order.last()), QStringLiteral("Proxy"));

        const std::pair<const char*, int> panes[] = {{"General", 332}, {"Account", 230}, {"About", 260}};
        for (const auto& [name, height] : panes) {
            QVERIFY2(stage.comesToRestAt(height), name);
            QVERIFY2(stage.button(name)->hasFocus(), name);
            const QList<QWidget*> reached = tabOrder(stage.window());
            for (QWidget* control : controlsIn(stage.window()))
                QVERIFY2(reached.contains(control), qPrintable(nameOf(control)));
            for (QWidget* widget : reached)
                QVERIFY2(!nameOf(widget).isEmpty(), widget->metaObject()->className());
            QVERIFY(stage.button(name)->hasFocus());
            stage.input.key(QStringLiteral("Right"));
        }
        stage.input.key(QStringLiteral("ctrl+1"));
        QVERIFY(stage.comesToRestAt(332));
        // Keys that are pressed next must not reach whatever comes after a control that is no longer seen.
        const std::pair<std::function<void()>, QWidget*> ways[] = {
            {[&] { stage.input.key(QStringLiteral("ctrl+2")); }, stage.button("Account")},
            {[&] { stage.click(stage.button("Account")); }, &stage.window()},
        };
        for (const auto& [turn, focused] : ways) {
            stage.controller->generalClick();
            stage.button("Show the icon")->setFocus();
            turn();
            QVERIFY(stage.comesToRestAt(230));
            QCOMPARE(stage.window().focusWidget(), focused);
        }
        stage.input.key(QStringLiteral("Tab"));
        QTRY_VERIFY(stage.button("Account")->hasFocus());
    }

    void closing_data() {
        QTest::addColumn<QString>("keys");
        QTest::newRow("Escape") << QStringLiteral("Escape");
        QTest::newRow("Ctrl+W") << QStringLiteral("ctrl+w");
    }
    void closing() {
        QFETCH(QString, keys);
        Stage stage;
        QVERIFY(stage.show());
        QSignalSpy closed(stage.controller.get(), &PreferenceWindowController::closed);
        stage.controller->minimize();
        QTRY_VERIFY(stage.controller->isMinimized());
        QVERIFY(stage.show() && !stage.controller->isMinimized());
        stage.button("Show the icon")->setFocus();
        stage.input.key(keys);
        QTRY_COMPARE(closed.count(), 1);
        QVERIFY(!stage.controller->isVisible());
        stage.window().close();
        QCoreApplication::processEvents();
        QCOMPARE(closed.count(), 1);
    }

    void logoutClosesFirst() {
        Stage stage;
        QVERIFY(stage.show());
        stage.controller->accountClick();
        QVERIFY(stage.comesToRestAt(230));
        bool wasVisible = true;
        connect(stage.controller.get(), &PreferenceWindowController::logoutUser, stage.controller.get(), [&] {
            wasVisible = stage.controller->isVisible();
            stage.controller.release()->deleteLater(); // as whoever owns it may do
        });
        stage.click(stage.button("Sign Out"));
        QTRY_VERIFY(!stage.controller);
        QVERIFY(!wasVisible);
    }

    void openingBindsTheShortcutAgain() {
        Stage stage;
        QCOMPARE(stage.shortcuts.binds(), 0);
        QVERIFY(!stage.controller->isShortcutEnabled());
        stage.controller->setShortcutEnabled(true);
        QVERIFY(stage.shortcuts.press(keysQ) && stage.defaults.boolForKey(defaultsKey::customShortcutEnabled));
        Stage on(true);
        QVERIFY(on.shortcuts.press(keysQ)); // nothing else has asked for it in this program
    }

    void sheetsBelongToTheWindow() {
        Stage stage;
        QVERIFY(stage.show());
        stage.click(stage.button("Folders…"));
        const auto opens = [&](auto* dialog) { return dialog && dialog->isVisible() && dialog->isModal(); };
        QTRY_VERIFY(opens(stage.window().findChild<ScreenshotFoldersDialog*>()));
        stage.window().findChild<ScreenshotFoldersDialog*>()->close();
        QTRY_VERIFY(!stage.window().findChild<ScreenshotFoldersDialog*>());
        Q_EMIT stage.window().findChild<AccountPane*>()->ownClientRequested();
        QTRY_VERIFY(opens(stage.window().findChild<OwnClientDialog*>()));
    }
};

QTEST_MAIN(tst_preferencewindow)
#include "tst_preferencewindow.moc"
