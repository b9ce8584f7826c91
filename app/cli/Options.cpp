#include "app/cli/Options.h"

#include "app/cli/Folders.h"

#include <algorithm>
#include <array>
#include <utility>

namespace quenby {
namespace {

constexpr unsigned bit(Verb verb) { return static_cast<unsigned>(verb); }
constexpr unsigned everyCommand =
    bit(Verb::signin) | bit(Verb::about) | bit(Verb::upload) | bit(Verb::changes) | bit(Verb::download);
constexpr unsigned everyVerb = everyCommand | bit(Verb::desktop);

struct VerbRule {
    Verb verb;
    const char* name;
    const char* synopsis;
    const char* help;
};

constexpr std::array verbRules{
    VerbRule{Verb::signin, "signin", "", "sign in by the browser, and keep the sign-in for the other verbs"},
    VerbRule{Verb::about, "about", "", "show whose Drive it is and how much of it is used"},
    VerbRule{Verb::upload, "upload", "FILE...", "upload files; of a folder, the files in it but not in its folders"},
    VerbRule{Verb::changes, "changes", "", "list what changed in the Drive, the newest last"},
    VerbRule{Verb::download, "download", "ID", "download one file by its identifier"},
};

// How an option is told, and what it does with its value. An option without a value has no placeholder.
struct OptionRule {
    const char* name;
    const char* shortName;
    const char* placeholder;
    unsigned verbs;
    bool (*apply)(Options& options, const QByteArray& value); // false: the value makes no sense
    const char* help;

    bool takesValue() const { return placeholder != nullptr; }
    bool isNamed(const QByteArray& text) const { return text == name || (shortName && text == shortName); }
};

bool setPath(QByteArray& path, const QByteArray& value) {
    path = value;
    return !value.isEmpty();
}

bool setFolder(Options& options, const QByteArray& value) {
    const QString name = QString::fromUtf8(value);
    options.folder = name;
    return !name.trimmed().isEmpty() && name.toUtf8() == value;
}

bool setChunkSize(Options& options, const QByteArray& value) {
    bool isNumber = false;
    options.chunkSize = value.toULongLong(&isNumber);
    return isNumber && options.chunkSize > 0;
}

template <typename Duration>
bool setSeconds(Duration& duration, const QByteArray& value) {
    const auto given = secondsFromText(value);
    if (given)
        duration = *given;
    return given.has_value();
}

constexpr std::array optionRules{
    OptionRule{"--local", nullptr, nullptr, everyVerb,
               [](Options& options, const QByteArray&) { return options.local = true; },
               "use the Drive on this computer; it is started when needed"},
    OptionRule{"--local-data", nullptr, "DIR", everyVerb,
               [](Options& options, const QByteArray& value) { return setPath(options.localData, value); },
               "where the local Drive keeps its files (default: $XDG_DATA_HOME/quenby/local-drive)"},
    OptionRule{"--folder", nullptr, "NAME", bit(Verb::upload), setFolder,
               "upload into this folder at the top of the Drive; it is made when there is none"},
    OptionRule{"--chunk-size", nullptr, "BYTES", bit(Verb::upload), setChunkSize,
               "send in pieces of this many bytes, at least 50000 (default: one piece)"},
    OptionRule{"--no-verify", nullptr, nullptr, bit(Verb::upload),
               [](Options& options, const QByteArray&) {
                   options.verify = false;
                   return true;
               },
               "don't compare the MD5 sums of the file and its copy"},
    OptionRule{"--patience", nullptr, "SECONDS", bit(Verb::upload),
               [](Options& options, const QByteArray& value) { return setSeconds(options.patience, value); },
               "how long to keep trying without getting on (default: 600)"},
    OptionRule{"--watch", nullptr, nullptr, bit(Verb::changes),
               [](Options& options, const QByteArray&) { return options.watch = true; },
               "go on listing changes as they come"},
    OptionRule{"--interval", nullptr, "SECONDS", bit(Verb::changes),
               [](Options& options, const QByteArray& value) { return setSeconds(options.interval, value); },
               "how long to wait between two looks (default: $QUENBY_POLL_SECONDS or 30)"},
    OptionRule{"--output", "-o", "FILE", bit(Verb::download),
               [](Options& options, const QByteArray& value) { return setPath(options.output, value); },
               "where to save it; replaces the file that is there (default: the file's title)"},
    OptionRule{"--hidden", nullptr, nullptr, bit(Verb::desktop),
               [](Options& options, const QByteArray&) { return options.hidden = true; },
               "start without showing the window"},
    OptionRule{"--status-item", nullptr, "PLACE", bit(Verb::desktop),
               [](Options& options, const QByteArray& value) {
                   options.statusItemPlace = value;
                   return value == "tray" || value == "strip";
               },
               "where the status item stands: tray or strip (default: a tray where there is one)"},
    OptionRule{"--json", nullptr, nullptr, everyCommand,
               [](Options& options, const QByteArray&) { return options.json = true; },
               "print results and errors as one JSON object a line"},
    OptionRule{"--http-log", nullptr, "DIR", everyVerb,
               [](Options& options, const QByteArray& value) { return setPath(options.httpLog, value); },
               "write every request and answer below this folder, without secrets"},
    OptionRule{"--quiet", nullptr, nullptr, everyCommand,
               [](Options& options, const QByteArray&) { return options.quiet = true; }, "no progress and no remarks"},
    OptionRule{"--help", "-h", nullptr, everyVerb,
               [](Options& options, const QByteArray&) { return options.help = true; }, "show this text"},
    OptionRule{"--version", nullptr, nullptr, everyVerb,
               [](Options& options, const QByteArray&) { return options.version = true; }, "show the version"},
};

Error wrongUse(const QString& reason) {
    return Error(commandLineErrorDomain, exitCode::wrongUse, {{errorKey::reason, reason}});
}

QString quoted(const QByteArray& argument) { return QLatin1Char('"') + QString::fromUtf8(argument) + QLatin1Char('"'); }

QString verbName(Verb verb) {
    const auto rule = std::find_if(verbRules.begin(), verbRules.end(),
                                   [verb](const VerbRule& candidate) { return candidate.verb == verb; });
    return rule == verbRules.end() ? QStringLiteral("the desktop program") : QString::fromLatin1(rule->name);
}

constexpr QByteArrayView fileScheme = "file:";

bool namesFile(const QByteArray& operand) {
    return operand.contains('/') || operand.startsWith(fileScheme) || isThere(operand);
}

// What a file manager hands over (RFC 8089), or a path as it was typed.
Result<QByteArray> localPath(const QByteArray& operand) {
    if (!operand.startsWith(fileScheme))
        return absolutePath(operand);
    QByteArray path = operand.mid(fileScheme.size());
    if (path.startsWith("//"))
        path = path.mid(path.startsWith("//localhost/") ? qstrlen("//localhost") : qstrlen("//"));
    if (!path.startsWith('/'))
        return wrongUse(quoted(operand) + QStringLiteral(" is not on this computer"));
    return QByteArray::fromPercentEncoding(path);
}

// Walks the arguments once: options anywhere, the first other argument is the verb, the rest belongs to it.
class Parser {
public:
    explicit Parser(const QList<QByteArray>& arguments)
        : arguments_(arguments) {}

    Result<Options> parse() {
        bool onlyOperands = false;
        while (next_ < arguments_.size()) {
            const QByteArray argument = arguments_.at(next_++);
            Result<void> taken;
            if (onlyOperands || argument == "-" || !argument.startsWith('-'))
                taken = takeOperand(argument);
            else if (argument == "--")
                onlyOperands = true;
            else
                taken = takeOption(argument);
            if (!taken)
                return taken.error();
        }
        if (options_.help || options_.version)
            return options_;
        if (const auto fit = checkVerb(); !fit)
            return fit.error();
        return options_;
    }

private:
    Result<void> takeOperand(const QByteArray& operand) {
        const bool isFirst = !std::exchange(hasOperand_, true);
        const auto rule = std::find_if(verbRules.begin(), verbRules.end(),
                                       [&operand](const VerbRule& candidate) { return operand == candidate.name; });
        if (isFirst && rule != verbRules.end())
            options_.verb = rule->verb;
        else if (isFirst && !namesFile(operand))
            return wrongUse(quoted(operand) + QStringLiteral(" is no command and no file; try \"quenby --help\""));
        else
            operands_.append(operand);
        return {};
    }

    Result<void> takeOption(const QByteArray& argument) {
        const qsizetype equals = argument.startsWith("--") ? argument.indexOf('=') : -1;
        const QByteArray name = equals < 0 ? argument : argument.first(equals);
        const auto rule = std::find_if(optionRules.begin(), optionRules.end(),
                                       [&name](const OptionRule& candidate) { return candidate.isNamed(name); });
        if (rule == optionRules.end())
            return wrongUse(quoted(name) + QStringLiteral(" is no option; try \"quenby --help\""));
        if (!rule->takesValue() && equals >= 0)
            return wrongUse(quoted(name) + QStringLiteral(" takes no value"));
        if (rule->takesValue() && equals < 0 && next_ == arguments_.size())
            return wrongUse(quoted(name) + QStringLiteral(" needs a value: ") + QLatin1String(rule->placeholder));
        QByteArray value;
        if (rule->takesValue())
            value = equals < 0 ? arguments_.at(next_++) : argument.mid(equals + 1);
        if (!rule->apply(options_, value))
            return wrongUse(quoted(value) + QStringLiteral(" makes no sense as ") + QLatin1String(rule->placeholder) +
                            QStringLiteral(" of ") + quoted(name));
        used_.append(&*rule);
        return {};
    }

    Result<void> checkVerb() {
        for (const OptionRule* rule : std::as_const(used_)) {
            if (!(rule->verbs & bit(options_.verb)))
                return wrongUse(quoted(rule->name) + QStringLiteral(" does not go with ") + verbName(options_.verb));
        }
        return takeOperands();
    }

    Result<void> takeOperands() {
        switch (options_.verb) {
        case Verb::desktop:
            for (const QByteArray& operand : std::as_const(operands_)) {
                const auto path = localPath(operand);
                if (!path)
                    return path.error();
                options_.files.append(*path);
            }
            return {};
        case Verb::upload:
            options_.files = operands_;
            if (operands_.isEmpty())
                return wrongUse(QStringLiteral("upload needs at least one file"));
            return {};
        case Verb::download:
            if (operands_.size() != 1 || operands_.constFirst().isEmpty())
                return wrongUse(QStringLiteral("download needs exactly one file identifier"));
            options_.fileId = QString::fromUtf8(operands_.constFirst());
            return {};
        default:
            if (!operands_.isEmpty())
                return wrongUse(verbName(options_.verb) + QStringLiteral(" takes no argument such as ") +
                                quoted(operands_.constFirst()));
            return {};
        }
    }

    const QList<QByteArray>& arguments_;
    qsizetype next_ = 0;
    Options options_;
    QList<QByteArray> operands_;
    bool hasOperand_ = false;
    QList<const OptionRule*> used_;
};

QString column(const QString& left, const char* right) {
    return QStringLiteral("  ") + left.leftJustified(22) + QStringLiteral("  ") + QString::fromLatin1(right) +
           QLatin1Char('\n');
}

} // namespace

std::chrono::milliseconds Options::pollInterval() const {
    constexpr std::chrono::milliseconds usual = std::chrono::seconds(30);
    return interval.value_or(secondsFromText(qgetenv("QUENBY_POLL_SECONDS")).value_or(usual));
}

Result<Options> parseOptions(const QList<QByteArray>& arguments) { return Parser(arguments).parse(); }

std::optional<std::chrono::milliseconds> secondsFromText(const QByteArray& text) {
    constexpr double day = 24 * 60 * 60;
    bool isNumber = false;
    const double seconds = text.toDouble(&isNumber);
    if (!isNumber || !(seconds >= 0.001 && seconds <= day))
        return std::nullopt;
    return std::chrono::milliseconds(static_cast<qint64>(seconds * 1000));
}

QString usageText(Verb verb) {
    const bool ofAll = verb == Verb::desktop;
    QString text = QStringLiteral("Usage: quenby [OPTION]... [FILE]...  the desktop program; uploads the files\n"
                                  "       quenby COMMAND [OPTION]...\n\nCommands:\n");
    for (const VerbRule& rule : verbRules) {
        const QString call = QString::fromLatin1(rule.name) + QLatin1Char(' ') + QLatin1String(rule.synopsis);
        if (ofAll)
            text += column(call, rule.help);
        else if (rule.verb == verb)
            text = QStringLiteral("Usage: quenby ") + call.trimmed() + QStringLiteral(" [OPTION]...\n") +
                   QLatin1String(rule.help) + QStringLiteral(".\n");
    }
    text += QStringLiteral("\nOptions:\n");
    for (const OptionRule& rule : optionRules) {
        if (!ofAll && !(rule.verbs & bit(verb)))
            continue;
        QString name = QString::fromLatin1(rule.name);
        if (rule.shortName)
            name = QString::fromLatin1(rule.shortName) + QStringLiteral(", ") + name;
        if (rule.takesValue())
            name += QLatin1Char(' ') + QLatin1String(rule.placeholder);
        text += column(name, rule.help);
    }
    return text + QStringLiteral("\nExit codes: 0 done, 1 something failed, 2 wrong use.\n");
}

} // namespace quenby
