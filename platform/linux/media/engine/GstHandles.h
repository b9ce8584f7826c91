// Ownership of the media framework's objects.
#pragma once

#include <gst/gst.h>

#include <memory>

namespace quenby {

struct GstUnref {
    void operator()(gpointer object) const { gst_object_unref(object); }
};
template <typename Object>
using GstHandle = std::unique_ptr<Object, GstUnref>;

struct GlibErrorFree {
    void operator()(GError* error) const { g_error_free(error); }
};
using GlibError = std::unique_ptr<GError, GlibErrorFree>;

struct SampleUnref {
    void operator()(GstSample* sample) const { gst_sample_unref(sample); }
};
using SampleHandle = std::unique_ptr<GstSample, SampleUnref>;

} // namespace quenby
