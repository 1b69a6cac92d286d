# Everything that is not ours; docs/dependencies.md says what each is for and which Debian package has it.
#
# Targets: Qt5::Core, FreeImage::FreeImage, OpenMP::OpenMP_CXX, Threads::Threads, tomlplusplus::tomlplusplus, CLI11::CLI11,
# SQLite::SQLite3, PkgConfig::xxhash, nvtt::nvtt.
find_package(Qt5 5.15 REQUIRED COMPONENTS Core)
find_package(FreeImage 3.17 REQUIRED)
find_package(OpenMP REQUIRED COMPONENTS CXX)
find_package(Threads REQUIRED)
find_package(CLI11 2.1 REQUIRED)
find_package(SQLite3 REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(xxhash REQUIRED IMPORTED_TARGET libxxhash>=0.8)

# Debian ships toml++ as a compiled library, and its target says so to the header (TOML_HEADER_ONLY=0): nobody defines that
# macro by hand.
find_package(tomlplusplus 3 REQUIRED)

if(ZAB_DIRECTXTEX STREQUAL "system")
  find_package(directxtex CONFIG REQUIRED)
elseif(WIN32 OR NOT ZAB_DIRECTXTEX STREQUAL "own")
  message(FATAL_ERROR "ZAB_DIRECTXTEX is '${ZAB_DIRECTXTEX}', and may be own (not on Windows) or system")
endif()

# Last, because the set-up scripts mend a configure that fails on this one, and on no other.
find_package(nvtt REQUIRED)
