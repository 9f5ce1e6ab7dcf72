#pragma once

#include <QObject>
#include <QString>
#include <qqmlintegration.h>

// Notifications inside the process: posted under a name, received by everybody who is connected.
class NotificationCenter : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("There is one, made when the application starts")
    // The name under which the user asks for a lost status item.
    Q_PROPERTY(QString restoreMenuBarIcon READ restoreMenuBarIcon CONSTANT)

public:
    using QObject::QObject;

    [[nodiscard]] static QString restoreMenuBarIcon()
    {
        return QString::fromUtf16(u"VelmoraRestoreMenuBarIcon");
    }

    Q_INVOKABLE void post(const QString &name) { Q_EMIT posted(name); }

Q_SIGNALS:
    void posted(const QString &name);
};
