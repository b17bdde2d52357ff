# Headers, libraries, a CMake package QX (target QX::QX) and a pkg-config file qx.
include(CMakePackageConfigHelpers)

# All that is installed, without tests and benches.
add_custom_target(product DEPENDS QX QXHost)
if(QX_BUILD_TOOLS)
  add_dependencies(product qx qx_texts)
endif()

set(header_dir ${CMAKE_INSTALL_INCLUDEDIR}/qx)
install(TARGETS QX QXHost EXPORT QXTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(EXPORT QXTargets NAMESPACE QX:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/QX)
if(QX_BUILD_TOOLS)
  install(TARGETS qx RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES docs/scene.schema.json DESTINATION ${CMAKE_INSTALL_DATADIR}/qx)
  install(TARGETS qx_tint qx_shadow LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/qx/effects)
  foreach(text "man:man/man1:qx.1" "bash:bash-completion/completions:qx" "zsh:zsh/site-functions:_qx"
      "fish:fish/vendor_completions.d:qx.fish")
    string(REPLACE ":" ";" text ${text})
    list(GET text 0 made)
    list(GET text 1 folder)
    list(GET text 2 name)
    install(FILES ${PROJECT_BINARY_DIR}/tools/qx/generated/${made} DESTINATION ${CMAKE_INSTALL_DATADIR}/${folder}
      RENAME ${name})
  endforeach()
  if(QX_BUILD_MOVIE)
    install(TARGETS qxmovie LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  endif()
  if(QX_BUILD_VIEW)
    install(TARGETS qxserve LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  endif()
  if(QX_BUILD_TEXT)
    install(TARGETS qxtext LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  endif()
endif()
# Headers: QX/QX.h, that for effects in C, the stand-alone host's for embedders, and what they reach, found when they are
# installed. All others are the module's own, in C++20.
install(CODE "include(${PROJECT_SOURCE_DIR}/cmake/PublicHeaders.cmake)
  install_public_headers(${PROJECT_SOURCE_DIR} \"\${CMAKE_INSTALL_PREFIX}/${header_dir}\" QX/QX.h
    QX/QX_C.h
    QX/QX_Effect.h
    platform/standalone/Cache.h
    platform/standalone/Colour.h
    platform/standalone/Host.h
    platform/standalone/Host_C.h)" COMPONENT headers)

configure_package_config_file(cmake/QXConfig.cmake.in QXConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/QX)
write_basic_package_version_file(QXConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/QXConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/QXConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/QX)
file(RELATIVE_PATH QX_PC_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/qx.pc.in qx.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/qx.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
