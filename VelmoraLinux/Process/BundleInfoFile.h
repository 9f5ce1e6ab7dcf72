#pragma once

#include <VelmoraPlatform/BundleInfo.h>

#include <QJsonObject>

// The information dictionary of an installed copy: <prefix>/share/velmora/Info.json beside <prefix>/bin.
//
// Without that file, or when it is not a JSON object, the program counts as unbundled: no values, no folder.
class BundleInfoFile final : public BundleInfo {
public:
    // `programFolder` is the folder of the running program, <prefix>/bin.
    explicit BundleInfoFile(const QString &programFolder);

    [[nodiscard]] QJsonValue value(QStringView key) const override;
    [[nodiscard]] QString resourceFolder() const override;

private:
    QJsonObject values_;
    QString folder_;
};
