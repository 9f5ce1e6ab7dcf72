# Has Qt's compiler for views run by Tools/generators/compile-view, which makes what it writes the same every time: so
# packages can be built again byte for byte, and the compiler's cache knows the views. Needs Qt6::Qml.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
get_target_property(VELMORA_VIEW_COMPILER Qt6::qmlcachegen IMPORTED_LOCATION)
set(VELMORA_VIEW_COMPILER_IN_ORDER ${PROJECT_BINARY_DIR}/qmlcachegen)
file(CONFIGURE OUTPUT ${VELMORA_VIEW_COMPILER_IN_ORDER} @ONLY CONTENT [[#!/bin/sh
exec "@Python3_EXECUTABLE@" "@PROJECT_SOURCE_DIR@/Tools/generators/compile-view" "@VELMORA_VIEW_COMPILER@" "$@"
]])
file(CHMOD ${VELMORA_VIEW_COMPILER_IN_ORDER} PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
foreach(configuration "" _NONE _RELEASE _RELWITHDEBINFO _MINSIZEREL)
  set_target_properties(Qt6::qmlcachegen PROPERTIES IMPORTED_LOCATION${configuration} ${VELMORA_VIEW_COMPILER_IN_ORDER})
endforeach()
