#pragma once

#include <QJsonValue>
#include <QString>
#include <QStringView>

// The installed application's information dictionary and resources.
//
// A program started from a build folder has no dictionary: every value is then undefined.
class BundleInfo {
public:
    virtual ~BundleInfo() = default;
    // The value of `key` with its type; undefined when the key is missing.
    [[nodiscard]] virtual QJsonValue value(QStringView key) const = 0;
    // The folder of the bundle's images; empty when there is no bundle.
    [[nodiscard]] virtual QString resourceFolder() const = 0;
};
