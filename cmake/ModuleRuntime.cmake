# tessarin_link_module(TARGET): how the module is linked, so that its memory and its symbols stay its
# own while exceptions are shared with whoever loads it.
#
# The module brings its own C++ runtime, statically: every container and stream in it allocates and frees
# through one pair of operators, the module's. Taken out of that runtime are the exception machinery and
# the exception classes, which stay those of the shared libstdc++:
#  - with a machinery of its own, an exception that the module throws and the host catches is counted up
#    on one side and down on the other, and std::uncaught_exceptions drifts on both;
#  - with classes of its own, a host that copies such an exception keeps a pointer into the module, and
#    dies of it once the module is gone.
# The price: nothing in the module may call std::error_code::message, whose text would be allocated by
# the other runtime and freed by this one.
#
# Never -static-libgcc: a second unwinder aborts the process on the first exception that crosses. Never
# --exclude-libs instead of the version script: it leaves weak symbols of namespace std exported, and
# unique ones pin the module in memory.

set(TESSARIN_SHARED_RUNTIME_OBJECTS
  "^(eh_|vterminate|stdexcept|cow-stdexcept|cxx11-stdexcept|functexcept|system_error|ios_failure|cxx11-ios_failure|regex\\.o)")

# Sets OUT to a copy of the static C++ runtime without those objects, or to nothing where there is no
# such archive (another standard library, or no static one installed).
function(tessarin_module_runtime out)
  set(${out} "" PARENT_SCOPE)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=libstdc++.a
                  OUTPUT_VARIABLE archive OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  if(NOT IS_ABSOLUTE "${archive}" OR NOT EXISTS "${archive}" OR NOT CMAKE_AR)
    return()
  endif()
  file(REAL_PATH ${archive} archive)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${archive})  # a new compiler, a new copy

  execute_process(COMMAND ${CMAKE_AR} t ${archive} OUTPUT_VARIABLE members RESULT_VARIABLE failed)
  string(REPLACE "\n" ";" members "${members}")
  list(FILTER members INCLUDE REGEX "${TESSARIN_SHARED_RUNTIME_OBJECTS}")
  if(failed OR NOT members)
    return()
  endif()
  set(copy ${PROJECT_BINARY_DIR}/libstdcxx_module.a)
  file(COPY_FILE ${archive} ${copy}.new)
  execute_process(COMMAND ${CMAKE_AR} d ${copy}.new ${members} RESULT_VARIABLE failed)
  if(failed)
    return()
  endif()
  file(RENAME ${copy}.new ${copy})
  set(${out} ${copy} PARENT_SCOPE)
endfunction()

function(tessarin_link_module target)
  set(map ${PROJECT_SOURCE_DIR}/cmake/exports.map)
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${map})
  # -Bsymbolic: a host that exports the same inline members must not take over the module's calls to its
  # own, or text would be allocated on one side and freed on the other.
  target_link_options(${target} PRIVATE
    LINKER:--version-script=${map} LINKER:-Bsymbolic LINKER:-z,now)

  if(TESSARIN_SANITIZE)
    # The sanitizers replace operator new and delete for the whole process and check that the two sides
    # of a block agree, which they can do for one runtime only: the shared one. Nor may undefined symbols
    # be refused: clang leaves the sanitizer's own to the executable.
    return()
  endif()

  target_link_options(${target} PRIVATE LINKER:-z,defs)
  tessarin_module_runtime(runtime)
  if(runtime)
    # Behind all our archives, so that it serves them too, and before the driver's own -lstdc++, which
    # gives what was taken out. Nothing else that is linked in the calling folder may be affected: the
    # module is alone there.
    set(CMAKE_CXX_STANDARD_LIBRARIES "\"${runtime}\" ${CMAKE_CXX_STANDARD_LIBRARIES}" PARENT_SCOPE)
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${runtime})
    set_property(TARGET ${target} PROPERTY TESSARIN_OWNS_RUNTIME ON)
  else()
    message(STATUS "No static libstdc++ to share exceptions with: the module takes its runtime whole")
    target_link_options(${target} PRIVATE -static-libstdc++)
  endif()
endfunction()
