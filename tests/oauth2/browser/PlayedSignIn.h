// Signs in at the local Drive's page in a browser that a test plays.
#pragma once

#include "app/account/SignInForm.h"
#include "tests/oauth2/browser/PlayedBrowser.h"

#include <QUrlQuery>

namespace quenby::testing {

// Allows what the page asks for; where the browser is sent then. Empty when the page is no such page.
inline QUrl allowedAnswer(PlayedBrowser& browser, const QUrl& page, const QString& email) {
    const PlayedPage shown = browser.get(page);
    auto form = SignInForm::inPage(shown.body, shown.url);
    if (!form)
        return {};
    for (auto& [name, value] : form->fields) {
        if (name == QLatin1String("email"))
            value = email;
    }
    return browser.post(form->action, form->encoded()).location;
}

// What a provider's answer to the sign-in of a page would be, with one parameter such as "code=c", encoded.
inline QUrl answerTo(const QUrl& page, const QByteArray& parameter) {
    const QUrlQuery asked(page);
    const QString redirect = asked.queryItemValue(QStringLiteral("redirect_uri"), QUrl::FullyDecoded);
    return QUrl::fromEncoded(redirect.toLatin1() + "/?" + parameter +
                             "&state=" + asked.queryItemValue(QStringLiteral("state")).toLatin1());
}

} // namespace quenby::testing
