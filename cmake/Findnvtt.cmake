# NVIDIA Texture Tools, as the imported target nvtt::nvtt: looked for in ZAB_NVTT_ROOT, in the private prefix that
# setup/nvtt makes, then in the system. A library that is found is not yet believed: nvtt_probe.cpp is linked to it and run,
# and a build that it finds unsound counts as not found. Debian 12's own is such a one.
#
# The cache entry ZAB_NVTT_STATE says how it went (sound, unsound or absent); the set-up scripts read it.
set(ZAB_NVTT_ROOT "" CACHE PATH "Prefix of NVIDIA Texture Tools; empty: the one that setup/nvtt makes, then the system")

set(nvtt_setup_dir $ENV{ZAB_SETUP_DIR})
if(NOT nvtt_setup_dir)
  set(nvtt_setup_dir ${CMAKE_CURRENT_LIST_DIR}/../.zab-setup)
endif()
get_filename_component(nvtt_setup_dir ${nvtt_setup_dir} ABSOLUTE)

# A library of one place and a header of another must never meet, so a place counts only when it has both. None of this is
# cached: a prefix that appears or goes is seen by the next configure.
function(nvtt_find_in)
  find_library(library nvtt NO_CACHE ${ARGN})
  find_path(include_dir nvtt/nvtt.h NO_CACHE ${ARGN})
  if(library AND include_dir)
    set(nvtt_LIBRARY ${library} PARENT_SCOPE)
    set(nvtt_INCLUDE_DIR ${include_dir} PARENT_SCOPE)
  endif()
endfunction()

set(nvtt_suffixes PATH_SUFFIXES lib lib64 lib/${CMAKE_LIBRARY_ARCHITECTURE} include NO_DEFAULT_PATH)
unset(nvtt_LIBRARY)
unset(nvtt_INCLUDE_DIR)
if(ZAB_NVTT_ROOT)
  nvtt_find_in(PATHS ${ZAB_NVTT_ROOT} ${nvtt_suffixes})
else()
  nvtt_find_in(PATHS ${nvtt_setup_dir}/nvtt ${nvtt_suffixes})
  if(NOT nvtt_LIBRARY)
    nvtt_find_in()
  endif()
endif()

# Runs the probe, unless it has run on this very file: sets ZAB_NVTT_STATE, and leaves what it printed in the report file
# (cache entries hold no line breaks).
set(nvtt_report_file ${CMAKE_BINARY_DIR}/CMakeFiles/nvtt_probe.txt)
function(nvtt_probe)
  file(TIMESTAMP ${nvtt_LIBRARY} time "%s")
  file(SHA256 ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/nvtt_probe.cpp probe)
  set(key "${nvtt_LIBRARY} ${time} ${probe}")
  if(key STREQUAL "${ZAB_NVTT_PROBED}" AND NOT ZAB_NVTT_STATE STREQUAL "absent" AND EXISTS ${nvtt_report_file})
    return()
  endif()
  message(STATUS "Probing ${nvtt_LIBRARY}")
  set(program ${CMAKE_BINARY_DIR}/CMakeFiles/nvtt_probe)
  try_compile(compiled SOURCES ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/nvtt_probe.cpp LINK_LIBRARIES nvtt::nvtt
              OUTPUT_VARIABLE report COPY_FILE ${program}
              CXX_STANDARD 20 CXX_STANDARD_REQUIRED ON)
  set(state unsound)
  if(compiled)
    execute_process(COMMAND ${program} OUTPUT_VARIABLE report ERROR_VARIABLE report RESULT_VARIABLE status TIMEOUT 60)
    execute_process(COMMAND ${program} OUTPUT_VARIABLE again ERROR_VARIABLE again TIMEOUT 60)
    if(NOT report STREQUAL again)
      string(APPEND report "and run once more\n${again}")
    elseif(status EQUAL 0)
      set(state sound)
    else()
      string(APPEND report "(the probe ended with: ${status})\n")
    endif()
  endif()
  set(ZAB_NVTT_PROBED "${key}" CACHE INTERNAL "Which library the probe has run on")
  file(WRITE ${nvtt_report_file} "${report}")
  set(ZAB_NVTT_STATE ${state} CACHE INTERNAL "State of NVIDIA Texture Tools: sound, unsound or absent")
endfunction()

set(nvtt_remedy "Run setup/nvtt, which builds a sound one in a minute, or set ZAB_NVTT_ROOT to the prefix of one; \
docs/dependencies.md has the details.")
if(nvtt_LIBRARY)
  if(NOT TARGET nvtt::nvtt)
    add_library(nvtt::nvtt UNKNOWN IMPORTED)
  endif()
  set_target_properties(nvtt::nvtt PROPERTIES
    IMPORTED_LOCATION ${nvtt_LIBRARY}
    INTERFACE_INCLUDE_DIRECTORIES ${nvtt_INCLUDE_DIR}
    INTERFACE_LINK_LIBRARIES "${CMAKE_DL_LIBS}")
  nvtt_probe()
  # Indented lines are those that message() leaves as they are.
  file(READ ${nvtt_report_file} nvtt_report)
  string(REGEX REPLACE "([^\n]+)" "    \\1" nvtt_report "${nvtt_report}")
  set(nvtt_reason "${nvtt_LIBRARY} is unsound: its highest quality must be no worse than its fastest and must repeat to \
the byte, but the probe says\n${nvtt_report}\n${nvtt_remedy}")
else()
  set(ZAB_NVTT_STATE absent CACHE INTERNAL "State of NVIDIA Texture Tools: sound, unsound or absent")
  set(nvtt_reason "No NVIDIA Texture Tools (library nvtt and header nvtt/nvtt.h). ${nvtt_remedy}")
endif()

set(nvtt_FOUND FALSE)
if(ZAB_NVTT_STATE STREQUAL "sound")
  set(nvtt_FOUND TRUE)
  if(NOT nvtt_FIND_QUIETLY)
    message(STATUS "Found nvtt: ${nvtt_LIBRARY} (sound)")
  endif()
elseif(nvtt_FIND_REQUIRED)
  message(FATAL_ERROR "${nvtt_reason}")
elseif(NOT nvtt_FIND_QUIETLY)
  message(STATUS "${nvtt_reason}")
endif()
