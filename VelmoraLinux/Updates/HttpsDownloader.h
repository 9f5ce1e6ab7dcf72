#pragma once

#include "Downloader.h"

#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSslConfiguration>

#include <chrono>
#include <memory>

// Downloads through Qt's network classes, without cookies, cache or credentials.
class HttpsDownloader : public Downloader {
public:
    struct Settings {
        QSslConfiguration ssl = QSslConfiguration::defaultConfiguration(); // The trusted certificates.
        std::chrono::milliseconds idleTimeout = std::chrono::seconds(30);
        QString userAgent;
    };

    explicit HttpsDownloader(Settings settings);
    ~HttpsDownloader() override;

    void fetch(const QUrl &url, qint64 limit, BytesDone done) override;
    void fetchToFile(const QUrl &url, qint64 limit, const QString &path, Progress progress,
                     FileDone done) override;
    void cancel() override;

private:
    struct Transfer;

    void begin(const QUrl &url, std::unique_ptr<Transfer> transfer);
    void readAvailable();
    void finish();
    void end(UpdateOutcome problem);

    Settings settings_;
    QNetworkAccessManager network_;
    std::unique_ptr<Transfer> transfer_; // Null while idle.
};
