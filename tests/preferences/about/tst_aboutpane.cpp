// What the About pane opens and says, and that no part that the program is built from lacks its licence.

#include "preferences/about/AboutPane.h"
#include "preferences/about/LicencesDialog.h"
#include "preferences/about/MakerPages.h"
#include "tests/platform/fakes/FakeOpener.h"

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLayout>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;

namespace {

QString sourceText(const QString& name) {
    QFile file(QStringLiteral(QUENBY_SOURCE_DIR "/") + name);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

// What the build looks for, by CMake's names.
QStringList dependencies() {
    static const QRegularExpression search(u"^(?:find_package|pkg_check_modules)\\((\\w+)"_s,
                                           QRegularExpression::MultilineOption);
    QStringList names;
    for (auto match = search.globalMatch(sourceText(u"CMakeLists.txt"_s)); match.hasNext();)
        names.append(match.next().captured(1));
    return names;
}

void write(const QTemporaryDir& root, const QString& path, const QByteArray& text) {
    QVERIFY(QDir(root.path()).mkpath(path.section(u'/', 0, -2)));
    QFile file(root.filePath(path));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(text), text.size());
}

} // namespace

class AboutPaneTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        opener_ = std::make_unique<FakeOpener>();
        pane_ = std::make_unique<AboutPane>(
            ProgramFacts{QIcon(), u"Quenby"_s, u"1.2.3"_s, u"abc123"_s, u"Copyright © us"_s}, *opener_);
        pane_->show();
    }
    void cleanup() { pane_.reset(); }

    void eachLinkOpensItsPage() {
        QVERIFY(shows(u"Version 1.2.3 (abc123)"_s));
        for (const char* name : {"&Forum", "&News", "&Community", "&Web Site"})
            QTest::keyClick(button(name), Qt::Key_Space);
        QCOMPARE(opener_->opened(),
                 (QList<QUrl>{makerPages::forum, makerPages::news, makerPages::community, makerPages::webSite}));
        const QList<QUrl> pages = opener_->opened();
        QCOMPARE(QSet<QUrl>(pages.begin(), pages.end()).size(), 4);
    }

    void withoutABrowserTheAddressIsShown() {
        opener_->setHasProgram(false);
        pane_->faqPressed();
        QVERIFY(shows(makerPages::forum.toString()));
        opener_->setHasProgram(true);
        pane_->faqPressed();
        QVERIFY(!shows(makerPages::forum.toString()));
    }

    void copyingIsConfirmedOrItsTroubleTold() {
        QSignalSpy requested(pane_.get(), &AboutPane::copyDiagnosticsRequested);
        button("Copy &Diagnostics")->click();
        QCOMPARE(requested.size(), 1);
        QVERIFY(!shows(u"Copied"_s));
        pane_->diagnosticsCopied({});
        QVERIFY(shows(u"Copied"_s));
        pane_->diagnosticsCopied(u"The clipboard is away."_s);
        QVERIFY(shows(u"The clipboard is away."_s) && !shows(u"Copied"_s));
        button("Copy &Diagnostics")->click();
        QVERIFY(!shows(u"The clipboard is away."_s));
    }

    // Under any text size: a higher font makes the pane higher, and cuts no button's text.
    void everythingHasItsRoom_data() {
        QTest::addColumn<double>("factor");
        QTest::newRow("usual") << 1.0;
        QTest::newRow("huge") << 2.5;
    }
    void everythingHasItsRoom() {
        QFETCH(double, factor);
        QFont font = pane_->font();
        font.setPointSizeF(font.pointSizeF() * factor);
        pane_->setFont(font);
        pane_->diagnosticsCopied(u"A sentence that is long enough to need more than one line of this pane."_s);
        pane_->resize(pane_->minimumSizeHint());
        pane_->resize(pane_->width(), std::max(pane_->layout()->heightForWidth(pane_->width()), pane_->height()));
        for (const QPushButton* button : pane_->findChildren<QPushButton*>())
            QVERIFY2(button->width() >= button->minimumSizeHint().width() && pane_->rect().contains(button->geometry()),
                     qPrintable(button->text()));
    }

    void licencesOfAPart() {
        button("&Licences…")->click();
        auto* const dialog = pane_->findChild<LicencesDialog*>();
        QVERIFY(dialog && dialog->isModal());
        auto* const list = dialog->findChild<QListWidget*>();
        QTest::keyClick(list, Qt::Key_Down); // the second
        const UsedPart second = usedParts().value(1);
        QCOMPARE(list->currentItem()->text(), second.name);
        QLabel* const licence = labelWith(*dialog, u"href"_s);
        QVERIFY(licence);
        for (const QString& identifier : licenceIdentifiers(second.licence)) {
            QVERIFY2(licence->text().contains(u"href=\"%1\""_s.arg(identifier)), qPrintable(licence->text()));
            Q_EMIT licence->linkActivated(identifier);
            QCOMPARE(opener_->opened().last(), makerPages::licence(identifier));
        }
        QCOMPARE(dialog->findChild<QPlainTextEdit*>()->toPlainText().isEmpty(), false);
        QPointer<LicencesDialog> watched(dialog);
        QTest::keyClick(dialog, Qt::Key_Escape);
        QTRY_VERIFY(!watched);
    }

    void everyDependencyIsAmongTheParts() {
        const QHash<QString, QString> namesOfParts{{u"Qt6"_s, u"Qt"_s},          {u"Qt6Keychain"_s, u"QtKeychain"_s},
                                                   {u"CURL"_s, u"libcurl"_s},    {u"simdjson"_s, u"simdjson"_s},
                                                   {u"OpenSSL"_s, u"OpenSSL"_s}, {u"httplib"_s, u"cpp-httplib"_s},
                                                   {u"xcb"_s, u"libxcb"_s},      {u"xkbcommon"_s, u"libxkbcommon"_s},
                                                   {u"x11"_s, u"libX11"_s},      {u"gstreamer"_s, u"GStreamer"_s}};
        const QStringList ofTheBuildOnly{u"Threads"_s, u"PkgConfig"_s};
        QHash<QString, UsedPart> parts;
        for (const UsedPart& part : usedParts())
            parts.insert(part.name, part);
        const QStringList found = dependencies();
        QVERIFY(found.size() >= namesOfParts.size());
        for (const QString& dependency : found) {
            if (ofTheBuildOnly.contains(dependency))
                continue;
            QVERIFY2(parts.contains(namesOfParts.value(dependency)), qPrintable(dependency));
            // Against which it was built: an empty one means that CMake calls it otherwise.
            const UsedPart part = parts.value(namesOfParts.value(dependency));
            QVERIFY2(!part.version.isEmpty() && part.version[0].isDigit(), qPrintable(part.name));
        }
        // The same as told to engineers, and what is loaded by others.
        const QString table = sourceText(u"docs/ARCHITECTURE.md"_s).section(u"## Dependencies"_s, 1);
        for (const char* name : {"Qt 6", "Qt WebEngine", "QtKeychain", "libsecret", "xcb", "GStreamer", "libcurl",
                                 "simdjson", "OpenSSL", "cpp-httplib", "SQLite"}) {
            const QString told = QString::fromLatin1(name);
            QVERIFY2(table.contains(told), name); // else the list here is out of date
            const bool isPart = std::any_of(parts.keyBegin(), parts.keyEnd(), [&told](const QString& part) {
                return told.startsWith(part) || part.endsWith(told);
            });
            QVERIFY2(isPart, name);
        }
        for (const UsedPart& part : std::as_const(parts))
            QVERIFY2(!licenceIdentifiers(part.licence).isEmpty(), qPrintable(part.name));
    }

    void textsOfALicence() {
        const QTemporaryDir root;
        write(root, u"usr/share/common-licenses/LGPL-3"_s, "\n\n   LESSER\n\n");
        write(root, u"usr/share/common-licenses/GPL-3"_s, "GENERAL\n");
        write(root, u"usr/share/doc/libpart1/copyright"_s, "ANN MADE IT\n");
        UsedPart part;
        part.sharedTexts = QStringList{u"LGPL-3"_s, u"GPL-3"_s};
        part.package = u"libpart1"_s;
        const QString slash = root.path() + u'/';
        const QStringList texts = licenceText(part, slash).split(QRegularExpression(u"\n+_+\n+"_s));
        QCOMPARE(texts, (QStringList{u"   LESSER"_s, u"GENERAL"_s, u"ANN MADE IT"_s}));
        part.sharedTexts = QStringList{u"NONE"_s};
        part.package = u"absent"_s;
        QCOMPARE(licenceText(part, slash), QString());
        QCOMPARE(licenceIdentifiers(u"GPL-2.0-only OR (MIT AND MIT)"_s), (QStringList{u"GPL-2.0-only"_s, u"MIT"_s}));
    }

private:
    QPushButton* button(const char* text) const {
        for (QPushButton* found : pane_->findChildren<QPushButton*>()) {
            if (found->text() == QString::fromUtf8(text))
                return found;
        }
        qFatal("there is no button %s", text);
    }
    static QLabel* labelWith(const QWidget& window, const QString& text) {
        for (QLabel* label : window.findChildren<QLabel*>()) {
            if (label->isVisible() && label->text().contains(text))
                return label;
        }
        return nullptr;
    }
    bool shows(const QString& text) const { return labelWith(*pane_, text) != nullptr; }

    std::unique_ptr<FakeOpener> opener_;
    std::unique_ptr<AboutPane> pane_;
};

QTEST_MAIN(AboutPaneTest)
#include "tst_aboutpane.moc"
