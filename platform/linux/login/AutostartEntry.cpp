#include "platform/linux/login/AutostartEntry.h"

#include <algorithm>
#include <utility>

namespace quenby {
namespace {

const QByteArray groupLine = "[Desktop Entry]";
const QByteArray hiddenKey = "Hidden";
const QByteArray desktopSwitchKey = "X-GNOME-Autostart-enabled";
const QByteArray execKey = "Exec";

// Most desktops look for the program of "Exec" before they have made one percent sign of two, and a program may have no
// equals sign in its path at all. Among the arguments either is welcome.
const QStringList shellThatStarts{QStringLiteral("/bin/sh"), QStringLiteral("-c"),
                                  QStringLiteral("exec \"$0\" \"$@\"")};

bool needsShell(const QString& program) {
    return program.contains(QLatin1Char('%')) || program.contains(QLatin1Char('='));
}

bool isNoise(const QByteArray& line) { // for whoever reads the file
    const QByteArray trimmed = line.trimmed();
    return trimmed.isEmpty() || trimmed.startsWith('#');
}

bool means(const QByteArray& value, const char* word, const char* digit) {
    return value.toLower() == word || value == digit;
}
bool isTrue(const QByteArray& value) { return means(value, "true", "1"); }
bool isFalse(const QByteArray& value) { return means(value, "false", "0"); }

// The escapes that every value of the type "string" has.
QByteArray escaped(const QString& string) {
    QByteArray value;
    const QByteArray bytes = string.toUtf8();
    for (const char c : bytes) {
        switch (c) {
        case '\\':
            value += "\\\\";
            break;
        case '\n':
            value += "\\n";
            break;
        case '\r':
            value += "\\r";
            break;
        case '\t':
            value += "\\t";
            break;
        case ' ':
            value += value.isEmpty() ? "\\s" : " ";
            break;
        default:
            value += c;
        }
    }
    return value;
}

QString unescaped(const QByteArray& value) {
    QByteArray bytes;
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (value.at(i) != '\\' || i + 1 == value.size()) {
            bytes += value.at(i);
            continue;
        }
        switch (const char c = value.at(++i)) {
        case 's':
            bytes += ' ';
            break;
        case 'n':
            bytes += '\n';
            break;
        case 'r':
            bytes += '\r';
            break;
        case 't':
            bytes += '\t';
            break;
        case '\\':
            bytes += '\\';
            break;
        default: // no escape
            bytes += '\\';
            bytes += c;
        }
    }
    return QString::fromUtf8(bytes);
}

QString quoted(QString argument) {
    argument.replace(QLatin1Char('%'), QLatin1String("%%"));
    const QLatin1String reserved(" \t\n\"'\\><~|&;$*?#()`");
    if (!argument.isEmpty() &&
        std::none_of(argument.cbegin(), argument.cend(), [&](QChar c) { return reserved.contains(c); }))
        return argument;
    QString text;
    for (const QChar c : std::as_const(argument)) {
        if (QLatin1String("\"`$\\").contains(c))
            text += QLatin1Char('\\');
        text += c;
    }
    return QLatin1Char('"') + text + QLatin1Char('"');
}

// Splits a command line. By the rules only double quotation marks quote; people, and the desktops that read what they
// wrote, know the shell's other ways as well.
class CommandLine {
public:
    explicit CommandLine(QString text)
        : text_(std::move(text)) {}

    // Empty when a quotation is never closed.
    QStringList arguments() {
        while (at_ < text_.size()) {
            const QChar c = text_.at(at_++);
            if (c == QLatin1Char(' ') || c == QLatin1Char('\t') || c == QLatin1Char('\n'))
                finishArgument();
            else if (c == QLatin1Char('"') || c == QLatin1Char('\'')) {
                if (!takeQuotation(c))
                    return {};
            } else if (c == QLatin1Char('\\') && at_ < text_.size())
                take(text_.at(at_++));
            else if (c == QLatin1Char('%') && at_ < text_.size())
                takeFieldCode();
            else
                take(c);
        }
        finishArgument();
        return arguments_;
    }

private:
    void take(QChar c) {
        argument_ += c;
        isArgument_ = true;
    }
    void takeFieldCode() {
        if (text_.at(at_++) == QLatin1Char('%'))
            take(QLatin1Char('%'));
    }
    bool takeQuotation(QChar mark) {
        isArgument_ = true;
        while (at_ < text_.size()) {
            const QChar c = text_.at(at_++);
            if (c == mark)
                return true;
            const bool isEscape = c == QLatin1Char('\\') && mark == QLatin1Char('"') && at_ < text_.size() &&
                                  QLatin1String("\"`$\\").contains(text_.at(at_));
            if (isEscape)
                take(text_.at(at_++));
            else if (c == QLatin1Char('%') && at_ < text_.size())
                takeFieldCode();
            else
                take(c);
        }
        return false;
    }
    void finishArgument() {
        if (isArgument_)
            arguments_ << std::exchange(argument_, {});
        isArgument_ = false;
    }

    const QString text_;
    qsizetype at_ = 0;
    QStringList arguments_;
    QString argument_;
    bool isArgument_ = false; // also an empty one
};

} // namespace

AutostartEntry::AutostartEntry(const QByteArray& text) {
    QList<QByteArray> lines = text.split('\n');
    if (lines.last().isEmpty())
        lines.removeLast();
    const auto first = std::find_if_not(lines.cbegin(), lines.cend(), isNoise);
    if (first != lines.cend() && first->trimmed() == groupLine && !text.contains('\0'))
        lines_ = std::move(lines);
}

bool AutostartEntry::isEnabled() const {
    return !value(execKey).isEmpty() && !isTrue(value(hiddenKey)) && !isFalse(value(desktopSwitchKey));
}

void AutostartEntry::setEnabled(bool isEnabled) {
    if (!isEnabled)
        return setValue(hiddenKey, "true");
    if (isTrue(value(hiddenKey)))
        setValue(hiddenKey, {});
    if (isFalse(value(desktopSwitchKey)))
        setValue(desktopSwitchKey, "true");
}

QStringList AutostartEntry::command() const {
    const QStringList command = CommandLine(unescaped(value(execKey))).arguments();
    return command.mid(0, shellThatStarts.size()) == shellThatStarts ? command.mid(shellThatStarts.size()) : command;
}

void AutostartEntry::setCommand(const QStringList& command) {
    QStringList words;
    if (!command.isEmpty() && needsShell(command.first()))
        words = shellThatStarts;
    words += command;
    std::transform(words.begin(), words.end(), words.begin(), quoted);
    setString(execKey, words.join(QLatin1Char(' ')));
}

// Where the lines of the entry's own group end.
qsizetype AutostartEntry::endOfGroup() const {
    bool isInGroup = false;
    for (qsizetype i = 0; i < lines_.size(); ++i) {
        if (isInGroup && lines_.at(i).startsWith('['))
            return i;
        isInGroup = isInGroup || lines_.at(i).trimmed() == groupLine;
    }
    return lines_.size();
}

// The last one counts, as for those who read the file. -1: none.
qsizetype AutostartEntry::lineOf(const QByteArray& key) const {
    for (qsizetype i = endOfGroup() - 1; i >= 0; --i) {
        const QByteArray& line = lines_.at(i);
        const qsizetype equals = line.indexOf('=');
        if (equals > 0 && !isNoise(line) && line.first(equals).trimmed() == key)
            return i;
    }
    return -1;
}

QByteArray AutostartEntry::value(const QByteArray& key) const {
    const qsizetype line = lineOf(key);
    return line < 0 ? QByteArray() : lines_.at(line).mid(lines_.at(line).indexOf('=') + 1).trimmed();
}

void AutostartEntry::setValue(const QByteArray& key, const QByteArray& value) {
    if (value.isEmpty()) {
        for (qsizetype line = lineOf(key); line >= 0; line = lineOf(key))
            lines_.removeAt(line);
        return;
    }
    const QByteArray text = key + '=' + value;
    if (const qsizetype line = lineOf(key); line >= 0) {
        lines_[line] = text;
        return;
    }
    if (lines_.isEmpty())
        lines_ << groupLine;
    qsizetype line = endOfGroup();
    while (isNoise(lines_.at(line - 1)))
        --line;
    lines_.insert(line, text);
}

QString AutostartEntry::string(const QByteArray& key) const { return unescaped(value(key)); }

void AutostartEntry::setString(const QByteArray& key, const QString& value) { setValue(key, escaped(value)); }

QByteArray AutostartEntry::text() const { return lines_.isEmpty() ? QByteArray() : lines_.join('\n') + '\n'; }

} // namespace quenby
