// The workspace window: closing, coming back, its place, what it shows, and that the keyboard reaches everything.

#include "tests/platform/fakes/FakeDefaults.h"
#include "widgets/ElidedLabel.h"
#include "widgets/SecondaryLabel.h"
#include "workspace/window/AccountView.h"
#include "workspace/window/UploadRows.h"
#include "workspace/window/WelcomeView.h"
#include "workspace/window/WorkspaceToolBar.h"
#include "workspace/window/WorkspaceWindow.h"

#include <QAbstractButton>
#include <QAbstractItemModelTester>
#include <QAction>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QProgressBar>
#include <QRadioButton>
#include <QScopeGuard>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;

namespace {

QAbstractButton* button(const QWidget& view, const char* text) {
    for (QAbstractButton* candidate : view.findChildren<QAbstractButton*>()) {
        if (candidate->text().remove(QLatin1Char('&')) == QString::fromUtf8(text))
            return candidate;
    }
    return nullptr;
}

bool showsText(const QWidget& view, const QString& text) {
    for (const QLabel* label : view.findChildren<QLabel*>()) {
        if (label->text() == text && label->isVisibleTo(&view))
            return true;
    }
    return false;
}

// What the Tab key reaches, in its order, until it comes round.
QStringList tabOrder(QWidget& window) {
    QStringList order;
    const QWidget* first = window.focusWidget();
    for (const QWidget* widget = first; widget && order.size() < 30;) {
        const auto* pressed = qobject_cast<const QAbstractButton*>(widget);
        order += pressed && widget->accessibleName().isEmpty() ? pressed->text().remove(QLatin1Char('&'))
                                                               : widget->accessibleName();
        QTest::keyClick(window.focusWidget(), Qt::Key_Tab);
        widget = window.focusWidget();
        if (widget == first)
            break;
    }
    return order;
}

QString tabsOf(QWidget& window) { return tabOrder(window).join(QStringLiteral(", ")); }

} // namespace

class WorkspaceWindowTest : public QObject {
    Q_OBJECT

public:
    static void initMain() { qputenv("QT_QPA_PLATFORM", "offscreen"); }

private Q_SLOTS:
    void closingHidesAndBringToFrontReopens() {
        FakeDefaults defaults;
        WorkspaceWindow window(defaults);
        QSignalSpy becameKey(&window, &WorkspaceWindow::becameKey);
        window.bringToFront();
        QTRY_COMPARE(becameKey.count(), 1);
        QVERIFY(window.close() && !window.isVisible());
        window.bringToFront();
        QVERIFY(window.isVisible());
        QTRY_COMPARE(becameKey.count(), 2);
        window.showMinimized();
        window.bringToFront();
        QVERIFY(window.isVisible() && !window.isMinimized());
    }

    void placeIsKept() {
        FakeDefaults defaults;
        {
            WorkspaceWindow window(defaults);
            window.bringToFront();
            window.setGeometry(60, 50, 640, 600);
            window.close();
        }
        const QString key = QStringLiteral("WorkspaceWindowGeometry");
        QCOMPARE(defaults.keys(), QStringList{key});
        {
            WorkspaceWindow window(defaults);
            window.bringToFront();
            QCOMPARE(window.geometry(), QRect(60, 50, 640, 600));
            window.resize(650, 610);
        } // ended without having been closed
        QCOMPARE(WorkspaceWindow(defaults).size(), QSize(650, 610));
        defaults.setValueForKey(key, QStringLiteral("rubbish"));
        QVERIFY(WorkspaceWindow(defaults).size().width() >= 500);
    }

    void welcome() {
        FakeDefaults defaults;
        WorkspaceWindow window(defaults);
        WelcomeView& view = window.welcomeView();
        QSignalSpy signIn(&view, &WelcomeView::signInRequested);
        QSignalSpy local(&view, &WelcomeView::localDriveRequested);
        QSignalSpy again(&view, &WelcomeView::tryAgainRequested);
        window.bringToFront();
        QVERIFY(window.isShowingWelcome());
        QTest::keyClick(window.focusWidget(), Qt::Key_Return);
        QCOMPARE(signIn.count(), 1);

        const QString waiting = QStringLiteral("Waiting for the keyring to be unlocked…");
        view.showWaiting(waiting);
        QVERIFY(showsText(view, waiting));
        QVERIFY(!button(view, "Sign In")->isEnabled());
        button(view, "Try the Local Drive")->click();
        QCOMPARE(local.count(), 1);

        const QString trouble = QStringLiteral("The keyring is locked. Unlock it, then try again.");
        view.showTrouble(trouble);
        QVERIFY(showsText(view, trouble));
        QTest::keyClick(window.focusWidget(), Qt::Key_Return);
        QCOMPARE(again.count(), 1);
        QVERIFY(button(view, "Sign In")->isEnabled());

        view.showWaiting(waiting);
        view.showReady();
        QTest::keyClick(window.focusWidget(), Qt::Key_Return);
        QCOMPARE(signIn.count(), 2); // not on the next button
        QVERIFY(!showsText(view, trouble) && !button(view, "Try Again")->isVisible());
    }

    void choicesBeforeASignIn() {
        FakeDefaults defaults;
        QMenu menu;
        WorkspaceWindow window(defaults);
        window.setCommandsMenu(&menu);
        WelcomeView& view = window.welcomeView();
        QList<DriveAccess> chosen;
        connect(&view, &WelcomeView::accessChosen, this, [&chosen](DriveAccess access) { chosen.append(access); });
        QSignalSpy ownClient(&view, &WelcomeView::ownClientRequested);
        view.setOffersAccess(true);
        view.setOffersOwnClient(true);
        window.bringToFront();
        QTRY_VERIFY(window.isActiveWindow());
        QCOMPARE(tabsOf(window), QStringLiteral("Sign In, Use Your Own Client…, Try the Local Drive, Menu, "
                                                "Everything in the Drive"));
        button(view, "Everything in the Drive")->setFocus();
        QTest::keyClick(window.focusWidget(), Qt::Key_Down);
        QCOMPARE(chosen, QList{DriveAccess::ownFiles});
        view.setAccess(DriveAccess::everything);
        view.setAccess(DriveAccess::ownFiles);
        QCOMPARE(chosen.size(), 1); // it was not the user
        QVERIFY(button(view, "Only files that Quenby uploads")->isChecked());
        button(view, "Everything in the Drive")->click();
        QCOMPARE(chosen.last(), DriveAccess::everything);
        QTest::keyClick(button(view, "Use Your Own Client…"), Qt::Key_Return);
        QCOMPARE(ownClient.count(), 1);
        view.setOwnClient(QStringLiteral("1-a.example"));
        QVERIFY(showsText(view, QStringLiteral("Signs in as your client 1-a.example")));
        view.setOwnClient({});
        QVERIFY(!showsText(view, QStringLiteral("Signs in as your client 1-a.example")));
    }

    // In the narrowest window, with letters of any size; what is too high scrolls.
    void nothingOfTheWelcomeIsCut_data() {
        QTest::addColumn<double>("letters");
        QTest::newRow("usual") << 1.0;
        QTest::newRow("large") << 1.8;
    }
    void nothingOfTheWelcomeIsCut() {
        QFETCH(double, letters);
        const QFont usual = QApplication::font();
        const auto former = qScopeGuard([&usual] { QApplication::setFont(usual); });
        QFont font = usual;
        font.setPointSizeF(usual.pointSizeF() * letters);
        QApplication::setFont(font);
        FakeDefaults defaults;
        WorkspaceWindow window(defaults);
        WelcomeView& view = window.welcomeView();
        view.setOffersAccess(true);
        view.setOffersOwnClient(true);
        view.showTrouble(QStringLiteral("Something is the matter with it. ").repeated(6));
        window.resize(500, 400);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCOMPARE(window.size(), QSize(500, 400));
        const auto* scroller = view.findChild<QScrollArea*>();
        QTRY_VERIFY(scroller->verticalScrollBar()->maximum() > 0);
        QCOMPARE(scroller->horizontalScrollBar()->maximum(), 0);
        for (const QLabel* label : view.findChildren<QLabel*>()) {
            if (label->isVisible() && !label->text().isEmpty())
                QVERIFY2(label->height() >= label->heightForWidth(label->width()), qPrintable(label->text()));
        }
        for (const QAbstractButton* each : view.findChildren<QAbstractButton*>()) {
            if (each->isVisible())
                QVERIFY2(each->width() >= each->sizeHint().width() && each->height() >= each->sizeHint().height(),
                         qPrintable(each->text()));
        }
    }

    void keyboard() {
        FakeDefaults defaults;
        QMenu menu;
        UploadRows uploads;
        uploads.append({1, QStringLiteral("a"), {}, 5});
        WorkspaceWindow window(defaults);
        window.setCommandsMenu(&menu);
        window.accountView().setUploads(&uploads);
        window.bringToFront();
        QTRY_VERIFY(window.isActiveWindow());
        QCOMPARE(tabsOf(window), QStringLiteral("Sign In, Try the Local Drive, Menu"));
        window.welcomeView().showTrouble(QStringLiteral("No."));
        QCOMPARE(tabsOf(window), QStringLiteral("Try Again, Sign In, Try the Local Drive, Menu"));
        window.showAccount();
        // Back and forward have nowhere to go, and there are no tabs.
        QCOMPARE(tabsOf(window),
                 QStringLiteral(
                     "Upload File, All Uploads…, Running uploads, First Tab, Reload, New Document, Upload File, Record "
                     "Screen, Show Changes, Transfers, Preferences, Full Screen, Menu"));
    }

    // What is left when the panel is shut is kept; a page that fills the screen gives it back as it was.
    void sidePanelAndFullScreen() {
        FakeDefaults defaults;
        QWidget* tabs = new QWidget;
        {
            WorkspaceWindow window(defaults);
            window.setTabs(tabs);
            window.showAccount();
            window.show();
            QVERIFY(window.accountView().isVisible() && tabs->isVisible());
            window.setPageFullScreen(true);
            QVERIFY(window.isFullScreen() && !window.toolBar().isVisible() && !window.accountView().isVisible());
            QSignalSpy left(&window, &WorkspaceWindow::pageFullScreenLeft);
            window.showNormal();
            QCOMPARE(left.count(), 1);
            QVERIFY(window.toolBar().isVisible() && window.accountView().isVisible());
            window.toolBar().action(ToolBarCommand::transfers)->trigger();
            QVERIFY(!window.accountView().isVisible() && tabs->isVisible());
        }
        WorkspaceWindow window(defaults);
        window.showAccount();
        window.show();
        QVERIFY(!window.accountView().isVisible());
    }

    // What a narrow window shows is not kept: it looks as it did when it is wide again.
    void narrowWindowsBelongToThePage() {
        FakeDefaults defaults;
        WorkspaceWindow window(defaults);
        auto* tabs = new QWidget;
        window.setTabs(tabs);
        window.showAccount();
        window.resize(780, 600);
        window.bringToFront();
        QTRY_VERIFY(window.isActiveWindow());
        QAction* transfers = window.toolBar().action(ToolBarCommand::transfers);
        const AccountView& panel = window.accountView();
        const int widthBesideIt = tabs->width();
        QVERIFY(panel.isVisible() && transfers->isChecked());
        window.resize(700, 600);
        QTRY_VERIFY(!panel.isVisible() && !transfers->isChecked());
        QTRY_COMPARE(tabs->width(), 700);
        transfers->trigger();
        QVERIFY(panel.isVisible());
        QCOMPARE(panel.mapTo(&window, QPoint(panel.width(), 0)).x(), 700);
        QCOMPARE(tabs->width(), 700); // over the page
        auto* uploadButton = button(panel, "Upload File");
        uploadButton->setFocus();
        QTest::keyClick(uploadButton, Qt::Key_Escape);
        QVERIFY(!panel.isVisible() && !transfers->isChecked());
        transfers->trigger();
        transfers->trigger();
        window.resize(780, 600);
        QTRY_VERIFY(panel.isVisible() && transfers->isChecked());
        QTRY_COMPARE(tabs->width(), widthBesideIt);
    }

    // However much runs, the window stays as high as it is.
    void transfersScrollInALowWindow() {
        FakeDefaults defaults;
        UploadRows uploads;
        WorkspaceWindow window(defaults);
        window.accountView().setUploads(&uploads);
        auto* downloads = new QWidget;
        downloads->setMinimumHeight(900);
        downloads->hide();
        window.setDownloadsView(downloads);
        auto* dropView = new QWidget;
        window.accountView().setDropView(dropView);
        window.showAccount();
        window.resize(780, 500);
        window.show();
        const int room = dropView->height();
        downloads->show();
        QTRY_VERIFY(dropView->height() < room);
        for (int i = 0; i < 20; ++i)
            uploads.append({i, QStringLiteral("a"), {}, 5});
        QTRY_VERIFY(downloads->mapTo(&window, QPoint()).y() > 500 / 2);
        QCOMPARE(window.height(), 500);
        downloads->hide();
        for (int i = 0; i < 20; ++i)
            uploads.remove(i);
        QTRY_COMPARE(dropView->height(), room);
        window.accountView().setUploads(nullptr);
    }

    void account() {
        FakeDefaults defaults;
        WorkspaceWindow window(defaults);
        window.showAccount();
        AccountView& view = window.accountView();
        QSignalSpy upload(&view, &AccountView::uploadRequested);
        button(view, "Upload File")->click();
        QCOMPARE(upload.count(), 1);
        QSignalSpy allUploads(&view, &AccountView::allUploadsRequested);
        button(view, "All Uploads…")->click();
        QCOMPARE(allUploads.count(), 1);
        view.setAccount({QStringLiteral("<b>Ada</b>"), QStringLiteral("ada@example.com"),
                         QStringLiteral("130% of 15 GB used"), 130});
        QVERIFY(showsText(view, QStringLiteral("<b>Ada</b>")) && showsText(view, QStringLiteral("ada@example.com")));
        const auto* bar = view.findChild<QProgressBar*>();
        QCOMPARE(bar->value(), 100);
        view.setAccount({QStringLiteral("Fetching..."), {}, QStringLiteral("Fetching..."), std::nullopt});
        QVERIFY(!bar->isEnabled() && bar->value() == 0);
        QVERIFY(!bar->isVisibleTo(&view)); // an empty one would say that nothing is used

        QPointer<QWidget> first = new QWidget;
        view.setDropView(first);
        QVERIFY(first->isVisibleTo(&view));
        view.setDropView(new QWidget);
        QVERIFY(!first);
    }

    void longNamesEndInAnEllipsisAndNarrowWindowsStayPossible() {
        ElidedLabel label;
        label.setText(QStringLiteral("bartholomew.maximilian.the.third@a-rather-long-domain-name.example.com"));
        const QSize whole = label.sizeHint();
        QVERIFY(label.minimumSizeHint().width() < whole.width() / 4);
        label.resize(whole);
        const QImage uncut = label.grab().toImage();
        label.resize(whole.width() / 2, whole.height());
        // What is cut is not just the front of the whole text.
        const QImage front = uncut.copy(0, 0, uncut.width() / 2, uncut.height());
        QVERIFY(label.grab().toImage().copy(front.rect()) != front);
    }

    void softerTextFollowsThePalette() {
        QWidget window;
        const SecondaryLabel label(&window);
        const auto former = qScopeGuard([] { QApplication::setPalette(QPalette()); });
        QApplication::setPalette(QPalette(QColor(240, 240, 240), QColor(50, 50, 50), Qt::gray, Qt::black, Qt::gray,
                                          QColor(240, 240, 240), QColor(36, 36, 36)));
        window.show();
        const auto lightness = [&label](QPalette::ColorRole role) { return label.palette().color(role).lightness(); };
        QTRY_VERIFY_WITH_TIMEOUT(lightness(QPalette::WindowText) - lightness(QPalette::Window) > 100, 20'000);
        QApplication::setPalette(QPalette());
        QTRY_VERIFY_WITH_TIMEOUT(lightness(QPalette::Window) - lightness(QPalette::WindowText) > 100, 20'000);
    }

    void uploads() {
        FakeDefaults defaults;
        UploadRows rows;
        const QAbstractItemModelTester tester(&rows, QAbstractItemModelTester::FailureReportingMode::QtTest);
        WorkspaceWindow window(defaults);
        window.showAccount();
        AccountView& view = window.accountView();
        view.setUploads(&rows);
        const auto* list = view.findChild<QListView*>();
        QVERIFY(!list->isVisibleTo(&view));
        for (const qint64 identifier : {7, 8, 9})
            rows.append({identifier, QStringLiteral("file %1").arg(identifier), {}, -1});
        rows.setWaiting(11);
        QVERIFY(list->isVisibleTo(&view));
        QVERIFY(showsText(view, QStringLiteral("3 running, 11 waiting")));
        rows.change({8, QStringLiteral("file 8"), QStringLiteral("1 MB of 2 MB"), 50});
        rows.remove(7);
        rows.change({7, QStringLiteral("gone"), {}, 1});
        QCOMPARE(list->model()->index(0, 0).data(Qt::AccessibleTextRole).toString(), QStringLiteral("file 8, 50%"));
        rows.setWaiting(0);
        QVERIFY(showsText(view, QStringLiteral("2 running")));
        rows.remove(8);
        rows.remove(9);
        QVERIFY(!list->isVisibleTo(&view));
        view.setUploads(nullptr);
    }
};

QTEST_MAIN(WorkspaceWindowTest)
#include "tst_workspacewindow.moc"
