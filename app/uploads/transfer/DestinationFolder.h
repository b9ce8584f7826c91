// The folder at the top of the Drive that files go into: found by its exact title, or made once.
//
// Making a folder is not safe to repeat blindly: a reply that got lost may mean that the folder was made. So after
// every failure the search comes first again. Threads: the main thread. Destroying it cancels.
#pragma once

#include "app/uploads/transfer/Patience.h"
#include "core/CompletionGate.h"
#include "core/Result.h"
#include "driveapi/GTLService.h"

#include <QObject>

#include <functional>
#include <memory>

namespace quenby {

class GTLServiceDrive;

class DestinationFolder : public QObject {
    Q_OBJECT

public:
    using Found = std::function<void(const Result<QString>& identifier)>;

    DestinationFolder(std::shared_ptr<GTLServiceDrive> service, std::shared_ptr<TimeSource> timeSource, QString name,
                      std::chrono::milliseconds patience);
    ~DestinationFolder() override;

    void find(QObject* context, Found found);
    // Ends a pause after trouble: what stood in the way is gone.
    void tryNow();

    // The search text for folders of exactly this title that are not in the trash.
    static QString searchText(const QString& name);

Q_SIGNALS:
    // There was none; this one is new. Comes before find() answers.
    void madeFolder(const QString& identifier);
    void troubled(const quenby::Error& error);

private:
    void search();
    void searched(const GTLObjectPtr& object, const MaybeError& error);
    void make();
    void made(const GTLObjectPtr& object, const MaybeError& error);
    void recover(const Error& error);
    void fail(const Error& error);

    const std::shared_ptr<GTLServiceDrive> service_;
    const std::shared_ptr<TimeSource> timeSource_;
    const QString name_;
    CompletionGate<Result<QString>> found_;
    Patience patience_;
    std::unique_ptr<Timer> retryTimer_;
    GTLServiceTicketPtr ticket_;
};

} // namespace quenby
