#pragma once

#include <VelmoraMac/State/AppTypes.h>

#include <QDateTime>
#include <QObject>
#include <QString>
#include <qqmlintegration.h>

// Dates as the views write them, in the application's language.
class ViewDates : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    // As in "Mar 7, 2026, 2:05 PM" and "07.03.2026, 14:05".
    Q_INVOKABLE static QString mediumDateShortTime(const QDateTime &moment, Velmora::AppLanguage language);
};
