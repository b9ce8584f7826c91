#include "tests/desktop/support/WorkspaceStage.h"

#include "platform/linux/session/IniDefaults.h"
#include "workspace/tabs/OldTabs.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QHash>
#include <QTest>

namespace quenby::testing {
namespace {

// In the window: the button with the menu of new documents, and a place that is part of every page.
constexpr QPoint newDocumentButton(141, 17);
constexpr QPoint inPage(300, 400);

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString editorPath(const QString& kind) { return QStringLiteral("/docs/%1/d/").arg(kind); }

} // namespace

bool WorkspaceStage::startWithDrive() { return startAndSignIn() && inspector.waitForPages(QStringLiteral("/"), 1); }

bool WorkspaceStage::activateWindow() {
    const WindowId main = waitForWindow();
    return main != 0 && input.activate(main);
}

bool WorkspaceStage::clickIn(const QString& path, const QString& element) {
    const QPoint overPage = input.geometry(waitForWindow()).topLeft() + inPage;
    const std::optional<QPoint> place = inspector.waitForPlace(path, element, input, overPage);
    if (place)
        input.click(*place);
    return place.has_value();
}

bool WorkspaceStage::makeDocument(const QString& mnemonic, const QString& kind) {
    return activateWindow() &&
           chooseFromMenu([this] { input.click(input.geometry(window()).topLeft() + newDocumentButton); },
                          {mnemonic}) &&
           inspector.waitForPages(editorPath(kind), 1);
}

bool WorkspaceStage::writeInDocument(const QString& kind, const QString& text) {
    const QString path = editorPath(kind);
    if (!clickIn(path, QStringLiteral("document.querySelector('#editor textarea, #editor input')")))
        return false;
    input.type(text);
    return inspector.waitUntil(
        path, QStringLiteral("document.getElementById('saved').textContent === 'All changes are saved'"));
}

QList<PageOpenRecord> WorkspaceStage::keptTabs() const {
    const IniDefaults defaults(home.settingsPath());
    return readOldTabs(defaults).value_or(QList<PageOpenRecord>());
}

bool WorkspaceStage::areCookiesKept() const {
    QDirIterator stores(home.path(QStringLiteral("data")), {QStringLiteral("Cookies")}, QDir::Files,
                        QDirIterator::Subdirectories);
    while (stores.hasNext())
        if (contentOf(stores.next()).contains(drive.url().host().toUtf8()))
            return true;
    return false;
}

QList<qint64> WorkspaceStage::pageProcesses() const {
    QHash<qint64, qint64> parents;
    const QStringList entries = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString& entry : entries) {
        const QByteArray status = contentOf(QStringLiteral("/proc/%1/stat").arg(entry));
        // The name stands in parentheses, and may hold anything.
        parents.insert(entry.toLongLong(), status.mid(status.lastIndexOf(')') + 4).split(' ').value(0).toLongLong());
    }
    QList<qint64> found;
    for (const qint64 process : parents.keys()) {
        qint64 ancestor = process;
        while (ancestor > 0 && ancestor != quenby.pid())
            ancestor = parents.value(ancestor);
        if (ancestor != 0 && contentOf(QStringLiteral("/proc/%1/cmdline").arg(process)).contains("--type=renderer"))
            found.append(process);
    }
    return found;
}

} // namespace quenby::testing
