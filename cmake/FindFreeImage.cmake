# FreeImage, as the imported target FreeImage::FreeImage. It ships neither a CMake package nor a pkg-config file.
find_library(FreeImage_LIBRARY freeimage)
find_path(FreeImage_INCLUDE_DIR FreeImage.h)
if(FreeImage_INCLUDE_DIR)
  file(STRINGS ${FreeImage_INCLUDE_DIR}/FreeImage.h freeimage_lines REGEX "#define FREEIMAGE_(MAJOR|MINOR|RELEASE)")
  string(REGEX REPLACE "[^0-9]*([0-9]+)[^0-9]+([0-9]+)[^0-9]+([0-9]+).*" "\\1.\\2.\\3" FreeImage_VERSION
                       "${freeimage_lines}")
endif()
mark_as_advanced(FreeImage_LIBRARY FreeImage_INCLUDE_DIR)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(FreeImage REQUIRED_VARS FreeImage_LIBRARY FreeImage_INCLUDE_DIR
                                            VERSION_VAR FreeImage_VERSION)

if(FreeImage_FOUND AND NOT TARGET FreeImage::FreeImage)
  add_library(FreeImage::FreeImage UNKNOWN IMPORTED)
  set_target_properties(FreeImage::FreeImage PROPERTIES
    IMPORTED_LOCATION ${FreeImage_LIBRARY}
    INTERFACE_INCLUDE_DIRECTORIES ${FreeImage_INCLUDE_DIR})
endif()
