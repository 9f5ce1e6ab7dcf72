#pragma once

#include <VelmoraPlatform/UpdateUserDriver.h>

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <functional>

// Fetches over HTTPS, one thing at a time, on the main thread without waiting.
//
// Never requests an address that is not HTTPS, nor follows a redirection to one. A transfer of more than
// `limit` bytes is aborted.
class Downloader {
public:
    using BytesDone = std::function<void(UpdateOutcome problem, const QByteArray &bytes)>;
    using FileDone = std::function<void(UpdateOutcome problem)>;
    using Progress = std::function<void(qint64 received)>;

    virtual ~Downloader() = default;
    // `done` runs once, unless cancelled.
    virtual void fetch(const QUrl &url, qint64 limit, BytesDone done) = 0;
    // Writes to `path`, a new file that only the user can read. A failed or cancelled transfer leaves no file.
    virtual void fetchToFile(const QUrl &url, qint64 limit, const QString &path, Progress progress,
                             FileDone done) = 0;
    // Aborts the current transfer; neither its `progress` nor its `done` is called any more.
    virtual void cancel() = 0;
};
