velmora_linux_sources(
  System/BundleInfoFile.cpp System/BundleInfoFile.h
  System/EnvironmentLanguage.cpp System/EnvironmentLanguage.h
  System/EventLoopScheduler.cpp System/EventLoopScheduler.h
  System/QuitSignals.cpp System/QuitSignals.h
  System/StartConditions.cpp System/StartConditions.h
  System/SystemWallClock.h
  System/WorkingSet.cpp System/WorkingSet.h
  System/XdgFolders.cpp System/XdgFolders.h)
