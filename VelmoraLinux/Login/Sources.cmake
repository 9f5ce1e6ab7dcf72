velmora_linux_sources(
  Login/AutostartEntry.cpp Login/AutostartEntry.h
  Login/AutostartLoginItem.cpp Login/AutostartLoginItem.h
  Login/LoginItems.cpp Login/LoginItems.h
  Login/PortalLoginItem.cpp Login/PortalLoginItem.h)
target_link_libraries(VelmoraLinux PUBLIC VelmoraUpdates Qt6::DBus)
