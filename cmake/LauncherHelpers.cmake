# The shared sources plus this OS's twins, from the parsed SOURCES/WIN/POSIX lists.
macro(vl_select_sources out)
  set(${out} ${ARG_SOURCES})
  if(WIN32)
    list(APPEND ${out} ${ARG_WIN})
  else()
    list(APPEND ${out} ${ARG_POSIX})
  endif()
endmacro()

# vl_library(name SOURCES ... WIN ... POSIX ... DEPS ...)
# OS twins are listed under WIN or POSIX so the shared part stays free of #ifdef.
function(vl_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;WIN;POSIX;DEPS" ${ARGN})
  vl_select_sources(srcs)
  add_library(${name} STATIC ${srcs})
  target_link_libraries(${name} PUBLIC ${ARG_DEPS})
endfunction()

# vl_test(name SOURCES ... WIN ... POSIX ... DEPS ... [FIXTURE name] [EMULATOR program]): one GoogleTest
# executable per layer. FIXTURE names a CTest fixture every test of the executable requires (e.g. the test
# servers); EMULATOR replaces the cross build's emulator for it (e.g. Wine on a display of its own).
function(vl_test name)
  cmake_parse_arguments(ARG "" "FIXTURE;EMULATOR" "SOURCES;WIN;POSIX;DEPS" ${ARGN})
  vl_select_sources(srcs)
  add_executable(${name} ${srcs})
  target_link_libraries(${name} PRIVATE ${ARG_DEPS} vl_test_support GTest::gtest_main)
  if(ARG_EMULATOR)
    set_target_properties(${name} PROPERTIES CROSSCOMPILING_EMULATOR "${ARG_EMULATOR}")
  endif()
  set(properties ENVIRONMENT "VL_TEST_DATA=${CMAKE_SOURCE_DIR}/tests/data")
  if(ARG_FIXTURE)
    list(APPEND properties FIXTURES_REQUIRED ${ARG_FIXTURE})
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
    PROPERTIES ${properties})
endfunction()
