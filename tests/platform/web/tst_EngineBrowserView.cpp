// The real engine against the contract and a small server, and what only the engine can get wrong.

#include "platform/linux/web/PluginWebViews.h"
#include "tests/platform/contracts/BrowserViewContract.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TestCertificate.h"

#include <QApplication>
#include <QBuffer>
#include <QCheckBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>

using namespace quenby;
using namespace quenby::testing;
using namespace Qt::StringLiterals;

namespace {

std::unique_ptr<QTcpServer> tlsServer() {
    auto server = std::make_unique<QSslServer>();
    QSslConfiguration configuration;
    configuration.setLocalCertificate(QSslCertificate(QByteArray(testCertificate)));
    configuration.setPrivateKey(QSslKey(QByteArray(testCertificateKey), QSsl::Ec));
    server->setSslConfiguration(configuration);
    return server;
}

QByteArray redIcon() {
    QImage icon(16, 16, QImage::Format_RGB32);
    icon.fill(Qt::red);
    QBuffer buffer;
    icon.save(&buffer, "PNG");
    return buffer.data();
}

// Does something with each dialog that appears, from inside of the loop in which the page waits for it.
class DialogReader : public QObject {
public:
    explicit DialogReader(std::function<void(QDialog& dialog)> read)
        : read_(std::move(read)) {
        qApp->installEventFilter(this);
    }
    bool eventFilter(QObject* object, QEvent* event) override {
        if (auto* dialog = qobject_cast<QDialog*>(object); dialog && event->type() == QEvent::Show)
            QMetaObject::invokeMethod(
                dialog, [this, dialog] { read_(*dialog); }, Qt::QueuedConnection);
        return false;
    }

private:
    const std::function<void(QDialog& dialog)> read_;
};

} // namespace

class TestEngineBrowserView : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { view_ = makeView(); }
    void cleanup();

    void history() { browserGoesBackAndForward(*view_, site_); }
    void find() { browserFindsText(*view_, site_); }
    void icon() { browserTellsThePagesIcon(*view_, site_); }
    void files() { browserReceivesFiles(*view_, site_); }
    void filesDropped() { browserDropsFilesThatNobodyTakes(*view_, site_); }
    void filesCut() { browserTellsWhyAFileDidNotArrive(*view_, site_); }
    void filesCancelled() { browserCancelsFiles(*view_, site_); }
    void rest() { browserRestsOnlyUnseen(*view_, site_); }
    void process() { browserEndsItsProcess(*view_, site_); }

    void windowsAreAskedForWithTheirPlaces();
    void theMenuIsTheProgramsOwn();
    void theConsoleTellsNoSecrets();
    void zoomStaysOnAnotherHost();
    void messagesWaitForTheirAnswers();
    void aPageThatAsksTooOftenIsSilenced();
    void thePageMayGoWhileItAsks();
    void aFileOutlivesItsPage();
    void privateViewsShareASessionUntilTheLastOneGoes();
    void theUserAgentIsTheProgramsOwn();
    void strangeCertificatesAreRefused();

private:
    Answer answer(const ReceivedRequest& request) const;
    std::unique_ptr<BrowserView> makeView(const WebViewProfile& profile = {});
    QWidget* shownPage();
    QVariant valueOf(const QString& script);

    ScriptedServer server_;
    BrowserSite site_;
    std::unique_ptr<PluginWebViews> views_;
    std::unique_ptr<BrowserView> view_;
};

void TestEngineBrowserView::initTestCase() {
    server_.setHandler([this](const ReceivedRequest& request) { return answer(request); });
    site_.url = [this](const QString& path) { return server_.url(path); };
    site_.bytes = QByteArray("a part of it that is not like the others\n\0", 42) + QByteArray(2'000'000, 'x');
    // Below the session's own home, which goes with it: the engine writes to its folders until the very end.
    views_ = std::make_unique<PluginWebViews>(PluginWebViewsPlaces::standard(u"test"_s));
}

void TestEngineBrowserView::cleanup() {
    view_.reset();
    server_.closeAllConnections();
}

Answer TestEngineBrowserView::answer(const ReceivedRequest& request) const {
    const auto page = [](const QByteArray& html) {
        return Answer::with(200, "<!DOCTYPE html>" + html,
                            {{"Content-Type", "text/html"}, {"Cache-Control", "no-store"}});
    };
    const auto file = [this] {
        return Answer::with(200, site_.bytes,
                            {{"Content-Type", "application/octet-stream"},
                             {"Content-Disposition", "attachment; filename=\"file.bin\""}});
    };
    const QByteArray& path = request.target;
    if (path == "/a")
        return page("<title>Page a</title>");
    if (path == "/b")
        return page("<title>Page b</title>");
    if (path == "/text")
        return page("<title>Text</title><link rel=icon href=/icon.png>One two one three ONE");
    if (path == "/icon.png")
        return Answer::with(200, redIcon(), {{"Content-Type", "image/png"}});
    if (path == "/file")
        return file();
    if (path == "/cut")
        return file().cutAt(500'000, Answer::Then::reset);
    if (path == "/endless")
        return file().cutAt(500'000, Answer::Then::stall);
    if (path == "/window") // a link above, a button below
        return page("<title>Window</title><style>a,button{position:absolute;left:0;width:100%;height:50%}</style>"
                    "<a href='/b' target='_blank' style='top:0'>open</a>"
                    "<button style='top:50%' onclick='open(\"/a\", \"\", \"width=200,height=100\")'>open</button>");
    return Answer::with(404);
}

std::unique_ptr<BrowserView> TestEngineBrowserView::makeView(const WebViewProfile& profile) {
    auto view = views_->createBrowser(profile);
    if (!view)
        qFatal("%s", qPrintable(view.error().description()));
    view.value()->widget()->resize(400, 300);
    view.value()->widget()->show();
    return std::move(view).value();
}

// What takes the mouse. Until the page was painted, the engine drops what is clicked there.
QWidget* TestEngineBrowserView::shownPage() {
    if (!QTest::qWaitForWindowExposed(view_->widget()))
        qFatal("the view does not appear");
    const auto isPainted = [this] { return valueOf(u"performance.getEntriesByType('paint').length"_s).toInt() > 0; };
    if (!QTest::qWaitFor(isPainted))
        qFatal("the page is not painted");
    return view_->widget()->childAt(200, 150);
}

QVariant TestEngineBrowserView::valueOf(const QString& script) {
    const auto value = std::make_shared<std::optional<QVariant>>(); // it may come too late
    view_->evaluate(script, this, [value](const QVariant& result) { *value = result; });
    [[maybe_unused]] const bool isThere = QTest::qWaitFor([&value] { return value->has_value(); });
    return value->value_or(QVariant());
}

void TestEngineBrowserView::windowsAreAskedForWithTheirPlaces() {
    browse(*view_, site_.url(u"/window"_s));
    QWidget* page = shownPage();
    QStringList asked;
    connect(view_.get(), &BrowserView::windowRequested, this, [&asked, this](const WebWindowRequest& request) {
        const char* const places[] = {"tab", "background tab", "window"};
        asked.append(QString::fromLatin1(places[int(request.place)]) + u' ' +
                     (request.url == site_.url(request.url.path()) ? request.url.path() : request.url.toString()) +
                     (request.isUserInitiated ? u" for a click"_s : QString()));
    });
    QTest::mouseClick(page, Qt::LeftButton, {}, QPoint(200, 50));
    QTRY_COMPARE(asked, QStringList{u"tab /b for a click"_s});
    QTest::mouseClick(page, Qt::MiddleButton, {}, QPoint(200, 50));
    QTRY_COMPARE(asked.value(1), u"background tab /b for a click"_s);
    QTest::mouseClick(page, Qt::LeftButton, {}, QPoint(200, 250));
    QTRY_COMPARE(asked.value(2), u"window /a for a click"_s);
    QCOMPARE(view_->url(), site_.url(u"/window"_s));
}

void TestEngineBrowserView::theMenuIsTheProgramsOwn() {
    browse(*view_, site_.url(u"/window"_s));
    QList<WebContext> asked;
    connect(view_.get(), &BrowserView::contextMenuRequested, this,
            [&asked](const WebContext& context) { asked.append(context); });
    QTest::mouseClick(shownPage(), Qt::RightButton, {}, QPoint(200, 50));
    QTRY_COMPARE(asked.size(), 1);
    QCOMPARE(asked.front().link, site_.url(u"/b"_s));
    QCOMPARE(asked.front().position, view_->widget()->mapToGlobal(QPoint(200, 50)));
    QVERIFY(!QApplication::activePopupWidget());
}

void TestEngineBrowserView::theConsoleTellsNoSecrets() {
    browse(*view_, site_.url(u"/a"_s));
    QSignalSpy messages(view_.get(), &BrowserView::consoleMessage);
    valueOf(u"console.log('from https://x.test/?access_token=s3cret')"_s);
    QTRY_COMPARE(messages.size(), 1);
    const QString message = messages.front().front().toString();
    QVERIFY2(message.contains(u"x.test"_s) && !message.contains(u"s3cret"_s), qPrintable(message));
    // Nor does it go on for ever.
    valueOf(u"for (let i = 0; i < 400; ++i) console.log(i); 1"_s);
    QVERIFY(messages.size() > 100 && messages.size() < 400);
}

void TestEngineBrowserView::zoomStaysOnAnotherHost() {
    browse(*view_, site_.url(u"/a"_s));
    view_->setZoomFactor(9);
    QCOMPARE(view_->zoomFactor(), 5.0);
    view_->setZoomFactor(1.5);
    QUrl elsewhere = site_.url(u"/b"_s);
    elsewhere.setHost(u"localhost"_s);
    browse(*view_, elsewhere);
    QTRY_COMPARE(valueOf(u"devicePixelRatio"_s).toDouble(), 1.5 * view_->widget()->devicePixelRatioF());
}

void TestEngineBrowserView::messagesWaitForTheirAnswers() {
    QStringList shown;
    const DialogReader reader([&](QDialog& dialog) {
        shown.append(dialog.windowTitle() + u": "_s + dialog.findChild<QLabel*>()->text());
        QVERIFY(dialog.isModal());
        if (auto* edit = dialog.findChild<QLineEdit*>())
            edit->setText(edit->text() + u" too"_s);
        dialog.accept();
    });
    browse(*view_, site_.url(u"/a"_s));
    QCOMPARE(valueOf(u"alert('<b>Hello</b>'); confirm('Sure?') + ' ' + prompt('Name?', 'Me')"_s).toString(),
             u"true Me too"_s);
    QCOMPARE(shown, (QStringList{u"Alert: <b>Hello</b>"_s, u"Question: Sure?"_s, u"Input: Name?"_s}));
}

void TestEngineBrowserView::aPageThatAsksTooOftenIsSilenced() {
    QList<int> boxes; // tick boxes in each dialog
    const DialogReader reader([&](QDialog& dialog) {
        const auto found = dialog.findChildren<QCheckBox*>();
        boxes.append(static_cast<int>(found.size()));
        for (QCheckBox* box : found)
            box->setChecked(true);
        dialog.accept();
    });
    browse(*view_, site_.url(u"/a"_s));
    QCOMPARE(valueOf(u"for (let i = 0; i < 5; ++i) alert(i); confirm('?')"_s), QVariant(false));
    QCOMPARE(boxes, (QList<int>{0, 0, 1}));
    browse(*view_, site_.url(u"/a"_s)); // the user comes back to it
    valueOf(u"alert('again')"_s);
    QCOMPARE(boxes.size(), 4);
}

void TestEngineBrowserView::thePageMayGoWhileItAsks() {
    const QPointer<QWidget> widget = view_->widget();
    int asked = 0;
    const DialogReader reader([&](QDialog&) {
        ++asked;
        view_.reset();
    });
    browse(*view_, site_.url(u"/a"_s));
    view_->evaluate(u"alert(1); alert(2)"_s, this, [](const QVariant&) {});
    QTRY_VERIFY(!view_);
    QTRY_VERIFY(!widget);
    QCOMPARE(asked, 1);
}

// The last page of its session, whose profile the download still needs; and it goes inside of its own offer.
void TestEngineBrowserView::aFileOutlivesItsPage() {
    QTemporaryDir folder;
    std::shared_ptr<WebDownload> file;
    view_->setDownloadHandler([&](std::shared_ptr<WebDownload> download) {
        file = std::move(download);
        file->begin(folder.filePath(u"file"_s));
        view_.reset();
    });
    view_->load(site_.url(u"/file"_s));
    QTRY_VERIFY(file && file->state() == WebDownload::State::finished);
    QCOMPARE(QFileInfo(folder.filePath(u"file"_s)).size(), site_.bytes.size());
}

void TestEngineBrowserView::privateViewsShareASessionUntilTheLastOneGoes() {
    const QString cookies = u"document.cookie"_s;
    browse(*view_, site_.url(u"/a"_s));
    QCOMPARE(valueOf(u"document.cookie = 'guest=1'; document.cookie"_s).toString(), u"guest=1"_s);
    auto other = makeView();
    std::swap(view_, other);
    browse(*view_, site_.url(u"/a"_s));
    QCOMPARE(valueOf(cookies).toString(), u"guest=1"_s);
    other.reset();
    view_.reset();
    view_ = makeView();
    browse(*view_, site_.url(u"/a"_s));
    QCOMPARE(valueOf(cookies).toString(), QString());
}

void TestEngineBrowserView::theUserAgentIsTheProgramsOwn() {
    const auto seen = [this] { return server_.requests().back().header("User-Agent"); };
    view_ = makeView({.account = u"me"_s});
    browse(*view_, site_.url(u"/a"_s));
    QVERIFY(seen().contains("Mozilla"));
    for (const QString& wanted : {u"First/1"_s, u"Second/2"_s, QString()}) {
        view_ = makeView({.account = u"me"_s, .userAgent = wanted});
        browse(*view_, site_.url(u"/a"_s));
        QCOMPARE(seen(), QByteArray("First/1"));
    }
}

void TestEngineBrowserView::strangeCertificatesAreRefused() {
    ScriptedServer server(tlsServer());
    server.setScheme(u"https"_s);
    MaybeError error;
    connect(view_.get(), &WebView::loadFailed, this, [&error](const Error& told) { error = told; });
    view_->load(server.url(u"/secret"_s));
    QTRY_VERIFY(error.has_value());
    QVERIFY(error->is(URLErrorCode::serverCertificateUntrusted));
    const QString reason = error->detail(errorKey::reason).toString();
    QVERIFY2(reason.contains(u"127.0.0.1"_s) && !reason.contains(u"/secret"_s), qPrintable(reason));
    QVERIFY(server.requests().empty());
}

QTEST_MAIN(TestEngineBrowserView)
#include "tst_EngineBrowserView.moc"
