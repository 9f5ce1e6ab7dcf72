#pragma once

#include "Stage.h"

#include <QString>

#include <chrono>
#include <functional>
#include <vector>

// One thing to look at: a view in a state.
struct Scene {
    QString name;
    bool themed; // Whether the theme changes it; otherwise the desktop's appearance does.
    std::function<QQuickItem *(Stage &)> show;
    std::chrono::milliseconds time; // How long it has been on show in the picture.
};

// The history that the scenes show.
[[nodiscard]] StageSetup everydaySetup();

[[nodiscard]] const std::vector<Scene> &allScenes();
// Null when there is none of that name.
[[nodiscard]] const Scene *sceneNamed(const QString &name);

[[nodiscard]] CleaningResult shopResult();
[[nodiscard]] CleanHistoryEntry longEntry(); // A link of 4,000 characters.
void fillHistory(Stage &stage, int entries);
[[nodiscard]] UpdateReport foundUpdate(); // With long release notes.
