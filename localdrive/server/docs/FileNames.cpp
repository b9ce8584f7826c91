#include "localdrive/server/docs/FileNames.h"

#include "localdrive/store/Text.h"

#include <QUrl>

#include <algorithm>

namespace quenby::localdrive {
namespace {

constexpr qsizetype mostBytes = 200;
constexpr qsizetype longestExtension = 12;

bool isRefusedSomewhere(QChar character) {
    static const QString refused = QStringLiteral("/\\:*?\"<>|");
    // Characters that turn the direction of writing can make an extension look like another.
    return character.unicode() < 0x20 || character.unicode() == 0x7f || refused.contains(character) ||
           character.category() == QChar::Other_Format || character.category() == QChar::Separator_Line ||
           character.category() == QChar::Separator_Paragraph;
}

// As many whole characters as fit.
QString cutTo(const QString& text, qsizetype bytes) {
    QString cut = text;
    while (cut.toUtf8().size() > bytes) {
        const qsizetype over = cut.toUtf8().size() - bytes;
        cut.chop(std::max<qsizetype>(1, over / 4));
        if (!cut.isEmpty() && cut.back().isHighSurrogate())
            cut.chop(1);
    }
    return cut;
}

// With its dot; empty when what stands behind the last dot is none.
QString extensionOf(const QString& name) {
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    const qsizetype length = name.size() - dot;
    const bool isOne = dot > 0 && length > 1 && length <= longestExtension && !name.mid(dot).contains(QLatin1Char(' '));
    return isOne ? name.mid(dot) : QString();
}

} // namespace

QString fileName(const QString& title, const QString& extension) {
    QString name = cleaned(title);
    for (QChar& character : name)
        if (isRefusedSomewhere(character))
            character = QLatin1Char('_');
    name = name.trimmed();
    if (name.endsWith(extension, Qt::CaseInsensitive))
        name.chop(extension.size());
    const QString ending = extension.isEmpty() ? extensionOf(name) : extension;
    if (extension.isEmpty())
        name.chop(ending.size());
    name = cutTo(name, mostBytes - ending.toUtf8().size());
    // "." and ".." are folders; blanks and dots at the end get lost on some systems.
    while (ending.isEmpty() && (name.endsWith(QLatin1Char('.')) || name.endsWith(QLatin1Char(' '))))
        name.chop(1);
    return (name.isEmpty() ? QStringLiteral("Untitled") : name) + ending;
}

QString numbered(const QString& name, int number) {
    const QString ending = extensionOf(name);
    return QStringLiteral("%1 (%2)%3").arg(name.chopped(ending.size()), QString::number(number), ending);
}

QByteArray attachmentNamed(const QString& name) {
    QByteArray plain;
    for (const QChar character : name)
        if (!character.isLowSurrogate())
            plain += character.unicode() < 0x80 ? character.toLatin1() : '_';
    return "attachment; filename=\"" + plain + "\"; filename*=UTF-8''" + QUrl::toPercentEncoding(name);
}

} // namespace quenby::localdrive
