# How the toolchain of macos.cmake makes archives and modules.
set(zig "\"${KESTO_ZIG}\"")
set(CMAKE_CXX_ARCHIVE_CREATE "${zig} ar qcD <TARGET> <LINK_FLAGS> <OBJECTS>")
set(CMAKE_CXX_ARCHIVE_APPEND "${zig} ar qD <TARGET> <LINK_FLAGS> <OBJECTS>")
set(CMAKE_CXX_ARCHIVE_FINISH "${zig} ranlib <TARGET>")
cmake_path(GET KESTO_ZIG PARENT_PATH zig_folder)
string(JOIN " " CMAKE_CXX_CREATE_SHARED_MODULE
  "\"${KESTO_LD64}\"" -arch ${KESTO_MACOS_ARCH} -platform_version macos 11.0 11.0 -bundle -dead_strip -S
  "<LINK_FLAGS> -o <TARGET> <OBJECTS> <LINK_LIBRARIES>" "\"${zig_folder}/lib/libc/darwin/libSystem.tbd\"")
set(CMAKE_CXX_LINKER_WRAPPER_FLAG "")
