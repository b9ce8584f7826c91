#include "popover/changes/RowTexts.h"

#include "core/ResourceKey.h"

#include <algorithm>

namespace quenby {
namespace {

using Status = ChangeRecord::Status;

constexpr char16_t firstStrongIsolate = u'\u2068';
constexpr char16_t popIsolate = u'\u2069';

// They would turn what stands behind the name around, and with it the end of the name.
bool turnsDirection(QChar character) {
    const char16_t code = character.unicode();
    return code == u'\u061C' || code == u'\u200E' || code == u'\u200F' || (code >= u'\u202A' && code <= u'\u202E') ||
           (code >= u'\u2066' && code <= u'\u2069');
}

QString oneCleanLine(const QString& title) {
    QString line;
    line.reserve(title.size());
    for (const QChar character : title) {
        if (!turnsDirection(character))
            line += character.category() == QChar::Other_Control ? QChar(QLatin1Char(' ')) : character;
    }
    return line.simplified();
}

bool hasRightToLeft(const QString& text) {
    return std::any_of(text.cbegin(), text.cend(), [](QChar character) {
        const QChar::Direction direction = character.direction();
        // Half of a pair may be anything: the scripts beyond the first plane are not worth telling apart here.
        return direction == QChar::DirR || direction == QChar::DirAL || character.isSurrogate();
    });
}

QString verbOf(Status status) {
    switch (status) {
    case Status::added:
        return QStringLiteral("Added.");
    case Status::updated:
        return QStringLiteral("Updated.");
    case Status::restored:
        return QStringLiteral("Restored.");
    case Status::trashed:
        return QStringLiteral("Trashed.");
    case Status::deleted:
        return QStringLiteral("Deleted.");
    }
    return {};
}

bool isGone(const ChangeRecord& record) { return record.status == Status::trashed || record.status == Status::deleted; }

QString nameOf(const ChangeRecord& record) {
    if (isSummary(record))
        return QStringLiteral("%1 %2")
            .arg(record.count)
            .arg(record.count == 1 ? QLatin1String("file") : QLatin1String("files"));
    return oneCleanLine(record.title);
}

// Everything after "id=". A link without it is none that this program made; of such a one all but its first three
// characters is taken. The file's resource key, when it has one, stands behind its identifier.
QString fileIdentifier(const RowTexts& texts) {
    const QLatin1String mark("id=");
    const QString identifier = texts.share.mid(std::max<qsizetype>(texts.share.indexOf(mark), 0) + mark.size());
    const QString key = addressWithResourceKey({}, texts.resourceKey);
    return !key.isEmpty() && identifier.endsWith(key) ? identifier.chopped(key.size()) : identifier;
}

} // namespace

QString RowTexts::title() const { return verb.isEmpty() ? name : name + QLatin1Char(' ') + verb; }

QString RowTexts::shownTitle(const QString& shownName) const {
    if (verb.isEmpty())
        return shownName;
    const QString behind = QLatin1Char(' ') + verb;
    if (!hasRightToLeft(name))
        return shownName + behind;
    return QChar(firstStrongIsolate) + shownName + QChar(popIsolate) + behind;
}

QString RowTexts::spoken(const QString& when) const {
    QString text = name;
    if (!verb.isEmpty())
        text += QLatin1Char(' ') + verb.chopped(1).toLower();
    return when.isEmpty() ? text : text + QStringLiteral(", ") + when;
}

bool isSummary(const ChangeRecord& record) { return record.status == Status::deleted && record.title.isEmpty(); }

RowTexts rowTexts(const ChangeRecord& record) {
    return {nameOf(record), record.status ? verbOf(*record.status) : QString(),
            isGone(record) ? QString() : record.share, record.resourceKey};
}

PageOpenRecord rowPage(const RowTexts& texts, const QUrl& webURL) {
    QString path = webURL.path(QUrl::FullyEncoded);
    if (!path.endsWith(QLatin1Char('/')))
        path += QLatin1Char('/');
    path += QStringLiteral("file/d/") + QString::fromLatin1(QUrl::toPercentEncoding(fileIdentifier(texts))) +
            QStringLiteral("/view");
    PageOpenRecord page;
    page.title = texts.title();
    page.url = webURL;
    page.url.setPath(path, QUrl::StrictMode);
    if (const QString key = resourceKeyItem(texts.resourceKey); !key.isEmpty())
        page.url.setQuery(key, QUrl::StrictMode);
    return page;
}

} // namespace quenby
