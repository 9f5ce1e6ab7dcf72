#pragma once

#include <VelmoraPlatform/LoginItem.h>

#include <QStringList>

// Remembers what was asked of it and agrees or refuses as told.
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
