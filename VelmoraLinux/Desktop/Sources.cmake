velmora_linux_sources(
  Desktop/ActivationToken.h
  Desktop/DesktopAppearance.cpp Desktop/DesktopAppearance.h
  Desktop/NativeGeometry.cpp Desktop/NativeGeometry.h
  Desktop/QtScreens.cpp Desktop/QtScreens.h)
target_link_libraries(VelmoraLinux PUBLIC Qt6::DBus Qt6::Gui)
