#include "localdrive/server/ServerOptions.h"

#include <QCommandLineParser>
#include <QFileInfo>

namespace quenby::localdrive {
namespace {

Error usageError(const QString& reason, int code = 2) {
    return Error(errorDomain::posix, code, {{errorKey::reason, reason}});
}

QList<QCommandLineOption> knownOptions() {
    const auto option = [](const char* name, const char* text, const char* value = nullptr) {
        QCommandLineOption made(QString::fromLatin1(name), QString::fromLatin1(text));
        if (value)
            made.setValueName(QString::fromLatin1(value));
        return made;
    };
    return {
        option("data", "Folder that holds files, database and lock; made when missing.", "folder"),
        option("port", "Port on 127.0.0.1; 0 takes any. Without it the last run's port.", "port"),
        option("quota", "Storage quota of the account in bytes.", "bytes"),
        option("token-lifetime", "Lifetime of an access token in seconds (3600).", "seconds"),
        option("idle-exit", "End after so many seconds without a request.", "seconds"),
        option("tls", "Serve https with this PEM certificate; the key is the next argument.", "certificate"),
        option("client", "Pin a client id to its secret, or as one that has none; may be repeated.", "id[:secret]"),
        option("only-clients", "Refuse clients that are not pinned."),
        option("control", "Switch on the control endpoint for requests with this token.", "token"),
        option("activity", "Invented people change files of their own, so many times a minute.", "rate"),
        option("activity-seed", "Which story they play (1).", "number"),
        option("without-rpc", "Begin without the JSON-RPC road: calls are taken on the REST road alone."),
        option("with-rpc", "Begin with it, whatever QUENBY_LOCALDRIVE_WITHOUT_RPC says."),
        option("without-change-ids", "Give changes no numeric ids: lists go on by page tokens alone."),
        option("with-change-ids", "Give them, whatever QUENBY_LOCALDRIVE_WITHOUT_CHANGE_IDS says."),
        option("quiet", "Write no line a request to standard error."),
        QCommandLineOption({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this text.")),
    };
}

// The value of a numeric option inside [least, most].
Result<std::optional<qint64>> number(const QCommandLineParser& parser, const char* name, qint64 least, qint64 most) {
    const QString option = QString::fromLatin1(name);
    if (!parser.isSet(option))
        return std::optional<qint64>();
    bool ok = false;
    const qint64 value = parser.value(option).toLongLong(&ok);
    if (!ok || value < least || value > most)
        return usageError(QStringLiteral("--%1 takes a number from %2 to %3.").arg(option).arg(least).arg(most));
    return std::optional<qint64>(value);
}

Result<std::optional<TlsFiles>> tlsFiles(const QCommandLineParser& parser) {
    const QString option = QStringLiteral("tls");
    if (!parser.isSet(option)) {
        if (!parser.positionalArguments().isEmpty())
            return usageError(QStringLiteral("\"%1\" is no option.").arg(parser.positionalArguments().first()));
        return std::optional<TlsFiles>();
    }
    if (parser.positionalArguments().size() != 1)
        return usageError(QStringLiteral("--tls takes two files: the certificate and its key."));
    TlsFiles files{parser.value(option), parser.positionalArguments().first()};
    for (const QString& path : {files.certificate, files.key}) {
        if (!QFileInfo(path).isReadable())
            return usageError(QStringLiteral("%1 can't be read.").arg(path));
    }
    return std::optional<TlsFiles>(files);
}

// What the Drive is told to have lost. A variable reaches Drives too that other programs start.
bool isLost(const QCommandLineParser& parser, const char* what, const char* variable) {
    if (parser.isSet(QStringLiteral("with-") + QLatin1String(what)))
        return false;
    return parser.isSet(QStringLiteral("without-") + QLatin1String(what)) ||
           qEnvironmentVariableIntValue(variable) != 0;
}

Result<QHash<QString, QString>> pinnedClients(const QCommandLineParser& parser) {
    QHash<QString, QString> clients;
    for (const QString& pair : parser.values(QStringLiteral("client"))) {
        const qsizetype colon = pair.indexOf(QLatin1Char(':'));
        if (pair.isEmpty() || colon == 0)
            return usageError(QStringLiteral("--client takes an id, and a secret with a colon between them."));
        clients.insert(pair.left(colon), colon < 0 ? QString() : pair.mid(colon + 1));
    }
    return clients;
}

} // namespace

Result<ServerOptions> ServerOptions::parse(const QStringList& arguments) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("A Drive on this computer."));
    parser.addOptions(knownOptions());
    if (!parser.parse(arguments))
        return usageError(parser.errorText());
    if (parser.isSet(QStringLiteral("help")))
        return usageError(parser.helpText(), 0);

    ServerOptions options;
    options.dataFolder = parser.value(QStringLiteral("data"));
    if (options.dataFolder.isEmpty())
        return usageError(QStringLiteral("--data FOLDER is needed."));

    constexpr qint64 longest = 10LL * 366 * 24 * 3600; // ten years, in seconds
    const auto port = number(parser, "port", 0, 65535);
    const auto quota = number(parser, "quota", 0, std::numeric_limits<qint64>::max());
    const auto lifetime = number(parser, "token-lifetime", 1, longest);
    const auto idleExit = number(parser, "idle-exit", 1, longest);
    const auto activity = number(parser, "activity", 1, 6000);
    const auto activitySeed = number(parser, "activity-seed", 0, std::numeric_limits<quint32>::max());
    for (const auto* value : {&port, &quota, &lifetime, &idleExit, &activity, &activitySeed}) {
        if (!*value)
            return value->error();
    }
    if (*port)
        options.port = static_cast<quint16>(**port);
    options.quotaBytes = *quota;
    if (*lifetime)
        options.tokenLifetime = std::chrono::seconds(**lifetime);
    if (*idleExit)
        options.idleExit = std::chrono::seconds(**idleExit);
    options.activityRate = static_cast<int>(activity->value_or(0));
    options.activitySeed = static_cast<quint32>(activitySeed->value_or(options.activitySeed));

    const auto tls = tlsFiles(parser);
    const auto clients = pinnedClients(parser);
    if (!tls)
        return tls.error();
    if (!clients)
        return clients.error();
    options.tls = *tls;
    options.clients = *clients;
    options.onlyClients = parser.isSet(QStringLiteral("only-clients"));
    options.controlToken = parser.value(QStringLiteral("control"));
    options.withoutRpc = isLost(parser, "rpc", "QUENBY_LOCALDRIVE_WITHOUT_RPC");
    options.withoutChangeIds = isLost(parser, "change-ids", "QUENBY_LOCALDRIVE_WITHOUT_CHANGE_IDS");
    options.quiet = parser.isSet(QStringLiteral("quiet"));
    return options;
}

} // namespace quenby::localdrive
