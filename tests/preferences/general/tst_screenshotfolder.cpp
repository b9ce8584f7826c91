// The folder whose screenshots are uploaded, and those in which they are looked for: what is asked, stored and told.
#include "core/DefaultsKeys.h"
#include "core/FolderBookmark.h"
#include "platform/linux/session/IniDefaults.h"
#include "preferences/general/NoticeLine.h"
#include "preferences/general/ScreenshotFolder.h"
#include "preferences/general/ScreenshotFoldersDialog.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "tests/platform/fakes/FakeFilePanels.h"
#include "tests/platform/fakes/FakeScreenshotQuery.h"

#include <QDir>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

using namespace quenby;
using namespace quenby::testing;

class tst_screenshotfolder : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> root_;
    QByteArray home_;
    std::unique_ptr<FakeDefaults> defaults_;
    std::unique_ptr<FakeFilePanels> panels_;
    std::unique_ptr<ScreenshotFolder> folder_;
    QWidget window_;

    QString pathOf(const char* name) const { return root_->filePath(QLatin1String(name)); }
    QByteArray bytesOf(const char* name) const { return QFile::encodeName(pathOf(name)); }
    bool isOn() const { return defaults_->boolForKey(defaultsKey::screenshotShare); }
    QVariantMap bookmark() const { return defaults_->valueForKey(defaultsKey::DirectoryBookmark).toMap(); }

private Q_SLOTS:
    void init() {
        root_ = std::make_unique<QTemporaryDir>();
        for (const char* name : {"homes/me/Pictures", "homes/me2", "added", "found"})
            QVERIFY(QDir(root_->path()).mkpath(QLatin1String(name)));
        home_ = bytesOf("homes/me");
        qputenv("HOME", home_);
        folder_.reset();
        defaults_ = std::make_unique<FakeDefaults>();
        panels_ = std::make_unique<FakeFilePanels>();
        folder_ = std::make_unique<ScreenshotFolder>(*defaults_, *panels_);
    }
    void cleanupTestCase() { folder_.reset(); }

    void onlyTheHomeAndThePlaceOfHomesMayBeChosen() {
        QVERIFY(QFile::link(QFile::decodeName(home_), pathOf("link")));
        const FolderPanelRules rules = ScreenshotFolder::rules();
        QCOMPARE(rules.directory, home_);
        for (const QByteArray& path : {home_, QByteArray(home_ + '/'), bytesOf("homes"), bytesOf("link")}) {
            QVERIFY2(rules.panel_shouldEnableURL(path), path.constData());
            QVERIFY2(rules.panel_validateURL(path).isEmpty(), path.constData());
        }
        for (const QByteArray& path :
             {QByteArray(home_ + "/Pictures"), bytesOf("homes/me2"), root_->path().toUtf8(), bytesOf("nothing")}) {
            QVERIFY2(!rules.panel_shouldEnableURL(path), path.constData());
            QVERIFY2(rules.panel_validateURL(path).contains(QFile::decodeName(home_)), path.constData());
        }
        for (const QByteArray& path : {home_, QByteArray(home_ + "/Pictures"), bytesOf("link/Pictures")})
            QVERIFY2(rules.panel_didChangeToDirectoryURL(path).isNull(), path.constData());
        for (const QByteArray& path : {bytesOf("homes"), bytesOf("homes/me2"), QByteArray("/")})
            QCOMPARE(rules.panel_didChangeToDirectoryURL(path), home_);
    }

    void theFolderIsAskedForOnceAndStored() {
        defaults_->setValueForKey(defaultsKey::DirectoryBookmark, QStringLiteral("no map")); // counts as none
        folder_->share_screeshot(true, &window_);
        QVERIFY(isOn());
        QCOMPARE(panels_->opened().constLast().title, QStringLiteral("Choose path for Screen Shot"));
        folder_->share_screeshot(true, &window_);
        QCOMPARE(panels_->waiting(), 1);
        panels_->choose({home_});
        QTRY_VERIFY(!bookmark().isEmpty());
        QVERIFY(isOn());
        QCOMPARE(folder_->path(), QFile::decodeName(home_));
        QCOMPARE(resolveFolderBookmark(bookmark().value(defaultsKey::bookmarkData).toByteArray()).valueOr({}), home_);

        folder_->share_screeshot(false, &window_);
        folder_->share_screeshot(true, &window_);
        QCOMPARE(panels_->waiting(), 0);
        // Another one is chosen, and its panel cancelled.
        const QVariantMap before = bookmark();
        folder_->chooseAnother(&window_);
        panels_->cancel();
        QCoreApplication::processEvents();
        QVERIFY(isOn() && bookmark() == before);
    }

    void withoutAFolderItIsSwitchedOffAgain() {
        folder_->share_screeshot(true, &window_);
        panels_->cancel();
        QTRY_VERIFY(!isOn());
        // A folder that cannot be bookmarked.
        folder_->share_screeshot(true, &window_);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^Error bookmarking selected URL: .+")));
        panels_->choose({bytesOf("nothing")});
        QTRY_VERIFY(!isOn());
        QVERIFY(!defaults_->contains(defaultsKey::DirectoryBookmark));
        // The window goes while its panel is open.
        folder_->share_screeshot(true, &window_);
        QVERIFY(isOn());
        folder_.reset();
        QVERIFY(!isOn());
    }

    // What is wrong with the folder, each time with a way out; the sentences differ.
    void aFolderThatCannotBeUsedIsExplained() {
        QStringList told;
        const auto check = [&] {
            bool isTold = false;
            folder_->check(this, [&](const QString& sentence) {
                told.append(sentence);
                isTold = true;
            });
            QTRY_VERIFY(isTold);
        };
        check();
        folder_->chooseAnother(&window_);
        panels_->choose({bytesOf("added")});
        QTRY_VERIFY(!bookmark().isEmpty());
        check();
        QCOMPARE(told, QStringList({QString(), QString()}));
        told.clear();

        const QDir root(root_->path());
        QVERIFY(QDir(root_->path()).rename(QStringLiteral("added"), QStringLiteral("moved")));
        check();
        QVERIFY(root.mkdir(QStringLiteral("added")));
        check();
        QVariantMap damaged = bookmark();
        damaged.insert(defaultsKey::bookmarkData, QByteArrayLiteral("no bookmark"));
        defaults_->setValueForKey(defaultsKey::DirectoryBookmark, damaged);
        check();
        QCOMPARE(told.removeDuplicates(), 0);
        QVERIFY(!told.contains(QString()));
        for (const QString& sentence : std::as_const(told))
            QVERIFY2(sentence.contains(QLatin1String("hoose the folder again")), qPrintable(sentence));
    }

    // Against a real settings file, which gives a list of one back as something else.
    void foldersAreAddedAndRemoved() {
        IniDefaults defaults(pathOf("settings.ini"));
        FakeScreenshotQuery query;
        query.known = {bytesOf("found"), bytesOf("not there")};
        ScreenshotFoldersDialog dialog(defaults, *panels_, query, nullptr);
        dialog.show();
        auto* list = dialog.findChild<QTreeWidget*>();
        const auto* notice = dialog.findChild<NoticeLine*>();
        const QList<QPushButton*> buttons = dialog.findChildren<QPushButton*>();
        const auto button = [&buttons](const char* text) {
            return *std::find_if(buttons.begin(), buttons.end(), [text](const QPushButton* candidate) {
                return candidate->text().contains(QLatin1String(text));
            });
        };
        const auto paths = [list] {
            QStringList shown;
            for (int row = 0; row < list->topLevelItemCount(); ++row)
                shown.append(list->topLevelItem(row)->text(0));
            return shown;
        };
        const auto add = [&](const QByteArray& path) {
            button("Add")->click();
            panels_->choose({path});
        };
        QTRY_COMPARE(paths(), QStringList{pathOf("found")}); // and not what is not there
        QVERIFY(!button("Remove")->isEnabled());

        add(bytesOf("added"));
        QTRY_COMPARE(paths(), QStringList({pathOf("found"), pathOf("added")}));
        QVERIFY(button("Remove")->isEnabled());
        QVERIFY(QFile::link(pathOf("found"), pathOf("link")));
        for (const auto& [again, same] : {std::pair("found", "found"), {"added", "added"}, {"link", "found"}}) {
            add(bytesOf(again));
            QTRY_VERIFY(notice->text().startsWith(pathOf(same)));
            QCOMPARE(list->topLevelItemCount(), 2);
        }

        // Another program adds one that is not there.
        QFile file(pathOf("settings.ini"));
        QTRY_VERIFY(file.exists());
        QCOMPARE(IniDefaults(file.fileName()).valueForKey(defaultsKey::screenshotFolders).toStringList(),
                 QStringList{pathOf("added")});
        defaults.setValueForKey(
            defaultsKey::screenshotFolders,
            QStringList{pathOf("added"), pathOf("gone"), QStringLiteral("relative"), pathOf("gone/")});
        QTRY_COMPARE(paths(), QStringList({pathOf("found"), pathOf("added"), pathOf("gone")}));
        QTRY_VERIFY(!list->topLevelItem(2)->text(1).isEmpty());
        QVERIFY(list->topLevelItem(1)->text(1).isEmpty());

        for (const char* name : {"gone", "added"}) {
            const QList<QTreeWidgetItem*> found = list->findItems(pathOf(name), Qt::MatchExactly);
            QCOMPARE(found.size(), 1);
            list->setCurrentItem(found.first());
            button("Remove")->click();
        }
        QCOMPARE(paths(), QStringList{pathOf("found")});
        QVERIFY(!defaults.valueForKey(defaultsKey::screenshotFolders).isValid());
    }
};

QTEST_MAIN(tst_screenshotfolder)
#include "tst_screenshotfolder.moc"
