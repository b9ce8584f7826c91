// Where each method of the Drive lives on the second road: one table.
#pragma once

#include <QString>

#include <span>

namespace quenby {

struct RestMethod {
    // What a request carries besides its address.
    enum class Body {
        none,
        resource, // the query's body object
        media,    // the same; and it may announce an upload, below the address for uploads
    };

    const char* name; // as a query has it
    const char* verb;
    const char* path; // below the service's address; a parameter that it names in braces stands there, encoded
    Body body = Body::none;
};

std::span<const RestMethod> restMethods();

// Null for a method that the Drive does not have.
const RestMethod* restMethodNamed(const QString& name);

} // namespace quenby
