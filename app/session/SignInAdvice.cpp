#include "app/session/SignInAdvice.h"

#include "core/Redaction.h"
#include "driveapi/GTLErrorObject.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QStringList>
#include <QUrl>

namespace quenby {
namespace {

constexpr int serverTrouble = 500;       // HTTP statuses from here on
constexpr qsizetype longestWord = 32;    // of a server's own words; what is longer may be a token
constexpr qsizetype longestReason = 300; // characters

struct Known {
    const char* names; // with a blank around each
    const char* sentence;
    bool needsUser = true;
};

// The more exact of two names that come together stand before the other.
constexpr Known known[] = {
    // --- The consent page ---
    {" access_denied ",
     QT_TRANSLATE_NOOP("quenby::SignInAdvice",
                       "The access was declined, or the client is still being tested and your address is not among its "
                       "test users. Sign in again and allow the access; if that does not help, add your address as a "
                       "test user in the provider's console.")},
    {" org_internal ",
     QT_TRANSLATE_NOOP("quenby::SignInAdvice",
                       "This client is only for the members of its organisation. Sign in with an address of that "
                       "organisation, or make the client's consent screen “External” in the provider's console.")},
    {" admin_policy_enforced ",
     QT_TRANSLATE_NOOP("quenby::SignInAdvice",
                       "The administrator of your organisation does not allow this client. Ask the administrator to "
                       "allow it, or sign in with another address.")},
    {" disallowed_useragent ",
     QT_TRANSLATE_NOOP("quenby::SignInAdvice",
                       "The provider takes no sign-in inside of a program. Sign in again, in the browser.")},
    {" redirect_uri_mismatch ",
     QT_TRANSLATE_NOOP("quenby::SignInAdvice",
                       "The provider knows this client, but not as a program on a computer. Make a client of the type "
                       "“Desktop app” in its console, and use that one.")},
    {" invalid_scope ",
     QT_TRANSLATE_NOOP("quenby::SignInAdvice",
                       "The provider does not give this access to the client. Choose the other access, or add the "
                       "Drive's scopes to the client's consent screen in the provider's console.")},
    // --- The client ---
    {" deleted_client ", QT_TRANSLATE_NOOP("quenby::SignInAdvice",
                                           "This client was deleted. Register another one in the provider's console.")},
    {" disabled_client ",
     QT_TRANSLATE_NOOP("quenby::SignInAdvice", "This client is switched off. The provider's console says why.")},
    {" invalid_client unauthorized_client ",
     QT_TRANSLATE_NOOP("quenby::SignInAdvice",
                       "The provider does not know this client, or its secret has changed. Download its file from the "
                       "console again; a client that is new may take a few minutes to be known.")},
    // --- The sign-in ---
    {" invalid_grant authError ",
     QT_TRANSLATE_NOOP("quenby::SignInAdvice",
                       "The provider no longer accepts this sign-in. Sign in again. While a client is being tested, "
                       "that is needed every seven days.")},
    {" accountDisabled accountDeleted ",
     QT_TRANSLATE_NOOP("quenby::SignInAdvice",
                       "This account is switched off. The provider's own pages say why; sign in with another one.")},
    {" invalid_request unsupported_response_type unsupported_grant_type ",
     QT_TRANSLATE_NOOP("quenby::SignInAdvice",
                       "The provider does not accept the request as this client makes it. Make sure that the client is "
                       "of the type “Desktop app”, and sign in again.")},
    // --- The Drive ---
    {" SERVICE_DISABLED accessNotConfigured ",
     QT_TRANSLATE_NOOP("quenby::SignInAdvice",
                       "The Drive API is not enabled for this client. In the provider's console, choose the client's "
                       "project and enable the Google Drive API; it takes a few minutes. Then try again.")},
    {" ACCESS_TOKEN_SCOPE_INSUFFICIENT insufficientPermissions ",
     QT_TRANSLATE_NOOP("quenby::SignInAdvice",
                       "The sign-in does not include the access to the Drive: a box on the consent page was not "
                       "ticked. Sign in again and tick it.")},
    {" domainPolicy ",
     QT_TRANSLATE_NOOP("quenby::SignInAdvice",
                       "The administrator of your organisation does not allow programs to use the Drive. Ask the "
                       "administrator to allow it, or sign in with another address.")},
    {" dailyLimitExceeded dailyLimitExceededUnreg quotaExceeded ",
     QT_TRANSLATE_NOOP("quenby::SignInAdvice",
                       "This client has used up what the provider allows it for today. Wait until tomorrow, or use a "
                       "client of your own, whose limits are yours alone.")},
    // --- What passes ---
    {" userRateLimitExceeded rateLimitExceeded RATE_LIMIT_EXCEEDED ",
     QT_TRANSLATE_NOOP("quenby::SignInAdvice",
                       "The provider asks for a slower pace. Wait a few minutes; nothing else is needed."),
     false},
    {" temporarily_unavailable server_error backendError internalError UNAVAILABLE ",
     QT_TRANSLATE_NOOP("quenby::SignInAdvice", "The provider is in difficulty. Try again in a few minutes."), false},
};

QString tr(const char* text) { return QCoreApplication::translate("quenby::SignInAdvice", text); }

// What a server has said, wherever an error keeps it.
struct Answer {
    QStringList names; // the more exact ones first
    QString words;

    void take(const QJsonObject& json);
    void takeText(const QString& text) {
        if (words.isEmpty())
            words = text;
    }
    void takeNames(const QJsonValue& list) {
        for (const QJsonValue& one : list.toArray())
            names.append(one[QLatin1String("reason")].toString());
    }
};

// {"error": "name", "error_description": …} of a token server; {"error": {…}} or what stands in it of the Drive.
void Answer::take(const QJsonObject& json) {
    const QJsonValue error = json[QLatin1String("error")];
    if (error.isObject())
        return take(error.toObject());
    for (const char* list : {"details", "errors", "data"})
        takeNames(json[QLatin1String(list)]);
    for (const QString& name : {error.toString(), json[QLatin1String("status")].toString()})
        names.append(name);
    takeText(json[QLatin1String("error_description")].toString());
    takeText(json[QLatin1String("message")].toString());
}

Answer answerIn(const Error& error) {
    Answer answer;
    answer.take(QJsonObject::fromVariantMap(error.detail(errorKey::json).toMap()));
    if (const auto structured = GTLErrorObject::underlyingObjectForError(error))
        answer.take(QJsonDocument::fromJson(structured->JSONString().toUtf8()).object());
    answer.take(QJsonDocument::fromJson(error.detail(errorKey::data).toByteArray()).object());
    const QString said = error.detail(errorKey::error).toString(); // a name, or a message
    answer.names.append(said);
    answer.takeText(said);
    return answer;
}

// Of an address, what names its place.
QString harmless(const QString& word) {
    if (word.contains(QLatin1String("://")))
        return QUrl(word).host();
    return word.size() > longestWord || word.contains(QLatin1Char('=')) ? QStringLiteral("…") : word;
}

QString harmlessWords(const QString& said) {
    static const QRegularExpression controls(QStringLiteral("[\\p{C}\\s]+"));
    QStringList words = redaction::text(said).split(controls, Qt::SkipEmptyParts);
    for (QString& word : words)
        word = harmless(word);
    const QString all = words.join(QLatin1Char(' '));
    return all.size() > longestReason ? all.first(longestReason) + QStringLiteral("…") : all;
}

std::optional<SignInAdvice> adviceOnNetwork(const Error& error) {
    if (error.domain() == errorDomain::url)
        return SignInAdvice{error.is(URLErrorCode::timedOut)
                                ? tr("Nobody has answered in time. Sign in again, and finish it in the browser.")
                                : tr("The provider could not be reached. Check the network connection and try again."),
                            false};
    if (error.domain() == errorDomain::posix)
        return SignInAdvice{tr("No browser could be opened for the sign-in. Choose a default browser in the desktop's "
                               "settings, and sign in again."),
                            false};
    if (error.domain() == errorDomain::httpStatus && error.code() >= serverTrouble)
        return signInAdvice(QStringLiteral("server_error"));
    return std::nullopt;
}

} // namespace

std::optional<SignInAdvice> signInAdvice(const QString& providersName) {
    const QString name = QLatin1Char(' ') + providersName + QLatin1Char(' ');
    for (const Known& one : known) {
        if (QLatin1String(one.names).contains(name))
            return SignInAdvice{tr(one.sentence), one.needsUser};
    }
    return std::nullopt;
}

SignInAdvice signInAdvice(const Error& error) {
    const Answer answer = answerIn(error);
    for (const QString& name : answer.names) {
        if (auto advice = signInAdvice(name))
            return *advice;
    }
    const QString words = harmlessWords(answer.words);
    // Whoever found the trouble on this computer has said what to do.
    const QString reason = harmlessWords(error.detail(errorKey::reason).toString());
    if (!reason.isEmpty() && words.isEmpty())
        return {reason, false};
    if (auto advice = adviceOnNetwork(error))
        return *advice;
    if (words.isEmpty())
        return {tr("The sign-in failed (%1). Try again.").arg(error.description()), false};
    return {tr("The provider has answered: “%1”. Try again; if it stays so, the provider's console or its help pages "
               "may say more.")
                .arg(words),
            false};
}

} // namespace quenby
