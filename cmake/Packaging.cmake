# Install layout and installable packages, built with CPack (./dev package):
#   Linux: one .deb with the library, its header, the cansimu program, the
#     examples and the README, under /usr.
#   Windows: cansimu-VERSION-win32.zip or -win64.zip, holding the DLL beside
#     cansimu.exe (where LoadLibrary finds it), examples/ and README.txt. The
#     header and the import library stay out: the zips are for users.
# Included before the subdirectories, so that their install() rules follow
# this layout. What install() does not name is the "runtime" component; the
# header, the import library and the .so link are "development".
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME runtime)
if(WIN32)
  set(CMAKE_INSTALL_BINDIR . CACHE PATH "Programs and DLLs: the top of the Windows zip")
endif()
include(GNUInstallDirs)
if(WIN32)
  set(cansimu_docdir .)
else()
  set(cansimu_docdir ${CMAKE_INSTALL_DOCDIR})
endif()

install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/ DESTINATION ${cansimu_docdir}/examples)
if(WIN32)
  set(readme_newlines CRLF)
else()
  set(readme_newlines UNIX)
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/PackageReadme.txt.in ${PROJECT_BINARY_DIR}/README.txt
  @ONLY NEWLINE_STYLE ${readme_newlines})
install(FILES ${PROJECT_BINARY_DIR}/README.txt DESTINATION ${cansimu_docdir})

set(CPACK_PACKAGE_NAME cansimu)
set(CPACK_PACKAGE_VENDOR cansimu)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
  "Simulated CAN diagnostic interface box behind the box driver's C interface")
set(CPACK_PACKAGE_DESCRIPTION [[
A drop-in replacement for the driver library of a CAN diagnostic interface
box: a diagnostic application loads it instead of the vendor driver, and it
simulates the box, its CAN port and the ECUs on the bus from XML files a
tester edits while the application runs. With the cansimu command-line host
and an example bench.]])
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
if(WIN32)
  math(EXPR cansimu_bits "${CMAKE_SIZEOF_VOID_P} * 8")
  set(CPACK_GENERATOR ZIP)
  set(CPACK_PACKAGE_FILE_NAME cansimu-${PROJECT_VERSION}-win${cansimu_bits})
  set(CPACK_INSTALL_CMAKE_PROJECTS "${PROJECT_BINARY_DIR};${PROJECT_NAME};runtime;/")
else()
  set(CPACK_GENERATOR DEB)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_PACKAGE_CONTACT "cansimu developers")
  set(CPACK_DEBIAN_PACKAGE_SECTION devel)
  # Dependencies (ACE, pugixml, libedit, the C++ runtime) from dpkg-shlibdeps;
  # the library's shlibs file and the ldconfig trigger from CPack.
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
endif()
include(CPack)
