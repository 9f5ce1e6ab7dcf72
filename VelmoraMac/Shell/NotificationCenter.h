#pragma once

#include <QObject>
#include <QString>
#include <qqmlintegration.h>

// Announcements inside the process, from whoever has something to say to whoever listens.
class NotificationCenter : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("There is one, made when the application starts")

public:
    using QObject::QObject;

    // The user wants the status item back.
    static QString restoreMenuBarIcon() { return QStringLiteral("VelmoraRestoreMenuBarIcon"); }

    Q_INVOKABLE void post(const QString &name) { Q_EMIT posted(name); }

Q_SIGNALS:
    void posted(const QString &name);
};
