#pragma once

#include <VelmoraPlatform/Appearance.h>

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>

#include <optional>
#include <vector>

// Reads the settings portal (org.freedesktop.portal.Settings) and follows its changes. Without a portal the
// palette decides between light and dark, and whether the contrast is increased: themes for that are black and white.
class DesktopAppearance : public QObject, public Appearance {
    Q_OBJECT

public:
    explicit DesktopAppearance(QDBusConnection bus);

    [[nodiscard]] ColorScheme colorScheme() const override;

    [[nodiscard]] bool reducesMotion() const override { return reducesMotion_; }

    [[nodiscard]] bool increasesContrast() const override;

    void addChangeHandler(ChangeHandler handler) override;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void readPortal();
    Q_SLOT void settingChanged(const QString &group, const QString &key, const QDBusVariant &value);
    bool applySetting(const QString &key, const QVariant &value);
    void notifyHandlers();

    QDBusConnection bus_;
    std::optional<ColorScheme> portalScheme_;
    std::optional<bool> portalContrast_;
    bool reducesMotion_ = false;
    std::vector<ChangeHandler> handlers_;
};
