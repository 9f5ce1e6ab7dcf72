#pragma once

class AppState;
class QQmlEngine;

// What all views of an engine share.
namespace ViewEnvironment {

// Gives the views of `engine` the state they show, as `App.state`, and the theme that the state names. To be
// called before the first view is made; `state` outlives the views.
void provide(QQmlEngine &engine, AppState &state);

} // namespace ViewEnvironment
