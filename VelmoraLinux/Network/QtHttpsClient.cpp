#include "QtHttpsClient.h"

#include <QIODevice>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

// The body of an answer is not used. A longer one is cut off here.
constexpr qint64 maximumAnswerBytes = qint64(64) * 1024;

QNetworkRequest requestTo(const QUrl &url)
{
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArrayLiteral("application/json"));
    request.setRawHeader("User-Agent", "Velmora");
    request.setRawHeader("Accept-Language", "*");
    request.setRawHeader("Accept-Encoding", "identity");
    request.setRawHeader("Connection", "close");
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    return request;
}

// A body that can be sent once only: the network layer repeats a request on its own when the server closes the
// connection without an answer, and the server may have taken the first one.
class BodySentOnce final : public QIODevice {
public:
    explicit BodySentOnce(QByteArray bytes)
        : bytes_(std::move(bytes))
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    [[nodiscard]] bool isSequential() const override { return true; }

    [[nodiscard]] bool atEnd() const override { return sent_ == bytes_.size(); }

    [[nodiscard]] qint64 bytesAvailable() const override
    {
        return bytes_.size() - sent_ + QIODevice::bytesAvailable();
    }

protected:
    qint64 readData(char *data, qint64 most) override
    {
        const qint64 size = std::min<qint64>(most, bytes_.size() - sent_);
        if (size == 0)
            return -1;
        std::copy_n(bytes_.constData() + sent_, size, data);
        sent_ += size;
        return size;
    }

    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArray bytes_;
    qint64 sent_ = 0;
};

// Fires once, unless `owner` is destroyed before.
QTimer *startedTimer(std::chrono::milliseconds delay, QObject *owner)
{
    auto *timer = new QTimer(owner);
    timer->setSingleShot(true);
    timer->setTimerType(Qt::PreciseTimer); // A coarse timer may be 5 % early or late.
    timer->start(delay);
    return timer;
}

} // namespace

// One request from sending to completion.
struct QtHttpsClient::Exchange {
    QNetworkReply *reply;
    Completion done;
    qint64 received = 0;
    bool isTruncated = false; // By us, after the status was received.

    [[nodiscard]] std::optional<int> status() const
    {
        const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        // Qt reports a status from 400 on as an error, but it is a complete answer. A success whose body
        // broke off is not.
        // A redirection that asks for the request again is one, too.
        const bool isAnswer = isTruncated || reply->error() == QNetworkReply::NoError ||
                              reply->error() == QNetworkReply::ContentReSendError || status >= 400;
        return isAnswer && status > 0 ? std::optional<int>(status) : std::nullopt;
    }
};

QtHttpsClient::QtHttpsClient(QObject *parent)
    : QObject(parent)
{
}

QtHttpsClient::QtHttpsClient(QSslConfiguration security, QObject *parent)
    : QObject(parent)
    , security_(std::move(security))
{
}

QtHttpsClient::~QtHttpsClient() = default;

QNetworkReply *QtHttpsClient::send(const QUrl &url, const QByteArray &json)
{
    if (!manager_)
        manager_ = std::make_unique<QNetworkAccessManager>();
    QNetworkRequest request = requestTo(url);
    QSslConfiguration security = security_.value_or(QSslConfiguration::defaultConfiguration());
    security.setProtocol(QSsl::TlsV1_2OrLater);
    request.setSslConfiguration(security);
    request.setHeader(QNetworkRequest::ContentLengthHeader, json.size());
    request.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
    auto body = std::make_unique<BodySentOnce>(json);
    QNetworkReply *reply = manager_->post(request, body.get());
    body.release()->setParent(reply);
    return reply;
}

void QtHttpsClient::postJson(const QUrl &url, const QByteArray &json, std::chrono::milliseconds timeLimit,
                             Completion done)
{
    if (url.scheme() != "https"_L1) {
        QTimer *refusal = startedTimer(std::chrono::milliseconds(0), this);
        connect(refusal, &QTimer::timeout, this, [refusal, done = std::move(done)] {
            refusal->deleteLater();
            done({});
        });
        return;
    }
    ++pendingRequests_;
    const auto exchange = std::make_shared<Exchange>(Exchange{send(url, json), std::move(done)});
    QNetworkReply *reply = exchange->reply;
    reply->setReadBufferSize(maximumAnswerBytes);
    connect(reply, &QNetworkReply::finished, this, [this, exchange] { finish(exchange); });
    connect(reply, &QNetworkReply::readyRead, this, [exchange] {
        exchange->received += exchange->reply->readAll().size();
        if (exchange->received > maximumAnswerBytes && !exchange->isTruncated) {
            exchange->isTruncated = true;
            exchange->reply->abort();
        }
    });
    connect(startedTimer(timeLimit, reply), &QTimer::timeout, reply, &QNetworkReply::abort);
}

void QtHttpsClient::finish(const std::shared_ptr<Exchange> &exchange)
{
    const std::optional<int> status = exchange->status();
    exchange->reply->deleteLater();
    if (--pendingRequests_ == 0) {
        // Deleted later: the reply whose signal runs now belongs to it.
        manager_->deleteLater();
        static_cast<void>(manager_.release());
    }
    exchange->done(status);
}
