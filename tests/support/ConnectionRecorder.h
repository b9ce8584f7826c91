// A connection's client that writes down what it is told and does as it was prepared to.
#pragma once

#include "http/URLConnection.h"

#include <QByteArray>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

namespace quenby::testing {

class ConnectionRecorder final : public URLConnectionClient {
public:
    // What happened, in order: "redirect", "challenge", "sent", "response", "data", "finish", "fail"; equal neighbours
    // are one entry.
    QStringList events;
    std::vector<AuthenticationChallenge> challenges;
    std::vector<HTTPResponse> redirectResponses;
    HTTPResponse response;
    QByteArray data;
    qint64 dataLength = 0;
    qint64 sentBytes = 0; // the sum of what was reported
    qint64 totalSent = 0;
    qint64 totalExpected = 0;
    MaybeError error;
    bool isDone = false;

    bool followsRedirects = true;
    bool takesData = true;
    bool keepsData = true;
    std::vector<Credential> credentials; // offered in turn
    std::function<void(const QString& event)> onEvent;

    std::optional<URLRequest> connectionWillSendRequest(const URLRequest& redirected,
                                                        const HTTPResponse& redirectResponse) override {
        redirectResponses.push_back(redirectResponse);
        note(QStringLiteral("redirect"));
        return followsRedirects ? std::optional(redirected) : std::nullopt;
    }
    std::optional<Credential> connectionDidReceiveChallenge(const AuthenticationChallenge& challenge) override {
        challenges.push_back(challenge);
        note(QStringLiteral("challenge"));
        return challenges.size() <= credentials.size() ? std::optional(credentials[challenges.size() - 1])
                                                       : std::nullopt;
    }
    void connectionDidSendBodyData(qint64 bytes, qint64 totalBytes, qint64 totalBytesExpected) override {
        sentBytes += bytes;
        totalSent = totalBytes;
        totalExpected = totalBytesExpected;
        note(QStringLiteral("sent"));
    }
    void connectionDidReceiveResponse(const HTTPResponse& received) override {
        response = received;
        note(QStringLiteral("response"));
    }
    bool connectionDidReceiveData(QByteArrayView bytes) override {
        if (keepsData)
            data.append(bytes);
        dataLength += bytes.size();
        note(QStringLiteral("data"));
        return takesData;
    }
    void connectionDidFinishLoading() override {
        isDone = true;
        note(QStringLiteral("finish"));
    }
    void connectionDidFailWithError(const Error& failure) override {
        isDone = true;
        error = failure;
        note(QStringLiteral("fail"));
    }

private:
    void note(const QString& event) {
        if (events.isEmpty() || events.last() != event)
            events.append(event);
        if (onEvent)
            onEvent(event);
    }
};

} // namespace quenby::testing
