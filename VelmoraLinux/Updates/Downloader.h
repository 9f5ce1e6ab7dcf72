#pragma once

#include <VelmoraPlatform/UpdateUserDriver.h>

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <functional>

// Fetches over HTTPS, one thing at a time, on the main thread without waiting.
//
// Never asks an address that is not HTTPS, nor follows a redirection to one. More bytes than `limit` end the
// transfer.
class Downloader {
public:
    using BytesDone = std::function<void(UpdateProblem problem, const QByteArray &bytes)>;
    using FileDone = std::function<void(UpdateProblem problem)>;
    using Progress = std::function<void(qint64 received)>;

    virtual ~Downloader() = default;
    // `done` runs once, unless cancelled.
    virtual void fetch(const QUrl &url, qint64 limit, BytesDone done) = 0;
    // Writes to `path`, a new file that only the user can read. Of a failed or cancelled transfer no file
    // remains.
    virtual void fetchToFile(const QUrl &url, qint64 limit, const QString &path, Progress progress,
                             FileDone done) = 0;
    // Neither `progress` nor `done` of what is under way runs any more.
    virtual void cancel() = 0;
};
