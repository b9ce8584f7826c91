// JSON to objects: any bytes either give one clear error or objects that can be read, described, copied, changed and
// written, and the text that is written reads back as the same value.

#include "driveapi/GTLDriveChange.h"
#include "driveapi/GTLJSONParser.h"
#include "driveapi/GTLObject.h"
#include "tests/fuzz/FuzzSupport.h"

using namespace quenby;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const auto parsed = GTLJSONParser::objectWithData(fuzzBytes(data, size));
    if (!parsed) {
        require(!parsed.error().description().isEmpty(), "a refusal has words");
        return 0;
    }
    const QByteArray written = GTLJSONParser::dataWithObject(*parsed);
    const auto again = GTLJSONParser::objectWithData(written);
    require(again.ok(), "what was written can be read");
    require(*again == *parsed, "what was written means the same");

    const GTLObjectPtr object = GTLObject::objectForJSON(*parsed, &GTLDriveChangeList::classDescriptor());
    if (!object)
        return 0;
    (void)object->description();
    (void)object->fieldsDescription();
    (void)object->additionalProperties();
    const GTLObjectPtr copy = object->copy();
    require(copy->isEqual(*object), "a copy equals its original");
    require(copy->patchObjectFromOriginal(*object)->JSON()->isEmpty(), "nothing changed, nothing to patch");

    if (const auto changes = std::dynamic_pointer_cast<GTLDriveChangeList>(object)) {
        (void)changes->largestChangeId();
        for (const auto& change : *changes) {
            if (!change)
                continue;
            (void)change->modificationDate();
            if (const auto file = change->file()) {
                (void)file->title();
                (void)file->fileSize();
                (void)file->labels();
                file->setTitle(QStringLiteral("changed"));
            }
        }
        (void)changes->JSONString();
    }
    return 0;
}
