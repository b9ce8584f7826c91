#include "preferences/account/OwnClient.h"

#include "core/Endpoints.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QStringDecoder>

#include <algorithm>

namespace quenby {
namespace {

constexpr qsizetype longestValue = 512; // of an identifier or a secret

QString tr(const char* text) { return QCoreApplication::translate("quenby::OwnClient", text); }

Error fault(const QString& sentence) {
    return Error(errorDomain::json, static_cast<qint64>(JSONErrorCode::malformed), {{errorKey::reason, sentence}});
}

QString howToGetIt() { return tr("In the provider's console, open the client and choose “Download JSON”."); }

Error fault(const QString& sentence, const QString& whatToDo) { return fault(sentence + QLatin1Char(' ') + whatToDo); }

bool isPlain(const QString& value) {
    return !value.isEmpty() && value.size() <= longestValue &&
           std::all_of(value.begin(), value.end(),
                       [](QChar character) { return character.unicode() > 0x20 && character.unicode() < 0x7f; });
}

bool isAll(const QString& text, const char* expression) {
    return QRegularExpression(QRegularExpression::anchoredPattern(QLatin1String(expression))).match(text).hasMatch();
}

// What people copy when they don't copy the file.
Error faultOfText(const QString& text) {
    if (text.startsWith(QLatin1Char('<')))
        return fault(tr("This is a web page, not the file of a client."), howToGetIt());
    if (isAll(text, "AIza[\\w-]{20,80}"))
        return fault(tr("This is an API key. It opens no account; Quenby needs an OAuth client of the kind “Desktop "
                        "app”."));
    if (isAll(text, "[\\w-]+\\.apps\\.googleusercontent\\.com"))
        return fault(tr("This is the identifier of a client, without the rest of its file."), howToGetIt());
    if (isAll(text, "GOCSPX-[\\w-]+"))
        return fault(tr("This is the secret of a client, without the rest of its file."), howToGetIt());
    if (text.startsWith(QLatin1String("-----BEGIN ")))
        return fault(tr("This is a key or a certificate, not the file of a client."), howToGetIt());
    return fault(tr("This is not the file of a client: it is no JSON."), howToGetIt());
}

Error faultOfSyntax(const QString& text, const QJsonParseError& error, qsizetype size) {
    const bool isJSON = text.startsWith(QLatin1Char('{')) || text.startsWith(QLatin1Char('['));
    if (!isJSON)
        return faultOfText(text);
    // Behind the last character, something is missing.
    if (error.offset >= size - 1)
        return fault(tr("The file breaks off before its end."), tr("Download it again, or copy all of it."));
    return fault(tr("The file is damaged: it is no valid JSON."), tr("Download it again."));
}

// Another of the files that the provider's console and its tools give.
std::optional<Error> faultOfKind(const QJsonObject& file) {
    const QString type = file[QLatin1String("type")].toString();
    if (type == QLatin1String("service_account"))
        return fault(tr("This is the key of a service account, which has a Drive of its own and does not open yours. "
                        "Register an OAuth client of the kind “Desktop app” instead, and keep this file to yourself."));
    if (type == QLatin1String("authorized_user"))
        return fault(tr("This is a kept sign-in of another program, not the file of a client."), howToGetIt());
    if (!type.isEmpty() && !file.contains(QLatin1String("installed")))
        return fault(tr("This is a file of credentials of another kind, not the file of a client."), howToGetIt());
    if (file.contains(QLatin1String("web")))
        return fault(tr("This client is of the kind “Web application”, which no program on a computer can use. "
                        "Register one of the kind “Desktop app”."));
    if (!file.contains(QLatin1String("installed")))
        return fault(tr("This is JSON, but not the file of a client."), howToGetIt());
    return std::nullopt;
}

// A client of somebody else's would only be refused, with nothing to learn from it.
bool isOfTheProvider(const QString& address) {
    const QUrl url(address, QUrl::StrictMode);
    const QString domain = Endpoints::provider().providerDomain;
    return url.isValid() && (url.host() == domain || url.host().endsWith(QString(QLatin1Char('.') + domain)));
}

Result<OwnClient> clientIn(const QJsonValue& installed) {
    if (!installed.isObject())
        return fault(tr("In this file, “installed” is not the description of a client."), howToGetIt());
    const QJsonValue address = installed[QLatin1String("auth_uri")];
    if (!address.isUndefined() && !isOfTheProvider(address.toString()))
        return fault(tr("This client signs in to another provider. Register one in the console of this one."));
    const QJsonValue identifier = installed[QLatin1String("client_id")];
    const QJsonValue secret = installed[QLatin1String("client_secret")];
    OwnClient client{identifier.toString().trimmed(), secret.toString().trimmed()};
    if (identifier.isUndefined() || (identifier.isString() && client.clientID.isEmpty()))
        return fault(tr("The client's identifier, “client_id”, is missing in this file."), howToGetIt());
    if (!isPlain(client.clientID))
        return fault(tr("The client's identifier, “client_id”, is none in this file."), howToGetIt());
    const bool hasNoSecret = secret.isUndefined() || secret.toString(QStringLiteral("x")).isEmpty();
    if (!hasNoSecret && (!secret.isString() || !isPlain(client.clientSecret)))
        return fault(tr("The client's secret, “client_secret”, is none in this file."), howToGetIt());
    return client;
}

} // namespace

Result<OwnClient> ownClientFromJSON(const QByteArray& json) {
    if (json.size() > mostOwnClientBytes)
        return fault(tr("This is far too large for the file of a client."), howToGetIt());
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = QString(decoder.decode(json)).trimmed();
    if (decoder.hasError() || text.contains(QChar(u'\0')))
        return fault(tr("This is no text in UTF-8, so not the file of a client as the console gives it."),
                     howToGetIt());
    if (text.isEmpty())
        return fault(tr("The file is empty."), tr("Download it again."));
    const QByteArray plain = text.toUtf8(); // without a byte order mark
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(plain, &error);
    if (error.error != QJsonParseError::NoError)
        return faultOfSyntax(text, error, plain.size());
    if (!document.isObject())
        return fault(tr("This is JSON, but not the file of a client."), howToGetIt());
    const QJsonObject file = document.object();
    if (const auto other = faultOfKind(file))
        return *other;
    return clientIn(file[QLatin1String("installed")]);
}

} // namespace quenby
