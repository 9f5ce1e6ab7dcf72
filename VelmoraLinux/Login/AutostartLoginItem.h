#pragma once

#include <VelmoraPlatform/LoginItem.h>

#include <QString>

// Start at login by an entry in the user's autostart folder.
class AutostartLoginItem final : public LoginItem {
public:
    // The entry is `folder`/`identifier`.desktop and starts `program`; `folder` is made when it is missing.
    AutostartLoginItem(QString folder, QString identifier, QString program);

    // The old entry stays as it is until the new one lies complete on the disk.
    [[nodiscard]] bool registerItem() override;
    [[nodiscard]] bool unregisterItem() override;
    // Never called: files answer at once.
    void setRefusalHandler(RefusalHandler handler) override;

private:
    [[nodiscard]] QString path() const;

    QString folder_;
    QString identifier_;
    QString program_;
};
