# cansimu_version_resource(TARGET FILE_NAME DESCRIPTION)
# On Windows, links a version resource into TARGET (a DLL or a program):
# product name "cansimu", the project's version, FILE_NAME as the original
# file name and DESCRIPTION as the file description, as Explorer's Details
# tab and `objdump -p` show them. Elsewhere it does nothing.
set(_cansimu_version_template ${CMAKE_CURRENT_LIST_DIR}/VersionResource.rc.in)

function(cansimu_version_resource target file_name description)
  if(NOT WIN32)
    return()
  endif()
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "EXECUTABLE")
    set(CANSIMU_RC_FILE_TYPE VFT_APP)
  else()
    set(CANSIMU_RC_FILE_TYPE VFT_DLL)
  endif()
  set(CANSIMU_RC_FILE_NAME ${file_name})
  set(CANSIMU_RC_DESCRIPTION ${description})
  get_filename_component(CANSIMU_RC_INTERNAL_NAME ${file_name} NAME_WE)
  set(resource ${CMAKE_CURRENT_BINARY_DIR}/${target}-version.rc)
  configure_file(${_cansimu_version_template} ${resource} @ONLY)
  target_sources(${target} PRIVATE ${resource})
endfunction()
