// quenby changes: lists what changed, the newest last, and goes on with --watch.
#pragma once

#include "app/changes/ChangeKinds.h"
#include "app/cli/Command.h"
#include "core/TimeSource.h"
#include "driveapi/GTLServiceTypes.h"

#include <QDateTime>

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
    bool beginsAnewAfter(const Error& error);
    void keepPlace(const GTLDriveChangeList& changes);
    bool wasListed(const GTLDriveChange& change) const;
    void list(const GTLDriveChangeList& changes);
    void tell(const GTLDriveChange& change, ChangeKinds::Status status);

    Session& session_;
    Console& console_;
    const Settings settings_;
    GTLServiceTicketPtr ticket_;
    std::unique_ptr<Timer> timer_;
    // Where the next look begins: behind a number, or at a token where changes have none. Neither: at the beginning.
    qint64 largestChangeId_ = 0;
    QString startPageToken_;
    bool areNumbersRefused_ = false;
    QDateTime latest_;          // of the changes that were listed
    bool isListedAnew_ = false; // the list begins at its beginning, though it was listed before
    ChangeKinds kinds_;
};

} // namespace quenby
