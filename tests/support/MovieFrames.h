// What is in a movie file, as a stranger reads it: by the programs ffprobe and ffmpeg.
//
// Threads: any. The calls block; each gives up after 60 seconds.
#pragma once

#include <QImage>
#include <QProcess>
#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace quenby::testing {

struct MovieFacts {
    QStringList containers; // names of the family: "mov", "mp4", ...
    int streams = 0;        // of any kind
    // Of the first one with pictures:
    QString codec;
    QString profile;
    QString pixelFormat;
    QSize size;
    QString frameRate; // as the file tells it: "30/1"
    QString averageFrameRate;
    double duration = 0;       // seconds
    std::vector<double> times; // of every frame in the order in which they are shown, seconds

    int frameCount() const { return static_cast<int>(times.size()); }
    // The least and the greatest time between two frames, in seconds.
    double leastStep() const;
    double greatestStep() const;
};

// Nothing when the file cannot be read; the reason is a warning.
std::optional<MovieFacts> movieFacts(const QString& path);

// The frames one by one; never more than a few are in memory.
class MovieFrames {
public:
    explicit MovieFrames(const QString& path);
    ~MovieFrames();
    MovieFrames(const MovieFrames&) = delete;
    MovieFrames& operator=(const MovieFrames&) = delete;

    // The next one; null after the last.
    QImage next();
    // After the last: empty when every frame could be decoded without a complaint.
    QString error() const { return error_; }

private:
    QSize size_;
    QProcess decoder_;
    QString error_;
};

} // namespace quenby::testing
