#include "tests/desktop/support/PageInspector.h"

#include "tests/desktop/support/DesktopInput.h"
#include "tests/desktop/support/QuenbyProcess.h"
#include "tests/support/RawHttp.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpServer>
#include <QTest>
#include <QWebSocket>

namespace quenby::testing {
namespace {

constexpr int patience = QuenbyProcess::patience;
constexpr int answerPatience = 5000; // milliseconds; a page that is just going away gives none

// One that nobody listens at. The engine takes no 0 for it.
quint16 freePort() {
    QTcpServer server;
    if (!server.listen(QHostAddress::LocalHost))
        qFatal("There is no free port.");
    return server.serverPort();
}

// The middle of the element, as soon as a click there would hit it; null before.
QString middleOf(const QString& element) {
    return QStringLiteral("(() => {"
                          "  const element = %1;"
                          "  if (!element) return null;"
                          "  element.scrollIntoView({ block: 'nearest' });"
                          "  const box = element.getBoundingClientRect();"
                          "  const x = box.x + box.width / 2, y = box.y + box.height / 2;"
                          "  const hit = document.elementFromPoint(x, y);"
                          "  return box.width && hit && (element.contains(hit)) ? [x, y] : null;"
                          "})()")
        .arg(element);
}

// Where the page is on the screen is known to the page's events only.
const QString watchPointer = QStringLiteral("(() => {"
                                            "  if (!window.inspectedPlace)"
                                            "    addEventListener('mousemove', (event) => { window.inspectedPlace ="
                                            "      [event.screenX - event.clientX, event.screenY - event.clientY]; },"
                                            "      true);"
                                            "  window.inspectedPlace = [];"
                                            "})()");

std::optional<QPointF> pointOf(const QJsonValue& value) {
    const QJsonArray pair = value.toArray();
    if (pair.size() != 2)
        return std::nullopt;
    return QPointF(pair[0].toDouble(), pair[1].toDouble());
}

} // namespace

PageInspector::PageInspector(QProcessEnvironment& environment)
    : server_(QStringLiteral("127.0.0.1:%1").arg(freePort())) {
    environment.insert(QStringLiteral("QTWEBENGINE_REMOTE_DEBUGGING"), server_);
}

QList<PageInspector::Page> PageInspector::pages(const QString& path) const {
    const QUrl address(QStringLiteral("http://") + server_);
    const RawReply reply = RawHttp::exchange(address, RawHttp::request("GET", "/json/list"));
    QList<Page> found;
    for (const QJsonValue page : QJsonDocument::fromJson(reply.body).array()) {
        const QUrl url(page[QLatin1String("url")].toString());
        const QString there = url.toString(QUrl::RemoveScheme | QUrl::RemoveAuthority);
        const bool isWanted = path == QLatin1String("/") ? there == path : there.startsWith(path);
        if (isWanted && page[QLatin1String("type")] == QLatin1String("page"))
            found.append(
                {page[QLatin1String("title")].toString(), url,
                 QUrl(QStringLiteral("ws://%1/devtools/page/%2").arg(server_, page[QLatin1String("id")].toString()))});
    }
    return found;
}

bool PageInspector::waitForPages(const QString& path, int count) const {
    const bool came = QTest::qWaitFor([&] { return pages(path).size() == count; }, patience);
    for (const Page& page : came ? QList<Page>() : pages({}))
        qWarning("There is %s (%s)", qPrintable(page.url.toString()), qPrintable(page.title));
    return came;
}

QJsonValue PageInspector::evaluate(const QString& path, const QString& expression) const {
    const QList<Page> found = pages(path);
    if (found.size() != 1)
        return QJsonValue::Undefined;
    const QJsonObject call{{QStringLiteral("id"), 1},
                           {QStringLiteral("method"), QStringLiteral("Runtime.evaluate")},
                           {QStringLiteral("params"), QJsonObject{{QStringLiteral("expression"), expression},
                                                                  {QStringLiteral("returnByValue"), true}}}};
    QWebSocket socket;
    QJsonValue answer(QJsonValue::Undefined);
    bool isOver = false;
    QObject::connect(&socket, &QWebSocket::connected, &socket, [&] {
        socket.sendTextMessage(QString::fromUtf8(QJsonDocument(call).toJson(QJsonDocument::Compact)));
    });
    QObject::connect(&socket, &QWebSocket::disconnected, &socket, [&] { isOver = true; });
    QObject::connect(&socket, &QWebSocket::textMessageReceived, &socket, [&](const QString& message) {
        const QJsonDocument reply = QJsonDocument::fromJson(message.toUtf8());
        if (reply[QLatin1String("id")].toInt() != 1)
            return;
        answer = reply[QLatin1String("result")][QLatin1String("result")][QLatin1String("value")];
        isOver = true;
    });
    socket.open(found.constFirst().inspector);
    (void)QTest::qWaitFor([&] { return isOver; }, answerPatience);
    socket.disconnect();
    return answer;
}

bool PageInspector::waitUntil(const QString& path, const QString& expression) const {
    return QTest::qWaitFor([&] { return evaluate(path, expression).toBool(); }, patience);
}

std::optional<QPoint> PageInspector::waitForPlace(const QString& path, const QString& element, DesktopInput& input,
                                                  const QPoint& overPage) const {
    evaluate(path, watchPointer);
    int step = 0;
    std::optional<QPointF> page;
    const auto isPageFound = [&] {
        input.moveTo(overPage + QPoint(0, ++step % 2));
        page = pointOf(evaluate(path, QStringLiteral("window.inspectedPlace")));
        return page.has_value();
    };
    std::optional<QPointF> middle;
    const auto isAtRest = [&] {
        const std::optional<QPointF> before = middle;
        middle = pointOf(evaluate(path, middleOf(element)));
        return middle && middle == before;
    };
    if (QTest::qWaitFor(isPageFound, patience) && QTest::qWaitFor(isAtRest, patience))
        return (*page + *middle).toPoint();
    qWarning("%s is not to be clicked on in %s", qPrintable(element), qPrintable(path));
    return std::nullopt;
}

} // namespace quenby::testing
