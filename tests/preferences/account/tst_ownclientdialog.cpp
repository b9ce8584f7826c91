// The steps to an own client, with clients that answer as a test tells them to.
#include "preferences/account/OwnClientDialog.h"
#include "preferences/account/StepView.h"
#include "tests/platform/fakes/FakeFilePanels.h"
#include "tests/platform/fakes/FakeOpener.h"

#include <QClipboard>
#include <QDropEvent>
#include <QFile>
#include <QGuiApplication>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;

namespace {

const QString text = uR"({"installed":{"client_id":"1-a.example","client_secret":"hush-hush"}})"_s;
const OwnClient client{u"1-a.example"_s, u"hush-hush"_s};

class FakeOwnClients final : public OwnClients {
public:
    bool isProgramsOwn() const override { return !used.value_or(std::nullopt); }
    QString clientID() const override { return isProgramsOwn() ? u"own"_s : (*used)->clientID; }
    QString decidedElsewhere() const override { return elsewhere; }
    CompletionTicket tryClient(const OwnClient& asked, QObject* context, Tried tried) override {
        tries.append(asked);
        answer = CompletionGate<const MaybeError&>(context, std::move(tried));
        return answer.ticket();
    }
    void use(const std::optional<OwnClient>& chosen) override { used = chosen; }
    bool isSignedIn() const override { return false; }

    QList<OwnClient> tries;
    CompletionGate<const MaybeError&> answer; // to the latest of them
    std::optional<std::optional<OwnClient>> used;
    QString elsewhere;
};

struct Desk {
    FakeOwnClients clients;
    FakeFilePanels panels;
    FakeOpener opener;
    std::unique_ptr<OwnClientDialog> dialog;

    explicit Desk(const std::optional<OwnClient>& used = std::nullopt) {
        clients.used = used;
        open();
    }
    void open() {
        dialog = std::make_unique<OwnClientDialog>(clients, panels, opener, nullptr);
        dialog->open();
        if (!QTest::qWaitForWindowActive(dialog.get()))
            qFatal("the dialog does not get the keyboard");
    }

    StepView& step(int number) const { return *dialog->findChildren<StepView*>().at(number - 1); }
    StepView::State state(int number) const { return step(number).state(); }
    QPushButton& button(const QString& label) const {
        for (auto* button : dialog->findChildren<QPushButton*>()) {
            if (button->text().remove('&'_L1) == label)
                return *button;
        }
        qFatal("no button %s", qPrintable(label));
    }
    void paste(const QString& pasted) const {
        QGuiApplication::clipboard()->setText(pasted);
        QTest::keyClick(dialog.get(), Qt::Key_V, Qt::ControlModifier);
    }
    bool showsSecret() const {
        for (const auto* widget : dialog->findChildren<QWidget*>()) {
            const auto* label = qobject_cast<const QLabel*>(widget);
            const QString all = widget->accessibleName() + widget->accessibleDescription() + widget->toolTip() +
                                (label ? label->text() : QString());
            if (all.contains("hush"_L1))
                return true;
        }
        return false;
    }
};

QPushButton& useButton(const Desk& desk) { return desk.button(u"Use This Client"_s); }

} // namespace

class OwnClientDialogTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void goesFromStepToStep() {
        Desk desk;
        desk.button(u"Open Console"_s).click();
        QCOMPARE(desk.opener.opened().size(), 1);
        QVERIFY(!useButton(desk).isEnabled() && !desk.button(u"Use Quenby's Own Client Again"_s).isVisible());

        desk.paste(text);
        QCOMPARE(desk.state(2), StepView::State::fine);
        QVERIFY(desk.step(2).sentence().contains(client.clientID));
        QCOMPARE(desk.state(3), StepView::State::checking); // by itself
        QCOMPARE(desk.clients.tries, QList{client});

        desk.clients.answer.deliver(MaybeError(Error(URLErrorCode::timedOut, {{errorKey::reason, u"Slow."_s}})));
        QTRY_COMPARE(desk.state(3), StepView::State::wrong);
        QCOMPARE(desk.step(3).sentence(), u"Slow."_s);
        QVERIFY(!useButton(desk).isEnabled());
        desk.button(u"Try Again"_s).click();
        QCOMPARE(desk.clients.tries.size(), 2);
        QVERIFY(!desk.button(u"Try Again"_s).isEnabled());
        desk.clients.answer.deliver(MaybeError());
        QTRY_COMPARE(desk.state(3), StepView::State::fine);
        QVERIFY(!desk.showsSecret());

        QTest::keyClick(desk.dialog->focusWidget(), Qt::Key_Return);
        QVERIFY(!desk.dialog->isVisible());
        QVERIFY(desk.clients.used && *desk.clients.used == client);
    }

    // What was found out of one client says nothing of the next, also when the answer comes late.
    void anotherFileBeginsAnew() {
        Desk desk;
        desk.paste(text);
        const auto late = desk.clients.answer;
        desk.paste(u"{}"_s);
        QCOMPARE(desk.state(2), StepView::State::wrong);
        late.deliver(MaybeError());
        QCoreApplication::processEvents();
        QCOMPARE(desk.state(3), StepView::State::waiting);
        QVERIFY(!useButton(desk).isEnabled() && !desk.button(u"Try Again"_s).isEnabled());
    }

    void takesFilesFromEverywhere_data() {
        QTest::addColumn<QString>("way");
        for (const char* way : {"chosen", "dropped", "pasted path"})
            QTest::newRow(way) << QString::fromLatin1(way);
    }
    void takesFilesFromEverywhere() {
        QFETCH(QString, way);
        const QTemporaryDir folder;
        QFile file(folder.filePath(u"client ä.json"_s));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text.toUtf8()) > 0);
        file.close();
        Desk desk;
        if (way == "chosen"_L1) {
            desk.button(u"Choose File…"_s).click();
            QVERIFY(desk.panels.choose({QFile::encodeName(file.fileName())}));
        } else if (way == "dropped"_L1) {
            QMimeData data;
            data.setUrls({QUrl::fromLocalFile(file.fileName())});
            QDragEnterEvent enter({5, 5}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
            QCoreApplication::sendEvent(desk.dialog.get(), &enter);
            QVERIFY(enter.isAccepted());
            QDropEvent drop({5, 5}, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
            QCoreApplication::sendEvent(desk.dialog.get(), &drop);
            QCOMPARE(drop.dropAction(), Qt::CopyAction); // whoever moves would delete the file
        } else {
            desk.paste(file.fileName());
        }
        QTRY_COMPARE(desk.clients.tries, QList{client});
        desk.paste(file.fileName() + u".gone"_s);
        QTRY_COMPARE(desk.state(2), StepView::State::wrong);
        QVERIFY(desk.step(2).sentence().contains(u"client ä.json.gone"_s));
    }

    void goesWhileAFileIsRead() {
        Desk desk;
        desk.paste(u"/dev/null"_s);
        desk.dialog.reset();
        QCoreApplication::processEvents();
        QVERIFY(desk.clients.tries.isEmpty());
    }

    void formerClientAgain() {
        Desk desk(client);
        desk.button(u"Use Quenby's Own Client Again"_s).click();
        QVERIFY(!desk.dialog->isVisible());
        QVERIFY(desk.clients.used && !*desk.clients.used);
    }

    void saysWhoDecidesElsewhere() {
        Desk desk(client);
        desk.clients.elsewhere = u"Decided elsewhere."_s;
        desk.open();
        desk.paste(text);
        desk.clients.answer.deliver(MaybeError());
        QTRY_COMPARE(desk.state(3), StepView::State::fine);
        QVERIFY(!useButton(desk).isEnabled() && !desk.button(u"Use Quenby's Own Client Again"_s).isVisible());
    }

    void noBrowserIsTold() {
        Desk desk;
        desk.opener.setHasProgram(false);
        desk.button(u"Open Console"_s).click();
        QCOMPARE(desk.state(1), StepView::State::wrong);
        QVERIFY(desk.step(1).sentence().contains("https://"_L1)); // to be typed in
    }
};

QTEST_MAIN(OwnClientDialogTest)
#include "tst_ownclientdialog.moc"
