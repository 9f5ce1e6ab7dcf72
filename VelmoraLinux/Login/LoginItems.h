#pragma once

#include <VelmoraPlatform/LoginItem.h>

#include <QProcessEnvironment>
#include <QString>

#include <memory>

// The way to start at login that works for this process: through the portal in a sandbox, elsewhere by an
// entry in the autostart folder, which starts the AppImage when the program runs from one.
[[nodiscard]] std::unique_ptr<LoginItem> makeLoginItem(const QString &identifier, const QString &program,
                                                       const QProcessEnvironment &environment);
