velmora_linux_sources(
  Network/QtHttpsClient.cpp Network/QtHttpsClient.h)
target_link_libraries(VelmoraLinux PUBLIC Qt6::Network)
