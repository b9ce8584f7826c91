#include "app/diagnostics/PersonalWords.h"

#include "core/Redaction.h"

#include <QDir>
#include <QRegularExpression>
#include <QSysInfo>

#include <algorithm>
#include <vector>

namespace quenby {
namespace {

struct Rule {
    QRegularExpression pattern;
    QString replacement;
};

Rule rule(const char* pattern, const char* replacement) {
    return {QRegularExpression(QString::fromLatin1(pattern), QRegularExpression::CaseInsensitiveOption |
                                                                 QRegularExpression::UseUnicodePropertiesOption),
            QString::fromLatin1(replacement)};
}

void apply(const std::vector<Rule>& rules, QString& text) {
    for (const Rule& rule : rules)
        text.replace(rule.pattern, rule.replacement);
}

// Addresses of pages, people and computers.
const std::vector<Rule>& addressRules() {
    static const std::vector<Rule> rules{
        rule(R"re(\b[a-z][a-z0-9+.-]*://[^\s"'<>]+)re", "_address_"),
        rule(R"re([\w.+%-]+(?:@|%40)[\w-]+(?:\.[\w-]+)*)re", "_e-mail_"),
        rule(R"re(\b\d{1,3}(?:\.\d{1,3}){3}(?::\d+)?\b)re", "_address_"),
        rule(R"re((?<![\w:])\[?(?:[0-9a-f]{0,4}:){3,7}[0-9a-f]{0,4}\]?(?![\w:]))re", "_address_"),
        rule(R"re(\b[\w-]+(?:\.[\w-]+)+:\d{2,5}\b)re", "_address_"),
    };
    return rules;
}

// Files. A path in quotation marks ends with them. Without, one cannot tell a name with spaces from the sentence around
// it: what follows belongs to it as long as there are slashes, or a word that ends like a file's name.
const std::vector<Rule>& pathRules() {
    static const std::vector<Rule> rules{
        rule(R"re((?<!\w)(["'“‘])[^"'“”‘’]*/[^"'“”‘’]*(["'”’]))re", R"(\1_path_\2)"),
        rule(R"re((?<![\w./~-])~?/(?=[\w.])[^\s"'<>“”]*[^\s"'<>“”.,:;)](?:\s+[^\s"']*/[^\s"'.,:;)]+)*)re"
             R"re((?:(?:\s+[^\s"'.,:;]+){0,8}?\s+[^\s"'.,:;]+\.[a-z0-9]{1,5}\b(?![\w.]))?)re",
             "_path_"),
    };
    return rules;
}

// Long, and of all kinds of letters: no word of any language.
const std::vector<Rule>& tokenRules() {
    static const std::vector<Rule> rules = [] {
        Rule mixed = rule(R"re((?<![A-Za-z0-9_-])(?=[A-Za-z_-]*[0-9])(?=[a-z0-9_-]*[A-Z])(?=[A-Z0-9_-]*[a-z]))re"
                          R"re([A-Za-z0-9_-]{20,}+)re",
                          redaction::snip);
        mixed.pattern.setPatternOptions(QRegularExpression::NoPatternOption);
        return std::vector<Rule>{mixed, rule(R"re(\b[0-9a-f]{32,}\b)re", redaction::snip)};
    }();
    return rules;
}

QRegularExpression wordsPattern(QStringList words, const QString& pattern) {
    std::sort(words.begin(), words.end(), [](const QString& a, const QString& b) { return a.size() > b.size(); });
    for (QString& word : words)
        word = QRegularExpression::escape(word);
    return QRegularExpression(pattern.arg(words.join(QLatin1Char('|'))),
                              QRegularExpression::UseUnicodePropertiesOption);
}

// Whatever follows up to the end of the phrase may belong to the file's name.
void leaveOutHomes(const QStringList& homes, QString& text) {
    if (!homes.isEmpty())
        text.replace(
            wordsPattern(homes, QStringLiteral(R"re((?:%1)(?!\w)[^"'“”<>]*?(?=["'“”<>]|[.,:;)]+(?:\s|$)|$))re")),
            QStringLiteral("_path_"));
}

void leaveOutNames(const QStringList& names, QString& text) {
    if (!names.isEmpty())
        text.replace(wordsPattern(names, QStringLiteral(R"re((?<![^\W_])(?:%1)(?![^\W_]))re")),
                     QStringLiteral("_name_"));
}

} // namespace

PersonalWords PersonalWords::ofThisUser() {
    PersonalWords found;
    const QString home = QDir::cleanPath(QDir::homePath());
    for (const QString& path : {home, QDir(home).canonicalPath()}) {
        if (path.size() > 1 && !found.homes.contains(path))
            found.homes.append(path);
    }
    const QString computer = QSysInfo::machineHostName();
    for (const QString& name : {qEnvironmentVariable("USER"), qEnvironmentVariable("LOGNAME"), QDir(home).dirName(),
                                computer, computer.section(QLatin1Char('.'), 0, 0)}) {
        if (name.size() > 1 && name != QLatin1String("localhost") && !found.names.contains(name))
            found.names.append(name);
    }
    return found;
}

QString anonymousText(const QString& text, const PersonalWords& personal) {
    QString shown = redaction::text(text).simplified();
    apply(addressRules(), shown);
    leaveOutHomes(personal.homes, shown);
    apply(pathRules(), shown);
    leaveOutNames(personal.names, shown);
    apply(tokenRules(), shown);
    return shown;
}

} // namespace quenby
