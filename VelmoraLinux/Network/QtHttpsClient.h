#pragma once

#include <VelmoraPlatform/HttpsClient.h>

#include <QObject>
#include <QSslConfiguration>

#include <memory>

class QNetworkAccessManager;
class QNetworkReply;

// HTTPS over Qt Network.
//
// The network machinery, its thread included, exists only while requests are under way. The headers sent are
// those of HTTP/1.1 itself (Host, Content-Type, Content-Length, Connection) and three that Qt would otherwise
// fill with the user's language and the library's version, fixed to mean nothing: User-Agent, Accept-Language
// and Accept-Encoding. A redirection is not followed: it is an answer like any other.
class QtHttpsClient final : public QObject, public HttpsClient {
    Q_OBJECT

public:
    // `security` says which certificates are trusted: by default those of the system.
    explicit QtHttpsClient(QObject *parent = nullptr);
    explicit QtHttpsClient(QSslConfiguration security, QObject *parent = nullptr);
    ~QtHttpsClient() override;

    void postJson(const QUrl &url, const QByteArray &json, std::chrono::milliseconds timeLimit,
                  Completion done) override;

private:
    struct Exchange;

    QNetworkReply *send(const QUrl &url, const QByteArray &json);
    void finish(const std::shared_ptr<Exchange> &exchange);

    std::optional<QSslConfiguration> security_; // Nothing: the system's, asked for when it is needed.
    std::unique_ptr<QNetworkAccessManager> manager_;
    int underWay_ = 0;
};
