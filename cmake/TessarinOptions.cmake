# What every target of the project is compiled with, as the interface target tessarin::options.

include(CheckCXXCompilerFlag)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)  # gnu++20 defines "linux" and "unix" as macros
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(TESSARIN_CCACHE ccache)
if(TESSARIN_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # Without these two it keeps nothing that was compiled with precompiled headers.
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
      CCACHE_SLOPPINESS=pch_defines,time_macros ${TESSARIN_CCACHE})
endif()

add_library(tessarin_options INTERFACE)
add_library(tessarin::options ALIAS tessarin_options)

target_compile_options(tessarin_options INTERFACE -Wall -Wextra -Wnon-virtual-dtor -fvisibility=hidden)
# A unique symbol would pin the module in memory after dlclose.
check_cxx_compiler_flag(-fno-gnu-unique TESSARIN_HAS_NO_GNU_UNIQUE)
if(TESSARIN_HAS_NO_GNU_UNIQUE)
  target_compile_options(tessarin_options INTERFACE -fno-gnu-unique)
endif()
# Clang leaves out the deletes that are told a size, which the standard demands.
target_compile_options(tessarin_options INTERFACE $<$<CXX_COMPILER_ID:Clang>:-fsized-deallocation>)
if(TESSARIN_WERROR)
  target_compile_options(tessarin_options INTERFACE -Werror)
endif()
if(TESSARIN_CHECK_INVARIANTS)
  target_compile_definitions(tessarin_options INTERFACE TESSARIN_CHECK_INVARIANTS=1)
endif()
if(TESSARIN_SANITIZE)
  target_compile_options(tessarin_options INTERFACE -fsanitize=${TESSARIN_SANITIZE}
                         -fno-sanitize-recover=all -fno-omit-frame-pointer -g1)
  target_link_options(tessarin_options INTERFACE -fsanitize=${TESSARIN_SANITIZE})
endif()

# tessarin_precompile(TARGET...): the libraries get the headers that most sources include, compiled once.
# A source still includes what it needs, which a build without TESSARIN_PRECOMPILE shows, as that of the dev
# preset is.
if(TESSARIN_PRECOMPILE)
  file(CONFIGURE OUTPUT Headers.cpp CONTENT "")
  add_library(tessarin_headers OBJECT ${CMAKE_CURRENT_BINARY_DIR}/Headers.cpp)
  target_link_libraries(tessarin_headers PRIVATE tessarin::options)
  target_precompile_headers(tessarin_headers PRIVATE
    <algorithm> <array> <atomic> <charconv> <cstring> <functional> <limits> <map> <memory> <optional> <span>
    <string> <string_view> <unordered_map> <utility> <vector>)
endif()
function(tessarin_precompile)
  if(TESSARIN_PRECOMPILE)
    foreach(target IN LISTS ARGV)
      target_precompile_headers(${target} REUSE_FROM tessarin_headers)
      # GCC takes what it inlines out of such a header for our own code, and warns of the library's.
      target_compile_options(${target} PRIVATE
        $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds -Wno-restrict -Wno-stringop-overflow>)
    endforeach()
  endif()
endfunction()
