// What the tests of the real connection share.
#pragma once

#include "http/CurlConnection.h"
#include "tests/support/ConnectionRecorder.h"
#include "tests/support/ScriptedServer.h"

#include <QTest>

namespace quenby::testing {

inline URLRequest makeRequest(const QUrl& url, const QByteArray& method = "GET", const QByteArray& body = {}) {
    URLRequest request(url);
    request.httpMethod = method;
    request.body = body;
    return request;
}

// Runs a request to its end.
inline void run(const URLRequest& request, ConnectionRecorder& client) {
    const auto connection = CurlConnection::create(request, client);
    QVERIFY(connection);
    connection->start();
    QVERIFY(client.events.isEmpty()); // never from inside start()
    QTRY_VERIFY_WITH_TIMEOUT(client.isDone, 20000);
}
inline ConnectionRecorder run(const URLRequest& request) {
    ConnectionRecorder client;
    run(request, client);
    return client;
}

} // namespace quenby::testing
