// What can be told of a request before it is handled.
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>

#include <optional>

namespace quenby::localdrive {

struct RequestFacts {
    QByteArray method;
    QByteArray target; // path and query as sent
    QByteArray host;
    qint64 headLength = 0; // bytes up to and with the empty line
    qint64 bodyLength = 0; // as announced
    bool expectsContinue = false;
    bool isStatusQuery = false;     // a PUT that asks how much of an upload is held
    QList<QString> rpcMethods = {}; // known once the body is there: withBody()

    QByteArray path() const;
    // The name of the upload session that the target belongs to; empty when there is none.
    QByteArray uploadId() const;
    bool isUploadPut() const;
    // Whether the body says more: it is a JSON-RPC call of ordinary size.
    bool needsBody() const;
    // Takes the names of the called methods from the body.
    void readBody(QByteArrayView body);

    // Nothing while the head is not complete.
    static std::optional<RequestFacts> ofHead(QByteArrayView bytes);
};

} // namespace quenby::localdrive
