# Writes the information dictionary. Called at build time with OUTPUT, IDENTIFIER, SHORT_VERSION, VERSION, FEED, KEY.
set(json "{}")
macro(put key value)
  if(NOT "${value}" STREQUAL "")
    string(JSON json SET "${json}" "${key}" "\"${value}\"")
  endif()
endmacro()
put(CFBundleIdentifier "${IDENTIFIER}")
put(CFBundleShortVersionString "${SHORT_VERSION}")
put(CFBundleVersion "${VERSION}")
# A build without a feed or a key has no updater: its keys are left out.
put(SUFeedURL "${FEED}")
put(SUPublicEDKey "${KEY}")
file(WRITE ${OUTPUT} "${json}\n")
