// One attempt as the fetch log shows it: every text is free of secrets already, so that whoever lays it out cannot
// write one by mistake.
#pragma once

#include "http/FetchLogBody.h"
#include "http/FetchLogger.h"

#include <utility>
#include <vector>

namespace quenby {

struct ShownMessage {
    std::vector<std::pair<QString, QString>> headers;
    qint64 bodyLength = 0;
    ShownBody body;

    bool hasHeader(QLatin1String name) const;
};

struct FetchLogEntry {
    int number = 0; // of the attempt within the run
    QString comment;
    QString time; // when it began and how long it took
    QString method;
    QString url;
    QString redirectedFrom; // empty when the address did not change
    bool isSecure = false;  // https
    ShownMessage request;
    std::optional<int> status; // absent without a response
    ShownMessage response;
    QString jsonError; // "code: message" of the JSON error in the response, empty without one
    QString error;
    bool willRetry = false;

    bool signalsError() const { return status && *status >= 400; }
    QString textFileName() const;
    QString responseFileName() const; // empty when the response body needs no file
};

FetchLogEntry makeFetchLogEntry(const FetchRecord& record, const SentBody& sent, int number,
                                const FetchLogBodyFormatter& bodies);

// The text file's contents, and the page's block with its links to the files.
QString textOf(const FetchLogEntry& entry);
QString htmlOf(const FetchLogEntry& entry);

} // namespace quenby
