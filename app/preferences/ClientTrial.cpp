#include "app/preferences/ClientTrial.h"

#include "app/account/DriveConnection.h"
#include "app/session/SignInAdvice.h"
#include "http/GTMHTTPFetcher.h"
#include "http/GTMHTTPFetcherService.h"
#include "oauth2/OAuth2Error.h"
#include "oauth2/TokenRequest.h"

#include <QCoreApplication>

#include <algorithm>

namespace quenby {
namespace {

using namespace std::chrono_literals;

constexpr auto patience = 20s; // with a server that says nothing
constexpr int serverTrouble = 500;
// Where a sign-in waits for its answer (RFC 8252, section 7.3); clients of programs may do so at any port.
constexpr char redirectURI[] = "http://127.0.0.1";

QString tr(const char* text) { return QCoreApplication::translate("quenby::ClientTrial", text); }

// Only what may be an error's name: the text is the server's.
QString shortName(const QString& name) {
    constexpr qsizetype longest = 40;
    const bool isName =
        name.size() <= longest && std::all_of(name.begin(), name.end(), [](QChar character) {
            return (character >= QLatin1Char('a') && character <= QLatin1Char('z')) || character == QLatin1Char('_');
        });
    return isName ? name : QString();
}

// What the server says of the client, as a sentence; empty when it knows it.
QString refusal(const QString& name) {
    if (name == oauth2::errorInvalidGrant)
        return {};
    if (const auto advice = signInAdvice(name))
        return advice->sentence;
    return tr("The provider does not accept this client (%1). Register another one in its console.").arg(name);
}

QString networkTrouble(const Error& error) {
    QString cause = error.detail(errorKey::reason).toString().trimmed();
    if (!cause.isEmpty() && !cause.endsWith(QLatin1Char('.')))
        cause += QLatin1Char('.');
    return QStringList{tr("The provider could not be reached, so nothing is known of the client."), cause,
                       tr("Check the network connection and try again.")}
        .join(QLatin1Char(' '))
        .simplified();
}

MaybeError outcomeOf(const QByteArray& data, const MaybeError& error) {
    const auto trouble = [](const QString& sentence) {
        return oauth2::makeError(oauth2::ErrorCode::authorizationFailed, sentence);
    };
    // A server may ask for the client's name and secret in another way when it does not take them (section 5.2).
    if (error && error->is(FetcherErrorCode::authenticationChallengeFailed))
        return trouble(refusal(oauth2::errorInvalidClient));
    if (error && error->domain() != errorDomain::httpStatus)
        return trouble(networkTrouble(*error));
    const QString name =
        shortName(oauth2::dictionaryWithJSONData(data).value_or(QVariantMap()).value(errorKey::error).toString());
    // A success for a code that does not exist is no answer of a token server either.
    if (!error || error->code() >= serverTrouble || name.isEmpty())
        return trouble(tr("The provider's answer says nothing of the client. Try again later."));
    const QString sentence = refusal(name);
    return sentence.isEmpty() ? MaybeError() : trouble(sentence);
}

} // namespace

CompletionTicket beginClientTrial(const DriveConnection& drive, const OwnClient& client, QObject* context,
                                  OwnClients::Tried tried) {
    // Everything but the client and the code as a sign-in would have it.
    oauth2::TokenRequestInputs inputs;
    inputs.code = QStringLiteral("a-code-that-does-not-exist");
    inputs.redirectURI = QLatin1String(redirectURI);
    inputs.clientID = client.clientID;
    inputs.clientSecret = client.clientSecret;
    URLRequest request(drive.endpoints().tokenURL);
    request.httpMethod = QByteArrayLiteral("POST");
    request.headers.set(QByteArrayLiteral("Content-Type"), QByteArrayLiteral("application/x-www-form-urlencoded"));
    request.timeout = patience;
    const auto fetcher = drive.accountFetcherService()->fetcherWithRequest(request);
    fetcher->setPostData(
        oauth2::encodedQueryParametersForDictionary(oauth2::makeTokenRequest(inputs)->fields).toUtf8());
    fetcher->setAuthorizer(nullptr);
    fetcher->setCookieStorageMethod(CookieStorageMethod::none);
    fetcher->setComment(QStringLiteral("trial of a client"));
    const CompletionGate<const MaybeError&> gate(context, std::move(tried));
    fetcher->beginFetchWithCompletionHandler(
        context, [gate](const QByteArray& data, const MaybeError& error) { gate.deliver(outcomeOf(data, error)); });
    return gate.ticket();
}

} // namespace quenby
