#include "BundleInfoFile.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>

BundleInfoFile::BundleInfoFile(const QString &programFolder)
{
    const QString folder = QDir::cleanPath(programFolder + QStringLiteral("/../share/velmora"));
    QFile file(folder + QStringLiteral("/Info.json"));
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    if (!document.isObject())
        return;
    values_ = document.object();
    folder_ = folder;
}

QJsonValue BundleInfoFile::value(QStringView key) const
{
    const auto found = values_.constFind(key);
    return found == values_.constEnd() ? QJsonValue(QJsonValue::Undefined) : QJsonValue(*found);
}

QString BundleInfoFile::resourceFolder() const
{
    return folder_;
}
