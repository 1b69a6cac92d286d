# What `cmake --install` puts where: the tool with its manual page and completions, the plug-in where the tool looks for it,
# and for those who write a host, a plug-in or a runtime of their own the contract's headers with the library behind them
# (find_package(zab), target zab::ZAB_Shared) and the reader of image-information databases.
include(CMakePackageConfigHelpers)

install(TARGETS zab RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# The tool looks beside its own folder, wherever the system keeps its other libraries.
install(TARGETS ZAB_Texture LIBRARY DESTINATION lib/zab)
install(TARGETS ZAB_Shared EXPORT zab_targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
file(RELATIVE_PATH zab_from_plugin /lib/zab /${CMAKE_INSTALL_LIBDIR})
set_target_properties(ZAB_Texture PROPERTIES INSTALL_RPATH "$ORIGIN/..;$ORIGIN/${zab_from_plugin}" BUILD_WITH_INSTALL_RPATH ON)

set(zab_share ${PROJECT_BINARY_DIR}/share)
install(FILES ${zab_share}/zab.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${zab_share}/zab DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES ${zab_share}/_zab DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
install(FILES ${zab_share}/zab.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)

install(DIRECTORY processor/host DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zab/processor FILES_MATCHING PATTERN "*.hpp")
install(FILES platform/image_loader/image_info_db_reader.hpp DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zab)

set(zab_package ${CMAKE_INSTALL_LIBDIR}/cmake/zab)
install(EXPORT zab_targets NAMESPACE zab:: DESTINATION ${zab_package})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/zab-config.cmake.in ${PROJECT_BINARY_DIR}/zab-config.cmake
  INSTALL_DESTINATION ${zab_package})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zab-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zab-config.cmake ${PROJECT_BINARY_DIR}/zab-config-version.cmake
  DESTINATION ${zab_package})
