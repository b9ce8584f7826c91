// quenby changes: lists what changed, the newest last, and goes on with --watch.
#pragma once

#include "app/changes/ChangeKinds.h"
#include "app/cli/Command.h"
#include "core/TimeSource.h"
#include "driveapi/GTLServiceTypes.h"

#include <memory>

namespace quenby {

class Console;
class GTLDriveChange;
class GTLDriveChangeList;
class Session;

class ChangesCommand : public Command {
    Q_OBJECT

public:
    struct Settings {
        bool watch = false;
        std::chrono::milliseconds interval; // from the end of one look to the start of the next
    };

    ChangesCommand(Session& session, Console& console, const Settings& settings);
    ~ChangesCommand() override;
    void start() override;

private:
    void poll();
    void polled(const GTLObjectPtr& object, const MaybeError& error);
    void list(const GTLDriveChangeList& changes);
    void tell(const GTLDriveChange& change, ChangeKinds::Status status);

    Session& session_;
    Console& console_;
    const Settings settings_;
    GTLServiceTicketPtr ticket_;
    std::unique_ptr<Timer> timer_;
    qint64 largestChangeId_ = 0; // 0: nothing was listed yet
    ChangeKinds kinds_;
};

} // namespace quenby
