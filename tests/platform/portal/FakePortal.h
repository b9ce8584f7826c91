// Plays org.freedesktop.portal.Desktop on the test's own bus: everything that a desktop may do with a request.
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QDBusVirtualObject>
#include <QHash>
#include <QPoint>
#include <QSize>
#include <QTemporaryFile>

namespace quenby::testing {

// One of the array "a(ua{sv})".
struct FakeStream {
    uint node = 0;
    QVariantMap properties;
};

inline QDBusArgument& operator<<(QDBusArgument& argument, const FakeStream& stream) {
    argument.beginStructure();
    argument << stream.node << stream.properties;
    argument.endStructure();
    return argument;
}
inline const QDBusArgument& operator>>(const QDBusArgument& argument, FakeStream& stream) {
    argument.beginStructure();
    argument >> stream.node >> stream.properties;
    argument.endStructure();
    return argument;
}

} // namespace quenby::testing

Q_DECLARE_METATYPE(quenby::testing::FakeStream)

namespace quenby::testing {

class FakePortal : public QDBusVirtualObject {
public:
    // What it does with a request: "granted", "declined" and "refused" are answers, after "waits" nothing comes.
    enum class Does { grant, decline, refuse, fail, wait };

    // Set before the test asks.
    QHash<QString, Does> does; // by method; it grants what is not named
    QHash<QString, QVariantMap> interfaces{
        {QStringLiteral("org.freedesktop.portal.ScreenCast"),
         {{QStringLiteral("version"), 4U}, {QStringLiteral("AvailableCursorModes"), 7U}}},
        {QStringLiteral("org.freedesktop.portal.Screenshot"), {{QStringLiteral("version"), 2U}}},
    };
    bool answersBeforeItReplies = false;
    bool choosesHandles = false; // as portals did before tokens
    QVariantMap streamProperties{{QStringLiteral("position"), QPoint(1280, 0)},
                                 {QStringLiteral("size"), QSize(800, 600)}};
    QString screenshotAddress = QStringLiteral("file:///tmp/A%20picture%FF.png");
    QTemporaryFile streamFile; // stands for the connection to PipeWire

    // What was asked of it.
    QHash<QString, QVariantMap> options; // of each method's last call
    QStringList closed;                  // paths
    QDBusObjectPath session;

    FakePortal() {
        qDBusRegisterMetaType<FakeStream>();
        qDBusRegisterMetaType<QList<FakeStream>>();
        streamFile.open();
        bus_.registerVirtualObject(root, this, QDBusConnection::SubPath);
        bus_.registerService(serviceName);
    }
    ~FakePortal() override { vanish(); }

    void vanish() {
        if (!bus_.isConnected())
            return;
        bus_.unregisterObject(root, QDBusConnection::UnregisterTree);
        bus_.unregisterService(serviceName); // at once; the connection ends when it gets round to it
        bus_ = QDBusConnection(QString());   // the last one that holds it open
        QDBusConnection::disconnectFromBus(busName);
    }
    void endSession() {
        signalTo(client_, session.path(), QStringLiteral("org.freedesktop.portal.Session"), QStringLiteral("Closed"),
                 {});
    }
    // The answer to the request that was left waiting.
    void answerLate(uint code) { respond(client_, handle_, code, {}); }
    QString waitingHandle() const { return handle_; }

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
        const QString method = message.member();
        if (method == QLatin1String("GetAll"))
            return tellProperties(message);
        if (method == QLatin1String("Close")) {
            closed << message.path();
            return true;
        }
        client_ = message.service();
        options[method] = message.arguments().isEmpty() ? QVariantMap() : optionsIn(message.arguments().last());
        if (does.value(method) == Does::fail)
            return bus_.send(message.createErrorReply(QStringLiteral("org.freedesktop.portal.Error.Failed"),
                                                      QStringLiteral("it is broken")));
        if (method == QLatin1String("OpenPipeWireRemote"))
            return bus_.send(message.createReply(QVariant::fromValue(QDBusUnixFileDescriptor(streamFile.handle()))));
        takeRequest(message, method);
        return true;
    }

protected:
    virtual Does doesWith(const QDBusMessage&, const QString& method) const { return does.value(method, Does::grant); }
    // What it has to tell when it grants.
    virtual QVariantMap resultsOf(const QDBusMessage&, const QString& method) {
        if (method == QLatin1String("CreateSession")) {
            session = QDBusObjectPath(
                pathOf(QStringLiteral("session"), options[method][QStringLiteral("session_handle_token")].toString()));
            return {{QStringLiteral("session_handle"), session.path()}};
        }
        if (method == QLatin1String("Start"))
            return {{QStringLiteral("streams"), QVariant::fromValue(QList<FakeStream>{{42, streamProperties}})},
                    {QStringLiteral("restore_token"), QStringLiteral("next time")}};
        if (method == QLatin1String("Screenshot"))
            return {{QStringLiteral("uri"), screenshotAddress}};
        return {};
    }
    // From its own object to whoever asked last.
    void tell(const QString& interface, const QString& name, const QVariantList& arguments) {
        signalTo(client_, root, interface, name, arguments);
    }

private:
    static inline const QString root = QStringLiteral("/org/freedesktop/portal/desktop");
    static inline const QString serviceName = QStringLiteral("org.freedesktop.portal.Desktop");
    static inline const QString busName = QStringLiteral("portal");

    static QVariantMap optionsIn(const QVariant& value) { return qdbus_cast<QVariantMap>(value); }

    bool tellProperties(const QDBusMessage& question) {
        const auto properties = interfaces.constFind(question.arguments().first().toString());
        if (properties == interfaces.constEnd())
            return bus_.send(question.createErrorReply(QDBusError::InvalidArgs, QStringLiteral("No such interface")));
        return bus_.send(question.createReply(QVariant(*properties)));
    }

    QString pathOf(const QString& kind, const QString& token) const {
        const QString sender = QString(client_).mid(1).replace(QLatin1Char('.'), QLatin1Char('_'));
        return QStringList{root, kind, sender, token}.join(QLatin1Char('/'));
    }

    void takeRequest(const QDBusMessage& message, const QString& method) {
        const Does what = doesWith(message, method);
        handle_ = choosesHandles
                      ? root + QStringLiteral("/request/%1").arg(++handles_)
                      : pathOf(QStringLiteral("request"), options[method][QStringLiteral("handle_token")].toString());
        const QString handle = handle_;
        const auto reply = [&] { bus_.send(message.createReply(QVariant::fromValue(QDBusObjectPath(handle)))); };
        const auto answer = [&] {
            if (what != Does::wait)
                respond(client_, handle,
                        what == Does::grant     ? 0
                        : what == Does::decline ? 1
                                                : 2,
                        resultsOf(message, method));
        };
        if (answersBeforeItReplies) {
            answer();
            reply();
        } else {
            reply();
            answer();
        }
    }

    void respond(const QString& client, const QString& handle, uint code, const QVariantMap& results) {
        signalTo(client, handle, QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"),
                 {code, results});
    }
    void signalTo(const QString& client, const QString& path, const QString& interface, const QString& name,
                  const QVariantList& arguments) {
        QDBusMessage signal = QDBusMessage::createTargetedSignal(client, path, interface, name);
        signal.setArguments(arguments);
        bus_.send(signal);
    }

    QDBusConnection bus_ = QDBusConnection::connectToBus(QDBusConnection::SessionBus, busName);
    QString client_;
    QString handle_;
    int handles_ = 0;
};

} // namespace quenby::testing
