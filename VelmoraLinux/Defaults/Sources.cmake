velmora_linux_sources(
  Defaults/DefaultsValue.h
  Defaults/PrivateFiles.cpp Defaults/PrivateFiles.h
  Defaults/SqliteDefaultsStore.cpp Defaults/SqliteDefaultsStore.h
  Defaults/SqliteFile.cpp Defaults/SqliteFile.h)
target_link_libraries(VelmoraLinux PRIVATE PkgConfig::SQLITE)
