#include "app/account/SignInForm.h"

#include <QHash>
#include <QRegularExpression>

namespace quenby {
namespace {

// What the button that approves says.
const QString allowingValue = QStringLiteral("allow");

constexpr auto insensitive = QRegularExpression::CaseInsensitiveOption | QRegularExpression::DotMatchesEverythingOption;

QString decoded(QString text) {
    // The ampersand last, so that what it uncovers stays as it is.
    static const std::pair<const char*, char16_t> entities[] = {
        {"&lt;", u'<'}, {"&gt;", u'>'}, {"&quot;", u'"'}, {"&#39;", u'\''}, {"&amp;", u'&'}};
    for (const auto& [entity, character] : entities)
        text.replace(QLatin1String(entity), QString(QChar(character)));
    return text;
}

QHash<QString, QString> attributesOf(const QString& tag) {
    static const QRegularExpression attribute(
        QStringLiteral("([a-z-]+)(?:\\s*=\\s*(?:\"([^\"]*)\"|'([^']*)'|([^\\s>\"']+)))?"), insensitive);
    QHash<QString, QString> attributes;
    for (auto match = attribute.globalMatch(tag); match.hasNext();) {
        const auto one = match.next();
        attributes.insert(one.captured(1).toLower(),
                          decoded(QString(one.captured(2) + one.captured(3) + one.captured(4))));
    }
    return attributes;
}

bool isButton(const QString& element, const QString& type) {
    return element == QStringLiteral("button") || type == QStringLiteral("submit");
}

bool isLeftOut(const QHash<QString, QString>& attributes) {
    const QString type = attributes.value(QStringLiteral("type")).toLower();
    const bool isTick = type == QStringLiteral("checkbox") || type == QStringLiteral("radio");
    return (isTick && !attributes.contains(QStringLiteral("checked"))) ||
           attributes.contains(QStringLiteral("disabled"));
}

} // namespace

std::optional<SignInForm> SignInForm::inPage(const QByteArray& html, const QUrl& pageURL) {
    static const QRegularExpression formElement(QStringLiteral("<form\\b([^>]*)>(.*?)</form>"), insensitive);
    static const QRegularExpression control(QStringLiteral("<(input|button)\\b([^>]*)>"), insensitive);
    for (auto forms = formElement.globalMatch(QString::fromUtf8(html)); forms.hasNext();) {
        const auto element = forms.next();
        const auto formAttributes = attributesOf(element.captured(1));
        if (formAttributes.value(QStringLiteral("method")).toLower() != QStringLiteral("post"))
            continue;
        SignInForm form;
        form.action = pageURL.resolved(QUrl(formAttributes.value(QStringLiteral("action"))));
        bool isAllowed = false;
        for (auto controls = control.globalMatch(element.captured(2)); controls.hasNext();) {
            const auto match = controls.next();
            const auto attributes = attributesOf(match.captured(2));
            const QString name = attributes.value(QStringLiteral("name"));
            const QString value = attributes.value(QStringLiteral("value"));
            const bool button =
                isButton(match.captured(1).toLower(), attributes.value(QStringLiteral("type")).toLower());
            if (name.isEmpty() || isLeftOut(attributes) || (button && value != allowingValue))
                continue;
            isAllowed = isAllowed || button;
            form.fields.append({name, value});
        }
        if (isAllowed)
            return form;
    }
    return std::nullopt;
}

QByteArray SignInForm::encoded() const {
    QByteArray body;
    for (const auto& [name, value] : fields) {
        if (!body.isEmpty())
            body += '&';
        body += QUrl::toPercentEncoding(name) + '=' + QUrl::toPercentEncoding(value);
    }
    return body;
}

QString titleOfPage(const QByteArray& html) {
    static const QRegularExpression title(QStringLiteral("<title\\b[^>]*>(.*?)</title>"), insensitive);
    return decoded(title.match(QString::fromUtf8(html)).captured(1)).simplified();
}

} // namespace quenby
