pkg_check_modules(XCB_SHELL REQUIRED IMPORTED_TARGET xcb xcb-xinput xcb-xfixes)
velmora_linux_sources(
  X11/X11Display.cpp X11/X11Display.h
  X11/X11PointerMonitor.cpp X11/X11PointerMonitor.h
  X11/X11WindowManager.cpp X11/X11WindowManager.h
  X11/XcbConnection.cpp X11/XcbConnection.h
  X11/XcbServer.h)
target_link_libraries(VelmoraLinux PUBLIC PkgConfig::XCB_SHELL Qt6::Gui)
