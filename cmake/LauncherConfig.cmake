# The branded values of a build. Everything else in LauncherConfig is fixed in code.
set(LAUNCHER_PATCH_HOST "https://patch.vardeni.invalid/" CACHE STRING "Base URL of the patch host (must start with https://)")
set(LAUNCHER_PUBLIC_KEY_1 "0000000000000000000000000000000000000000000000000000000000000000"
    CACHE STRING "First Ed25519 public key of update lists, 64 hex digits (all zero = empty slot)")
set(LAUNCHER_PUBLIC_KEY_2 "0000000000000000000000000000000000000000000000000000000000000000"
    CACHE STRING "Second Ed25519 public key of update lists, 64 hex digits (all zero = empty slot)")

foreach(key_var LAUNCHER_PUBLIC_KEY_1 LAUNCHER_PUBLIC_KEY_2)
  if(NOT ${key_var} MATCHES "^[0-9a-fA-F]+$")
    message(FATAL_ERROR "${key_var} must be 64 hexadecimal digits, got '${${key_var}}'")
  endif()
  string(LENGTH "${${key_var}}" key_len)
  if(NOT key_len EQUAL 64)
    message(FATAL_ERROR "${key_var} must be 64 hexadecimal digits, got ${key_len}")
  endif()
  string(REGEX REPLACE "([0-9a-fA-F][0-9a-fA-F])" "0x\\1," ${key_var}_BYTES "${${key_var}}")
endforeach()

# The host goes into a wide literal; quotes or backslashes would break out of it.
if(LAUNCHER_PATCH_HOST MATCHES "[\"\\\\]")
  message(FATAL_ERROR "LAUNCHER_PATCH_HOST must not contain quotes or backslashes")
endif()

configure_file(${CMAKE_SOURCE_DIR}/app/launcher_config_values.cpp.in
               ${CMAKE_BINARY_DIR}/generated/launcher_config_values.cpp @ONLY)
