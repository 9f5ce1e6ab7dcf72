#include "ThemeTransition.h"

#include <VelmoraMac/StyleKit/Surroundings.h>

#include <QQmlContext>
#include <QQmlEngine>

namespace {
// As all changes of state in the popover.
constexpr double response = 0.42;
constexpr double dampingFraction = 0.86;
} // namespace

ThemeTransition::ThemeTransition(QQmlEngine &engine, Surroundings &surroundings)
    : QObject(&surroundings)
    , surroundings_(surroundings)
{
    QQmlEngine::setContextForObject(&progress_, engine.rootContext()); // It looks for its clock there.
    progress_.setResponse(response);
    progress_.setDampingFraction(dampingFraction);
    progress_.jump(1);
    progress_.componentComplete();
    connect(&progress_, &SpringValue::valueChanged, this,
            [this] { surroundings_.fadeFrom(from_, progress_.value()); });
}

void ThemeTransition::begin(VelmoraTheme theme)
{
    from_ = surroundings_.palette();
    surroundings_.setTheme(theme);
    progress_.jump(0);
    surroundings_.fadeFrom(from_, 0);
    progress_.setTo(1);
}
