#include "core/SafeFileName.h"

#include <algorithm>

namespace quenby {
namespace {

constexpr qsizetype longestName = 255; // bytes
constexpr qsizetype longestExtension = 32;

// Cuts the end off without leaving half a character.
QByteArray shortened(QByteArray text, qsizetype length) {
    if (text.size() <= length)
        return text;
    const auto isContinuation = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; };
    while (length > 0 && isContinuation(text.at(length)))
        --length;
    text.truncate(length);
    return text;
}

// Where the extension begins, its dot included; the size when there is none.
qsizetype extensionStart(const QByteArray& name) {
    const qsizetype dot = name.lastIndexOf('.');
    return dot > 0 && name.size() - dot <= longestExtension ? dot : name.size();
}

QByteArray assembled(const QByteArray& name, const QByteArray& insertion) {
    const qsizetype dot = extensionStart(name);
    const QByteArray extension = name.mid(dot);
    return shortened(name.first(dot), longestName - insertion.size() - extension.size()) + insertion + extension;
}

} // namespace

QByteArray safeFileName(const QString& title) {
    QString name;
    for (const QChar character : title) {
        const bool isJoiner = character.unicode() == 0x200C || character.unicode() == 0x200D; // words need them
        const bool isUnsafe = character == QLatin1Char('/') || character.category() == QChar::Other_Control ||
                              (character.category() == QChar::Other_Format && !isJoiner);
        name += isUnsafe ? QChar(QLatin1Char('_')) : character;
    }
    const auto visible = std::find_if(name.cbegin(), name.cend(), [](QChar character) {
        return character != QLatin1Char('.') && !character.isSpace();
    });
    name = name.remove(0, visible - name.cbegin()).trimmed();
    const QByteArray bytes = name.toUtf8();
    return bytes.isEmpty() ? QByteArray("download") : assembled(bytes, {});
}

QByteArray numberedFileName(const QByteArray& name, int number) {
    return number < 2 ? name : assembled(name, " (" + QByteArray::number(number) + ')');
}

} // namespace quenby
