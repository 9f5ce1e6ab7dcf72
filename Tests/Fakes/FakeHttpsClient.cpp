#include "FakeHttpsClient.h"

#include <utility>

void FakeHttpsClient::postJson(const QUrl &url, const QByteArray &json, std::chrono::milliseconds timeLimit,
                               Completion done)
{
    if (replies.empty())
        qFatal("FakeHttpsClient: no reply prepared for %s", qPrintable(url.toString()));
    requests.append({scheduler_.now(), url, json, timeLimit});
    const std::optional<int> reply = replies.front();
    replies.pop_front();
    scheduler_.after(answerDelay, [reply, done = std::move(done)] { done(reply); });
}
