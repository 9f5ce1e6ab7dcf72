#pragma once

#include <VelmoraPlatform/HttpsClient.h>

#include <QObject>
#include <QSslConfiguration>

#include <memory>

class QNetworkAccessManager;
class QNetworkReply;

// HTTPS over Qt Network.
//
// Qt's network manager and its thread exist only while requests are pending. The headers sent are those that
// HTTP/1.1 needs (Host, Content-Type, Content-Length, Connection) and three with fixed values, because Qt
// would otherwise put the user's language and the library's version into them: User-Agent, Accept-Language
// and Accept-Encoding. A redirection is not followed; it is reported like any other status.
class QtHttpsClient final : public QObject, public HttpsClient {
    Q_OBJECT

public:
    // `security` selects the trusted certificates; by default those of the system.
    explicit QtHttpsClient(QObject *parent = nullptr);
    explicit QtHttpsClient(QSslConfiguration security, QObject *parent = nullptr);
    ~QtHttpsClient() override;

    void postJson(const QUrl &url, const QByteArray &json, std::chrono::milliseconds timeLimit,
                  Completion done) override;

private:
    struct Exchange;

    QNetworkReply *send(const QUrl &url, const QByteArray &json);
    void finish(const std::shared_ptr<Exchange> &exchange);

    std::optional<QSslConfiguration> security_; // Nothing: the system's, read when the first request is sent.
    std::unique_ptr<QNetworkAccessManager> manager_;
    int pendingRequests_ = 0;
};
