#include "oauth2/TokenRequest.h"

#include <QTest>

using namespace quenby::oauth2;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(TokenRequestInputs)

class TestTokenRequest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void fieldsFollowTheGrant_data() {
        QTest::addColumn<TokenRequestInputs>("inputs");
        QTest::addColumn<QString>("fetchType");
        QTest::addColumn<QString>("form");

        const auto inputs = [](const auto& fill) {
            TokenRequestInputs filled;
            fill(filled);
            return filled;
        };
        TokenRequestInputs all;
        all.refreshToken = u"r"_s;
        all.refreshScope = u"rs"_s;
        all.code = u"c"_s;
        all.redirectURI = u"uri"_s;
        all.scope = u"s"_s;
        all.assertion = u"a"_s;
        all.assertionGrantType = u"jwt"_s;
        all.clientID = u"id"_s;
        all.clientSecret = u"secret"_s;
        QTest::newRow("refresh token first")
            << all << u"refresh"_s
            << u"client_id=id&client_secret=secret&grant_type=refresh_token&refresh_token=r&scope=rs"_s;
        all.refreshToken.clear();
        QTest::newRow("code second")
            << all << u"token"_s
            << u"client_id=id&client_secret=secret&code=c&grant_type=authorization_code&redirect_uri=uri&scope=s"_s;
        all.code.clear();
        QTest::newRow("assertion third") << all << u"assertion"_s
                                         << u"assertion=a&client_id=id&client_secret=secret&grant_type=jwt"_s;
        all.assertion.clear();
        QTest::newRow("none") << all << QString() << QString();
        QTest::newRow("bare refresh token") << inputs([](auto& i) { i.refreshToken = u"r"_s; }) << u"refresh"_s
                                            << u"grant_type=refresh_token&refresh_token=r"_s;
        QTest::newRow("bare code") << inputs([](auto& i) { i.code = u"c"_s; }) << u"token"_s
                                   << u"code=c&grant_type=authorization_code"_s;
        QTest::newRow("additional fields win, those of the grant type over all") << inputs([](auto& i) {
            i.code = u"c"_s;
            i.clientID = u"id"_s;
            i.additionalParameters = {{u"client_id"_s, u"other"_s}, {u"x"_s, u"1"_s}, {u"y"_s, u"1"_s}};
            i.additionalGrantTypeParameters = {{u"authorization_code"_s, {{u"y"_s, u"2"_s}}},
                                               {u"refresh_token"_s, {{u"y"_s, u"3"_s}}}};
        }) << u"token"_s << u"client_id=other&code=c&grant_type=authorization_code&x=1&y=2"_s;
    }
    void fieldsFollowTheGrant() {
        QFETCH(TokenRequestInputs, inputs);
        QFETCH(QString, fetchType);
        const auto request = makeTokenRequest(inputs);
        QCOMPARE(request.has_value(), !fetchType.isEmpty());
        if (!request)
            return;
        QCOMPARE(request->fetchType, fetchType);
        QTEST(encodedQueryParametersForDictionary(request->fields), "form");
    }
};

QTEST_GUILESS_MAIN(TestTokenRequest)
#include "tst_TokenRequest.moc"
