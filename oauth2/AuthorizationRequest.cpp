#include "oauth2/AuthorizationRequest.h"

namespace quenby::oauth2 {
namespace {

// The page's own address bar shows "/" where an address has no path.
QString pathOf(const QUrl& url) {
    return url.path().isEmpty() && !url.host().isEmpty() ? QStringLiteral("/") : url.path();
}

// Tokens come from the token server alone; a page that claims to bring one is not believed.
FormFields withoutTokens(FormFields answer) {
    for (const char* name : {"access_token", "refresh_token", "id_token", "assertion", "expires_in", "token_type"})
        answer.remove(QLatin1String(name));
    return answer;
}

} // namespace

URLRequest mutableURLRequestWithURL(const QUrl& url, const QString& paramString) {
    QUrl full;
    full.setScheme(url.scheme());
    full.setHost(url.host());
    full.setPort(url.port());
    full.setPath(url.path(QUrl::FullyEncoded), QUrl::StrictMode);
    QStringList query{url.query(QUrl::FullyEncoded), paramString};
    query.removeAll(QString());
    if (!query.isEmpty())
        full.setQuery(query.join(QLatin1Char('&')), QUrl::StrictMode);
    return URLRequest(full);
}

bool isRedirectTo(const QUrl& url, const QString& redirectURI) {
    if (redirectURI.isEmpty() || redirectURI == nativeClientRedirectURI)
        return false;
    const QUrl redirect(redirectURI);
    if (url == redirect)
        return true;
    const bool isSameScheme = url.scheme() == redirect.scheme();
    return url.host() == redirect.host() && pathOf(url) == pathOf(redirect) &&
           (isSameScheme || !redirect.host().isEmpty());
}

bool isHostInDomain(const QString& host, const QString& domain) {
    if (domain.isEmpty())
        return false;
    return host.compare(domain, Qt::CaseInsensitive) == 0 ||
           host.endsWith(QString(QLatin1Char('.') + domain), Qt::CaseInsensitive);
}

FormFields answerInTitle(const QString& title) {
    const qsizetype lastSpace = title.lastIndexOf(QLatin1Char(' '));
    if (lastSpace < 0)
        return {};
    const FormFields answer = dictionaryWithResponseString(title.sliced(lastSpace + 1));
    const bool isAnswer =
        !answer.value(QStringLiteral("code")).isEmpty() || !answer.value(QStringLiteral("error")).isEmpty();
    return isAnswer ? withoutTokens(answer) : FormFields();
}

FormFields answerInRedirect(const QUrl& url) {
    return withoutTokens(dictionaryWithResponseString(url.query(QUrl::FullyEncoded)));
}

} // namespace quenby::oauth2
