# Toolchain file: the module for macOS 11 and later, cross-compiled from another system.
#
# zig (PyPI: ziglang) is the compiler and brings libc++ and the system's headers and library stub; its own linker makes
# no bundles, so LLVM's links (Debian: lld). Only the target steady_bioheat is built this way: scripts/build-macos.
#
#   KESTO_ZIG         the zig program
#   KESTO_MACOS_ARCH  x86_64 or arm64
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES KESTO_ZIG KESTO_MACOS_ARCH)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR ${KESTO_MACOS_ARCH})
set(CMAKE_OSX_SYSROOT "")

set(zig_arch ${KESTO_MACOS_ARCH})
if(zig_arch STREQUAL "arm64")
  set(zig_arch aarch64)
endif()
# It never links, not in CMake's question what compiler this is either: zig would first build libc++, for a minute.
set(CMAKE_CXX_COMPILER ${KESTO_ZIG} c++ -target ${zig_arch}-macos.11.0 -c)
# Without exceptions of its own the module needs no C++ run-time library. A host's error passes through by the unwind
# tables; scratch memory on the way is the host's and goes with the call. On arm64, asynchronous tables, which describe
# every instruction, and leaf functions without a frame need not have the compact form, the one that the linker keeps.
string(JOIN " " CMAKE_CXX_FLAGS_INIT -fno-exceptions -fno-threadsafe-statics
  -funwind-tables -fno-asynchronous-unwind-tables -mno-omit-leaf-frame-pointer)

find_program(KESTO_LD64 NAMES ld64.lld ld64.lld-19 ld64.lld-18 ld64.lld-17 ld64.lld-16 ld64.lld-15 ld64.lld-14 REQUIRED)
set(CMAKE_INSTALL_NAME_TOOL ${CMAKE_COMMAND})  # asked for, never called
set(CMAKE_USER_MAKE_RULES_OVERRIDE_CXX ${CMAKE_CURRENT_LIST_DIR}/macos_rules.cmake)
