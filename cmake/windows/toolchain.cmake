# Cross compiling for Windows x64 with Debian's MinGW-w64, against the libraries that scripts/windows-toolchain made.
# -DRECORDING2_WINDOWS_ROOT=FOLDER or the environment's RECORDING2_WINDOWS_CACHE say where they are.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(windows_target x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${windows_target}-gcc-posix)
set(CMAKE_CXX_COMPILER ${windows_target}-g++-posix)
set(CMAKE_RC_COMPILER ${windows_target}-windres)

if(NOT RECORDING2_WINDOWS_ROOT)
  if(DEFINED ENV{RECORDING2_WINDOWS_CACHE})
    set(RECORDING2_WINDOWS_ROOT "$ENV{RECORDING2_WINDOWS_CACHE}/root")
  else()
    set(RECORDING2_WINDOWS_ROOT "$ENV{HOME}/.cache/recording2-windows/root")
  endif()
endif()
set(RECORDING2_WINDOWS_ROOT "${RECORDING2_WINDOWS_ROOT}" CACHE PATH "What scripts/windows-toolchain made")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES RECORDING2_WINDOWS_ROOT)

# Libraries and headers come from there only: this machine's own are for another system.
set(CMAKE_FIND_ROOT_PATH "${RECORDING2_WINDOWS_ROOT}" /usr/${windows_target} ${CMAKE_PREFIX_PATH})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/wine")
