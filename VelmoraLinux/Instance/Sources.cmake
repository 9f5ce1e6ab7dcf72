velmora_linux_sources(
  Instance/DBusApplication.cpp Instance/DBusApplication.h
  Instance/LinuxApplicationInstance.cpp Instance/LinuxApplicationInstance.h
  Instance/LocalInstance.cpp Instance/LocalInstance.h)
target_link_libraries(VelmoraLinux PUBLIC Qt6::DBus Qt6::Network)
