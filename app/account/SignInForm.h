// The parts of the local Drive's sign-in page that a person would see and press.
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>

#include <optional>
#include <utility>

namespace quenby {

struct SignInForm {
    QUrl action; // absolute
    QList<std::pair<QString, QString>> fields;

    QByteArray encoded() const; // application/x-www-form-urlencoded

    // The page's form with a button that says "allow", filled in as the page suggests and sent with that button.
    // Nothing when there is no such form.
    static std::optional<SignInForm> inPage(const QByteArray& html, const QUrl& pageURL);
};

// The text of the page's title element; empty when there is none.
QString titleOfPage(const QByteArray& html);

} // namespace quenby
