#include "workspace/tabs/OldTabs.h"

#include "core/Redaction.h"
#include "platform/Defaults.h"
#include "workspace/policy/NavigationPolicy.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace quenby {
namespace {

// More than all that is written here ever makes; whatever is larger was not written here.
constexpr qsizetype longestText = 2 * 1024 * 1024; // characters
constexpr qsizetype mostEntries = 10'000;

constexpr QLatin1String tabsKey("OldTabs");
constexpr QLatin1String selectedKey("OldTabsSelected");
constexpr QLatin1String userKey("OldTabsUser");

constexpr QLatin1String titleKey("title");
constexpr QLatin1String urlKey("url");
constexpr QLatin1String accountKey("account");
constexpr QLatin1String windowNameKey("WindowName");

QJsonArray storedArray(const QVariant& value) {
    if (value.typeId() == QMetaType::QVariantList)
        return QJsonArray::fromVariantList(value.toList().mid(0, mostEntries));
    const QString text = value.typeId() == QMetaType::QString ? value.toString() : QString();
    if (text.size() > longestText)
        return {};
    return QJsonDocument::fromJson(text.toUtf8()).array();
}

QString shortened(const QString& title) {
    if (title.size() <= longestOldTitle)
        return title;
    // Not through the middle of a character that takes two places.
    const bool isSplit = title.at(longestOldTitle - 1).isHighSurrogate();
    return title.first(isSplit ? longestOldTitle - 1 : longestOldTitle);
}

bool canBeKept(const QUrl& url) { return isPageAddress(url) && url.toEncoded().size() <= longestOldAddress; }

// Tokens and the like are no part of where a page is; who comes back to it is signed in anyway.
QUrl withoutSecrets(const QUrl& url) {
    if (redaction::url(url) == url.toString(QUrl::FullyEncoded))
        return url;
    return url.adjusted(QUrl::RemoveQuery | QUrl::RemoveFragment);
}

QString asText(const QList<PageOpenRecord>& records) {
    QJsonArray array;
    for (const PageOpenRecord& record : records) {
        if (array.size() == mostOldTabs)
            break;
        if (canBeKept(record.url))
            array.append(QJsonObject{{titleKey, shortened(record.title)},
                                     {urlKey, QString::fromLatin1(withoutSecrets(record.url).toEncoded())},
                                     {accountKey, record.account},
                                     {windowNameKey, record.windowName}});
    }
    return array.isEmpty() ? QString() : QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Compact));
}

} // namespace

std::optional<QList<PageOpenRecord>> readOldTabs(const Defaults& defaults) {
    const QVariant value = defaults.valueForKey(tabsKey);
    if (!value.isValid())
        return std::nullopt;
    QList<PageOpenRecord> records;
    const QJsonArray stored = storedArray(value);
    for (const QJsonValue& entry : stored) {
        if (records.size() == mostOldTabs)
            break;
        const QUrl url(entry[urlKey].toString());
        if (canBeKept(url))
            records.append({.title = shortened(entry[titleKey].toString()), .url = url});
    }
    return records;
}

void writeOldTabs(Defaults& defaults, const QList<PageOpenRecord>& records) {
    const QString text = asText(records);
    if (text.isEmpty() || defaults.valueForKey(tabsKey) == text)
        return;
    defaults.setValueForKey(tabsKey, text);
}

void removeOldTabs(Defaults& defaults) {
    defaults.removeValueForKey(tabsKey);
    defaults.removeValueForKey(selectedKey);
    defaults.removeValueForKey(userKey);
}

int readSelectedTab(const Defaults& defaults, int count) {
    const int index = defaults.valueForKey(selectedKey).toInt();
    return index >= 0 && index < count ? index : 0;
}

void writeSelectedTab(Defaults& defaults, int index) {
    if (defaults.valueForKey(selectedKey).toString() != QString::number(index))
        defaults.setValueForKey(selectedKey, index);
}

QString readUserOfOldTabs(const Defaults& defaults) { return defaults.valueForKey(userKey).toString(); }

void writeUserOfOldTabs(Defaults& defaults, const QString& user) {
    if (readUserOfOldTabs(defaults) != user)
        defaults.setValueForKey(userKey, user);
}

} // namespace quenby
