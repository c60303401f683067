# How the targets that check and measure are declared, so that each folder only lists its files.

# tessarin_add_test(NAME SOURCES file... LIBRARIES target... [OPTIMISED]
#                   [SUFFIX text] [ENVIRONMENT NAME=value...])
# One GoogleTest program; ctest knows each of its tests as Suite.Name. A name that exists already is
# not built again but registered once more, under the given environment and with the suffix.
# What is tested is optimised as the build is. The tests' own code is not, which halves the time that
# a whole build takes: OPTIMISED is for programs that compute much themselves, or count the stack.
function(tessarin_add_test name)
  cmake_parse_arguments(ARG "OPTIMISED" "SUFFIX" "SOURCES;LIBRARIES;ENVIRONMENT" ${ARGN})
  if(NOT TARGET ${name})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} tessarin::test_support tessarin::options
                          GTest::gmock GTest::gtest_main)
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/tests)
    if(NOT ARG_OPTIMISED)
      target_link_libraries(${name} PRIVATE tessarin::unoptimised)
      target_precompile_headers(${name} REUSE_FROM tessarin_test_headers)
    endif()
  endif()
  set(properties TIMEOUT 300)
  if(ARG_ENVIRONMENT)
    list(APPEND properties ENVIRONMENT "${ARG_ENVIRONMENT}")
  endif()
  gtest_discover_tests(${name} TEST_SUFFIX "${ARG_SUFFIX}" TEST_LIST ${name}${ARG_SUFFIX}_tests
                       PROPERTIES ${properties} DISCOVERY_TIMEOUT 60)
endfunction()

# tessarin_add_fuzz(fuzz_SUBJECT SOURCE file DICTIONARY name LIBRARIES target...)
# The stored corpus is fuzz/corpus/SUBJECT, the dictionary fuzz/dictionary/NAME.dict.
# Under clang with TESSARIN_BUILD_FUZZ a libFuzzer program; otherwise the same function linked with
# ReplayMain.cpp, and ctest replays the stored corpus.
function(tessarin_add_fuzz name)
  cmake_parse_arguments(ARG "" "SOURCE;DICTIONARY" "LIBRARIES" ${ARGN})
  if(NOT ARG_DICTIONARY)
    message(FATAL_ERROR "${name} names no dictionary of fuzz/dictionary/")
  endif()
  string(REGEX REPLACE "^fuzz_" "" subject ${name})
  set(corpus ${PROJECT_SOURCE_DIR}/fuzz/corpus/${subject})
  add_executable(${name} ${ARG_SOURCE})
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} tessarin::options)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/fuzz)
  if(TESSARIN_BUILD_FUZZ)
    target_link_options(${name} PRIVATE -fsanitize=fuzzer)
    set(dictionary ${PROJECT_SOURCE_DIR}/fuzz/dictionary/${ARG_DICTIONARY}.dict)
    set_property(GLOBAL APPEND PROPERTY TESSARIN_FUZZ_TARGETS "${name}|${corpus}|${dictionary}")
    add_dependencies(fuzz_programs ${name})
  else()
    target_link_libraries(${name} PRIVATE tessarin_replay)
    add_test(NAME Fuzz.${name} COMMAND ${name} ${corpus})
    set_tests_properties(Fuzz.${name} PROPERTIES TIMEOUT 120)
  endif()
endfunction()

# tessarin_add_bench(NAME SOURCES file... LIBRARIES target...)
# One Google Benchmark program; `make bench` runs every one.
function(tessarin_add_bench name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} tessarin::options benchmark::benchmark)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bench)
endfunction()
