#include "app/cli/ChangesCommand.h"

#include "app/changes/RefusedPlace.h"
#include "app/cli/Console.h"
#include "app/cli/Session.h"
#include "driveapi/GTLDriveChange.h"
#include "driveapi/GTLDriveFile.h"
#include "driveapi/GTLQueryDrive.h"

#include <algorithm>
#include <vector>

namespace quenby {

ChangesCommand::ChangesCommand(Session& session, Console& console, const Settings& settings)
    : session_(session)
    , console_(console)
    , settings_(settings) {}

ChangesCommand::~ChangesCommand() {
    if (ticket_)
        ticket_->cancelTicket();
}

void ChangesCommand::start() { poll(); }

void ChangesCommand::poll() {
    timer_.reset();
    const auto query = GTLQueryDrive::queryForChangesList();
    query->setIncludeDeleted(true);
    if (largestChangeId_ > 0)
        query->setStartChangeId(largestChangeId_ + 1);
    else if (!startPageToken_.isEmpty())
        query->setPageToken(startPageToken_);
    ticket_ = session_.driveService()->executeQuery(query, this,
                                                    [this](const GTLServiceTicketPtr&, const GTLObjectPtr& object,
                                                           const MaybeError& error) { polled(object, error); });
}

void ChangesCommand::polled(const GTLObjectPtr& object, const MaybeError& error) {
    ticket_.reset();
    if (error && beginsAnewAfter(*error))
        return poll();
    const auto changes = std::dynamic_pointer_cast<GTLDriveChangeList>(object);
    if (changes)
        list(*changes);
    if (error) {
        console_.error(*error);
        session_.revive();
    }
    if (!settings_.watch || console_.isOutputLost()) {
        Q_EMIT finished(changes && !console_.isOutputLost() ? exitCode::done : exitCode::failed);
        return;
    }
    timer_ = session_.timeSource()->startTimer(settings_.interval, [this] { poll(); });
}

// The service does not know any more where the last look ended, or wants to be asked in another way.
bool ChangesCommand::beginsAnewAfter(const Error& error) {
    const bool hadPlace = largestChangeId_ > 0 || !startPageToken_.isEmpty();
    if (!hadPlace || !isPlaceRefused(error))
        return false;
    areNumbersRefused_ = areNumbersRefused_ || largestChangeId_ > 0;
    largestChangeId_ = 0;
    startPageToken_.clear();
    isListedAnew_ = true;
    return true;
}

// The numbers are followed wherever there are any.
void ChangesCommand::keepPlace(const GTLDriveChangeList& changes) {
    const QString token = changes.newStartPageToken().isEmpty() ? changes.nextPageToken() : changes.newStartPageToken();
    const bool goesByToken = !token.isEmpty() && (changes.largestChangeId() <= 0 || areNumbersRefused_);
    if (goesByToken)
        startPageToken_ = token;
    else
        largestChangeId_ = std::max<qint64>(largestChangeId_, changes.largestChangeId());
}

bool ChangesCommand::wasListed(const GTLDriveChange& change) const {
    const QDateTime date = change.modificationDate().date();
    return isListedAnew_ && latest_.isValid() && !(date > latest_);
}

void ChangesCommand::list(const GTLDriveChangeList& changes) {
    std::vector<std::shared_ptr<GTLDriveChange>> inOrder;
    if (const auto items = changes.items())
        inOrder.assign(items->begin(), items->end());
    std::stable_sort(inOrder.begin(), inOrder.end(),
                     [](const auto& one, const auto& other) { return one->identifier() < other->identifier(); });
    QDateTime latest = latest_;
    for (const auto& change : inOrder) {
        const auto status = kinds_.take(*change);
        if (status && !wasListed(*change))
            tell(*change, *status);
        if (const QDateTime date = change->modificationDate().date(); !latest.isValid() || date > latest)
            latest = date;
    }
    latest_ = latest;
    isListedAnew_ = false;
    keepPlace(changes);
}

void ChangesCommand::tell(const GTLDriveChange& change, ChangeKinds::Status status) {
    const auto file = change.file();
    const QString title = file ? file->title() : QString();
    const QString kind = ChangeKinds::name(status);
    const QDateTime date = change.modificationDate().date();
    QString text = date.toLocalTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss  ")) + kind.leftJustified(8) +
                   QStringLiteral("  ");
    text +=
        title.isEmpty() ? change.fileId() : QString(title + QStringLiteral("  (") + change.fileId() + QLatin1Char(')'));
    QJsonObject object{{QStringLiteral("status"), kind},
                       {QStringLiteral("id"), change.fileId()},
                       {QStringLiteral("date"), date.toUTC().toString(Qt::ISODateWithMs)}};
    if (change.identifier() > 0)
        object.insert(QStringLiteral("change"), change.identifier());
    if (file) {
        object.insert(QStringLiteral("title"), title);
        object.insert(QStringLiteral("mimeType"), file->mimeType());
    }
    console_.result(text, object);
}

} // namespace quenby
