#pragma once

#include <VelmoraPlatform/LoginItem.h>

#include <QStringList>

// Records the requests and succeeds or fails as the test sets it.
class FakeLoginItem final : public LoginItem {
public:
    [[nodiscard]] bool registerItem() override
    {
        calls.append(QStringLiteral("register"));
        return agrees;
    }

    [[nodiscard]] bool unregisterItem() override
    {
        calls.append(QStringLiteral("unregister"));
        return agrees;
    }

    void setRefusalHandler(RefusalHandler handler) override { refuseLate = std::move(handler); }

    bool agrees = true;
    RefusalHandler refuseLate;
    QStringList calls;
};
