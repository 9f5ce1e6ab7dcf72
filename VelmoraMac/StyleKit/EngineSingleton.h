#pragma once

#include <QQmlComponent>
#include <QQmlEngine>

// The QML singleton `name` of this module in `engine`. Null only when the module is not linked in.
template<typename Singleton>
[[nodiscard]] Singleton *engineSingleton(QQmlEngine &engine, const char *name)
{
    const auto type = [name] { return qmlTypeId("VelmoraMac", 1, 0, name); };
    if (type() < 0) { // The module's types are known from the first import on.
        QQmlComponent import(&engine);
        import.setData("import QtQml; import VelmoraMac; QtObject { }", QUrl());
    }
    return type() < 0 ? nullptr : engine.singletonInstance<Singleton *>(type());
}
