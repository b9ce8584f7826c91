#include "tests/desktop/support/DesktopInput.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QTest>

namespace quenby::testing {
namespace {

// What the toolkit puts after the title of a program that told its name.
const QString programSuffix = QStringLiteral(" \u2014 Quenby");

// The titles that begin so, as a regular expression.
QString startingWith(const QString& title) {
    QString pattern;
    for (const QChar character : title) {
        if (QStringLiteral(".[]{}()*+?^$|\\").contains(character))
            pattern += QLatin1Char('\\');
        pattern += character;
    }
    return QLatin1Char('^') % pattern;
}

QStringList positionArguments(const QPoint& position) {
    return {QStringLiteral("mousemove"), QString::number(position.x()), QString::number(position.y())};
}

} // namespace

DesktopInput::DesktopInput() {
    if (!qEnvironmentVariableIsSet("QUENBY_DESKTOP_SESSION"))
        qFatal("This test runs in a virtual desktop only: scripts/desktop/session.sh -- PROGRAM");
}

DesktopInput::Answer DesktopInput::run(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments, QIODevice::ReadOnly);
    // The windows may be ours: they get their events while we wait.
    if (!QTest::qWaitFor([&process] { return process.state() == QProcess::NotRunning; }, patience)) {
        process.kill();
        process.waitForFinished();
        qWarning("%s %s does not end", qPrintable(program), qPrintable(arguments.join(QLatin1Char(' '))));
        return {};
    }
    if (process.error() == QProcess::FailedToStart)
        qWarning("%s is not installed", qPrintable(program));
    return {process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0,
            QString::fromUtf8(process.readAllStandardOutput())};
}

DesktopInput::Answer DesktopInput::xdotool(const QStringList& arguments) {
    return run(QStringLiteral("xdotool"), arguments);
}

void DesktopInput::moveTo(const QPoint& position) { xdotool(positionArguments(position)); }

void DesktopInput::press(Button button) { xdotool({QStringLiteral("mousedown"), QString::number(button)}); }

void DesktopInput::release(Button button) { xdotool({QStringLiteral("mouseup"), QString::number(button)}); }

void DesktopInput::click(const QPoint& position, Button button) {
    xdotool(positionArguments(position) + QStringList{QStringLiteral("click"), QString::number(button)});
}

void DesktopInput::doubleClick(const QPoint& position) {
    xdotool(positionArguments(position) + QStringList{QStringLiteral("click"), QStringLiteral("--repeat"),
                                                      QStringLiteral("2"), QStringLiteral("--delay"),
                                                      QStringLiteral("40"), QStringLiteral("1")});
}

void DesktopInput::key(const QString& chord) { xdotool({QStringLiteral("key"), QStringLiteral("--"), chord}); }

void DesktopInput::type(const QString& text) { xdotool({QStringLiteral("type"), QStringLiteral("--"), text}); }

WindowId DesktopInput::find(const QString& title, qint64 pid) { return findAll(title, pid).value(0); }

QList<WindowId> DesktopInput::findAll(const QString& title, qint64 pid) {
    const Answer found = xdotool(
        {QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--name"), startingWith(title)});
    QList<WindowId> windows;
    for (const QString& id : found.output.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const QString name = xdotool({QStringLiteral("getwindowname"), id}).output.chopped(1);
        if (name != title && name != title % programSuffix)
            continue;
        if (pid == 0 || xdotool({QStringLiteral("getwindowpid"), id}).output.trimmed().toLongLong() == pid)
            windows.append(id.toUInt());
    }
    return windows;
}

QList<WindowId> DesktopInput::topWindows() {
    const Answer found = xdotool({QStringLiteral("search"),
                                  QStringLiteral("--onlyvisible"),
                                  QStringLiteral("--maxdepth"),
                                  QStringLiteral("1"),
                                  QStringLiteral("--name"),
                                  {}});
    QList<WindowId> windows;
    for (const QString& id : found.output.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        windows.append(id.toUInt());
    return windows;
}

bool DesktopInput::isDialog(WindowId window) {
    return run(QStringLiteral("xprop"),
               {QStringLiteral("-id"), QString::number(window), QStringLiteral("_NET_WM_WINDOW_TYPE")})
        .output.contains(QStringLiteral("_DIALOG"));
}

WindowId DesktopInput::waitForWindow(const QString& title, qint64 pid) {
    WindowId found = 0;
    if (!QTest::qWaitFor([&] { return (found = find(title, pid)) != 0; }, patience))
        qWarning("No window \"%s\" comes up", qPrintable(title));
    return found;
}

bool DesktopInput::isVisible(WindowId window) {
    const Answer told =
        run(QStringLiteral("xwininfo"), {QStringLiteral("-id"), QString::number(window), QStringLiteral("-stats")});
    return told.isGood && told.output.contains(QStringLiteral("Map State: IsViewable"));
}

bool DesktopInput::waitUntilGone(WindowId window) {
    return QTest::qWaitFor([&] { return !isVisible(window); }, patience);
}

// xdotool counts the window manager's frame twice; xwininfo does not.
QRect DesktopInput::geometry(WindowId window) {
    const Answer told =
        run(QStringLiteral("xwininfo"), {QStringLiteral("-id"), QString::number(window), QStringLiteral("-stats")});
    const auto value = [&told](const QString& name) {
        const qsizetype at = told.output.indexOf(name % QLatin1Char(':'));
        return QStringView(told.output).mid(at + name.size() + 1).split(QLatin1Char('\n')).first().trimmed().toInt();
    };
    if (!told.isGood)
        return {};
    return {value(QStringLiteral("Absolute upper-left X")), value(QStringLiteral("Absolute upper-left Y")),
            value(QStringLiteral("Width")), value(QStringLiteral("Height"))};
}

bool DesktopInput::activate(WindowId window) {
    return xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), QString::number(window)}).isGood;
}

void DesktopInput::focus(WindowId window) { xdotool({QStringLiteral("windowfocus"), QString::number(window)}); }

bool DesktopInput::savePicture(const QString& path) {
    return run(QStringLiteral("import"), {QStringLiteral("-window"), QStringLiteral("root"), path}).isGood;
}

void DesktopInput::savePictureOfFailure() {
    if (!QTest::currentTestFailed())
        return;
    const QString folder = QDir::cleanPath(QCoreApplication::applicationDirPath() % QStringLiteral("/../failures"));
    const QString tag = QString::fromUtf8(QTest::currentDataTag() ? QTest::currentDataTag() : "");
    QString name = QCoreApplication::applicationName() % QLatin1Char('-') %
                   QString::fromUtf8(QTest::currentTestFunction()) % QLatin1Char('-') % tag;
    for (QChar& character : name)
        if (!character.isLetterOrNumber())
            character = QLatin1Char('-');
    const QString path = folder % QLatin1Char('/') % name % QStringLiteral(".png");
    if (QDir().mkpath(folder) && savePicture(path))
        qInfo("What the desktop looked like: %s", qPrintable(path));
}

} // namespace quenby::testing
