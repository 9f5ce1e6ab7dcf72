#pragma once

#include "SpringValue.h"

#include <VelmoraMac/State/AppTypes.h>
#include <VelmoraMac/VelmoraThemePalette.h>

#include <QObject>

class QQmlEngine;
class Surroundings;

// Moves the colours of an engine's views to those of another theme, on a spring. Lives as long as `surroundings`.
class ThemeTransition : public QObject {
    Q_OBJECT

public:
    ThemeTransition(QQmlEngine &engine, Surroundings &surroundings);

    // From the colours that are shown now, which may be on their way to others.
    void begin(Velmora::VelmoraTheme theme);

private:
    Surroundings &surroundings_;
    SpringValue progress_;
    VelmoraThemePalette from_;
};
