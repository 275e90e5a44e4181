# find_package(kesto): kesto::field_core, kesto::bioheat, and the embedded host kesto::host that they run on; with
# KESTO_FACADE kesto::kesto, which brings its own surroundings.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(KESTO_INCLUDE_DIR include/kesto)
set(KESTO_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/kesto)

set_target_properties(kesto_field_core kesto_bioheat kesto_host PROPERTIES
  VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
set_target_properties(kesto_field_core PROPERTIES EXPORT_NAME field_core)
set_target_properties(kesto_bioheat PROPERTIES EXPORT_NAME bioheat)
set_target_properties(kesto_host PROPERTIES EXPORT_NAME host)
set(KESTO_FOLDERS core excitation heat transducers)
set(KESTO_TARGETS kesto_field_core kesto_core kesto_bioheat kesto_host kesto_host_api)
if(KESTO_FACADE)
  list(APPEND KESTO_FOLDERS kesto)
  list(APPEND KESTO_TARGETS kesto)
endif()
install(TARGETS ${KESTO_TARGETS} EXPORT kestoTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})

# The headers that lie directly in these folders are public; folders within hold what is internal. The host's are its
# own, found by those who link it.
foreach(folder ${KESTO_FOLDERS})
  file(GLOB headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${folder}/*.h)
  install(FILES ${headers} DESTINATION ${KESTO_INCLUDE_DIR}/${folder})
endforeach()
install(FILES host/embedded_host.h host/mex.h DESTINATION ${KESTO_INCLUDE_DIR}-host/host)
install(EXPORT kestoTargets NAMESPACE kesto:: DESTINATION ${KESTO_PACKAGE_DIR})
configure_package_config_file(cmake/kestoConfig.cmake.in ${PROJECT_BINARY_DIR}/kestoConfig.cmake
                              INSTALL_DESTINATION ${KESTO_PACKAGE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/kestoConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/kestoConfig.cmake ${PROJECT_BINARY_DIR}/kestoConfigVersion.cmake
        DESTINATION ${KESTO_PACKAGE_DIR})
