#include "platform/linux/session/BusSingleInstance.h"

#include "platform/linux/session/BusCalls.h"

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingReply>
#include <QLoggingCategory>

namespace quenby {
namespace {

Q_LOGGING_CATEGORY(log, "quenby.instance")

const QString name = QStringLiteral("org.quenby.Quenby");
const QString path = QStringLiteral("/org/quenby/Quenby");
const QString busName = QStringLiteral("org.freedesktop.DBus");
const QString busPath = QStringLiteral("/org/freedesktop/DBus");

// D-Bus Specification, "RequestName".
constexpr uint allowReplacement = 1, replaceExisting = 2, doNotQueue = 4;
constexpr uint primaryOwner = 1, alreadyOwner = 4;

// More newcomers than this at once are no accident; the name is then taken by force.
constexpr int mostRounds = 16;

Handover withinBounds(const Handover& handover) {
    qsizetype size = 0;
    Handover kept;
    for (const QByteArray& one : handover) {
        size += one.size();
        if (size > BusSingleInstance::largestHandover) {
            qCWarning(log) << "A handover is too large;" << handover.size() - kept.size() << "entries are dropped";
            break;
        }
        kept.append(one);
    }
    return kept;
}

} // namespace

BusSingleInstance::BusSingleInstance(const QDBusConnection& bus, std::shared_ptr<TimeSource> timeSource,
                                     QObject* parent)
    : bus_(bus)
    , timeSource_(std::move(timeSource)) {
    setParent(parent);
    qDBusRegisterMetaType<QByteArrayList>();
    leaving_.setConnection(bus_);
    leaving_.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
    connect(&leaving_, &QDBusServiceWatcher::serviceUnregistered, this, &BusSingleInstance::olderLeft);
}

BusSingleInstance::~BusSingleInstance() {
    if (hasName_)
        callBus(QStringLiteral("ReleaseName"), {name});
    bus_.unregisterObject(path);
}

QString BusSingleInstance::unavailableBecause() const {
    if (bus_.isConnected())
        return {};
    return QStringLiteral("There is no session bus, so that a second Quenby would not be noticed. Start Quenby from a "
                          "desktop session.");
}

void BusSingleInstance::acquire(QObject* context, Acquired acquired) {
    acquired_ = CompletionGate<Handover>(context, std::move(acquired));
    if (!bus_.isConnected())
        return finish();
    // Before the name is there: whoever finds the name can call at once.
    if (!bus_.registerObject(path, this,
                             QDBusConnection::ExportScriptableSlots | QDBusConnection::ExportScriptableInvokables))
        qCWarning(log) << "The object" << path << "cannot be shown on the session bus";
    bus_.connect(busName, busPath, busName, QStringLiteral("NameLost"), this, SLOT(nameLost(QString)));
    requestName(false);
}

QDBusPendingCall BusSingleInstance::callBus(const QString& method, const QVariantList& arguments) const {
    QDBusMessage message = QDBusMessage::createMethodCall(busName, busPath, busName, method);
    message.setArguments(arguments);
    return bus_.asyncCall(message);
}

void BusSingleInstance::requestName(bool isReplacing) {
    const uint flags = allowReplacement | doNotQueue | (isReplacing ? replaceExisting : 0);
    whenAnswered(this, callBus(QStringLiteral("RequestName"), {name, flags}), [this](const QDBusMessage& reply) {
        if (isEnding_)
            return;
        const uint outcome = reply.arguments().value(0).toUInt();
        hasName_ = outcome == primaryOwner || outcome == alreadyOwner;
        if (hasName_)
            return waitForOlder();
        if (reply.type() == QDBusMessage::ErrorMessage) {
            qCWarning(log) << "The session bus does not give the name" << name << "-" << reply.errorMessage();
            return waitForOlder();
        }
        findOlder();
    });
}

void BusSingleInstance::findOlder() {
    whenAnswered(this, callBus(QStringLiteral("GetNameOwner"), {name}), [this](const QDBusMessage& reply) {
        if (isEnding_)
            return;
        const QString owner = reply.arguments().value(0).toString();
        if (reply.type() == QDBusMessage::ErrorMessage || owner.isEmpty()) // it went away in between
            return requestName(++rounds_ > mostRounds);
        if (owner == refusing_)
            return requestName(true);
        askOlder(owner);
    });
}

void BusSingleInstance::askOlder(const QString& uniqueName) {
    asked_ = uniqueName;
    remaining_.insert(uniqueName);
    leaving_.addWatchedService(uniqueName);
    timer_ = timeSource_->startTimer(patience, [this] {
        qCWarning(log) << "The older instance does not answer; it is not waited for";
        remaining_.remove(asked_);
        olderAnswered(true);
    });
    const QDBusMessage quit = QDBusMessage::createMethodCall(uniqueName, path, name, QStringLiteral("Quit"));
    whenAnswered(this, bus_.asyncCall(quit), [this, uniqueName](const QDBusMessage& reply) {
        if (asked_ != uniqueName)
            return;
        const QDBusPendingReply<QByteArrayList> left = reply;
        if (left.isError())
            qCWarning(log) << "The older instance hands nothing over:" << reply.errorMessage();
        else
            inherited_ += left.value();
        // One that refuses may have handed its work to another newcomer, whose name must not be taken by force.
        if (left.isError())
            refusing_ = uniqueName;
        olderAnswered(++rounds_ > mostRounds);
    });
}

void BusSingleInstance::olderAnswered(bool isReplacing) {
    asked_.clear();
    timer_.reset();
    if (!isEnding_)
        requestName(isReplacing);
}

void BusSingleInstance::waitForOlder() {
    if (remaining_.isEmpty())
        return finish();
    timer_ = timeSource_->startTimer(patience, [this] {
        qCWarning(log) << "The older instance does not end; it is not waited for";
        finish();
    });
    // One that left before it was watched for is not told any more.
    for (const QString& uniqueName : std::as_const(remaining_))
        whenAnswered(this, callBus(QStringLiteral("NameHasOwner"), {uniqueName}),
                     [this, uniqueName](const QDBusMessage& reply) {
                         if (!reply.arguments().value(0).toBool())
                             olderLeft(uniqueName);
                     });
}

void BusSingleInstance::olderLeft(const QString& uniqueName) {
    leaving_.removeWatchedService(uniqueName);
    // While its answer is waited for, its end is told by that call's failure.
    if (remaining_.remove(uniqueName) && remaining_.isEmpty() && hasName_ && !isEnding_)
        finish();
}

void BusSingleInstance::finish() {
    timer_.reset();
    remaining_.clear();
    given_ = withinBounds(std::exchange(inherited_, {}));
    acquired_.deliver(given_);
}

QByteArrayList BusSingleInstance::Quit() {
    if (!calledFromDBus())
        return {};
    Handover left = std::exchange(inherited_, {});
    if (acquired_.ticket().cancel()) // it was on its way here, and goes on to the next
        left += std::exchange(given_, {});
    if (handover_)
        left += std::exchange(handover_, nullptr)();
    // The name goes first, so that the newcomer finds it free; the reply goes second; and when the bus has answered
    // what was sent third, the reply has left this process.
    isEnding_ = true;
    hasName_ = false;
    setDelayedReply(true);
    callBus(QStringLiteral("ReleaseName"), {name});
    bus_.send(message().createReply(QVariant::fromValue(withinBounds(left))));
    whenAnswered(this, callBus(QStringLiteral("GetId"), {}), [this](const QDBusMessage&) { Q_EMIT endRequested(); });
    return {};
}

void BusSingleInstance::nameLost(const QString& lost) {
    // Somebody took it by force, because this process did not answer in time.
    if (lost != name || !hasName_)
        return;
    hasName_ = false;
    isEnding_ = true;
    Q_EMIT endRequested();
}

} // namespace quenby
