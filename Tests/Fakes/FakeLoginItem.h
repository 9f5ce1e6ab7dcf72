#pragma once

#include <VelmoraPlatform/LoginItem.h>

#include <QStringList>

using namespace Qt::StringLiterals;

// Records the requests and succeeds or fails as the test sets it.
class FakeLoginItem final : public LoginItem {
public:
    [[nodiscard]] bool registerItem() override
    {
        calls.append(u"register"_s);
        return agrees;
    }

    [[nodiscard]] bool unregisterItem() override
    {
        calls.append(u"unregister"_s);
        return agrees;
    }

    void setRefusalHandler(RefusalHandler handler) override { refuseLate = std::move(handler); }

    bool agrees = true;
    RefusalHandler refuseLate;
    QStringList calls;
};
