#include "HttpsDownloader.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int maximumRedirects = 5;
constexpr qint64 readBufferBytes = qint64{256} * 1024; // The most that is buffered in memory.

UpdateOutcome problemOf(QNetworkReply::NetworkError error)
{
    switch (error) {
    case QNetworkReply::NoError:
        return {};
    case QNetworkReply::InsecureRedirectError:
        return UpdateProblem::insecure;
    default:
        return UpdateProblem::unreachable;
    }
}

} // namespace

struct HttpsDownloader::Transfer {
    qint64 limit = 0;
    qint64 received = 0;
    QByteArray bytes; // Without a file.
    std::unique_ptr<QFile> file;
    Progress progress;
    BytesDone done;
    QNetworkReply *reply = nullptr;
};

HttpsDownloader::HttpsDownloader(Settings settings)
    : settings_(std::move(settings))
{
    network_.setAutoDeleteReplies(true);
}

HttpsDownloader::~HttpsDownloader()
{
    HttpsDownloader::cancel();
}

void HttpsDownloader::fetch(const QUrl &url, qint64 limit, BytesDone done)
{
    auto transfer = std::make_unique<Transfer>();
    transfer->limit = limit;
    transfer->done = std::move(done);
    begin(url, std::move(transfer));
}

void HttpsDownloader::fetchToFile(const QUrl &url, qint64 limit, const QString &path, Progress progress,
                                  FileDone done)
{
    auto transfer = std::make_unique<Transfer>();
    transfer->limit = limit;
    transfer->progress = std::move(progress);
    transfer->done = [done = std::move(done)](UpdateOutcome problem, const QByteArray &) { done(problem); };
    transfer->file = std::make_unique<QFile>(path);
    if (!transfer->file->open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered,
                              QFile::ReadOwner | QFile::WriteOwner)) {
        const auto failed = std::exchange(transfer->done, nullptr);
        failed(UpdateProblem::noSpace, {});
        return;
    }
    begin(url, std::move(transfer));
}

void HttpsDownloader::begin(const QUrl &url, std::unique_ptr<Transfer> transfer)
{
    cancel();
    transfer_ = std::move(transfer);
    if (url.scheme() != u"https") {
        end(UpdateProblem::insecure);
        return;
    }
    QNetworkRequest request(url);
    request.setSslConfiguration(settings_.ssl);
    request.setTransferTimeout(static_cast<int>(settings_.idleTimeout.count()));
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    request.setMaximumRedirectsAllowed(maximumRedirects);
    request.setHeader(QNetworkRequest::UserAgentHeader, settings_.userAgent);
    // The bytes are counted and verified as received, so they must not be decompressed by Qt.
    request.setRawHeader("Accept-Encoding", "identity");
    QNetworkReply *reply = network_.get(request);
    transfer_->reply = reply;
    reply->setReadBufferSize(readBufferBytes);
    QObject::connect(reply, &QNetworkReply::readyRead, reply, [this] { readAvailable(); });
    QObject::connect(reply, &QNetworkReply::finished, reply, [this] { finish(); });
}

// Reads the bytes that have arrived.
void HttpsDownloader::readAvailable()
{
    if (!transfer_)
        return;
    QNetworkReply &reply = *transfer_->reply;
    const QByteArray piece = reply.readAll();
    transfer_->received += piece.size();
    const qint64 announced = reply.header(QNetworkRequest::ContentLengthHeader).toLongLong();
    if (std::max(transfer_->received, announced) > transfer_->limit) {
        end(UpdateProblem::tooLarge);
        return;
    }
    if (!transfer_->file) {
        transfer_->bytes += piece;
    } else if (transfer_->file->write(piece) != piece.size()) {
        end(UpdateProblem::noSpace);
        return;
    }
    if (!piece.isEmpty() && transfer_->progress) {
        const Progress progress =
            transfer_->progress; // A copy: the handler may cancel, which destroys the transfer.
        progress(transfer_->received);
    }
}

void HttpsDownloader::finish()
{
    const QNetworkReply *reply = transfer_ ? transfer_->reply : nullptr;
    readAvailable();
    if (transfer_ && transfer_->reply == reply)
        end(problemOf(reply->error()));
}

void HttpsDownloader::end(UpdateOutcome problem)
{
    const std::unique_ptr<Transfer> ended = std::move(transfer_);
    if (ended->reply != nullptr) {
        ended->reply->disconnect();
        ended->reply->abort();
    }
    if (ended->file) {
        ended->file->close();
        if (problem)
            ended->file->remove();
    }
    ended->done(problem, ended->bytes);
}

void HttpsDownloader::cancel()
{
    if (!transfer_)
        return;
    transfer_->done = [](UpdateOutcome, const QByteArray &) {};
    end(UpdateProblem::unreachable);
}
