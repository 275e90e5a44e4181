# kesto_add_mex_module(NAME SOURCES ... LIBRARIES ...): a MEX module for the embedded host, for GNU Octave where mkoctfile
# is found, and for MATLAB on demand. SOURCES is its gateway; LIBRARIES are the static libraries that it stands on, whose
# sources are compiled again for hosts that bring a header or a compiler driver of their own.

# The version manifest. Its UUID hangs on the version and on the time of the first configuration with it, so that it stays
# from run to run; SOURCE_DATE_EPOCH makes it reproducible.
if(DEFINED ENV{SOURCE_DATE_EPOCH} OR NOT KESTO_BUILD_VERSION STREQUAL PROJECT_VERSION)
  string(TIMESTAMP build_time "%s" UTC)
  set(KESTO_BUILD_TIME ${build_time} CACHE INTERNAL "Seconds since 1970, in the manifest's UUID")
  set(KESTO_BUILD_VERSION ${PROJECT_VERSION} CACHE INTERNAL "The version that KESTO_BUILD_TIME belongs to")
endif()

# Every module, for every host: what users put on their path.
add_custom_target(kesto_toolbox)

set(KESTO_MEX_COMMON_DIR ${PROJECT_SOURCE_DIR}/mex/common)
if(APPLE)
  set(KESTO_MODULE_LINK_FLAGS
    LINKER:-undefined,dynamic_lookup LINKER:-exported_symbol,_mexFunction
    LINKER:-exported_symbol,_mexfilerequiredapiversion)
  set(KESTO_MODULE_LINK_DEPENDS "")
  set(KESTO_MODULE_SUFFIX .mexmaci64)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "arm64|aarch64")
    set(KESTO_MODULE_SUFFIX .mexmaca64)
  endif()
else()
  set(KESTO_MODULE_LINK_FLAGS -Wl,--version-script=${KESTO_MEX_COMMON_DIR}/module.map)
  set(KESTO_MODULE_LINK_DEPENDS ${KESTO_MEX_COMMON_DIR}/module.map)
  set(KESTO_MODULE_SUFFIX .mexa64)
endif()

if(KESTO_OCTAVE)
  find_program(MKOCTFILE mkoctfile)
  if(NOT MKOCTFILE)
    message(STATUS "mkoctfile not found: no module for GNU Octave (Debian: apt-get install octave-dev, then build again)")
  endif()
endif()

function(kesto_add_mex_module name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES")
  string(UUID KESTO_BUILD_UUID NAMESPACE 6ba7b812-9dad-11d1-80b4-00c04fd430c8
         NAME "kesto ${name} ${PROJECT_VERSION} ${KESTO_BUILD_TIME}" TYPE SHA1)
  set(generated ${CMAKE_CURRENT_BINARY_DIR}/${name})
  configure_file(${KESTO_MEX_COMMON_DIR}/manifest_text.h.in ${generated}/manifest_text.h @ONLY)
  list(TRANSFORM arg_SOURCES PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
  list(APPEND arg_SOURCES ${KESTO_MEX_COMMON_DIR}/api_version.cpp ${KESTO_MEX_COMMON_DIR}/manifest.cpp)

  # The module as the embedded host loads it.
  add_library(${name} MODULE ${arg_SOURCES})
  target_include_directories(${name} PRIVATE ${generated})
  foreach(library ${arg_LIBRARIES})
    get_target_property(type ${library} TYPE)
    if(NOT type STREQUAL "OBJECT_LIBRARY")  # its objects are in the others
      target_link_libraries(${name} PRIVATE ${library})
    endif()
  endforeach()
  target_link_libraries(${name} PRIVATE kesto_host_api)
  target_link_options(${name} PRIVATE ${KESTO_MODULE_LINK_FLAGS})
  set_target_properties(${name} PROPERTIES
    PREFIX "" SUFFIX ${KESTO_MODULE_SUFFIX} LIBRARY_OUTPUT_DIRECTORY ${KESTO_TOOLBOX_DIR}
    LINK_DEPENDS "${KESTO_MODULE_LINK_DEPENDS}")
  add_dependencies(kesto_toolbox ${name})

  set(all_sources ${arg_SOURCES})
  foreach(library ${arg_LIBRARIES})
    get_target_property(sources ${library} SOURCES)
    get_target_property(dir ${library} SOURCE_DIR)
    foreach(source ${sources})
      cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY ${dir})
      list(APPEND all_sources ${source})
    endforeach()
  endforeach()

  if(KESTO_OCTAVE AND MKOCTFILE)
    set(octave_module ${KESTO_TOOLBOX_DIR}/${name}.mex)
    file(GLOB_RECURSE headers CONFIGURE_DEPENDS
         ${PROJECT_SOURCE_DIR}/core/*.h ${PROJECT_SOURCE_DIR}/heat/*.h ${PROJECT_SOURCE_DIR}/mex/*.h)
    string(JOIN " " octave_flags -O3 -DNDEBUG -DKESTO_MEX_MODULE -std=c++17 -fPIC -fvisibility=hidden -Wno-psabi
           ${KESTO_NUMERIC_FLAGS})
    if(NOT APPLE)
      configure_file(${KESTO_MEX_COMMON_DIR}/module_octave.map ${generated}/module_octave.map COPYONLY)
      set(octave_link_flags -Wl,--version-script=module_octave.map -Wl,--build-id=none)
    endif()
    # mkoctfile hands its arguments to a shell: what it gets besides the sources is named within the build folder, whose
    # path may hold spaces. Stripped (-s), without a build id: its own file for the marker has debug information and a
    # random name.
    add_custom_command(OUTPUT ${octave_module}
      COMMAND ${CMAKE_COMMAND} -E make_directory ${KESTO_TOOLBOX_DIR}
      COMMAND ${CMAKE_COMMAND} -E env "CXXFLAGS=${octave_flags}"
              ${MKOCTFILE} --mex -R2018a -s -I${PROJECT_SOURCE_DIR}
              -I. ${octave_link_flags}
              -o ${name}.mex ${all_sources}
      COMMAND ${CMAKE_COMMAND} -E copy ${name}.mex ${octave_module}
      DEPENDS ${all_sources} ${headers} ${generated}/manifest_text.h ${KESTO_MEX_COMMON_DIR}/module_octave.map
      WORKING_DIRECTORY ${generated}
      COMMENT "Building ${name} for GNU Octave" VERBATIM)
    add_custom_target(${name}_octave ALL DEPENDS ${octave_module})
    add_dependencies(kesto_toolbox ${name}_octave)
  endif()

  if(KESTO_MATLAB)
    find_package(Matlab REQUIRED COMPONENTS MX_LIBRARY)
    # Not matlab_add_mex: it would add a mexfilerequiredapiversion of its own.
    add_library(${name}_matlab MODULE ${all_sources})
    target_include_directories(${name}_matlab PRIVATE ${PROJECT_SOURCE_DIR} ${generated} ${Matlab_INCLUDE_DIRS})
    target_compile_definitions(${name}_matlab PRIVATE
      KESTO_MEX_MODULE MATLAB_MEX_FILE MATLAB_DEFAULT_RELEASE=R2018a)
    target_link_libraries(${name}_matlab PRIVATE ${Matlab_MEX_LIBRARY} ${Matlab_MX_LIBRARY})
    target_link_options(${name}_matlab PRIVATE ${KESTO_MODULE_LINK_FLAGS})
    set_target_properties(${name}_matlab PROPERTIES
      PREFIX "" OUTPUT_NAME ${name} SUFFIX .${Matlab_MEX_EXTENSION}
      LIBRARY_OUTPUT_DIRECTORY ${KESTO_MATLAB_TOOLBOX_DIR})
    add_dependencies(kesto_toolbox ${name}_matlab)
  endif()
endfunction()
