#include "app/cli/Console.h"

#include "app/cli/DisplayText.h"
#include "core/Redaction.h"

#include <QJsonDocument>

#include <cerrno>

#include <sys/ioctl.h>
#include <unistd.h>

namespace quenby {
namespace {

const QString eraseLine = QStringLiteral("\r\x1b[K");

bool writeAll(int descriptor, const QByteArray& bytes) {
    qsizetype written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(descriptor, bytes.constData() + written, size_t(bytes.size() - written));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        written += count;
    }
    return true;
}

QJsonObject errorObject(const Error& error, const QByteArray& path) {
    QJsonObject object{{QStringLiteral("error"), QJsonObject{{QStringLiteral("domain"), error.domain()},
                                                             {QStringLiteral("code"), error.code()},
                                                             {QStringLiteral("message"), error.description()}}}};
    if (!path.isEmpty())
        object.insert(QStringLiteral("path"), jsonPath(path));
    return object;
}

} // namespace

Console::Console(const Settings& settings)
    : settings_(settings)
    , hasStatusLine_(!settings.quiet && ::isatty(settings.errors) == 1) {}

Console::~Console() { clearStatus(); }

void Console::result(const QString& text, const QJsonObject& object) {
    if (!settings_.json)
        return writeLine(settings_.output, printableText(redaction::text(text)));
    const QByteArray line = QJsonDocument(object).toJson(QJsonDocument::Compact);
    writeLine(settings_.output, QString::fromUtf8(line));
}

void Console::error(const Error& error, const QByteArray& path) {
    QString text = QStringLiteral("quenby: ");
    if (!path.isEmpty())
        text += printablePath(path) + QStringLiteral(": ");
    writeLine(settings_.errors, text + printableText(error.description()));
    if (settings_.json)
        result({}, errorObject(error, path));
}

void Console::remark(const QString& text) {
    if (!settings_.quiet)
        writeLine(settings_.errors, printableText(redaction::text(text)));
}

void Console::page(const QString& text, bool isError) {
    if (!writeAll(isError ? settings_.errors : settings_.output, text.toUtf8()) && !isError)
        isOutputLost_ = true;
}

void Console::setStatus(const QString& text) {
    if (!hasStatusLine_ || text == status_)
        return;
    status_ = text;
    writeAll(settings_.errors, QString(eraseLine + status_).toUtf8());
}

int Console::statusColumns() const {
    winsize size{};
    const bool known = ::ioctl(settings_.errors, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    // The last column stays free: a terminal may break the line after it.
    return (known ? size.ws_col : 80) - 1;
}

void Console::writeLine(int descriptor, const QString& text) {
    if (!status_.isEmpty())
        writeAll(settings_.errors, eraseLine.toUtf8());
    if (!writeAll(descriptor, QString(text + QLatin1Char('\n')).toUtf8()) && descriptor == settings_.output)
        isOutputLost_ = true;
    if (!status_.isEmpty())
        writeAll(settings_.errors, status_.toUtf8());
}

} // namespace quenby
