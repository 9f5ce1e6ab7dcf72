#include "AutostartLoginItem.h"

#include "AutostartEntry.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

using namespace Qt::StringLiterals;

AutostartLoginItem::AutostartLoginItem(QString folder, QString identifier, QString program)
    : folder_(std::move(folder))
    , identifier_(std::move(identifier))
    , program_(std::move(program))
{
}

QString AutostartLoginItem::path() const
{
    return folder_ + u'/' + identifier_ + u".desktop"_s;
}

bool AutostartLoginItem::registerItem()
{
    const std::optional<QByteArray> entry = autostartEntry(program_, identifier_);
    if (!entry || !QDir().mkpath(folder_))
        return false;
    QSaveFile file(path());
    return file.open(QIODevice::WriteOnly) && file.write(*entry) == entry->size() && file.commit();
}

bool AutostartLoginItem::unregisterItem()
{
    const QFileInfo entry(path());
    return (!entry.exists() && !entry.isSymLink()) || QFile::remove(path());
}

void AutostartLoginItem::setRefusalHandler(RefusalHandler) {}
