#include "platform/linux/shortcuts/PortalShortcuts.h"

#include "platform/linux/shortcuts/PortalShortcutSession.h"

#include <QDBusServiceWatcher>

#include <map>
#include <utility>

namespace quenby {

class PortalShortcuts::Private {
public:
    Private(const QDBusConnection& bus, PortalShortcuts* shortcuts)
        : bus_(bus)
        , shortcuts_(shortcuts)
        , watcher_(portalServiceName, bus, QDBusServiceWatcher::WatchForOwnerChange) {
        QObject::connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, shortcuts_,
                         [this](const QString&, const QString& before, const QString& now) {
                             if (!now.isEmpty())
                                 bindAgain(before);
                         });
    }

    bool hasBus() const { return bus_.isConnected(); }

    CompletionTicket bind(const GlobalShortcut& shortcut, QObject* context, Bound bound) {
        unbind(shortcut.identifier);
        Binding& binding = bindings_[shortcut.identifier];
        binding.shortcut = shortcut;
        binding.answer = CompletionGate<MaybeError>(context, std::move(bound));
        const CompletionTicket ticket = binding.answer.ticket();
        open(binding);
        return ticket;
    }

    void unbind(const QString& identifier) {
        const auto binding = bindings_.find(identifier);
        if (binding == bindings_.end())
            return;
        binding->second.answer.ticket().cancel();
        bindings_.erase(binding);
    }

    QString keys(const QString& identifier) const {
        const auto binding = bindings_.find(identifier);
        return binding != bindings_.end() && binding->second.session ? binding->second.session->keys() : QString();
    }

private:
    // It may be the session itself that tells its end. Of its connections, those to the bus have to stay, which learns
    // by them that it is gone.
    struct Closing {
        void operator()(PortalShortcutSession* session) const {
            session->disconnect(session->parent());
            session->close();
            session->deleteLater();
        }
    };
    struct Binding {
        GlobalShortcut shortcut;
        CompletionGate<MaybeError> answer;
        bool isAnswered = false;
        bool isDeclined = false;                                 // nobody is asked twice
        std::unique_ptr<PortalShortcutSession, Closing> session; // none: it could not be had, or was lost
    };

    // Whoever hears of one of these may unbind it there and then.
    void open(Binding& binding) {
        const QString identifier = binding.shortcut.identifier;
        binding.session.reset(new PortalShortcutSession(bus_, binding.shortcut, shortcuts_));
        PortalShortcutSession* const session = binding.session.get();
        QObject::connect(session, &PortalShortcutSession::activated, shortcuts_,
                         [this, identifier] { Q_EMIT shortcuts_->activated(identifier); });
        QObject::connect(session, &PortalShortcutSession::keysChanged, shortcuts_,
                         [this, identifier] { Q_EMIT shortcuts_->changed(identifier, std::nullopt); });
        QObject::connect(session, &PortalShortcutSession::lost, shortcuts_, [this, identifier](const Error& error) {
            bindings_[identifier].session.reset();
            Q_EMIT shortcuts_->changed(identifier, error);
        });
        session->open([this, identifier](PortalShortcutSession::Outcome outcome, const MaybeError& trouble) {
            Binding& opened = bindings_[identifier];
            if (outcome != PortalShortcutSession::Outcome::bound)
                opened.session.reset();
            opened.isDeclined = outcome == PortalShortcutSession::Outcome::declined;
            if (std::exchange(opened.isAnswered, true))
                Q_EMIT shortcuts_->changed(identifier, trouble);
            else
                opened.answer.deliver(trouble);
        });
    }

    // A portal came, perhaps in the place of another one.
    void bindAgain(const QString& formerOwner) {
        for (auto& [identifier, binding] : bindings_) {
            const bool isGone = !binding.session || (!formerOwner.isEmpty() && binding.session->owner() == formerOwner);
            if (isGone && !binding.isDeclined)
                open(binding);
        }
    }

    const QDBusConnection bus_;
    PortalShortcuts* const shortcuts_;
    QDBusServiceWatcher watcher_;
    std::map<QString, Binding> bindings_; // by identifier
};

PortalShortcuts::PortalShortcuts(const QDBusConnection& bus)
    : d_(std::make_unique<Private>(bus, this)) {}

PortalShortcuts::~PortalShortcuts() = default;

// Whether there is a portal, and whether it has shortcuts, is known only once it was asked: bind() says it.
QString PortalShortcuts::unavailableBecause() const {
    return d_->hasBus() ? QString()
                        : QStringLiteral("Global shortcuts do not work, because this session has no message bus "
                                         "(D-Bus). Log in to a desktop that has one.");
}

CompletionTicket PortalShortcuts::bind(const GlobalShortcut& shortcut, QObject* context, Bound bound) {
    return d_->bind(shortcut, context, std::move(bound));
}

void PortalShortcuts::unbind(const QString& identifier) { d_->unbind(identifier); }

QString PortalShortcuts::keysChosenByDesktop(const QString& identifier) const { return d_->keys(identifier); }

} // namespace quenby
