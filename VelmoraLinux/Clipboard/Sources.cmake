velmora_linux_sources(
  Clipboard/PasteboardFactory.cpp Clipboard/PasteboardFactory.h
  Clipboard/SelectionReader.cpp Clipboard/SelectionReader.h
  Clipboard/SelectionServer.cpp Clipboard/SelectionServer.h
  Clipboard/X11Pasteboard.cpp Clipboard/X11Pasteboard.h)
target_link_libraries(VelmoraLinux PUBLIC PkgConfig::XCB)
