#include "localdrive/server/docs/NativeContent.h"

#include "localdrive/store/ApiError.h"
#include "localdrive/store/Text.h"

#include <QJsonArray>

#include <algorithm>

namespace quenby::localdrive {
namespace {

constexpr qsizetype mostSections = 200;
constexpr qsizetype mostRows = 1000;
constexpr qsizetype mostColumns = 52;
constexpr qsizetype mostCharacters = 2 * 1024 * 1024;

// XML 1.0, section 2.2.
bool isForXml(QChar character) {
    const char16_t code = character.unicode();
    return code >= 0x20 ? code != 0xfffe && code != 0xffff : code == '\t' || code == '\n';
}

// Counts what it reads, and notes whether a value was no text.
class TextReader {
public:
    QString read(const QJsonValue& value) {
        isGood_ = isGood_ && (value.isString() || value.isUndefined());
        QString text = cleaned(value.toString());
        text.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(QLatin1Char('\r'), QLatin1Char('\n'));
        text.removeIf([](QChar character) { return !isForXml(character); });
        characters_ += text.size();
        return text;
    }
    void demand(bool condition) { isGood_ = isGood_ && condition; }
    bool isGood() const { return isGood_ && characters_ <= mostCharacters; }

private:
    qsizetype characters_ = 0;
    bool isGood_ = true;
};

void dropEmptyEnds(QList<QStringList>& rows) {
    for (QStringList& row : rows)
        while (!row.isEmpty() && row.last().isEmpty())
            row.removeLast();
    while (!rows.isEmpty() && rows.last().isEmpty())
        rows.removeLast();
}

bool isSpreadsheet(const QString& kindPath) { return kindPath == QLatin1String("spreadsheets"); }

} // namespace

Result<NativeContent> NativeContent::fromJson(const QJsonObject& json) {
    NativeContent content;
    TextReader reader;
    const QJsonArray sections = json[QLatin1String("sections")].toArray();
    const QJsonArray rows = json[QLatin1String("rows")].toArray();
    reader.demand(sections.size() <= mostSections && rows.size() <= mostRows);
    for (const QJsonValue section : sections) {
        reader.demand(section.isObject());
        content.sections.append(
            {reader.read(section[QLatin1String("title")]), reader.read(section[QLatin1String("text")])});
    }
    for (const QJsonValue cells : rows) {
        reader.demand(cells.isArray() && cells.toArray().size() <= mostColumns);
        QStringList row;
        for (const QJsonValue cell : cells.toArray())
            row.append(reader.read(cell));
        content.rows.append(row);
    }
    if (!reader.isGood())
        return apiError::invalid(QStringLiteral("content"),
                                 QStringLiteral("This is too large for a document of the local Drive, or is none."));
    dropEmptyEnds(content.rows);
    return content;
}

QJsonObject NativeContent::toJson() const {
    QJsonObject json;
    if (!sections.isEmpty()) {
        QJsonArray array;
        for (const Section& section : sections)
            array.append(QJsonObject{{QStringLiteral("title"), section.title}, {QStringLiteral("text"), section.text}});
        json.insert(QStringLiteral("sections"), array);
    }
    if (!rows.isEmpty()) {
        QJsonArray array;
        for (const QStringList& row : rows)
            array.append(QJsonArray::fromStringList(row));
        json.insert(QStringLiteral("rows"), array);
    }
    return json;
}

NativeContent NativeContent::initial(const QString& kindPath, const QString& title) {
    if (isSpreadsheet(kindPath))
        return {{}, {{printable(title)}}};
    const bool hasHeadings = kindPath != QLatin1String("document");
    return {{hasHeadings ? Section{printable(title), {}} : Section{{}, printable(title)}}, {}};
}

NativeContent NativeContent::empty(const QString& kindPath) {
    return isSpreadsheet(kindPath) ? NativeContent() : NativeContent{{Section()}, {}};
}

qsizetype NativeContent::columnCount() const {
    qsizetype most = 0;
    for (const QStringList& row : rows)
        most = std::max(most, row.size());
    return most;
}

QString printable(const QString& title) {
    QString line = title;
    for (QChar& character : line)
        if (character == QLatin1Char('\n') || character == QLatin1Char('\t') || !isForXml(character))
            character = QLatin1Char(' ');
    return line;
}

} // namespace quenby::localdrive
