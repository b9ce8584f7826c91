#include "app/cli/Program.h"

#include "app/cli/AboutCommand.h"
#include "app/cli/ChangesCommand.h"
#include "app/cli/DownloadCommand.h"
#include "app/cli/SignInCommand.h"
#include "app/cli/UploadCommand.h"

#include <QCoreApplication>

namespace quenby {

Program::Program(Console& console, Options options, std::function<AccountStorage()> storage)
    : console_(console)
    , options_(std::move(options))
    , session_(console_, {options_.local, options_.localData, options_.httpLog, options_.verb == Verb::signin},
               {Endpoints::provider(), std::move(storage)}, makeSystemTimeSource())
    , signals_({{SIGINT, true}, {SIGTERM, true}}, [this](int number) { end(exitCode::signalBase + number); }) {}

Program::~Program() = default;

int Program::run() {
    session_.open(&session_, [this](const MaybeError& error) {
        if (error) {
            console_.error(*error);
            return end(exitCode::failed);
        }
        command_ = makeCommand();
        QObject::connect(command_.get(), &Command::finished, &session_, [this](int code) { end(code); });
        command_->start();
    });
    const int code = QCoreApplication::exec();
    command_.reset();
    return code;
}

void Program::end(int code) {
    session_.close(&session_, [code] { QCoreApplication::exit(code); });
}

std::unique_ptr<Command> Program::makeCommand() {
    switch (options_.verb) {
    case Verb::about:
        return std::make_unique<AboutCommand>(session_, console_);
    case Verb::upload:
        return std::make_unique<UploadCommand>(session_, console_, options_);
    case Verb::changes:
        return std::make_unique<ChangesCommand>(session_, console_,
                                                ChangesCommand::Settings{options_.watch, options_.pollInterval()});
    case Verb::download:
        return std::make_unique<DownloadCommand>(session_, console_,
                                                 DownloadRun::Settings{options_.fileId, options_.output});
    case Verb::signin:
    case Verb::desktop: // is another program
        break;
    }
    return std::make_unique<SignInCommand>(session_, console_);
}

} // namespace quenby
