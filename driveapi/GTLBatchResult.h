// The replies of a batch, sorted by the request IDs of its members.
#pragma once

#include "driveapi/GTLErrorObject.h"
#include "driveapi/GTLObject.h"

#include <map>

namespace quenby {

class GTLBatchResult : public GTLObject {
    GTL_OBJECT(GTLBatchResult);

public:
    using Successes = std::map<QString, GTLObjectPtr>; // null: the call succeeded and sent nothing back
    using Failures = std::map<QString, std::shared_ptr<GTLErrorObject>>;

    const Successes& successes() const { return successes_; }
    void setSuccesses(Successes successes) { successes_ = std::move(successes); }
    const Failures& failures() const { return failures_; }
    void setFailures(Failures failures) { failures_ = std::move(failures); }

    // Equal when the members are; a copy has copies of them.
    bool isEqual(const GTLObject& other) const override;
    GTLObjectPtr copy() const override;
    QString description() const override;

protected:
    // The JSON is the array of replies.
    void adoptJSON(const JSONValue& json) override;
    void createItemsWithClassMap(const GTLBatchClassMap& batchClassMap) override;

private:
    JSONArrayPtr replies_;
    Successes successes_;
    Failures failures_;
};

} // namespace quenby
