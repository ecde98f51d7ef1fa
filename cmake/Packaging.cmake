# Install layout and installable packages, built with CPack (./dev package):
#   Linux: one .deb with the library, its header, the cansimu program, the
#     Python package, the examples and the README, under /usr.
#   Windows: cansimu-VERSION-win32.zip or -win64.zip, holding the DLL beside
#     cansimu.exe (where LoadLibrary finds it), the Python package's folder
#     cansimu/, examples/ and README.txt. The
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

# The Python package. In the Windows zips its folder lies beside the DLL,
# where it finds the library. In the .deb it goes where Debian's python3
# finds packages, with the metadata that registers its entry points (the
# same as python/pyproject.toml's): the pytest plugin and python-can's
# "cansimu" interface.
if(WIN32)
  set(cansimu_python_dir .)
else()
  set(cansimu_python_dir lib/python3/dist-packages)
  set(cansimu_dist_info ${PROJECT_BINARY_DIR}/cansimu-${PROJECT_VERSION}.dist-info)
  file(WRITE ${cansimu_dist_info}/METADATA
    "Metadata-Version: 2.1\nName: cansimu\nVersion: ${PROJECT_VERSION}\n"
    "Summary: Drive the cansimu simulated CAN diagnostic box from Python, pytest and python-can\n"
    "Requires-Python: >=3.9\nRequires-Dist: python-can>=4.1\n")
  file(WRITE ${cansimu_dist_info}/entry_points.txt
    "[can.interface]\ncansimu = cansimu.bus:CansimuBus\n\n[pytest11]\ncansimu = cansimu.pytest_plugin\n")
  file(WRITE ${cansimu_dist_info}/top_level.txt "cansimu\n")
  file(WRITE ${cansimu_dist_info}/INSTALLER "dpkg\n")
  install(DIRECTORY ${cansimu_dist_info} DESTINATION ${cansimu_python_dir})
endif()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/python/cansimu DESTINATION ${cansimu_python_dir}
  FILES_MATCHING PATTERN "*.py" PATTERN "__pycache__" EXCLUDE)

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
  # The Python package's interpreter and its one dependency.
  set(CPACK_DEBIAN_PACKAGE_DEPENDS "python3 (>= 3.9), python3-can (>= 4.1)")
  set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
endif()
include(CPack)
