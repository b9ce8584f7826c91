#include "platform/linux/media/engine/capture/Pipeline.h"

#include "platform/linux/media/engine/capture/CaptureLog.h"
#include "platform/linux/media/engine/capture/GstSetup.h"
#include "platform/linux/media/engine/capture/XErrorTrap.h"

namespace quenby {
namespace {

Error badDescription(const char* part, const QString& detail) {
    return Error(URLErrorCode::unknown, {{errorKey::reason, QStringLiteral("The screen cannot be recorded: the media "
                                                                           "framework does not accept its %1. "
                                                                           "Details: %2")
                                                                .arg(QString::fromLatin1(part), detail)}});
}

} // namespace

Pipeline::Pipeline(Told told)
    : pipeline_(GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr))))
    , box_(Mailbox::forContext(&context_))
    , told_(std::move(told)) {
    // This clock never jumps, whatever is done to the time of day.
    const GstHandle<GstClock> clock(gst_system_clock_obtain());
    gst_pipeline_use_clock(GST_PIPELINE(pipeline_.get()), clock.get());
    const GstHandle<GstBus> bus(gst_element_get_bus(pipeline_.get()));
    gst_bus_set_sync_handler(bus.get(), &Pipeline::messageCame, this, nullptr);
}

Pipeline::~Pipeline() {
    stop();
    const GstHandle<GstBus> bus(gst_element_get_bus(pipeline_.get()));
    gst_bus_set_sync_handler(bus.get(), nullptr, nullptr, nullptr);
}

Result<void> Pipeline::append(const char* part, const QByteArray& description) {
    if (const QByteArray missing = missingElement(description); !missing.isEmpty())
        return Error(URLErrorCode::unknown, {{errorKey::reason, missingElementReason(missing)}});
    GError* error = nullptr;
    GstElement* bin = gst_parse_bin_from_description_full(description.constData(), TRUE, nullptr,
                                                          GST_PARSE_FLAG_FATAL_ERRORS, &error);
    if (error) {
        const GlibError owned(error);
        return badDescription(part, QString::fromUtf8(error->message));
    }
    gst_object_set_name(GST_OBJECT(bin), part);
    gst_bin_add(GST_BIN(pipeline_.get()), bin);
    if (last_ && !gst_element_link(last_, bin))
        return badDescription(part, QStringLiteral("it does not fit to what comes before it"));
    last_ = bin;
    return {};
}

GstElement* Pipeline::element(const char* name) const {
    const GstHandle<GstElement> found(gst_bin_get_by_name(GST_BIN(pipeline_.get()), name));
    Q_ASSERT(found);
    return found.get();
}

GstHandle<GstPad> Pipeline::input(const char* part) const {
    return GstHandle<GstPad>(gst_element_get_static_pad(element(part), "sink"));
}

GstHandle<GstPad> Pipeline::output(const char* part) const {
    return GstHandle<GstPad>(gst_element_get_static_pad(element(part), "src"));
}

bool Pipeline::start() {
    XErrorTrap trap(xError_);
    return gst_element_set_state(pipeline_.get(), GST_STATE_PLAYING) != GST_STATE_CHANGE_FAILURE;
}

void Pipeline::stop() {
    XErrorTrap trap(xError_);
    gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
}

void Pipeline::sendEnd() { gst_element_send_event(pipeline_.get(), gst_event_new_eos()); }

void Pipeline::postFailure(const char* part, const QString& text) {
    box_->post([this, report = PipelineReport{PipelineReport::Kind::failed, part, text, false}] { told_(report); });
}

// On the thread that posted it.
GstBusSyncReply Pipeline::messageCame(GstBus*, GstMessage* message, gpointer self) {
    auto* const pipeline = static_cast<Pipeline*>(self);
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_STREAM_STATUS: {
        GstStreamStatusType type = GST_STREAM_STATUS_TYPE_CREATE;
        gst_message_parse_stream_status(message, &type, nullptr);
        if (type == GST_STREAM_STATUS_TYPE_ENTER)
            XErrorTrap::setOnThread(pipeline->xError_);
        if (type == GST_STREAM_STATUS_TYPE_LEAVE)
            XErrorTrap::setOnThread(nullptr);
        break;
    }
    case GST_MESSAGE_ERROR:
    case GST_MESSAGE_EOS:
    case GST_MESSAGE_WARNING:
        pipeline->report(message);
        break;
    default:
        break;
    }
    gst_message_unref(message);
    return GST_BUS_DROP;
}

QByteArray Pipeline::partOf(GstObject* element) const {
    GstObject* const top = GST_OBJECT(pipeline_.get());
    for (GstObject* at = element; at && at != top; at = GST_OBJECT_PARENT(at))
        if (GST_OBJECT_PARENT(at) == top)
            return GST_OBJECT_NAME(at);
    return {};
}

void Pipeline::report(GstMessage* message) {
    PipelineReport report;
    report.part = partOf(GST_MESSAGE_SRC(message));
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_EOS) {
        report.kind = PipelineReport::Kind::ended;
    } else {
        GError* error = nullptr;
        gchar* details = nullptr;
        const bool isWarning = GST_MESSAGE_TYPE(message) == GST_MESSAGE_WARNING;
        if (isWarning)
            gst_message_parse_warning(message, &error, &details);
        else
            gst_message_parse_error(message, &error, &details);
        const GlibError owned(error);
        qCInfo(captureLog, "%s of %s: %s (%s)", isWarning ? "a warning" : "an error", report.part.constData(),
               error->message, details ? details : "");
        g_free(details);
        if (isWarning)
            return;
        report.text = QString::fromUtf8(error->message);
        report.isDiskFull = g_error_matches(error, GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_NO_SPACE_LEFT);
    }
    box_->post([this, report = std::move(report)] { told_(report); });
}

} // namespace quenby
