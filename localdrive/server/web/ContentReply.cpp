#include "localdrive/server/web/ContentReply.h"

#include "localdrive/server/docs/FileNames.h"
#include "localdrive/server/web/ByteRange.h"
#include "localdrive/store/ApiError.h"

namespace quenby::localdrive {
namespace {

constexpr qint64 pieceSize = 256 * 1024;

// Sends the range piece by piece; the library calls back while the client takes it.
void stream(httplib::Response& response, std::shared_ptr<QFile> file, const ByteRange& range, const QString& type) {
    const auto provider = [file, first = range.first](size_t offset, size_t length, httplib::DataSink& sink) {
        QByteArray piece(std::min<qint64>(pieceSize, static_cast<qint64>(length)), Qt::Uninitialized);
        const qint64 got =
            file->seek(first + static_cast<qint64>(offset)) ? file->read(piece.data(), piece.size()) : -1;
        return got > 0 && sink.write(piece.constData(), static_cast<size_t>(got));
    };
    if (range.length > 0)
        response.set_content_provider(static_cast<size_t>(range.length), type.toStdString(), provider);
    else
        send(response, response.status, {}, type.toUtf8().constData());
}

} // namespace

void setContentHeaders(httplib::Response& response, const QString& name) {
    response.set_header("Content-Disposition", attachmentNamed(name).toStdString());
    response.set_header("Content-Security-Policy", "sandbox; default-src 'none'");
    response.set_header("X-Content-Type-Options", "nosniff");
    response.set_header("Cache-Control", "private, no-cache");
}

void sendContent(const httplib::Request& request, httplib::Response& response, FileContent content) {
    const QByteArray tag = '"' + content.md5.toLatin1() + '"';
    response.set_header("ETag", tag.toStdString());
    setContentHeaders(response, fileName(content.title));
    response.set_header("Accept-Ranges", "bytes");
    if (header(request, "If-None-Match") == tag) {
        response.status = 304;
        return;
    }
    ByteRange range;
    const RangeKind kind = resolveRange(header(request, "Range"), content.size, range);
    const std::string size = std::to_string(content.size);
    if (kind == RangeKind::unsatisfiable) {
        response.set_header("Content-Range", "bytes */" + size);
        response.status = 416;
        return;
    }
    response.status = kind == RangeKind::part ? 206 : 200;
    if (kind == RangeKind::part) {
        const std::string last = std::to_string(range.first + range.length - 1);
        response.set_header("Content-Range", "bytes " + std::to_string(range.first) + "-" + last + "/" + size);
    }
    stream(response, std::move(content.file), range, content.mimeType);
}

void sendCallError(httplib::Response& response, const QJsonObject& error) {
    const int code = error[QLatin1String("code")].toInt(500);
    sendJson(response, code >= 400 && code < 600 ? code : 400, {{QStringLiteral("error"), error}});
}

void sendCallError(httplib::Response& response, const Error& error) { sendCallError(response, toRpcError(error)); }

} // namespace quenby::localdrive
