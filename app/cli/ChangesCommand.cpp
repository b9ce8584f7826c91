#include "app/cli/ChangesCommand.h"

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
    ticket_ = session_.driveService()->executeQuery(query, this,
                                                    [this](const GTLServiceTicketPtr&, const GTLObjectPtr& object,
                                                           const MaybeError& error) { polled(object, error); });
}

void ChangesCommand::polled(const GTLObjectPtr& object, const MaybeError& error) {
    ticket_.reset();
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

void ChangesCommand::list(const GTLDriveChangeList& changes) {
    std::vector<std::shared_ptr<GTLDriveChange>> inOrder;
    if (const auto items = changes.items())
        inOrder.assign(items->begin(), items->end());
    std::stable_sort(inOrder.begin(), inOrder.end(),
                     [](const auto& one, const auto& other) { return one->identifier() < other->identifier(); });
    for (const auto& change : inOrder) {
        if (const auto status = kinds_.take(*change))
            tell(*change, *status);
    }
    largestChangeId_ = std::max<qint64>(largestChangeId_, changes.largestChangeId());
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
    QJsonObject object{{QStringLiteral("change"), change.identifier()},
                       {QStringLiteral("status"), kind},
                       {QStringLiteral("id"), change.fileId()},
                       {QStringLiteral("date"), date.toUTC().toString(Qt::ISODateWithMs)}};
    if (file) {
        object.insert(QStringLiteral("title"), title);
        object.insert(QStringLiteral("mimeType"), file->mimeType());
    }
    console_.result(text, object);
}

} // namespace quenby
