velmora_linux_sources(
  Time/EventLoopScheduler.cpp Time/EventLoopScheduler.h
  Time/SystemWallClock.h)
