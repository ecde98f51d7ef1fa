# Finds ACE and pugixml and exposes them as the imported targets cansimu::ace
# and cansimu::pugixml. On Linux both come from Debian's -dev packages; for
# Windows builds the toolchain file points CMAKE_FIND_ROOT_PATH at a prefix of
# static libraries built with the MinGW compilers.
find_path(ACE_INCLUDE_DIR ace/ACE.h REQUIRED)
find_library(ACE_LIBRARY NAMES ACE ACEs REQUIRED)
add_library(cansimu::ace UNKNOWN IMPORTED)
set_target_properties(cansimu::ace PROPERTIES
  IMPORTED_LOCATION "${ACE_LIBRARY}"
  INTERFACE_INCLUDE_DIRECTORIES "${ACE_INCLUDE_DIR}")
if(WIN32)
  set_property(TARGET cansimu::ace APPEND PROPERTY INTERFACE_COMPILE_DEFINITIONS ACE_AS_STATIC_LIBS)
  set_property(TARGET cansimu::ace APPEND PROPERTY INTERFACE_LINK_LIBRARIES ws2_32 mswsock iphlpapi netapi32)
else()
  find_package(Threads REQUIRED)
  set_property(TARGET cansimu::ace APPEND PROPERTY INTERFACE_LINK_LIBRARIES Threads::Threads ${CMAKE_DL_LIBS})
endif()

find_package(pugixml CONFIG QUIET)
if(TARGET pugixml::pugixml)
  add_library(cansimu::pugixml ALIAS pugixml::pugixml)
elseif(TARGET pugixml)
  add_library(cansimu::pugixml ALIAS pugixml)
else()
  find_path(PUGIXML_INCLUDE_DIR pugixml.hpp REQUIRED)
  find_library(PUGIXML_LIBRARY NAMES pugixml REQUIRED)
  add_library(cansimu::pugixml UNKNOWN IMPORTED)
  set_target_properties(cansimu::pugixml PROPERTIES
    IMPORTED_LOCATION "${PUGIXML_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${PUGIXML_INCLUDE_DIR}")
endif()
