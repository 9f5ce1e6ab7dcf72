#include "ViewEnvironment.h"

#include <VelmoraMac/AppState.h>
#include <VelmoraMac/Motion/ThemeTransition.h>
#include <VelmoraMac/StyleKit/Surroundings.h>

#include <QQmlComponent>
#include <QQmlEngine>

#include <memory>

namespace {

// The singleton App.qml. Singletons written in QML are reached through QML only.
QObject *appSingleton(QQmlEngine &engine)
{
    QQmlComponent component(&engine);
    component.setData("import QtQml; import VelmoraMac; QtObject { readonly property QtObject app: App }",
                      QUrl());
    const std::unique_ptr<QObject> object(component.create());
    return object ? object->property("app").value<QObject *>() : nullptr;
}

} // namespace

void ViewEnvironment::provide(QQmlEngine &engine, AppState &state)
{
    if (QObject *app = appSingleton(engine))
        app->setProperty("state", QVariant::fromValue(&state));
    Surroundings *surroundings = Surroundings::in(engine);
    if (surroundings == nullptr)
        return;
    surroundings->setTheme(state.appTheme());
    auto *transition = new ThemeTransition(engine, *surroundings); // Owned by the surroundings.
    QObject::connect(&state, &AppState::appThemeChanged, transition,
                     [&state, transition] { transition->begin(state.appTheme()); });
}
