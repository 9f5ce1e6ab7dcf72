#pragma once

#include <VelmoraPlatform/BundleInfo.h>

#include <QJsonObject>

// An information dictionary written by the test; empty as in a program started from a build folder.
class FakeBundleInfo final : public BundleInfo {
public:
    [[nodiscard]] QJsonValue value(QStringView key) const override { return values.value(key); }

    [[nodiscard]] QString resourceFolder() const override { return folder; }

    QJsonObject values;
    QString folder;
};
