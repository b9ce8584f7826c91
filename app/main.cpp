// quenby: the desktop program, or one command of the command line.

#include "app/agent/DesktopProgram.h"
#include "app/cli/Console.h"
#include "app/cli/Options.h"
#include "app/cli/Program.h"
#include "platform/linux/LinuxPlatform.h"

#include <QCoreApplication>
#include <QLoggingCategory>

#include <clocale>
#include <cstring>

#include <langinfo.h>

namespace {

using namespace quenby;

// Names of files and titles are shown and compared as UTF-8, whatever the machine is set to.
void useUtf8() {
    std::setlocale(LC_ALL, "");
    if (std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0)
        qputenv("LC_ALL", "C.UTF-8");
}

int runProgram(int argc, char** argv, const Options& options) {
    Console console({options.json, options.quiet});
    if (options.version || options.help) {
        console.page(options.version ? QStringLiteral("quenby " QUENBY_VERSION "\n") : usageText(options.verb), false);
        return console.isOutputLost() ? exitCode::failed : exitCode::done;
    }
    if (options.verb == Verb::desktop)
        return runDesktopProgram(argc, argv, options, console);
    // What the layers below log of their own accord would only repeat the errors that are told.
    QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n*.info=false"));
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("quenby"));
    QCoreApplication::setApplicationVersion(QStringLiteral(QUENBY_VERSION));
    return Program(console, options, [] { return makeLinuxAccountStorage(QStringLiteral("quenby")); }).run();
}

} // namespace

int main(int argc, char** argv) {
    useUtf8();
    const auto options = parseOptions(QList<QByteArray>(argv + 1, argv + argc));
    if (options)
        return runProgram(argc, argv, *options);
    Console({}).error(options.error());
    return exitCode::wrongUse;
}
