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
    bool isStatusQuery = false; // a PUT that asks how much of an upload is held
    QByteArray contentType = {};
    // The called methods. On the REST road the address says them; of JSON-RPC and batches they are known once the body
    // is there: readBody().
    QList<QString> rpcMethods = {};
    // The address that the request stands in for, in a Drive without JSON-RPC: "/rpc" or "/upload/rpc". Empty: none.
    QByteArray formerPath = {};

    QByteArray path() const;
    // The name of the upload session that the target belongs to; empty when there is none.
    QByteArray uploadId() const;
    bool isUploadPut() const;
    // A call or announcement of JSON-RPC, but no bytes of an upload.
    bool isRpcCall() const;
    bool isBatch() const;
    // Whether the body says more: it is a JSON-RPC call, or a batch, of ordinary size.
    bool needsBody() const;
    // In a Drive without JSON-RPC: a call of that road calls nothing any more, and one of the other stands in for it.
    void forgetRpc();
    // Takes the names of the called methods from the body.
    void readBody(QByteArrayView body);

    // Nothing while the head is not complete.
    static std::optional<RequestFacts> ofHead(QByteArrayView bytes);
};

} // namespace quenby::localdrive
