#include "tests/desktop/support/AgentStage.h"

#include "tests/localdrive/LocalClient.h"

#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QProcess>
#include <QScreen>
#include <QTest>

namespace quenby::testing {
namespace {

constexpr int patience = QuenbyProcess::patience;
constexpr int aMoment = 5000; // milliseconds, after which what was done is done again

// The main button of the local Drive's pages, in its light form (localdrive/pages/style.css).
constexpr QRgb pageButton = 0xff2a5fbd;
constexpr int fewestButtonPixels = 1000;

constexpr int smallestMenu = 100; // pixels high; a tool tip is lower

} // namespace

AgentStage::AgentStage()
    : home(drive.dataFolder())
    , quenby(home) {}

void AgentStage::skipAfterFailure() {
    if (hasFailed_)
        QSKIP("The functions of this program stand on each other, and one has failed.");
}

void AgentStage::afterTest() {
    hasFailed_ = hasFailed_ || QTest::currentTestFailed();
    input.savePictureOfFailure();
    if (QTest::currentTestFailed())
        qInfo("The program's words:\n%s", quenby.errors().constData());
}

// --- Signing in -----------------------------------------------------------------------------------------------------

WindowId AgentStage::waitForSignInPage() {
    WindowId dialog = 0;
    const auto isThere = [&] {
        dialog = input.find(QStringLiteral("Sign In"), quenby.pid());
        return dialog != 0 && showsPageButton(dialog);
    };
    if (!QTest::qWaitFor(isThere, patience)) {
        qWarning("The sign-in page does not come");
        return 0;
    }
    return dialog;
}

bool AgentStage::allowSignIn() {
    const WindowId dialog = waitForSignInPage();
    if (dialog == 0 || !input.activate(dialog))
        return false;
    const int before = answeredPages();
    const auto hasGone = [&] {
        if (answeredPages() == before && input.isVisible(dialog))
            input.key(QStringLiteral("Return"));
        return QTest::qWaitFor([&] { return !input.isVisible(dialog); }, aMoment);
    };
    return QTest::qWaitFor(hasGone, patience);
}

bool AgentStage::startAndSignIn() { return quenby.start() && allowSignIn() && quenby.waitForTrace("account"); }

bool AgentStage::startSignedIn(const QStringList& arguments) {
    return quenby.start(arguments) && quenby.waitForTrace("account") && quenby.waitForTrace("gauge");
}

QByteArray AgentStage::keptSignIn() {
    QProcess tool;
    tool.start(QStringLiteral("secret-tool"),
               {QStringLiteral("lookup"), QStringLiteral("server"), QStringLiteral("Drive: Local Drive"),
                QStringLiteral("user"), QStringLiteral("OAuth")});
    tool.waitForFinished(patience);
    return tool.readAllStandardOutput();
}

int AgentStage::answeredPages() {
    return drive.state()[QStringLiteral("requests")][QStringLiteral("POST /o/oauth2/approve")].toInt();
}

// --- Windows --------------------------------------------------------------------------------------------------------

WindowId AgentStage::window() {
    for (const WindowId found : input.findAll(QStringLiteral("Quenby"), quenby.pid()))
        if (!input.isDialog(found))
            return found;
    return 0;
}

WindowId AgentStage::waitForWindow() {
    WindowId found = 0;
    (void)QTest::qWaitFor([&] { return (found = window()) != 0; }, patience);
    return found;
}

WindowId AgentStage::alert() {
    for (const WindowId found : input.findAll(QStringLiteral("Quenby"), quenby.pid()))
        if (input.isDialog(found))
            return found;
    return 0;
}

WindowId AgentStage::waitForAlert() {
    WindowId found = 0;
    (void)QTest::qWaitFor([&] { return (found = alert()) != 0; }, patience);
    return found;
}

bool AgentStage::dismissAlert() {
    const WindowId box = waitForAlert();
    if (box == 0 || !input.activate(box))
        return false;
    input.key(QStringLiteral("Escape"));
    return input.waitUntilGone(box);
}

QString AgentStage::detailsOfAlert() {
    const WindowId box = waitForAlert();
    if (box == 0 || !input.activate(box))
        return {};
    QGuiApplication::clipboard()->clear();
    const QRect before = input.geometry(box);
    for (const char* key : {"Tab", "space"})
        input.key(QString::fromLatin1(key));
    (void)QTest::qWaitFor([&] { return input.geometry(box) != before; }, patience);
    // From one part of the box to the next, until there is text to be copied.
    QClipboard& clipboard = *QGuiApplication::clipboard();
    for (int i = 0; i < 4 && clipboard.text().isEmpty(); ++i) {
        for (const char* key : {"Tab", "ctrl+a", "ctrl+c"})
            input.key(QString::fromLatin1(key));
        (void)QTest::qWaitFor([&] { return !clipboard.text().isEmpty(); }, aMoment / 10);
    }
    return clipboard.text();
}

bool AgentStage::showsPageButton(WindowId window) {
    const QRect place = input.geometry(window);
    const QImage picture = QGuiApplication::primaryScreen()
                               ->grabWindow(0, place.x(), place.y(), place.width(), place.height())
                               .toImage()
                               .convertToFormat(QImage::Format_RGB32);
    int found = 0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            found += picture.pixel(x, y) == pageButton;
    return found > fewestButtonPixels;
}

// --- Menus and panels -----------------------------------------------------------------------------------------------

bool AgentStage::chooseFromMenu(const std::function<void()>& open, const QStringList& keys) {
    const QList<WindowId> before = input.topWindows();
    open();
    const auto isThere = [&] {
        for (const WindowId window : input.topWindows())
            if (!before.contains(window) && input.geometry(window).height() >= smallestMenu)
                return true;
        return false;
    };
    if (!QTest::qWaitFor(isThere, patience)) {
        qWarning("No menu comes up");
        return false;
    }
    for (const QString& key : keys)
        input.key(key);
    return true;
}

bool AgentStage::chooseFromItemMenu(const QPoint& item, const QStringList& keys) {
    return chooseFromMenu([&] { input.click(item, DesktopInput::right); }, keys);
}

bool AgentStage::chooseFromWindowMenu(const QStringList& keys) {
    const WindowId main = waitForWindow();
    return main != 0 && input.activate(main) && chooseFromMenu([&] { input.key(QStringLiteral("alt+m")); }, keys);
}

bool AgentStage::fillPanel(const QString& title, const QString& path) {
    const WindowId panel = input.waitForWindow(title, quenby.pid());
    if (panel == 0 || !input.activate(panel))
        return false;
    input.type(path);
    input.key(QStringLiteral("Return"));
    return input.waitUntilGone(panel);
}

// --- What is kept
// ------------------------------------------------------------------------------------------------------

int AgentStage::countInDrive(const QString& title) {
    return static_cast<int>(LocalClient(drive).filesNamed(title).size());
}

bool AgentStage::isSet(const QByteArray& line) const {
    QFile file(home.settingsPath());
    return file.open(QIODevice::ReadOnly) && file.readAll().split('\n').contains(line);
}

} // namespace quenby::testing
