#include "platform/linux/shortcuts/X11Shortcuts.h"

#include "platform/linux/shortcuts/KeyGrabs.h"
#include "platform/linux/shortcuts/PressedKeys.h"
#include "platform/linux/shortcuts/ServerKeyboard.h"
#include "platform/linux/x11/XDisplay.h"

#include <QAbstractNativeEventFilter>
#include <QGuiApplication>

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

namespace quenby {
namespace {

// Null for no reason.
MaybeError errorBecause(const QString& reason) {
    return reason.isEmpty() ? MaybeError() : Error(URLErrorCode::unknown, {{errorKey::reason, reason}});
}

} // namespace

// The grabs are those of the toolkit's own connection: then the toolkit learns the time of the key press, by which a
// window manager lets the window that the keys bring up have the focus.
class X11Shortcuts::Private final : private QAbstractNativeEventFilter {
public:
    explicit Private(X11Shortcuts* owner)
        : owner_(owner) {
        if (const auto display = XDisplay::ofApplication()) {
            connection_ = display->connection;
            keyboard_.emplace(connection_);
        }
    }
    ~Private() override {
        if (!qApp)
            for (auto& [identifier, binding] : bindings_)
                binding.grabs.abandon();
        else if (!bindings_.empty())
            qApp->removeNativeEventFilter(this);
    }

    QString unavailableBecause() const;
    QString bind(const GlobalShortcut& shortcut);
    void unbind(const QString& identifier);

private:
    struct Binding {
        Binding(GlobalShortcut which, xcb_connection_t* connection)
            : shortcut(std::move(which))
            , grabs(connection) {}

        GlobalShortcut shortcut;
        KeyGrabs grabs;
        QString trouble; // empty while the keys work
    };

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;
    void keyPressed(const xcb_key_press_event_t& event);
    void tell(const QString& identifier);
    bool readMap();
    std::set<KeyChord> wanted(const Binding& binding) const;
    QString grab(Binding& binding);
    void keyboardChanged(ServerKeyboard::Change change);
    void followKeyboard();

    X11Shortcuts* owner_;
    xcb_connection_t* connection_ = nullptr; // the application's
    std::optional<ServerKeyboard> keyboard_;
    std::optional<KeyboardMap> map_; // read when it is first needed; nothing while no shortcut is bound
    std::map<QString, Binding> bindings_;
    PressedKeys pressed_;
    bool isFollowing_ = false; // a change of the keyboard is about to be followed
};

// --- Binding ---------------------------------------------------------------------------------------------------------

QString X11Shortcuts::Private::unavailableBecause() const {
    if (!keyboard_)
        return tr("Global shortcuts need an X server, and this program does not run on one.");
    if (!keyboard_->isThere())
        return tr("Global shortcuts do not work on this display, because its X server has no keyboard extension (XKB). "
                  "Use another X server.");
    return {};
}

QString X11Shortcuts::Private::bind(const GlobalShortcut& shortcut) {
    if (bindings_.empty()) {
        qApp->installNativeEventFilter(this);
        keyboard_->readLayout();
    }
    bindings_.erase(shortcut.identifier);
    // Whoever chose the keys a moment ago may hold them still. That they repeat themselves now is no press.
    pressed_.startWith(keyboard_->keysDown());
    // Whatever comes of it, it is remembered: it may work when the keyboard changes.
    Binding& binding = bindings_.try_emplace(shortcut.identifier, shortcut, connection_).first->second;
    return binding.trouble = grab(binding);
}

void X11Shortcuts::Private::unbind(const QString& identifier) {
    if (bindings_.erase(identifier) == 0 || !bindings_.empty())
        return;
    qApp->removeNativeEventFilter(this);
    map_.reset();
}

bool X11Shortcuts::Private::readMap() {
    if (!map_)
        map_ = keyboard_->readMap();
    return map_.has_value();
}

std::set<KeyChord> X11Shortcuts::Private::wanted(const Binding& binding) const {
    const QKeySequence& keys = binding.shortcut.keys;
    return keys.isEmpty() ? std::set<KeyChord>() : map_->chordsFor(keys[0], keyboard_->layout());
}

// The trouble with it; empty when the keys work.
QString X11Shortcuts::Private::grab(Binding& binding) {
    if (!readMap())
        return tr("The X server does not tell which keys the keyboard has. Choose the shortcut again.");
    const std::set<KeyChord> keys = wanted(binding);
    const bool isTwice = std::any_of(bindings_.cbegin(), bindings_.cend(), [&](const auto& each) {
        const Binding& other = each.second;
        return &other != &binding && std::any_of(keys.cbegin(), keys.cend(),
                                                 [&other](const KeyChord& chord) { return other.grabs.holds(chord); });
    });
    if (keys.empty() || isTwice)
        binding.grabs.release();
    if (keys.empty())
        return tr("No key of this keyboard makes this shortcut. Choose other keys, or add the layout that has them.");
    if (isTwice)
        return tr("This program has this shortcut for something else already. Choose other keys.");
    switch (binding.grabs.take(keys)) {
    case KeyGrabs::Outcome::taken:
        return {};
    case KeyGrabs::Outcome::heldByOther:
        return tr("Another program has this shortcut already. Choose other keys, or free it there.");
    case KeyGrabs::Outcome::failed:
        break;
    }
    return tr("The X server refuses this shortcut. Choose other keys.");
}

// --- Keys ------------------------------------------------------------------------------------------------------------

// Nothing is kept from the toolkit: it, too, has to learn the time of the press.
bool X11Shortcuts::Private::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto& event = *static_cast<const xcb_generic_event_t*>(message);
    switch (event.response_type) { // those that another program sends have one more bit, and do not count
    case XCB_KEY_PRESS:
        keyPressed(*static_cast<const xcb_key_press_event_t*>(message));
        break;
    case XCB_KEY_RELEASE: {
        const auto& release = *static_cast<const xcb_key_release_event_t*>(message);
        pressed_.release(release.detail, release.time);
        break;
    }
    default:
        keyboardChanged(keyboard_->changeBy(event));
    }
    return false;
}

void X11Shortcuts::Private::keyPressed(const xcb_key_press_event_t& event) {
    if (event.event != event.root) // it goes to a window
        return;
    const bool isDown = pressed_.press(event.detail, event.time);
    constexpr unsigned modifiers = 0xff; // above them, the state has the pointer's buttons and the layout
    const KeyChord chord{event.detail, static_cast<quint8>(event.state & modifiers)};
    for (const auto& [identifier, binding] : bindings_)
        if (isDown && binding.grabs.holds(chord))
            tell(identifier);
}

// Later, when the toolkit knows the time of the press. By then it may be bound no longer.
void X11Shortcuts::Private::tell(const QString& identifier) {
    QMetaObject::invokeMethod(
        owner_,
        [this, identifier] {
            if (bindings_.contains(identifier))
                Q_EMIT owner_->activated(identifier);
        },
        Qt::QueuedConnection);
}

// --- The keyboard changes --------------------------------------------------------------------------------------------

// One change of the configuration is told in many pieces.
void X11Shortcuts::Private::keyboardChanged(ServerKeyboard::Change change) {
    if (change == ServerKeyboard::Change::none)
        return;
    if (change == ServerKeyboard::Change::map)
        map_.reset();
    if (!std::exchange(isFollowing_, true))
        QMetaObject::invokeMethod(
            owner_, [this] { followKeyboard(); }, Qt::QueuedConnection);
}

void X11Shortcuts::Private::followKeyboard() {
    isFollowing_ = false;
    if (bindings_.empty())
        return;
    if (!map_)
        keyboard_->readLayout();
    if (!readMap()) // it changed again meanwhile, and that is told, too
        return;
    // Two shortcuts may change places.
    for (auto& [identifier, binding] : bindings_)
        binding.grabs.keepOnly(wanted(binding));
    std::vector<std::pair<QString, MaybeError>> changes;
    for (auto& [identifier, binding] : bindings_) {
        const QString before = std::exchange(binding.trouble, grab(binding));
        if (before != binding.trouble)
            changes.emplace_back(identifier, errorBecause(binding.trouble));
    }
    for (const auto& [identifier, trouble] : changes)
        if (bindings_.contains(identifier))
            Q_EMIT owner_->changed(identifier, trouble);
}

// --- The service -----------------------------------------------------------------------------------------------------

X11Shortcuts::X11Shortcuts()
    : d_(std::make_unique<Private>(this)) {}

X11Shortcuts::~X11Shortcuts() = default;

QString X11Shortcuts::unavailableBecause() const { return d_->unavailableBecause(); }

CompletionTicket X11Shortcuts::bind(const GlobalShortcut& shortcut, QObject* context, Bound bound) {
    const CompletionGate<MaybeError> gate(context, std::move(bound));
    const QString unavailable = unavailableBecause();
    gate.deliver(errorBecause(unavailable.isEmpty() ? d_->bind(shortcut) : unavailable));
    return gate.ticket();
}

void X11Shortcuts::unbind(const QString& identifier) { d_->unbind(identifier); }

QString X11Shortcuts::keysChosenByDesktop(const QString&) const { return {}; }

} // namespace quenby
