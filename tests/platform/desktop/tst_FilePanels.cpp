// File dialogs, the clipboard and the opener on a real screen; and the fakes beside them.
#include "platform/linux/desktop/ClipboardPasteboard.h"
#include "platform/linux/desktop/DesktopOpener.h"
#include "platform/linux/desktop/DialogFilePanels.h"
#include "tests/platform/contracts/FilePanelsContract.h"
#include "tests/platform/contracts/OpenerAndPasteboardContract.h"
#include "tests/platform/desktop/VirtualDesktop.h"
#include "tests/platform/fakes/FakeFilePanels.h"
#include "tests/platform/fakes/FakeOpener.h"
#include "tests/platform/fakes/FakePasteboard.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileSystemModel>
#include <QLabel>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>

using namespace quenby;
using namespace quenby::testing;

namespace {

constexpr int patience = 20'000; // ms

// The panel that takes the keys.
QFileDialog* activePanel() { return qobject_cast<QFileDialog*>(QApplication::activeWindow()); }

void type(const QString& text) {
    outputOf(QStringLiteral("xdotool"), {QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("2"), text});
    useInput(QStringLiteral("key Return"));
}

void makeFile(const QString& path) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("Some text.\n");
}

// For the desktop's own opener, where there is one: it asks who is the browser before it looks at the environment.
void makeDefaultBrowser(const QString& program) {
    const auto write = [](QStandardPaths::StandardLocation location, const QString& name, const QByteArray& content) {
        const QString path = QStandardPaths::writableLocation(location) + QLatin1Char('/') + name;
        QVERIFY(QDir().mkpath(QFileInfo(path).absolutePath()));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    };
    write(QStandardPaths::GenericDataLocation, QStringLiteral("applications/quenby-test-browser.desktop"),
          "[Desktop Entry]\nType=Application\nName=Browser\nMimeType=x-scheme-handler/https;text/plain;\n"
          "Exec=" +
              program.toUtf8() + " %u\n");
    write(QStandardPaths::GenericConfigLocation, QStringLiteral("mimeapps.list"),
          "[Default Applications]\nx-scheme-handler/https=quenby-test-browser.desktop\n"
          "text/plain=quenby-test-browser.desktop\n");
}

} // namespace

class tst_FilePanels : public QObject {
    Q_OBJECT

    QTemporaryDir folder_;
    QWidget window_;
    QList<QByteArray> files_;

private Q_SLOTS:
    void initTestCase() {
        QApplication::setQuitOnLastWindowClosed(false);
        QVERIFY(QDir(folder_.path()).mkdir(QStringLiteral("folder")));
        for (const QString& name : {QStringLiteral("a b.txt"), QStringLiteral("c.txt")}) {
            makeFile(folder_.filePath(name));
            files_.append(QFile::encodeName(folder_.filePath(name)));
        }
        window_.resize(300, 200);
        window_.show();
        QVERIFY(QTest::qWaitForWindowActive(&window_));
    }

    void theFakeKeepsTheContract() {
        FakeFilePanels fake;
        filePanelsKeepTheirContract(
            fake, window_, files_,
            {[&](const QList<QByteArray>& paths) { QVERIFY(fake.choose(paths)); }, [&] { QVERIFY(fake.cancel()); }});
    }

    void dialogsKeepTheContract() {
        DialogFilePanels panels;
        const auto choose = [this](const QList<QByteArray>& paths) {
            QTRY_VERIFY_WITH_TIMEOUT(activePanel(), patience);
            type(folder_.path()); // opens the folder, and chooses nothing
            QTRY_COMPARE_WITH_TIMEOUT(activePanel()->directory().path(), folder_.path(), patience);
            QString names;
            for (const QByteArray& path : paths)
                names += QStringLiteral("\"%1\" ").arg(QFileInfo(QFile::decodeName(path)).fileName());
            type(names.trimmed());
            QTRY_VERIFY_WITH_TIMEOUT(!activePanel(), patience);
        };
        const auto cancel = [] {
            QTRY_VERIFY_WITH_TIMEOUT(activePanel(), patience);
            useInput(QStringLiteral("key Escape"));
            QTRY_VERIFY_WITH_TIMEOUT(!activePanel(), patience);
        };
        filePanelsKeepTheirContract(panels, window_, files_, {choose, cancel});
    }

    // The proposal is where the user looks first, as one name whatever stands in it; an existing file is only chosen
    // after a question.
    void savingProposesAPlaceAndAsksBeforeItReplaces() {
        DialogFilePanels panels;
        const QString existing = QFile::decodeName(files_.last());
        QList<QList<QByteArray>> chosen;
        const auto save = [&] {
            panels.saveFile(&window_, QStringLiteral("Save As"),
                            QFile::encodeName(folder_.filePath(QStringLiteral("é \".new\".txt"))), this,
                            [&](const QList<QByteArray>& paths) { chosen.append(paths); });
            QTRY_VERIFY_WITH_TIMEOUT(activePanel(), patience);
            QCOMPARE(activePanel()->directory().path(), folder_.path());
        };
        save();
        useInput(QStringLiteral("key Return"));
        QTRY_COMPARE_WITH_TIMEOUT(chosen.size(), 1, patience);
        QCOMPARE(chosen.takeFirst(),
                 QList<QByteArray>{QFile::encodeName(folder_.filePath(QStringLiteral("é '.new'.txt")))});
        save();
        // The dialog asks from inside its own event loop, which has to be answered from there.
        int questions = 0;
        QTimer answering;
        connect(&answering, &QTimer::timeout, this, [&] {
            if (!qobject_cast<QMessageBox*>(QApplication::activeWindow()))
                return;
            ++questions;
            QVERIFY(chosen.isEmpty());
            useInput(QStringLiteral("key Escape"));
        });
        answering.start(50);
        useInput(QStringLiteral("key ctrl+a"));
        type(existing);
        QTRY_VERIFY_WITH_TIMEOUT(questions > 0 && activePanel(), patience);
        answering.stop();
        useInput(QStringLiteral("key Escape"));
        QTRY_COMPARE_WITH_TIMEOUT(chosen.size(), 1, patience);
        QVERIFY(chosen.takeFirst().isEmpty());
        // Whoever replaces nothing is given the name without a question.
        panels.saveNewFile(&window_, QStringLiteral("Save As"), files_.last(), this,
                           [&](const QList<QByteArray>& paths) { chosen.append(paths); });
        QTRY_VERIFY_WITH_TIMEOUT(activePanel(), patience);
        useInput(QStringLiteral("key Return"));
        QTRY_COMPARE_WITH_TIMEOUT(chosen.size(), 1, patience);
        QCOMPARE(chosen.first(), QList<QByteArray>{files_.last()});
    }

    void thePanelBeginsWhereTheLastOneEnded() {
        DialogFilePanels panels;
        const auto open = [&] {
            panels.openFiles(&window_, QStringLiteral("Upload File"), QStringLiteral("Upload"), this,
                             [](const auto&) {});
            QTRY_VERIFY_WITH_TIMEOUT(activePanel(), patience);
        };
        open();
        QCOMPARE(activePanel()->directory().path(), QDir::homePath());
        QCOMPARE(activePanel()->windowModality(), Qt::WindowModal);
        QCOMPARE(activePanel()->labelText(QFileDialog::Accept), QStringLiteral("Upload"));
        type(QFile::decodeName(files_.last()));
        QTRY_VERIFY_WITH_TIMEOUT(!activePanel(), patience);
        open();
        QCOMPARE(activePanel()->directory().path(), folder_.path());
        useInput(QStringLiteral("key Escape"));
        QTRY_VERIFY_WITH_TIMEOUT(!activePanel(), patience);
    }

    // With rules, and without.
    void foldersAreChosen() {
        const QByteArray folder = QFile::encodeName(folder_.filePath(QStringLiteral("folder")));
        FakeFilePanels fake;
        folderPanelsKeepTheirContract(
            fake, window_, {}, folder,
            {[&](const QList<QByteArray>& paths) { QVERIFY(fake.choose(paths)); }, [&] { QVERIFY(fake.cancel()); }});
        DialogFilePanels panels;
        const auto choose = [](const QList<QByteArray>& paths) {
            QTRY_VERIFY_WITH_TIMEOUT(activePanel(), patience);
            useInput(QStringLiteral("key ctrl+a"));
            type(QFile::decodeName(paths.first()) + QLatin1Char('/')); // as people type folders
            QTRY_VERIFY_WITH_TIMEOUT(!activePanel(), patience);
        };
        const auto cancel = [] {
            QTRY_VERIFY_WITH_TIMEOUT(activePanel(), patience);
            useInput(QStringLiteral("key Escape"));
            QTRY_VERIFY_WITH_TIMEOUT(!activePanel(), patience);
        };
        folderPanelsKeepTheirContract(panels, window_, {}, folder, {choose, cancel});
        FolderPanelRules rules;
        rules.directory = QFile::encodeName(folder_.path());
        rules.panel_validateURL = [](const QByteArray&) { return QString(); };
        folderPanelsKeepTheirContract(panels, window_, rules, folder, {choose, cancel});
    }

    // What may not be chosen cannot be used, and who names it all the same reads why not; who goes astray is led back.
    void rulesHoldWhateverTheUserDoes() {
        const QString folder = folder_.filePath(QStringLiteral("folder"));
        QVERIFY(QDir(folder).mkpath(QStringLiteral("one")) && QDir(folder).mkpath(QStringLiteral("other")));
        FolderPanelRules rules;
        rules.directory = QFile::encodeName(folder);
        rules.panel_shouldEnableURL = [](const QByteArray& path) { return path.endsWith("/one"); };
        rules.panel_validateURL = [](const QByteArray& path) {
            return path.endsWith("/one") ? QString() : QStringLiteral("Choose one.");
        };
        rules.panel_didChangeToDirectoryURL = [home = rules.directory](const QByteArray& path) {
            return path.startsWith(home) ? QByteArray() : home;
        };
        DialogFilePanels panels;
        QList<QList<QByteArray>> chosen;
        panels.openFolder(&window_, QStringLiteral("Choose path"), rules, this,
                          [&](const QList<QByteArray>& paths) { chosen.append(paths); });
        QTRY_VERIFY_WITH_TIMEOUT(activePanel(), patience);
        QFileDialog* panel = activePanel();
        QCOMPARE(panel->windowTitle(), QStringLiteral("Choose path"));
        auto* list = panel->findChild<QListView*>(QStringLiteral("listView"));
        QTRY_COMPARE_WITH_TIMEOUT(list->model()->rowCount(list->rootIndex()), 2, patience);
        for (int row = 0; row < 2; ++row) {
            const QModelIndex index = list->model()->index(row, 0, list->rootIndex());
            QCOMPARE(index.flags().testFlag(Qt::ItemIsEnabled), index.data().toString() == QLatin1String("one"));
        }

        type(folder + QStringLiteral("/other"));
        const auto isTold = [panel] {
            const QList<QLabel*> labels = panel->findChildren<QLabel*>();
            return std::any_of(labels.begin(), labels.end(), [](const QLabel* label) {
                return label->isVisible() && label->text() == QLatin1String("Choose one.");
            });
        };
        QTRY_VERIFY_WITH_TIMEOUT(isTold(), patience);
        QVERIFY(chosen.isEmpty() && panel->isVisible());
        useInput(QStringLiteral("key ctrl+a key BackSpace"));
        QTRY_VERIFY_WITH_TIMEOUT(!isTold(), patience);

        // To the folder above, by the panel's own key and by its history; each goes elsewhere first.
        int moves = 0;
        connect(panel->findChild<QFileSystemModel*>(), &QFileSystemModel::rootPathChanged, this, [&] { ++moves; });
        for (const QString& key : {QStringLiteral("key alt+Up"), QStringLiteral("key alt+Left")}) {
            moves = 0;
            useInput(key);
            QTRY_VERIFY_WITH_TIMEOUT(moves >= 2, patience);
            QCOMPARE(panel->directory().path(), folder);
        }

        useInput(QStringLiteral("key ctrl+a"));
        type(folder + QStringLiteral("/one"));
        QTRY_COMPARE_WITH_TIMEOUT(chosen.size(), 1, patience);
        QCOMPARE(chosen.first(), QList<QByteArray>{QFile::encodeName(folder + QStringLiteral("/one"))});
    }

    void theFakesOfOpenerAndPasteboardKeepTheirContracts() {
        FakeOpener opener;
        openerKeepsItsContract(opener, files_.first());
        FakePasteboard pasteboard;
        pasteboardKeepsItsContract(pasteboard);
    }

    void theDesktopsOpenAndPasteboardKeepTheirContracts() {
        // A browser that writes down what it was given.
        const QString browser = folder_.filePath(QStringLiteral("browser"));
        const QString opened = folder_.filePath(QStringLiteral("opened"));
        QFile script(browser);
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\nprintf '%s\\n' \"$1\" >>'" + opened.toUtf8() + "'\n");
        script.close();
        QVERIFY(script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        qputenv("BROWSER", browser.toUtf8());
        makeDefaultBrowser(browser);

        DesktopOpener opener;
        openerKeepsItsContract(opener, files_.first());
        const auto lines = [&opened] {
            QFile file(opened);
            QList<QByteArray> read = file.open(QIODevice::ReadOnly) ? file.readAll().split('\n') : QList<QByteArray>();
            for (QByteArray& line : read)
                line = line.startsWith("file://") ? QByteArray::fromPercentEncoding(line.mid(7)) : line;
            read.removeAll({});
            std::sort(read.begin(), read.end());
            return read;
        };
        const QList<QByteArray> expected{files_.first(), "https://drive.example/file?id=1&x=%20#a"};
        QTRY_COMPARE_WITH_TIMEOUT(lines(), expected, patience);

        ClipboardPasteboard pasteboard;
        pasteboardKeepsItsContract(pasteboard);
    }
};

QTEST_MAIN(tst_FilePanels)
#include "tst_FilePanels.moc"
