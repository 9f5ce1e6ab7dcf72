#include "LoginItems.h"

#include "AutostartLoginItem.h"
#include "PortalLoginItem.h"

#include <VelmoraLinux/Process/XdgFolders.h>
#include <VelmoraLinux/Updates/Installation.h>

#include <QFile>

using namespace Qt::StringLiterals;

std::unique_ptr<LoginItem> makeLoginItem(const QString &identifier, const QString &program,
                                         const QProcessEnvironment &environment)
{
    if (QFile::exists(u"/.flatpak-info"_s)) {
        return std::make_unique<PortalLoginItem>(QDBusConnection::sessionBus(), QStringList{u"velmora"_s},
                                                 u"Velmora cleans copied links from login on"_s);
    }
    const QString image = runningAppImage(program, environment);
    return std::make_unique<AutostartLoginItem>(XdgFolders::configHome() + u"/autostart"_s, identifier,
                                                image.isEmpty() ? program : image);
}
