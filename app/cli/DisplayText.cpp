#include "app/cli/DisplayText.h"

#include <QStringDecoder>

#include <algorithm>

#include <wchar.h>

namespace quenby {
namespace {

QString escaped(char32_t character) {
    const auto hex = [character](int digits) {
        return QString::number(static_cast<uint>(character), 16).rightJustified(digits, QLatin1Char('0'));
    };
    return character < 0x100 ? QStringLiteral("\\x") + hex(2) : QStringLiteral("\\u") + hex(4);
}

bool isHarmless(char32_t character) {
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_Surrogate:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        return true;
    }
}

int columnsOf(char32_t character) { return std::max(0, ::wcwidth(static_cast<wchar_t>(character))); }

// How many code points from the begin (or the end, walking backwards) fit into so many columns.
template <typename Iterator>
qsizetype fitting(Iterator begin, Iterator end, int columns) {
    qsizetype count = 0;
    for (; begin != end && (columns -= columnsOf(*begin)) >= 0; ++begin)
        ++count;
    return count;
}

// The length in bytes of the UTF-8 sequence at the position; 0 when there is none.
qsizetype sequenceLength(const QByteArray& bytes, qsizetype position) {
    for (qsizetype length = 1; length <= std::min<qsizetype>(4, bytes.size() - position); ++length) {
        QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        const QString text = decoder.decode(QByteArrayView(bytes).sliced(position, length));
        if (!decoder.hasError() && !text.isEmpty())
            return length;
    }
    return 0;
}

bool isUtf8(const QByteArray& bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder.decode(bytes);
    return !decoder.hasError() && !text.isNull();
}

} // namespace

QString printableText(const QString& text) {
    QString shown;
    for (const char32_t character : text.toUcs4()) {
        if (isHarmless(character))
            shown += QString::fromUcs4(&character, 1);
        else
            shown += escaped(character);
    }
    return shown;
}

QString printablePath(const QByteArray& path) {
    if (isUtf8(path))
        return printableText(QString::fromUtf8(path));
    QString shown;
    for (qsizetype position = 0; position < path.size();) {
        const qsizetype length = sequenceLength(path, position);
        shown += length > 0 ? printableText(QString::fromUtf8(path.mid(position, length)))
                            : escaped(static_cast<unsigned char>(path.at(position)));
        position += std::max<qsizetype>(length, 1);
    }
    return shown;
}

QString jsonPath(const QByteArray& path) { return isUtf8(path) ? QString::fromUtf8(path) : printablePath(path); }

int displayColumns(const QString& text) {
    int columns = 0;
    for (const char32_t character : text.toUcs4())
        columns += columnsOf(character);
    return columns;
}

QString elidedInTheMiddle(const QString& text, int columns) {
    if (displayColumns(text) <= columns)
        return text;
    if (columns < 1)
        return {};
    const QList<uint> characters = text.toUcs4();
    const int tail = (columns - 1) / 2;
    const qsizetype kept = fitting(characters.begin(), characters.end(), columns - 1 - tail);
    const qsizetype keptAtEnd = fitting(characters.rbegin(), characters.rend(), tail);
    const auto part = [&characters](qsizetype from, qsizetype count) {
        const QList<uint> some = characters.mid(from, count);
        QString result;
        for (const char32_t character : some)
            result += QString::fromUcs4(&character, 1);
        return result;
    };
    return part(0, kept) + QChar(0x2026) + part(characters.size() - keptAtEnd, keptAtEnd);
}

} // namespace quenby
