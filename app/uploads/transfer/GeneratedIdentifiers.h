// Identifiers for files to come, asked of the Drive many at a time: a file that is inserted with one cannot come into
// being twice.
//
// Threads: the main thread. Destroying it answers nobody who still waits.
#pragma once

#include "core/CompletionGate.h"
#include "driveapi/GTLService.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <list>
#include <memory>

namespace quenby {

class GTLServiceDrive;

class GeneratedIdentifiers : public QObject {
    Q_OBJECT

public:
    // An error: none could be had at this moment. An empty one: this Drive gives none.
    using Taken = std::function<void(const Result<QString>& identifier)>;

    explicit GeneratedIdentifiers(std::shared_ptr<GTLServiceDrive> service);
    ~GeneratedIdentifiers() override;

    // Each is given away once. Never answers from inside.
    CompletionTicket take(QObject* context, Taken taken);

private:
    void ask();
    void answered(const GTLObjectPtr& object, const MaybeError& error);
    void serve();

    const std::shared_ptr<GTLServiceDrive> service_;
    QStringList spare_;
    bool areGiven_ = true; // by this Drive
    bool hasAsked_ = false;
    bool isAsking_ = false;
    std::list<CompletionGate<Result<QString>>> waiting_;
    GTLServiceTicketPtr ticket_;
};

} // namespace quenby
