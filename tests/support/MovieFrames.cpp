#include "tests/support/MovieFrames.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace quenby::testing {
namespace {

constexpr int patience = 60'000; // milliseconds

std::vector<double> steps(const std::vector<double>& times) {
    std::vector<double> found;
    for (size_t i = 1; i < times.size(); ++i)
        found.push_back(times[i] - times[i - 1]);
    return found;
}

double number(const QJsonValue& value) { return value.toString().toDouble(); }

QJsonObject firstWithPictures(const QJsonArray& streams) {
    for (const QJsonValue stream : streams) {
        if (stream[u"codec_type"] == QStringLiteral("video"))
            return stream.toObject();
    }
    return {};
}

QString words(QProcess& process) { return QString::fromLocal8Bit(process.readAllStandardError()).trimmed(); }

} // namespace

double MovieFacts::leastStep() const {
    const auto found = steps(times);
    return found.empty() ? 0 : *std::min_element(found.begin(), found.end());
}

double MovieFacts::greatestStep() const {
    const auto found = steps(times);
    return found.empty() ? 0 : *std::max_element(found.begin(), found.end());
}

std::optional<MovieFacts> movieFacts(const QString& path) {
    QProcess probe;
    probe.start(QStringLiteral("ffprobe"), {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-of"),
                                            QStringLiteral("json"), QStringLiteral("-show_format"),
                                            QStringLiteral("-show_streams"), QStringLiteral("-show_packets"), path});
    if (!probe.waitForFinished(patience) || probe.exitStatus() != QProcess::NormalExit || probe.exitCode() != 0) {
        qWarning("ffprobe: %s %s", qPrintable(probe.errorString()), qPrintable(words(probe)));
        return {};
    }
    const QJsonObject told = QJsonDocument::fromJson(probe.readAllStandardOutput()).object();
    const QJsonArray streams = told[u"streams"].toArray();
    const QJsonObject pictures = firstWithPictures(streams);
    if (pictures.isEmpty()) {
        qWarning("ffprobe found no pictures in %s", qPrintable(path));
        return {};
    }
    MovieFacts facts{
        .containers = told[u"format"][u"format_name"].toString().split(QLatin1Char(',')),
        .streams = static_cast<int>(streams.size()),
        .codec = pictures[u"codec_name"].toString(),
        .profile = pictures[u"profile"].toString(),
        .pixelFormat = pictures[u"pix_fmt"].toString(),
        .size = {pictures[u"width"].toInt(), pictures[u"height"].toInt()},
        .frameRate = pictures[u"r_frame_rate"].toString(),
        .averageFrameRate = pictures[u"avg_frame_rate"].toString(),
        .duration = number(pictures[u"duration"]),
        .times = {},
    };
    for (const QJsonValue packet : told[u"packets"].toArray()) {
        if (packet[u"stream_index"] == pictures[u"index"])
            facts.times.push_back(number(packet[u"pts_time"]));
    }
    std::sort(facts.times.begin(), facts.times.end());
    return facts;
}

MovieFrames::MovieFrames(const QString& path) {
    const auto facts = movieFacts(path);
    if (!facts) {
        error_ = QStringLiteral("No movie: %1").arg(path);
        return;
    }
    size_ = facts->size;
    decoder_.start(QStringLiteral("ffmpeg"),
                   {QStringLiteral("-v"), QStringLiteral("warning"), QStringLiteral("-nostdin"), QStringLiteral("-i"),
                    path, QStringLiteral("-map"), QStringLiteral("0:v:0"), QStringLiteral("-fps_mode"),
                    QStringLiteral("passthrough"), QStringLiteral("-f"), QStringLiteral("rawvideo"),
                    QStringLiteral("-pix_fmt"), QStringLiteral("rgb24"), QStringLiteral("pipe:1")});
}

MovieFrames::~MovieFrames() {
    decoder_.kill();
    decoder_.waitForFinished(patience);
}

QImage MovieFrames::next() {
    if (!error_.isEmpty())
        return {};
    // The decoder waits while nobody reads, and reading takes no more than is asked for here.
    const qint64 line = 3LL * size_.width();
    const qint64 whole = line * size_.height();
    while (decoder_.bytesAvailable() < whole) {
        if (decoder_.waitForReadyRead(patience))
            continue;
        decoder_.waitForFinished(patience);
        error_ = words(decoder_);
        if (error_.isEmpty() && (decoder_.exitStatus() != QProcess::NormalExit || decoder_.exitCode() != 0))
            error_ = QStringLiteral("ffmpeg failed: %1").arg(decoder_.errorString());
        if (error_.isEmpty() && decoder_.bytesAvailable() > 0)
            error_ = QStringLiteral("The last frame is not whole.");
        return {};
    }
    QImage frame(size_, QImage::Format_RGB888);
    for (int y = 0; y < size_.height(); ++y)
        decoder_.read(reinterpret_cast<char*>(frame.scanLine(y)), line);
    return frame;
}

} // namespace quenby::testing
