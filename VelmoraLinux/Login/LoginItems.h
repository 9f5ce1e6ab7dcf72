#pragma once

#include <VelmoraPlatform/LoginItem.h>

#include <QProcessEnvironment>
#include <QString>

#include <memory>

// The login item that works for this process: the background portal inside a sandbox, a desktop entry in the
// autostart folder elsewhere. When the program runs from an AppImage, the entry starts that AppImage.
[[nodiscard]] std::unique_ptr<LoginItem> makeLoginItem(const QString &identifier, const QString &program,
                                                       const QProcessEnvironment &environment);
