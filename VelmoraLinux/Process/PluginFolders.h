#pragma once

#include <QString>
#include <QStringList>

// Where Qt finds plugins for a program in this folder: where the qt.conf beside it says, as a copy that brings its own
// plugins has one, else where they are installed.
//
// For use without an application object: the end of one takes with it what Qt's libraries have registered when they were
// loaded, such as what tells screen readers of windows. Without one Qt reads no qt.conf.
[[nodiscard]] QStringList pluginFolders(const QString &programFolder);
