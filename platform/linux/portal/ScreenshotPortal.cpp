#include "platform/linux/portal/ScreenshotPortal.h"

#include "core/LocalPaths.h"
#include "platform/linux/portal/PortalClient.h"
#include "platform/linux/portal/PortalRequest.h"

#include <QObject>

#include <memory>
#include <utility>

namespace quenby {
namespace {

const PortalPurpose picture{QStringLiteral("org.freedesktop.portal.Screenshot"),
                            QStringLiteral("No picture of the screen can be taken")};

class InteractiveScreenshot final : public QObject {
public:
    using Taken = CompletionGate<Result<QByteArray>>;

    explicit InteractiveScreenshot(const QDBusConnection& bus)
        : client_(bus, picture) {}
    ~InteractiveScreenshot() override {
        // It must not outlive the client.
        delete findChild<PortalRequest*>(QString(), Qt::FindDirectChildrenOnly);
    }

    void take(const Taken& taken) {
        client_.find([this, taken](const MaybeError& trouble) {
            if (trouble)
                taken.deliver(*trouble);
            else
                ask(taken);
        });
    }

private:
    void ask(const Taken& taken) {
        const QString noParentWindow;
        auto* const request = new PortalRequest(&client_, this);
        request->send(QStringLiteral("Screenshot"), {noParentWindow}, {{QStringLiteral("interactive"), true}},
                      std::nullopt, [this, taken](const PortalRequest::Outcome& outcome) {
                          taken.deliver(outcome ? pathIn(outcome.value()) : Result<QByteArray>(outcome.error()));
                      });
    }

    Result<QByteArray> pathIn(const std::optional<QVariantMap>& results) const {
        if (!results)
            return QByteArray();
        const QByteArray path = localPath(results->value(QStringLiteral("uri")).toString().toUtf8());
        if (path.isEmpty())
            return client_.refusedError(QStringLiteral("it names no file"));
        return path;
    }

    PortalClient client_;
};

} // namespace

CompletionTicket takeInteractiveScreenshot(QObject* context, ScreenshotTaken taken, const QDBusConnection& bus) {
    // The completion's function owns the work: it goes when the function was called or never will be. That may be on
    // any thread, and from inside of the work itself.
    const std::shared_ptr<InteractiveScreenshot> work(new InteractiveScreenshot(bus),
                                                      [](QObject* ended) { ended->deleteLater(); });
    const InteractiveScreenshot::Taken gate(
        context, [work, taken = std::move(taken)](const Result<QByteArray>& path) { taken(path); });
    work->take(gate);
    return gate.ticket();
}

} // namespace quenby
