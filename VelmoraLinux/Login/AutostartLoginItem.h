#pragma once

#include <VelmoraPlatform/LoginItem.h>

#include <QString>

// Start at login by a desktop entry in $XDG_CONFIG_HOME/autostart.
class AutostartLoginItem final : public LoginItem {
public:
    // The entry is `folder`/`identifier`.desktop and starts `program`; `folder` is created when it is missing.
    AutostartLoginItem(QString folder, QString identifier, QString program);

    // An existing entry is replaced atomically, when the new one is completely written.
    [[nodiscard]] bool registerItem() override;
    [[nodiscard]] bool unregisterItem() override;
    // Never called: both operations know their result when they return.
    void setRefusalHandler(RefusalHandler handler) override;

private:
    [[nodiscard]] QString path() const;

    QString folder_;
    QString identifier_;
    QString program_;
};
