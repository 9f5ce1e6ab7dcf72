velmora_linux_sources(
  Process/BundleInfoFile.cpp Process/BundleInfoFile.h
  Process/EnvironmentLanguage.cpp Process/EnvironmentLanguage.h
  Process/QuitSignals.cpp Process/QuitSignals.h
  Process/StartConditions.cpp Process/StartConditions.h
  Process/WorkingSet.cpp Process/WorkingSet.h
  Process/XdgFolders.cpp Process/XdgFolders.h)
