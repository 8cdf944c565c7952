# The installed package: DLL, import library, full export list, headers,
# a CMake package configuration and a pkg-config file. The layout is
# relocatable: nothing installed names the prefix it was installed to.
include(CMakePackageConfigHelpers)

set(ZOR_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/ZORBaseUx64)

install(TARGETS ZORBaseUx64 EXPORT ZORBaseUx64Targets
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ ${ZOR_GENERATED_INCLUDE_DIR}/
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT ZORBaseUx64Targets NAMESPACE ZORBaseUx64:: DESTINATION ${ZOR_CMAKE_DIR})

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/ZORBaseUx64Config.cmake.in
  ${PROJECT_BINARY_DIR}/ZORBaseUx64Config.cmake INSTALL_DESTINATION ${ZOR_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ZORBaseUx64ConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ZORBaseUx64Config.cmake
              ${PROJECT_BINARY_DIR}/ZORBaseUx64ConfigVersion.cmake
        DESTINATION ${ZOR_CMAKE_DIR})

configure_file(${PROJECT_SOURCE_DIR}/cmake/zorbase.pc.in ${PROJECT_BINARY_DIR}/zorbase.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zorbase.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The linker writes every export, the lock class's decorated names included,
# so that other toolchains can make an import library of their own from it.
if(MINGW)
  set(ZOR_DEF_FILE ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/ZORBaseUx64.def)
  target_link_options(ZORBaseUx64 PRIVATE -Wl,--output-def,${ZOR_DEF_FILE})
  install(FILES ${ZOR_DEF_FILE} DESTINATION ${CMAKE_INSTALL_LIBDIR})

  # The installed DLL is stripped; its debug sections and symbols move to
  # ZORBaseUx64.dll.debug beside it, which debuggers find through the
  # .gnu_debuglink section.
  install(CODE "
    set(dll \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/ZORBaseUx64.dll\")
    execute_process(COMMAND ${CMAKE_OBJCOPY} --only-keep-debug \${dll} \${dll}.debug
                    COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND ${CMAKE_STRIP} --strip-all \${dll} COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND ${CMAKE_OBJCOPY} --add-gnu-debuglink=ZORBaseUx64.dll.debug
                            ZORBaseUx64.dll
                    WORKING_DIRECTORY \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\"
                    COMMAND_ERROR_IS_FATAL ANY)
    message(STATUS \"Stripped: \${dll}, debug information in \${dll}.debug\")")
endif()
