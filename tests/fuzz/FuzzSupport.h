// What the fuzz targets share.
#pragma once

#include <QByteArray>

#include <cstdio>
#include <cstdlib>

// Ends the run with the broken promise's own words; libFuzzer keeps the input.
inline void require(bool holds, const char* promise) {
    if (holds)
        return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}

inline QByteArray fuzzBytes(const uint8_t* data, size_t size) {
    return {reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)};
}
