velmora_linux_sources(
  StatusItem/DBusMenu.cpp StatusItem/DBusMenu.h
  StatusItem/DBusMenuTypes.cpp StatusItem/DBusMenuTypes.h
  StatusItem/LinuxStatusItem.cpp StatusItem/LinuxStatusItem.h
  StatusItem/StatusIconImage.cpp StatusItem/StatusIconImage.h
  StatusItem/StatusItemAnchor.cpp StatusItem/StatusItemAnchor.h
  StatusItem/StatusItemTip.cpp StatusItem/StatusItemTip.h
  StatusItem/StatusNotifierItem.cpp StatusItem/StatusNotifierItem.h
  StatusItem/StatusNotifierRegistration.cpp StatusItem/StatusNotifierRegistration.h
  StatusItem/StatusNotifierTypes.cpp StatusItem/StatusNotifierTypes.h
  StatusItem/XEmbedIcon.cpp StatusItem/XEmbedIcon.h)
target_link_libraries(VelmoraLinux PUBLIC Qt6::DBus Qt6::Gui)
