#include "platform/linux/shortcuts/PortalShortcutSession.h"

#include "platform/linux/portal/PortalRequest.h"
#include "platform/linux/shortcuts/PortalTrigger.h"

#include <QDBusArgument>
#include <QDBusMetaType>

#include <algorithm>
#include <utility>

namespace quenby {

// One of the array "a(sa{sv})".
struct ShortcutAtPortal {
    QString identifier;
    QVariantMap properties;
};

static QDBusArgument& operator<<(QDBusArgument& argument, const ShortcutAtPortal& shortcut) {
    argument.beginStructure();
    argument << shortcut.identifier << shortcut.properties;
    argument.endStructure();
    return argument;
}
static const QDBusArgument& operator>>(const QDBusArgument& argument, ShortcutAtPortal& shortcut) {
    argument.beginStructure();
    argument >> shortcut.identifier >> shortcut.properties;
    argument.endStructure();
    return argument;
}

} // namespace quenby

Q_DECLARE_METATYPE(quenby::ShortcutAtPortal)

namespace quenby {
namespace {

const QString sessionInterface = QStringLiteral("org.freedesktop.portal.Session");
const QString noParentWindow;

// Keys that are held may be told again and again; the time between two of that is shorter.
constexpr qulonglong longestRepeat = 1000; // milliseconds

const PortalPurpose globalShortcuts{QStringLiteral("org.freedesktop.portal.GlobalShortcuts"),
                                    QStringLiteral("The shortcut does not work"), QStringLiteral("global shortcuts")};

} // namespace

PortalShortcutSession::PortalShortcutSession(const QDBusConnection& bus, GlobalShortcut shortcut, QObject* parent)
    : QObject(parent)
    , client_(bus, globalShortcuts)
    , shortcut_(std::move(shortcut)) {
    qDBusRegisterMetaType<ShortcutAtPortal>();
    qDBusRegisterMetaType<QList<ShortcutAtPortal>>();
    connect(&client_, &PortalClient::vanished, this, [this] {
        lose(client_.because(QStringLiteral("because the desktop's portal ended. It works again as soon as the portal "
                                            "does; if that takes long, log out and in again.")));
    });
}

PortalShortcutSession::~PortalShortcutSession() { close(); }

void PortalShortcutSession::open(Opened opened) {
    opened_ = std::move(opened);
    client_.find([this](const MaybeError& trouble) {
        if (state_ != State::opening)
            return;
        if (trouble)
            finish(Outcome::failed, *trouble);
        else
            createSession();
    });
}

void PortalShortcutSession::close() {
    state_ = State::ended;
    opened_ = {};
    keys_.clear();
    delete std::exchange(request_, nullptr);
    if (!session_.path().isEmpty())
        client_.bus().send(client_.callOn(session_.path(), sessionInterface, QStringLiteral("Close")));
    session_ = {};
}

void PortalShortcutSession::createSession() {
    const QString token = PortalRequest::newToken();
    // Where it can be closed before it is known.
    session_ = QDBusObjectPath(client_.expectedPath(QStringLiteral("session"), token));
    require(QStringLiteral("CreateSession"), {}, {{QStringLiteral("session_handle_token"), token}},
            PortalRequest::patienceWithDesktop, [this](const Results& made) {
                // A text, although it is a path; some portals send a path.
                const QVariant handle = made.value(QStringLiteral("session_handle"));
                followSession(handle.metaType() == QMetaType::fromType<QDBusObjectPath>()
                                  ? handle.value<QDBusObjectPath>().path()
                                  : handle.toString());
                bindShortcut();
            });
}

void PortalShortcutSession::followSession(const QString& path) {
    session_ = QDBusObjectPath(path);
    QDBusConnection bus = client_.bus();
    const QString& owner = client_.owner();
    bus.connect(owner, path, sessionInterface, QStringLiteral("Closed"), this, SLOT(takeSessionClosed()));
    const QString& interface = client_.purpose().interface;
    bus.connect(owner, QString(), interface, QStringLiteral("Activated"), this, SLOT(takeActivated(QDBusMessage)));
    bus.connect(owner, QString(), interface, QStringLiteral("Deactivated"), this, SLOT(takeDeactivated(QDBusMessage)));
    bus.connect(owner, QString(), interface, QStringLiteral("ShortcutsChanged"), this,
                SLOT(takeShortcutsChanged(QDBusMessage)));
}

void PortalShortcutSession::bindShortcut() {
    QVariantMap properties{{QStringLiteral("description"), shortcut_.description}};
    if (const QString trigger = portalTrigger(shortcut_.keys); !trigger.isEmpty())
        properties[QStringLiteral("preferred_trigger")] = trigger;
    const QList<ShortcutAtPortal> shortcuts{{shortcut_.identifier, properties}};
    require(QStringLiteral("BindShortcuts"),
            {QVariant::fromValue(session_), QVariant::fromValue(shortcuts), noParentWindow}, {}, std::nullopt,
            [this](const Results& bound) {
                if (adopt(bound.value(QStringLiteral("shortcuts"))))
                    finish(Outcome::bound, std::nullopt);
                else
                    listShortcuts();
            });
}

// Not every portal says at once which of the shortcuts the user agreed to.
void PortalShortcutSession::listShortcuts() {
    ask(QStringLiteral("ListShortcuts"), {QVariant::fromValue(session_)}, {}, PortalRequest::patienceWithDesktop,
        [this](const std::optional<Results>& listed, const MaybeError&) {
            if (listed && !adopt(listed->value(QStringLiteral("shortcuts"))))
                finish(Outcome::declined, notAllowedError());
            else // what it granted before holds as long as it says nothing else
                finish(Outcome::bound, std::nullopt);
        });
}

bool PortalShortcutSession::adopt(const QVariant& shortcuts) {
    if (shortcuts.metaType() != QMetaType::fromType<QDBusArgument>() ||
        shortcuts.value<QDBusArgument>().currentSignature() != QLatin1String("a(sa{sv})"))
        return false;
    const auto list = qdbus_cast<QList<ShortcutAtPortal>>(shortcuts);
    const auto own = std::find_if(list.cbegin(), list.cend(), [this](const ShortcutAtPortal& each) {
        return each.identifier == shortcut_.identifier;
    });
    if (own == list.cend())
        return false;
    keys_ = own->properties.value(QStringLiteral("trigger_description")).toString();
    return true;
}

void PortalShortcutSession::finish(Outcome outcome, const MaybeError& trouble) {
    if (state_ != State::opening)
        return;
    const Opened opened = std::exchange(opened_, {});
    if (outcome == Outcome::bound)
        state_ = State::bound;
    else
        close();
    opened(outcome, trouble);
}

void PortalShortcutSession::ask(const QString& method, const QVariantList& arguments, const QVariantMap& options,
                                std::optional<std::chrono::milliseconds> patience, Answered answered) {
    request_ = new PortalRequest(&client_, this);
    request_->send(method, arguments, options, patience,
                   [this, answered = std::move(answered)](const PortalRequest::Outcome& outcome) {
                       request_ = nullptr; // it deletes itself
                       if (outcome)
                           answered(outcome.value(), std::nullopt);
                       else
                           answered(std::nullopt, outcome.error());
                   });
}

void PortalShortcutSession::require(const QString& method, const QVariantList& arguments, const QVariantMap& options,
                                    std::optional<std::chrono::milliseconds> patience,
                                    std::function<void(const Results&)> next) {
    ask(method, arguments, options, patience,
        [this, next = std::move(next)](const std::optional<Results>& results, const MaybeError& trouble) {
            if (trouble)
                finish(Outcome::failed, *trouble);
            else if (!results)
                finish(Outcome::declined, notAllowedError());
            else
                next(*results);
        });
}

void PortalShortcutSession::takeActivated(const QDBusMessage& signal) {
    if (!isOurs(signal, true))
        return;
    const qulonglong time = signal.arguments().value(2).toULongLong();
    const bool isRepeated = isHeld_ && time != 0 && time - lastActivation_ < longestRepeat;
    isHeld_ = true;
    lastActivation_ = time;
    if (isRepeated)
        return;
    // The toolkit takes it from there for the next window that is brought to the front.
    const QString token =
        qdbus_cast<QVariantMap>(signal.arguments().value(3)).value(QStringLiteral("activation_token")).toString();
    if (!token.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
    Q_EMIT activated();
}

void PortalShortcutSession::takeDeactivated(const QDBusMessage& signal) {
    if (isOurs(signal, true))
        isHeld_ = false;
}

void PortalShortcutSession::takeShortcutsChanged(const QDBusMessage& signal) {
    const QString before = keys_;
    // Those are told that are others now.
    if (isOurs(signal, false) && adopt(signal.arguments().value(1)) && keys_ != before)
        Q_EMIT keysChanged();
}

void PortalShortcutSession::takeSessionClosed() {
    lose(client_.because(QStringLiteral("because the desktop has taken it back. Switch the shortcut off and on to be "
                                        "asked for it again.")));
}

void PortalShortcutSession::lose(const Error& error) {
    session_ = {};
    if (state_ == State::opening) {
        finish(Outcome::failed, error);
    } else if (state_ == State::bound) {
        close();
        Q_EMIT lost(error);
    }
}

bool PortalShortcutSession::isOurs(const QDBusMessage& signal, bool namesShortcut) const {
    const QVariantList arguments = signal.arguments();
    return state_ == State::bound && arguments.value(0).value<QDBusObjectPath>() == session_ &&
           (!namesShortcut || arguments.value(1).toString() == shortcut_.identifier);
}

Error PortalShortcutSession::notAllowedError() const {
    return client_.because(QStringLiteral("because it was not allowed when the desktop asked. Switch the shortcut off "
                                          "and on to be asked again."));
}

} // namespace quenby
