#include "oauth2/AuthorizationRequest.h"
#include "oauth2/OAuth2Encoding.h"
#include "oauth2/ProofKey.h"
#include "oauth2/UserInfo.h"

#include <QRandomGenerator>
#include <QTest>

using namespace quenby::oauth2;
using namespace Qt::StringLiterals;

class TestOAuth2Encoding : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void valueIsEncoded_data() {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("encoded");
        QTest::newRow("unreserved") << u"AZaz09-._~"_s << u"AZaz09-._~"_s;
        QTest::newRow("reserved") << u"!*'();:@&=+$,/?%#[]"_s
                                  << u"%21%2A%27%28%29%3B%3A%40%26%3D%2B%24%2C%2F%3F%25%23%5B%5D"_s;
        QTest::newRow("not allowed in a URL") << u" \"<>\\^`{|}\n"_s << u"%20%22%3C%3E%5C%5E%60%7B%7C%7D%0A"_s;
        QTest::newRow("UTF-8") << u"ä€😀"_s << u"%C3%A4%E2%82%AC%F0%9F%98%80"_s;
        QTest::newRow("empty") << u""_s << u""_s;
    }
    void valueIsEncoded() {
        QFETCH(QString, value);
        QTEST(encodedOAuthValueForString(value), "encoded");
    }

    void randomFieldsSurviveTheRoundTrip() {
        QRandomGenerator random(20260101);
        const QString alphabet = u"ab&=+%?#/ ;,\"'ä€漢\u0301\t\n~-._[]"_s;
        for (int round = 0; round < 500; ++round) {
            FormFields fields;
            for (int field = random.bounded(5); field >= 0; --field) {
                QString value;
                for (int length = random.bounded(20); length > 0; --length)
                    value += random.bounded(8) == 0 ? u"😀"_s : QString(alphabet.at(random.bounded(alphabet.size())));
                fields.insert(u"key%1"_s.arg(field), value);
            }
            const QString encoded = encodedQueryParametersForDictionary(fields);
            QCOMPARE(dictionaryWithResponseString(encoded), fields);
            QCOMPARE(dictionaryWithResponseData(encoded.toUtf8()), fields);
        }
    }

    void keysAreSortedWithoutRegardToCase() {
        const FormFields fields{{u"b"_s, u"2"_s},      {u"C"_s, u"3"_s},     {u"a"_s, u"1"_s},
                                {u"userID"_s, u"5"_s}, {u"token"_s, u"4"_s}, {u"Z"_s, u""_s}};
        QCOMPARE(encodedQueryParametersForDictionary(fields), u"a=1&b=2&C=3&token=4&userID=5&Z="_s);
        QCOMPARE(encodedQueryParametersForDictionary({}), QString());
    }

    void oddPairsAreRead_data() {
        QTest::addColumn<QString>("response");
        QTest::addColumn<FormFields>("fields");
        QTest::newRow("value with equals signs")
            << u"code=4/x==&a=b"_s << FormFields{{u"code"_s, u"4/x=="_s}, {u"a"_s, u"b"_s}};
        QTest::newRow("plus is a plus") << u"code=a+b"_s << FormFields{{u"code"_s, u"a+b"_s}};
        QTest::newRow("last of two counts") << u"a=1&a=2"_s << FormFields{{u"a"_s, u"2"_s}};
        QTest::newRow("no key, no value, nothing") << u"=x&alone&&a="_s << FormFields{{u"a"_s, u""_s}};
        QTest::newRow("broken escape") << u"a=100%&b=%4"_s << FormFields{{u"a"_s, u"100%"_s}, {u"b"_s, u"%4"_s}};
        QTest::newRow("empty") << u""_s << FormFields();
    }
    void oddPairsAreRead() {
        QFETCH(QString, response);
        QTEST(dictionaryWithResponseString(response), "fields");
    }

    void onlyJSONObjectsAreRead() {
        for (const char* text : {"", "[]", "null", "\"text\"", "{\"a\":1", "{\"a\":1}x", "<html>", "{'a':1}"})
            QVERIFY2(!dictionaryWithJSONData(text), text);
        QCOMPARE(dictionaryWithJSONData(" {\"a\":[1,\"x\"]} "), (QVariantMap{{u"a"_s, QVariantList{1, u"x"_s}}}));
        QVERIFY(dictionaryWithJSONData("{}"));
    }

    void scopesAreJoined() {
        QCOMPARE(scopeWithStrings({u"a"_s, u""_s, u"b"_s, QString()}), u"a b"_s);
        QCOMPARE(scopeWithStrings({u""_s, u""_s}), QString());
    }

    void webSafeBase64IsDecoded_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("both special characters") << u"-_-_"_s << QByteArray("\xfb\xff\xbf");
        QTest::newRow("no padding") << u"YQ"_s << QByteArray("a");
        QTest::newRow("padding") << u"YWI="_s << QByteArray("ab");
        QTest::newRow("foreign character") << u"YW!i"_s << QByteArray();
        QTest::newRow("plain base64") << u"+/+/"_s << QByteArray();
    }
    void webSafeBase64IsDecoded() {
        QFETCH(QString, text);
        QTEST(decodeWebSafeBase64(text), "bytes");
    }

    void proofKeyFollowsTheStandard() {
        // RFC 7636, appendix B.
        QCOMPARE(codeChallengeForVerifier(u"dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk"_s),
                 u"E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM"_s);
        QCOMPARE(makeCodeVerifier().size(), 43);
        QVERIFY(makeCodeVerifier() != makeCodeVerifier());
    }

    void queryIsAppended_data() {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("full");
        QTest::newRow("plain") << u"https://h/o/auth"_s << u"https://h/o/auth?a=%2F%26&b=1"_s;
        QTest::newRow("port and query") << u"http://h:81/p?x=%20y"_s << u"http://h:81/p?x=%20y&a=%2F%26&b=1"_s;
        QTest::newRow("fragment and user go") << u"https://u:p@h/p#f"_s << u"https://h/p?a=%2F%26&b=1"_s;
        QTest::newRow("escaped path") << u"https://h/a%2Fb"_s << u"https://h/a%2Fb?a=%2F%26&b=1"_s;
    }
    void queryIsAppended() {
        QFETCH(QString, url);
        QTEST(QString::fromLatin1(mutableURLRequestWithURL(QUrl(url), u"a=%2F%26&b=1"_s).url.toEncoded()), "full");
    }

    void redirectIsRecognised_data() {
        QTest::addColumn<QString>("redirectURI");
        QTest::addColumn<QString>("url");
        QTest::addColumn<bool>("isRedirect");
        QTest::newRow("with a query") << u"http://localhost/cb"_s << u"http://localhost/cb?code=1"_s << true;
        QTest::newRow("other scheme and port")
            << u"http://localhost/cb"_s << u"https://LOCALHOST:8080/cb?code=1"_s << true;
        QTest::newRow("slash for no path") << u"http://localhost"_s << u"http://localhost/?code=1"_s << true;
        QTest::newRow("longer path") << u"http://localhost/cb"_s << u"http://localhost/cb2?code=1"_s << false;
        QTest::newRow("other host") << u"http://localhost/cb"_s << u"http://localhost.evil.test/cb?code=1"_s << false;
        QTest::newRow("own scheme") << u"org.quenby:/cb"_s << u"org.quenby:/cb?code=1"_s << true;
        QTest::newRow("other scheme without host") << u"org.quenby:/cb"_s << u"file:///cb?code=1"_s << false;
        QTest::newRow("native client") << nativeClientRedirectURI << nativeClientRedirectURI << false;
        QTest::newRow("none") << u""_s << u""_s << false;
    }
    void redirectIsRecognised() {
        QFETCH(QString, redirectURI);
        QFETCH(QString, url);
        QTEST(isRedirectTo(QUrl(url), redirectURI), "isRedirect");
    }

    void hostsBelongToDomains_data() {
        QTest::addColumn<QString>("host");
        QTest::addColumn<bool>("belongs");
        QTest::newRow("itself") << u"example.com"_s << true;
        QTest::newRow("below") << u"accounts.EXAMPLE.com"_s << true;
        QTest::newRow("look-alike") << u"notexample.com"_s << false;
        QTest::newRow("in front") << u"example.com.evil.test"_s << false;
        QTest::newRow("empty") << u""_s << false;
    }
    void hostsBelongToDomains() {
        QFETCH(QString, host);
        QTEST(isHostInDomain(host, u"example.com"_s), "belongs");
        QVERIFY(!isHostInDomain(host, u""_s));
    }

    void answersAreFoundInTitles_data() {
        QTest::addColumn<QString>("title");
        QTest::addColumn<FormFields>("answer");
        QTest::newRow("code") << u"Success code=4%2Fx&state=s"_s
                              << FormFields{{u"code"_s, u"4/x"_s}, {u"state"_s, u"s"_s}};
        QTest::newRow("error") << u"Denied error=access_denied"_s << FormFields{{u"error"_s, u"access_denied"_s}};
        QTest::newRow("no space") << u"code=4/x"_s << FormFields();
        QTest::newRow("not the last word") << u"Success code=4/x here"_s << FormFields();
        QTest::newRow("empty code") << u"Success code="_s << FormFields();
        QTest::newRow("only the code is taken")
            << u"Success code=c&refresh_token=r&access_token=a&expires_in=9"_s << FormFields{{u"code"_s, u"c"_s}};
    }
    void answersAreFoundInTitles() {
        QFETCH(QString, title);
        QTEST(answerInTitle(title), "answer");
    }

    void identityTokens_data() {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QByteArray>("claims");
        QTest::addColumn<QString>("email");
        QTest::addColumn<QString>("isVerified");
        const QByteArray whole = R"({"sub":"1","email":"a@b.c","email_verified":true})";
        QTest::newRow("whole") << u"h.%1.s"_s << whole << u"a@b.c"_s << u"true"_s;
        QTest::newRow("two parts") << u"h.%1"_s << whole << u""_s << u""_s;
        QTest::newRow("four parts") << u"h.%1.s.x"_s << whole << u""_s << u""_s;
        QTest::newRow("no base64") << u"h.*%1.s"_s << whole << u""_s << u""_s;
        QTest::newRow("no e-mail") << u"h.%1.s"_s << QByteArray(R"({"sub":"1"})") << u""_s << u""_s;
        QTest::newRow("no user id") << u"h.%1.s"_s << QByteArray(R"({"sub":7,"email":"a@b.c"})") << u""_s << u""_s;
        QTest::newRow("verified as text")
            << u"h.%1.s"_s << QByteArray(R"({"sub":"1","email":"a@b.c","email_verified":"true"})") << u"a@b.c"_s
            << u"true"_s;
        QTest::newRow("not verified as text")
            << u"h.%1.s"_s << QByteArray(R"({"sub":"1","email":"a@b.c","email_verified":"false"})") << u"a@b.c"_s
            << u"false"_s;
        QTest::newRow("verified is not told")
            << u"h.%1.s"_s << QByteArray(R"({"sub":"1","email":"a@b.c"})") << u"a@b.c"_s << u""_s;
    }
    void identityTokens() {
        QFETCH(QString, format);
        QFETCH(QByteArray, claims);
        QFETCH(QString, email);
        const QByteArray part = claims.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
        const auto info = userInfoFromIDToken(format.arg(QString::fromLatin1(part)));
        QCOMPARE(info.has_value(), !email.isEmpty());
        if (!info)
            return;
        QCOMPARE(info->email, email);
        QTEST(info->emailIsVerified, "isVerified");
    }
};

QTEST_GUILESS_MAIN(TestOAuth2Encoding)
#include "tst_OAuth2Encoding.moc"
