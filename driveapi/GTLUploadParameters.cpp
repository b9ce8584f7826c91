#include "driveapi/GTLUploadParameters.h"

namespace quenby {
namespace {

template <typename Source>
Source sourceOrNothing(const GTLUploadParameters::Media& media) {
    const auto* source = std::get_if<Source>(&media);
    return source ? *source : Source();
}

} // namespace

GTLUploadParameters GTLUploadParameters::uploadParametersWithData(const QByteArray& data, const QByteArray& MIMEType) {
    GTLUploadParameters parameters;
    parameters.media = data;
    parameters.MIMEType = MIMEType;
    return parameters;
}

GTLUploadParameters GTLUploadParameters::uploadParametersWithFileHandle(std::shared_ptr<QFile> fileHandle,
                                                                        const QByteArray& MIMEType) {
    GTLUploadParameters parameters;
    parameters.media = std::move(fileHandle);
    parameters.MIMEType = MIMEType;
    return parameters;
}

GTLUploadParameters GTLUploadParameters::uploadParametersWithFileURL(const QUrl& fileURL, const QByteArray& MIMEType) {
    GTLUploadParameters parameters;
    parameters.media = fileURL;
    parameters.MIMEType = MIMEType;
    return parameters;
}

QByteArray GTLUploadParameters::data() const { return sourceOrNothing<QByteArray>(media); }
std::shared_ptr<QFile> GTLUploadParameters::fileHandle() const {
    return sourceOrNothing<std::shared_ptr<QFile>>(media);
}
QUrl GTLUploadParameters::fileURL() const { return sourceOrNothing<QUrl>(media); }

QString GTLUploadParameters::description() const {
    const auto part = [](const char* format, const QString& value) {
        return value.isEmpty() ? QString() : QString::fromLatin1(format).arg(value);
    };
    const QString length = std::holds_alternative<QByteArray>(media) ? QString::number(data().size()) : QString();
    const QString file = fileHandle() ? fileHandle()->fileName() : fileURL().toLocalFile();
    return QStringLiteral("upload: {MIMEType:%1").arg(QString::fromLatin1(MIMEType)) + part(" bytes:%1", length) +
           part(" file:%1", file) + part(" slug:%1", slug) +
           (uploadLocationURL.isEmpty() ? QString() : QStringLiteral(" resuming")) + QLatin1Char('}');
}

} // namespace quenby
