// Which pages belong into a tab: every rule, what is near to it, and which rule comes first.
#include "tests/workspace/policy/PolicyRows.h"
#include "workspace/policy/NavigationPolicy.h"

#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using enum PageVerdict;

Q_DECLARE_METATYPE(quenby::PageVerdict)

namespace {

using Addresses = std::initializer_list<const char*>;

void rows(PageVerdict verdict, Addresses addresses) {
    for (const char* address : addresses)
        QTest::newRow(address) << QString::fromUtf8(address) << verdict;
}

void columns() {
    QTest::addColumn<QString>("address");
    QTest::addColumn<PageVerdict>("verdict");
}

PageDecision decide(const QString& source, const QString& request, const QString& tabTitle = {}) {
    return decidePolicyForNavigationAction(
        {.source = addressOf(source), .request = addressOf(request), .tabTitle = tabTitle}, endpointsFor(request));
}

} // namespace

class NavigationPolicyTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Where the source is the request.
    void navigation_data() {
        columns();
        rows(logOut, {"https://accounts.google.com/Logout?service=wise", "https://accounts.google.com/Logout",
                      "https://ACCOUNTS.google.com.:443/u/0/Logout?x=y",
                      "https://accounts.google.com/ServiceLogin?continue=Logout",
                      "https://accounts.google.com/%4cogout", "https://accounts.google.com/AddSession?continue=/Logout",
                      "/accounts/Logout?service=wise", "/accounts/u/1/Logout"});
        rows(openOutside, {"https://plus.google.com/share?url=x",
                           "https://twitter.com/intent/tweet?text=x",
                           "https://www.facebook.com/sharer/sharer.php?u=x",
                           "https://www.facebook.com/sharer.php",
                           "https://accounts.google.com/AddSession?service=wise",
                           "/accounts/AddSession",
                           "https://plus.google.com/",
                           "https://plus.google.com",
                           "https://plus.google.com/u/0/",
                           "https://plus.google.com/u/1/_/notifications/frame",
                           "https://plus.google.com/u/0/_/notifications/frame/x",
                           "https://plus.google.com/?/u/0/_/notifications/frame",
                           "https://www.google.com/settings/storage",
                           "https://www.google.com/settings/storage?hl=en",
                           "https://g.co/drive",
                           "https://g.co/drive?x",
                           "/www/settings/storage",
                           "/drive/app",
                           "https://www.google.com",
                           "https://www.google.com/",
                           "http://www.google.com/",
                           "http://www.google.com:80/search?q=x",
                           "https://www.google.com./intl/en/about",
                           "https://www.google.com/search?q=settings/storage?authuser=0",
                           "https://www.google.com/search?q=cloudprint/gadget.html",
                           "http://www.google.com/maps/",
                           "https://www.google.com/maps",
                           "https://www.google.com/settings/storage?authuser=1",
                           "/www/",
                           "/www/search?q=x",
                           "https://support.google.com/drive/answer/1",
                           "https://www.youtube.com/watch?v=x",
                           "https://maps.google.com/",
                           "https://play.google.com/store",
                           "https://news.google.com/",
                           "https://mail.google.com/mail/u/0/",
                           "https://translate.google.com/",
                           "https://books.google.com/x",
                           "https://www.blogger.com/home",
                           "https://photos.google.com/",
                           "https://drive.google.com/legalnotices",
                           "http://google.com/legalnotices.html",
                           "/legalnotices",
                           "https://any.example/options/",
                           "http://any.example/a/b/options/",
                           "https://docs.google.com/options/",
                           "https://drive.google.com/x/../options/",
                           "/options/"});
        rows(download, {"https://docs.google.com/document/d/1/export?format=docx&id=1&token=x",
                        "https://docs.google.com/document/export?format=odt&id=1",
                        "https://docs.google.com/document/export?format=txt&id=",
                        "https://docs.google.com/document/x-export?format=pdf&id=1",
                        "https://docs.google.com/document/export?format=zip&id=1",
                        "https://docs.google.com/presentation/d/1/export/txt?id=1",
                        "https://docs.google.com/presentation/d/1/export/pptx?id=1",
                        "https://docs.google.com/presentation/d/1/export/jpeg?id=1",
                        "https://docs.google.com/presentation/d/1/export/png?id=1",
                        "https://docs.google.com/presentation/d/1/export/pdf?id=1",
                        "https://docs.google.com/presentation/d/1/export/svg?id=1",
                        "https://docs.google.com/spreadsheets/d/1/export?format=xlsx&id=1",
                        "https://docs.google.com/spreadsheets/d/1/export?format=ods&id=1",
                        "https://docs.google.com/spreadsheets/d/1/export?format=pdf&id=1",
                        "https://docs.google.com/spreadsheets/d/1/export?format=csv&id=1&gid=0",
                        "https://docs.google.com/spreadsheets/d/1/export?format=tsv&id=1",
                        "https://docs.google.com/spreadsheets/d/1/export?format=zip&id=1",
                        "https://docs.google.com/drawings/d/1/export/pdf?id=1",
                        "https://docs.google.com/drawings/d/1/export/svg?id=1",
                        "https://docs.google.com/drawings/d/1/export/png?id=1",
                        "https://docs.google.com/drawings/d/1/export/jpeg?id=1",
                        "HTTPS://Docs.Google.Com.:443/%64rawings/d/1/export/jpeg?%69d=1",
                        "https://drive.google.com/e/export-result?authuser=0&archiveId=1",
                        "/docs/document/export?format=docx&id=1",
                        "/docs/presentation/d/1/export/svg?id=1",
                        "/docs/spreadsheets/d/1/export?format=csv&id=1",
                        "/docs/drawings/d/1/export/png?id=1",
                        "/e/export-result?authuser=0&archiveId=1"});
        rows(undecided, {"https://docs.google.com/document/export", "https://docs.google.com/export",
                         "/docs/spreadsheets/d/1/export"});
        // What a tab is for.
        rows(use, {"https://drive.google.com/",
                   "https://drive.google.com/drive/folders/1",
                   "https://docs.google.com/",
                   "https://docs.google.com/document/d/1/edit",
                   "https://docs.google.com/document/create?folder=1",
                   "https://accounts.google.com/ServiceLogin?service=wise",
                   "https://www.google.com/maps/d/drive",
                   "https://plus.google.com/u/0/_/notifications/frame?x",
                   "https://www.google.com/settings/storage?authuser=0&x",
                   "https://www.google.com/a/settings/storage?authuser=0",
                   "https://www.google.com/tools/feedback/content_frame",
                   "http://www.google.com/tools/feedback/submit_frame?x",
                   "https://www.google.com/cloudprint/gadget.html#x",
                   "/",
                   "/drive/folders/1",
                   "/docs/document/d/1/edit",
                   "/www/maps/",
                   "/www/settings/storage?authuser=0",
                   "/www/tools/feedback/content_frame",
                   "/usercontent/docs/securesc/1",
                   "about:blank",
                   "blob:https://drive.google.com/1"});
        // Near misses.
        rows(use, {"http://accounts.google.com/Logout?service=wise",
                   "https://accounts.google.com/logout",
                   "https://accounts.google.com/#Logout",
                   "https://drive.google.com/Logout?service=wise",
                   "https://accounts.google.com:8443/Logout",
                   "https://accounts.google.com.evil.example/Logout?service=wise",
                   "https://evil.example/accounts.google.com/Logout?service=wise",
                   "https://evil.example/?https://accounts.google.com/Logout?service=wise",
                   "https://accounts-google.com/Logout?service=wise",
                   "https://xaccounts.google.com/Logout",
                   "https://accounts.google.com.xn--80ak6aa92e.com/Logout",
                   "https://\u0430ccounts.google.com/Logout",
                   "/accountsLogout?service=wise",
                   "/Logout?service=wise",
                   "http://127.0.0.1:4712/accounts/Logout?service=wise",
                   "http://127.0.0.1.evil.example:4711/accounts/Logout",
                   "https://127.0.0.1:4711/accounts/Logout",
                   "https://twitter.com/intent",
                   "http://twitter.com/intent/tweet",
                   "https://facebook.com/sharer",
                   "https://accounts.google.com/addsession",
                   "https://g.co/drives",
                   "https://g.co/",
                   "https://google.com/search?q=x",
                   "https://notgoogle.com/",
                   "https://www.google.com:8080/",
                   "https://www.google.com.evil.example/legalnotices",
                   "https://evil.example/legalnotices",
                   "https://notgoogle.com/legalnotices",
                   "https://drive.google.com/?/legalnotices",
                   "https://help.support.google.com/",
                   "https://any.example/options",
                   "https://any.example/options/?hl=en",
                   "https://any.example/options/#top",
                   "https://any.example/?/options/",
                   "https://any.example/options%2F",
                   "https://any.example/Options/",
                   "https://any.example/myoptions/"});
        rows(use, {"https://docs.google.com/document/d/1/export?format=doc&id=1",
                   "https://docs.google.com/document/d/1/export/x?format=docx&id=1",
                   "https://docs.google.com/document/d/1/export?format=docx",
                   "https://docs.google.com/document/d/1/export?id=1&format=docx",
                   "https://docs.google.com/document/d/1/export?x&format=docx&id=1",
                   "https://docs.google.com/document/d/1/edit?next=export?format=docx&id=1",
                   "https://docs.google.com/document/d/1/edit#export?format=docx&id=1",
                   "https://docs.google.com/document/d/1/export%3Fformat=docx&id=1",
                   "https://docs.google.com/document%2Fexport?format=docx&id=1",
                   "https://docs.google.com/documents/d/1/export?format=docx&id=1",
                   "https://docs.google.com/document/d/1/export/pdf?id=1",
                   "https://docs.google.com/presentation/d/1/export?format=pdf&id=1",
                   "https://docs.google.com/presentation/d/1/export%2Fpdf?id=1",
                   "https://docs.google.com/spreadsheets/d/1/export?format=docx&id=1",
                   "https://docs.google.com/spreadsheets/d/1/xexport?format=csv&id=1",
                   "https://docs.google.com/drawings/d/1/export/txt?id=1",
                   "https://docs.google.com/forms/export/pdf?id=1",
                   "http://docs.google.com/drawings/d/1/export/pdf?id=1",
                   "https://docs.google.com:8443/drawings/d/1/export/pdf?id=1",
                   "https://drive.google.com/drawings/d/1/export/pdf?id=1",
                   "https://docs.google.com.evil.example/drawings/d/1/export/pdf?id=1",
                   "https://evil.example/?docs.google.com/drawings/d/1/export/pdf?id=1",
                   "https://drive.google.com/e/export-result?authuser=1&archiveId=1",
                   "https://drive.google.com/x/e/export-result?authuser=0&archiveId=1",
                   "https://docs.google.com/e/export-result?authuser=0&archiveId=1",
                   "https://drive.google.com/export",
                   "https://docs.google.com/x/export/",
                   "https://docs.google.com/export#x",
                   "/drawings/d/1/export/pdf?id=1",
                   "/docs/e/export-result?authuser=0&archiveId=1"});
        rows(ignore, {"file:///etc/passwd", "javascript:alert(1)", "mailto:a@b.example", "tel:1", "ftp://ftp.example/",
                      "data:text/html,x", "about:srcdoc", "about:config", "chrome://gpu",
                      "view-source:https://a.example/", "blob:null/1", "blob:file:///1", "intent://x", "https:///x", "",
                      "drive.google.com", "https://docs.google.com@evil.example/drawings/export/pdf?id=1",
                      "https://u:p@docs.google.com/drawings/export/pdf?id=1", "https://u@accounts.google.com/Logout"});
    }
    void navigation() {
        QFETCH(QString, address);
        const PageDecision decision = decide(address, address);
        QTEST(decision.verdict, "verdict");
        QVERIFY(!decision.newTab);
    }

    // Which of the two addresses a rule asks for; before and after redirects they differ.
    void sourceAndRequest_data() {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("request");
        QTest::addColumn<PageVerdict>("verdict");
        const QString drive = QStringLiteral("https://drive.google.com/");
        const auto row = [](const QString& source, const char* request, PageVerdict verdict) {
            QTest::addRow("%s to %s", qPrintable(source), request) << source << QString::fromLatin1(request) << verdict;
        };
        const auto at = [](const char* address) { return QString::fromLatin1(address); };
        // Without a source everything is used, but for what is no page.
        row({}, "https://accounts.google.com/Logout?service=wise", use);
        row({}, "https://www.google.com/", use);
        row({}, "https://docs.google.com/drawings/d/1/export/pdf?id=1", use);
        row({}, "file:///etc/passwd", ignore);
        row(drive, "javascript:alert(1)", ignore);
        // Leaving the service is the request's, to the letter.
        row(drive, "https://accounts.google.com/Logout?service=wise", logOut);
        row(drive, "https://accounts.google.com/Logout?service=wise&x", use);
        row(drive, "https://accounts.google.com/Logout", use);
        row(drive, "https://accounts.google.com/u/0/Logout?service=wise", use);
        row(at("https://www.google.com/maps/"), "https://accounts.google.com/Logout?service=wise", logOut);
        row(at("https://www.google.com/"), "https://accounts.google.com/Logout?service=wise", logOut);
        // All that follows is the source's.
        row(at("https://accounts.google.com/Logout"), "https://drive.google.com/", logOut);
        row(at("https://www.google.com/"), "https://drive.google.com/", openOutside);
        row(drive, "https://www.google.com/", use);
        row(drive, "https://any.example/options/", use);
        row(at("https://any.example/options/"), "https://drive.google.com/", openOutside);
        // Exports are the request's, after everything that the source decides.
        row(drive, "https://docs.google.com/drawings/d/1/export/pdf?id=1", download);
        row(at("https://docs.google.com/drawings/d/1/export/pdf?id=1"), "https://drive.google.com/", use);
        row(at("https://www.google.com/maps/"), "https://docs.google.com/drawings/d/1/export/pdf?id=1", use);
        row(at("https://mail.google.com/"), "https://docs.google.com/drawings/d/1/export/pdf?id=1", openOutside);
        row(at("https://any.example/options/"), "https://docs.google.com/drawings/d/1/export/pdf?id=1", openOutside);
        row(at("https://docs.google.com/document/export"), "https://docs.google.com/drawings/d/1/export/pdf?id=1",
            download);
        row(at("https://docs.google.com/document/export"), "https://drive.google.com/", undecided);
        row(drive, "https://docs.google.com/document/export", use);
        // A source that could not be opened outside is none to open.
        row(at("file:///x/options/"), "https://drive.google.com/", use);
        row(at("https://u@any.example/options/"), "https://drive.google.com/", use);
    }
    void sourceAndRequest() {
        QFETCH(QString, source);
        QFETCH(QString, request);
        QTEST(decide(source, request).verdict, "verdict");
    }

    void framesMayBeFilledByTheirPage() {
        const auto verdict = [](const char* address) {
            const QUrl url(QString::fromLatin1(address));
            return decidePolicyForNavigationAction({.source = url, .request = url, .isMainFrame = false},
                                                   Endpoints::provider())
                .verdict;
        };
        for (const char* address :
             {"about:srcdoc", "about:blank", "data:text/html,x", "blob:null/1", "https://a.example/"})
            QVERIFY2(verdict(address) == use, address);
        for (const char* address :
             {"file:///x", "javascript:1", "mailto:a@b.example", "about:gpu", "https://u@a.example/"})
            QVERIFY2(verdict(address) == ignore, address);
        QCOMPARE(verdict("https://accounts.google.com/Logout?service=wise"), logOut);
    }

    void printViews_data() {
        QTest::addColumn<QString>("address");
        QTest::addColumn<bool>("opensTab");
        for (const char* address :
             {"https://doc-1.googleusercontent.com/viewer/1?print=true", "/viewer/1?print=true&x"})
            QTest::newRow(address) << QString::fromLatin1(address) << true;
        for (const char* address :
             {"https://doc-1.googleusercontent.com/viewer/1?x&print=true", "/viewer/1?print=false",
              "/x/viewer/1?print=true", "https://doc-1.googleusercontent.com/viewer/1#?print=true",
              "https://evil.example/viewer/1?print=true",
              "https://googleusercontent.com.evil.example/viewer/1?print=true",
              "https://docs.google.com/viewer?print=true", "http://doc-1.googleusercontent.com/viewer/1?print=true",
              "/docs/viewer/1?print=true"})
            QTest::newRow(address) << QString::fromLatin1(address) << false;
    }
    void printViews() {
        QFETCH(QString, address);
        QFETCH(bool, opensTab);
        const QString drive = QStringLiteral("https://drive.google.com/");
        const PageDecision elsewhere = decide(drive, address, QStringLiteral("My Drive"));
        QCOMPARE(elsewhere.verdict, use);
        QCOMPARE(elsewhere.newTab.has_value(), opensTab);
        if (opensTab)
            QCOMPARE(*elsewhere.newTab, (PageOpenRecord{QStringLiteral("Google Drive Print"), addressOf(address)}));
        QCOMPARE(decide(drive, address, QStringLiteral("Google Drive Print")), PageDecision{});
        // The request's, and only after what the source decides.
        QCOMPARE(decide(address, drive), PageDecision{});
        QCOMPARE(decide(QStringLiteral("https://mail.google.com/"), address), PageDecision{openOutside});
        const PageDecision fromExport = decide(QStringLiteral("https://docs.google.com/document/export"), address);
        QCOMPARE(fromExport.verdict, opensTab || endpointsFor(address).isLocal ? use : undecided);
    }

    void newWindows_data() {
        columns();
        // Ignored here means another tab, for web addresses.
        rows(ignore, {"https://docs.google.com/document/d/1/edit", "https://docs.google.com", "/docs/forms/create",
                      "https://www.google.com/maps/d/drive?x", "/www/maps/d/drive", "about:blank", "",
                      "file:///etc/passwd", "javascript:alert(1)", "data:text/html,x", "blob:https://docs.google.com/1",
                      "https://u@docs.google.com/"});
        rows(openOutside,
             {"https://www.google.com/settings/storage", "https://www.google.com/settings/storage?authuser=0",
              "https://g.co/drive", "/www/settings/storage?x"});
        rows(use, {"https://drive.google.com/", "http://docs.google.com/", "https://docs.google.com.evil.example/",
                   "https://evil.example/?https://docs.google.com/", "https://www.google.com/maps/d/",
                   "http://www.google.com/maps/d/drive", "https://www.google.com/?maps/d/drive",
                   "https://evil.example/maps/d/drive", "https://drive.google.com/maps/d/drive",
                   "https://www.google.com/search", "/drive/folders/1", "http://www.google.com/settings/storage"});
    }
    void newWindows() {
        QFETCH(QString, address);
        const QUrl url = addressOf(address);
        const PageDecision decision = decidePolicyForNewWindowAction(url, endpointsFor(address));
        QTEST(decision.verdict, "verdict");
        const bool opensTab =
            decision.verdict == ignore && url.scheme().startsWith(QLatin1String("http")) && url.userInfo().isEmpty();
        QCOMPARE(decision.newTab,
                 opensTab ? std::optional(PageOpenRecord{QStringLiteral("Google Docs"), url}) : std::nullopt);
    }

    void contentTypes_data() {
        columns();
        rows(download,
             {"https://docs.google.com/document/d/1/export?format=html", "https://google.com/document/export?format=",
              "https://doc-1-docs.googleusercontent.com/docs/securesc/1/2?e=download",
              "/docs/document/export?format=docx&id=1", "/usercontent/docs/securesc/1/a.txt"});
        rows(use,
             {"https://docs.google.com/document/d/1/edit", "https://docs.google.com/document/d/1/export?x&format=docx",
              "https://docs.google.com/spreadsheets/d/1/export?format=csv",
              "https://docs.google.com/document/xexport?format=", "https://notgoogle.com/document/export?format=docx",
              "https://google.com.evil.example/document/export?format=docx",
              "https://evil.example/google.com/document/export?format=docx",
              "http://docs.google.com/document/export?format=docx", "https://doc-1.googleusercontent.com/docs/secures",
              "https://googleusercontent.com.evil.example/docs/securesc/1",
              "https://evil.example/?googleusercontent.com/docs/securesc/1",
              "https://notgoogleusercontent.com/docs/securesc/1", "/docs/securesc/1", "/x/usercontent/docs/securesc/1",
              "", "about:blank"});
    }
    void contentTypes() {
        QFETCH(QString, address);
        QTEST(decidePolicyForMIMEType(addressOf(address), endpointsFor(address)), "verdict");
    }

    void scriptsWindows() {
        const QUrl page(QStringLiteral("https://docs.google.com/print"));
        QCOMPARE(createWebViewWithRequest(page), (PageOpenRecord{QStringLiteral("Google Drive Print"), page}));
        QCOMPARE(createWebViewWithRequest(QUrl(QStringLiteral("file:///etc/passwd"))).url,
                 QUrl(QStringLiteral("about:blank")));
    }

    void refusals_data() {
        QTest::addColumn<QString>("address");
        QTest::addColumn<bool>("isRefusal");
        for (const char* address :
             {"https://accounts.google.com/signin/rejected?x", "https://accounts.google.com/v3/signin/rejected",
              "https://accounts.google.com/signin/v2/deniedsigninrejected", "https://accounts.google.com/x/unsupported",
              "https://drive.google.com/unsupportedbrowser", "https://docs.google.com/document/unsupported",
              "/unsupported", "/accounts/signin/rejected", "/docs/unsupportedbrowser"})
            QTest::newRow(address) << QString::fromLatin1(address) << true;
        for (const char* address :
             {"https://accounts.google.com/signin", "https://accounts.google.com/?/signin/rejected",
              "https://drive.google.com/signin/rejected", "https://evil.example/signin/rejected",
              "https://accounts.google.com.evil.example/signin/rejected",
              "https://docs.google.com/document/d/unsupported/edit", "https://docs.google.com/notunsupported",
              "http://drive.google.com/unsupported", "https://mail.google.com/unsupportedbrowser", "/signin/rejected",
              ""})
            QTest::newRow(address) << QString::fromLatin1(address) << false;
    }
    void refusals() {
        QFETCH(QString, address);
        QTEST(isRefusalOfBrowser(addressOf(address), endpointsFor(address)), "isRefusal");
    }
};

QTEST_GUILESS_MAIN(NavigationPolicyTest)
#include "tst_navigationpolicy.moc"
