#include "BundleInfoFile.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>

using namespace Qt::StringLiterals;

BundleInfoFile::BundleInfoFile(const QString &programFolder)
{
    const QString folder = QDir::cleanPath(programFolder + u"/../share/velmora"_s);
    QFile file(folder + u"/Info.json"_s);
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
