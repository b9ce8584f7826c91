// The answer to a batch: any bytes either give one clear error or parts that lie within them, and every call is
// answered at most once. The first line is the Content-Type.

#include "driveapi/GTLJSONParser.h"
#include "driveapi/rest/MultipartAnswer.h"
#include "driveapi/rest/RestBatch.h"
#include "tests/fuzz/FuzzSupport.h"

using namespace quenby;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray input = fuzzBytes(data, size);
    const qsizetype line = input.indexOf('\n');
    const QByteArray type = input.first(std::max<qsizetype>(line, 0));
    const QByteArray body = input.sliced(line + 1);

    const auto parts = partsOfMultipart(type, body);
    qsizetype length = 0;
    for (const MultipartPart& part : parts.valueOr({})) {
        length += part.body.size();
        if (const auto response = responseInPart(part.body)) {
            require(response->statusCode >= 100 && response->statusCode <= 599, "a status is one");
            require(response->body.size() <= part.body.size(), "a response lies within its part");
        }
    }
    require(length <= body.size(), "parts lie within the body");

    const auto replies = repliesInBatchAnswer(type, body, {QStringLiteral("1"), QStringLiteral("a b")});
    require(parts.ok() || !replies.ok(), "what cannot be taken apart holds no replies");
    if (!replies) {
        require(!replies.error().description().isEmpty(), "a refusal has words");
        return 0;
    }
    require((*replies)->count() <= 2, "each call is answered once");
    (void)GTLJSONParser::dataWithObject(*replies);
    return 0;
}
