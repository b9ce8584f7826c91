// How fast a large reply becomes a usable list of changes, against the toolkit's own JSON reader on the same bytes.
//
// The reply is what a first poll of a large Drive sends: 20 000 changes with the whole metadata of a file in each.
#include "driveapi/GTLDriveChange.h"
#include "driveapi/GTLJSONParser.h"

#include <QJsonDocument>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <vector>

using namespace quenby;

namespace {

constexpr int changeCount = 20'000;

// The n-th file: about 1.2 kB, compact as the service sends it with prettyPrint=false.
QByteArray fileJSON(int n) {
    const QByteArray id = "0B7dQ" + QByteArray::number(100'000'000'000 + n * 7919LL, 36) + "xYmVuY2htYXJr";
    const QByteArray base = "https://files.example.com/drive/v2/files/" + id;
    const QByteArray day = QByteArray::number(10 + n % 18);
    return "{\"kind\":\"drive#file\",\"id\":\"" + id + "\",\"etag\":\"\\\"bench/" + QByteArray::number(n) +
           "\\\"\",\"selfLink\":\"" + base + "\",\"alternateLink\":\"https://docs.example.com/file/d/" + id +
           "/edit?usp=drivesdk\",\"iconLink\":\"https://ssl.example.com/docs/doclist/images/icon_11_image_list.png\","
           "\"title\":\"Bericht \\u00fcber Messung \xE2\x84\x96 " +
           QByteArray::number(n) +
           ".png\",\"mimeType\":\"image/png\",\"labels\":{\"starred\":false,\"hidden\":false,\"trashed\":false,"
           "\"restricted\":false,\"viewed\":true},\"createdDate\":\"2014-07-" +
           day + "T08:15:30.123Z\",\"modifiedDate\":\"2014-07-" + day +
           "T10:20:30.500Z\",\"modifiedByMeDate\":\"2014-07-" + day +
           "T10:20:30.500Z\",\"lastViewedByMeDate\":\"2014-07-" + day + "T11:00:00.000Z\",\"version\":\"" +
           QByteArray::number(90'000 + n) +
           "\",\"parents\":[{\"kind\":\"drive#parentReference\",\"id\":\"0AMUk9PVA\",\"isRoot\":true}],"
           "\"userPermission\":{\"kind\":\"drive#permission\",\"id\":\"me\",\"role\":\"owner\","
           "\"type\":\"user\"},\"originalFilename\":\"messung.png\",\"fileExtension\":\"png\",\"md5Checksum\":"
           "\"9e107d9d372bb6826bd81d3542a419d6\",\"fileSize\":\"" +
           QByteArray::number(1000 + n) + "\",\"quotaBytesUsed\":\"" + QByteArray::number(1000 + n) +
           "\",\"ownerNames\":[\"Ada Beispiel\"],\"owners\":[{\"kind\":\"drive#user\",\"displayName\":\"Ada "
           "Beispiel\",\"isAuthenticatedUser\":true,\"permissionId\":\"0123456789\"}],\"editable\":true,"
           "\"copyable\":true,\"writersCanShare\":true,\"shared\":false,\"appDataContents\":false}";
}

const QByteArray& reply() {
    static const QByteArray text = [] {
        QByteArray json = "{\"kind\":\"drive#changeList\",\"etag\":\"\\\"bench\\\"\",\"largestChangeId\":\"" +
                          QByteArray::number(changeCount) + "\",\"items\":[";
        for (int n = 0; n < changeCount; ++n) {
            const QByteArray time = QByteArray::number(10 + n * 7 % 14) + ':' + QByteArray::number(10 + n * 31 % 50) +
                                    ':' + QByteArray::number(10 + n * 17 % 50) + '.' +
                                    QByteArray::number(100 + n % 900);
            json += (n ? ",{" : "{") + QByteArray("\"kind\":\"drive#change\",\"id\":\"") + QByteArray::number(n + 1) +
                    "\",\"fileId\":\"f" + QByteArray::number(n) +
                    "\",\"deleted\":false,\"modificationDate\":\"2014-07-" + QByteArray::number(10 + n * 13 % 18) +
                    'T' + time + "Z\",\"file\":" + fileJSON(n) + '}';
        }
        return QByteArray(json + "]}");
    }();
    return text;
}

// A buffer of its own with room to grow, as one that was filled from the network has.
QByteArray receivedReply() {
    QByteArray text;
    text.reserve(reply().size() + 4096);
    text += reply();
    return text;
}

std::shared_ptr<GTLDriveChangeList> changeListFrom(QByteArray text) {
    const auto json = GTLJSONParser::objectWithData(std::move(text));
    if (!json)
        return nullptr;
    return std::dynamic_pointer_cast<GTLDriveChangeList>(
        GTLObject::objectForJSON(*json, &GTLDriveChangeList::classDescriptor()));
}

bool isComplete(const std::shared_ptr<GTLDriveChangeList>& list) {
    return list && list->largestChangeId() == changeCount && list->items()->count() == changeCount;
}

void qJsonDocument(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        const QByteArray text = receivedReply();
        state.ResumeTiming();
        QJsonDocument document = QJsonDocument::fromJson(text);
        benchmark::DoNotOptimize(document);
        if (document.isNull())
            state.SkipWithError("the reply could not be read");
    }
    state.SetBytesProcessed(state.iterations() * reply().size());
}

void usableChangeList(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        QByteArray text = receivedReply();
        state.ResumeTiming();
        const auto list = changeListFrom(std::move(text));
        if (!isComplete(list))
            state.SkipWithError("the list is not complete");
    }
    state.SetBytesProcessed(state.iterations() * reply().size());
}

void sortedModificationDates(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        QByteArray text = receivedReply();
        state.ResumeTiming();
        const auto list = changeListFrom(std::move(text));
        std::vector<qint64> dates;
        dates.reserve(changeCount);
        for (const auto& change : *list)
            dates.push_back(change->modificationDate().millisecondsSinceEpoch().value_or(0));
        std::sort(dates.begin(), dates.end());
        if (dates.size() != changeCount || dates.front() == 0)
            state.SkipWithError("a date is missing");
    }
    state.SetBytesProcessed(state.iterations() * reply().size());
}

BENCHMARK(qJsonDocument)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(usableChangeList)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(sortedModificationDates)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
