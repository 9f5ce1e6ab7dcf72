#pragma once

#include <VelmoraPlatform/HttpsClient.h>
#include <VelmoraPlatform/Scheduler.h>

#include <QList>

#include <chrono>
#include <deque>
#include <optional>

// A network that gives prepared answers, in order, and keeps every request. A request without a prepared
// answer ends the test.
class FakeHttpsClient final : public HttpsClient {
public:
    struct Request {
        std::chrono::nanoseconds sentAt; // In the scheduler's time.
        QUrl url;
        QByteArray json;
        std::chrono::milliseconds timeLimit;
    };

    explicit FakeHttpsClient(Scheduler &scheduler)
        : scheduler_(scheduler)
    {
    }

    void postJson(const QUrl &url, const QByteArray &json, std::chrono::milliseconds timeLimit,
                  Completion done) override;

    std::deque<std::optional<int>> replies; // An absent status is a failure of the connection.
    std::chrono::nanoseconds answerDelay{0};
    QList<Request> requests;

private:
    Scheduler &scheduler_;
};
