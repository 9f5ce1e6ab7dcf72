velmora_linux_sources(Appearance/DesktopAppearance.cpp Appearance/DesktopAppearance.h)
target_link_libraries(VelmoraLinux PUBLIC Qt6::DBus Qt6::Gui)
