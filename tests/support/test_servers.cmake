# vl_test_servers_fixture(name): a CTest fixture that starts nginx (HTTPS, throwaway CA)
# and the fault-injection server once per ctest run, for the tests that require it
# (vl_test(... FIXTURE name)). They find both through test_servers/servers.txt in the
# calling folder's build directory, their working folder.
function(vl_test_servers_fixture fixture)
  set(dir ${CMAKE_CURRENT_BINARY_DIR}/test_servers)
  set(script ${CMAKE_SOURCE_DIR}/tests/support/test_servers.sh)
  add_test(NAME ${fixture}_start COMMAND bash ${script} start ${dir})
  add_test(NAME ${fixture}_stop COMMAND bash ${script} stop ${dir})
  set_tests_properties(${fixture}_start PROPERTIES FIXTURES_SETUP ${fixture})
  set_tests_properties(${fixture}_stop PROPERTIES FIXTURES_CLEANUP ${fixture})
  if(WIN32)
    # WinHTTP trusts the test CA through the current user's Root store of the Wine prefix.
    add_test(NAME ${fixture}_trust_ca COMMAND vl_trust_test_ca add test_servers/https/ca.der
      WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
    add_test(NAME ${fixture}_distrust_ca COMMAND vl_trust_test_ca remove test_servers/https/ca.der
      WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
    set_tests_properties(${fixture}_trust_ca PROPERTIES FIXTURES_SETUP ${fixture} DEPENDS ${fixture}_start)
    set_tests_properties(${fixture}_distrust_ca PROPERTIES FIXTURES_CLEANUP ${fixture})
    set_tests_properties(${fixture}_stop PROPERTIES DEPENDS ${fixture}_distrust_ca)
  endif()
endfunction()
