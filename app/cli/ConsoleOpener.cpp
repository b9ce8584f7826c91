#include "app/cli/ConsoleOpener.h"

#include "app/cli/Console.h"

#include <QProcess>
#include <QUrlQuery>

namespace quenby {
namespace {

bool isOnDesktop() {
    return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

// Where the browser brings its answer: not to this computer when it runs on another one.
int answerPort(const QUrl& page) {
    return QUrl(QUrlQuery(page).queryItemValue(QStringLiteral("redirect_uri"), QUrl::FullyDecoded)).port();
}

// Whether it works is seen there; the terminal stays ours.
void openOnDesktop(const QString& address) {
    QProcess program;
    program.setProgram(QStringLiteral("xdg-open"));
    program.setArguments({address});
    program.setStandardInputFile(QProcess::nullDevice());
    program.setStandardOutputFile(QProcess::nullDevice());
    program.setStandardErrorFile(QProcess::nullDevice());
    program.startDetached();
}

} // namespace

bool ConsoleOpener::openURL(const QUrl& url) {
    const QString address = url.toString(QUrl::FullyEncoded);
    const QString port = QString::number(answerPort(url));
    console_.page(QStringLiteral("To sign in, open this address in a browser on this computer, and allow Quenby to use "
                                 "your Drive:\n\n%1\n\nWith the browser on another computer, forward the port of its "
                                 "answer from there first:\n\nssh -L %2:127.0.0.1:%2 THIS_COMPUTER\n\n")
                      .arg(address, port),
                  true);
    if (isOnDesktop())
        openOnDesktop(address);
    return true;
}

bool ConsoleOpener::openFile(const QByteArray&) { return false; }

} // namespace quenby
