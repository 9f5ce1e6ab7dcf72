velmora_linux_sources(
  Windows/ActivationToken.h
  Windows/NativeGeometry.cpp Windows/NativeGeometry.h
  Windows/QtScreens.cpp Windows/QtScreens.h)
target_link_libraries(VelmoraLinux PUBLIC Qt6::Gui)
