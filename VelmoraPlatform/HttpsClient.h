#pragma once

#include <QByteArray>
#include <QUrl>

#include <chrono>
#include <functional>
#include <optional>

// Sends small requests over HTTPS and reports their result.
//
// Only the request itself is sent: no cookies, no credentials, no header beyond what HTTP needs. A
// certificate that cannot be verified is a failure, and a redirection to plain HTTP is never followed. The
// answer's body is discarded.
class HttpsClient {
public:
    // The HTTP status; nothing when there was no answer in time or no secure connection.
    using Completion = std::function<void(std::optional<int> status)>;

    virtual ~HttpsClient() = default;
    // Posts `json`. `done` runs exactly once on the main thread, later than this call and at the latest after
    // `timeLimit`, which covers the whole exchange; never, when this client is destroyed before.
    virtual void postJson(const QUrl &url, const QByteArray &json, std::chrono::milliseconds timeLimit,
                          Completion done) = 0;
};
