// One call of the service in waiting: the method, its parameters, an optional body object and optional media.
//
// Queries are shared and belong to one thread at a time. While a query is executed its caller leaves it alone; when
// the execution ends, the service drops its completion and test blocks.
#pragma once

#include "driveapi/GTLObject.h"
#include "driveapi/GTLServiceTypes.h"
#include "driveapi/GTLUploadParameters.h"
#include "driveapi/GTLUtilities.h"

#include <optional>

namespace quenby {

// What the service can execute: a single query or a batch.
class GTLQueryProtocol {
public:
    virtual ~GTLQueryProtocol() = default;

    virtual bool isBatchQuery() const = 0;
    // The execution is over: drops the blocks, and with them whatever they hold.
    virtual void executionDidStop() { settings_.testBlock = nullptr; }
    virtual QString description() const = 0; // for logs

    // The request goes out without the authorizer.
    bool shouldSkipAuthorization() const { return settings_.shouldSkipAuthorization; }
    void setShouldSkipAuthorization(bool skip) { settings_.shouldSkipAuthorization = skip; }
    // Added to the request's headers and to its address, over the service's.
    const GTLStringMap& additionalHTTPHeaders() const { return settings_.additionalHTTPHeaders; }
    void setAdditionalHTTPHeaders(const GTLStringMap& headers) { settings_.additionalHTTPHeaders = headers; }
    const GTLStringMap& urlQueryParameters() const { return settings_.urlQueryParameters; }
    void setUrlQueryParameters(const GTLStringMap& parameters) { settings_.urlQueryParameters = parameters; }
    // When set, nothing is sent.
    const GTLTestBlock& testBlock() const { return settings_.testBlock; }
    void setTestBlock(GTLTestBlock block) { settings_.testBlock = std::move(block); }

protected:
    GTLQueryProtocol() = default;
    GTLQueryProtocol(const GTLQueryProtocol&) = delete;
    GTLQueryProtocol& operator=(const GTLQueryProtocol&) = delete;

    void copySettingsFrom(const GTLQueryProtocol& other) { settings_ = other.settings_; }

private:
    struct Settings {
        bool shouldSkipAuthorization = false;
        GTLStringMap additionalHTTPHeaders;
        GTLStringMap urlQueryParameters;
        GTLTestBlock testBlock;
    };
    Settings settings_;
};

// The parameters are the query's JSON; subclasses declare them as properties (GTLProperty.h).
class GTLQuery : public GTLRuntimeCommon, public GTLQueryProtocol {
    GTL_CLASS(GTLQuery);

public:
    // Null for an empty method name.
    static std::shared_ptr<GTLQuery> queryWithMethodName(const QString& methodName);

    // The next "gtl_" number of the process. Any thread.
    static QString nextRequestID();

    const QString& methodName() const { return methodName_; }
    const QString& requestID() const { return requestID_; }
    void setRequestID(const QString& requestID) { requestID_ = requestID; }

    // A parameter that no property declares. An undefined value removes it.
    void setCustomParameter(const JSONValue& value, const QString& key) { setJSONValue(value, key); }
    // Whether this kind of query declares such a parameter.
    bool hasParameterNamed(std::string_view name) const { return objectClass().propertyNamed(name) != nullptr; }

    const GTLObjectPtr& bodyObject() const { return bodyObject_; }
    void setBodyObject(GTLObjectPtr object) { bodyObject_ = std::move(object); }
    const std::optional<GTLUploadParameters>& uploadParameters() const { return uploadParameters_; }
    void setUploadParameters(std::optional<GTLUploadParameters> parameters) {
        uploadParameters_ = std::move(parameters);
    }
    // What the reply becomes when it names no registered kind; null when nothing is expected in return.
    const GTLClass* expectedObjectClass() const { return expectedObjectClass_; }
    void setExpectedObjectClass(const GTLClass* expected) { expectedObjectClass_ = expected; }
    // Runs when this query finishes, inside a batch too, before the execution's own handler.
    const GTLCompletionHandler& completionBlock() const { return completionBlock_; }
    void setCompletionBlock(GTLCompletionHandler block) { completionBlock_ = std::move(block); }

    // The same request ID, body object and blocks; parameters of its own.
    std::shared_ptr<GTLQuery> copy() const;

    bool isBatchQuery() const override { return false; }
    void executionDidStop() override;
    QString description() const override;

protected:
    explicit GTLQuery(const QString& methodName);
    // An empty query of the same class for copy().
    virtual std::shared_ptr<GTLQuery> makeSibling() const;

private:
    QString methodName_;
    QString requestID_;
    GTLObjectPtr bodyObject_;
    std::optional<GTLUploadParameters> uploadParameters_;
    const GTLClass* expectedObjectClass_ = nullptr;
    GTLCompletionHandler completionBlock_;
};

} // namespace quenby
