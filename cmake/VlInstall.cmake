# find_package(vl_raster_gl) gives vellum::foundation, vellum::vl_raster_gl and vellum::toolkit.

install(TARGETS vellum_foundation vl_raster_gl vellum_toolkit
        EXPORT vl_raster_gl_targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        FILE_SET HEADERS DESTINATION ${VL_INSTALL_INCLUDEDIR})
install(EXPORT vl_raster_gl_targets FILE vl_raster_gl-targets.cmake NAMESPACE vellum::
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vl_raster_gl)

configure_package_config_file(cmake/vl_raster_gl-config.cmake.in
  ${PROJECT_BINARY_DIR}/vl_raster_gl-config.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vl_raster_gl)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vl_raster_gl-config-version.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vl_raster_gl-config.cmake
              ${PROJECT_BINARY_DIR}/vl_raster_gl-config-version.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/vl_raster_gl)

# The program finds the libraries beside it, wherever the prefix is.
if(TARGET vl_viewport)
  file(RELATIVE_PATH libraries /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${CMAKE_INSTALL_LIBDIR})
  set_target_properties(vl_viewport PROPERTIES INSTALL_RPATH "$ORIGIN/${libraries}")
  install(TARGETS vl_viewport RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  # The program looks for the module of the window where the libraries are.
  set_target_properties(vl_viewport_window PROPERTIES INSTALL_RPATH "$ORIGIN")
  install(TARGETS vl_viewport_window LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  get_target_property(documents vl_viewport_manual VL_FOLDER)
  install(FILES ${documents}/vl_viewport.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES ${documents}/vl_viewport.bash RENAME vl_viewport
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
  install(FILES ${documents}/_vl_viewport DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
  install(FILES ${documents}/vl_viewport.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
  set(desktop ${PROJECT_SOURCE_DIR}/viewport/desktop)
  install(FILES ${desktop}/vl_viewport.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
  install(FILES ${desktop}/vl_viewport.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages)
  foreach(size 16 24 32 48 64 128 256)
    install(FILES ${desktop}/icons/vl_viewport_${size}.png RENAME vl_viewport.png
            DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${size}x${size}/apps)
  endforeach()
endif()

# Documents and examples, in the folders that they have here: their links lead to each other.
set(documents ${CMAKE_INSTALL_DATADIR}/doc/vl_raster_gl)
install(FILES README.md CHANGELOG.md CONTRIBUTING.md LICENSE DESTINATION ${documents})
install(DIRECTORY docs examples DESTINATION ${documents} PATTERN Doxyfile EXCLUDE)
