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

# A configured key must be a valid Ed25519 point of large order: a small-order
# key would let anyone sign update lists. libsodium answers that on the build
# machine (also for the Windows build) through tools/check_public_key, compiled
# with the host compiler; builds with only empty slots skip it.
function(vl_check_public_keys)
  if(LAUNCHER_PUBLIC_KEY_1 MATCHES "^0+$" AND LAUNCHER_PUBLIC_KEY_2 MATCHES "^0+$")
    return()
  endif()
  set(source "${CMAKE_SOURCE_DIR}/tools/check_public_key.cpp")
  set(tool "${CMAKE_BINARY_DIR}/host-tools/check_public_key")
  if("${source}" IS_NEWER_THAN "${tool}")
    find_program(LAUNCHER_HOST_CXX NAMES c++ g++)
    if(NOT LAUNCHER_HOST_CXX)
      message(FATAL_ERROR "Checking the public keys needs a host C++ compiler (c++ or g++) and libsodium-dev.")
    endif()
    file(MAKE_DIRECTORY "${CMAKE_BINARY_DIR}/host-tools")
    execute_process(COMMAND "${LAUNCHER_HOST_CXX}" -std=c++17 -O1 "${source}" -o "${tool}" -lsodium
                    RESULT_VARIABLE built ERROR_VARIABLE build_log)
    if(NOT built EQUAL 0)
      file(REMOVE "${tool}")
      message(FATAL_ERROR "Could not build the public key check (needs libsodium-dev on this machine):\n${build_log}")
    endif()
  endif()
  execute_process(COMMAND "${tool}" "LAUNCHER_PUBLIC_KEY_1=${LAUNCHER_PUBLIC_KEY_1}"
                          "LAUNCHER_PUBLIC_KEY_2=${LAUNCHER_PUBLIC_KEY_2}"
                  RESULT_VARIABLE verdict ERROR_VARIABLE complaint)
  if(NOT verdict EQUAL 0)
    message(FATAL_ERROR "${complaint}")
  endif()
endfunction()
vl_check_public_keys()

# The host goes into a wide literal; quotes or backslashes would break out of it.
if(LAUNCHER_PATCH_HOST MATCHES "[\"\\\\]")
  message(FATAL_ERROR "LAUNCHER_PATCH_HOST must not contain quotes or backslashes")
endif()

configure_file(${CMAKE_SOURCE_DIR}/app/launcher_config_values.cpp.in
               ${CMAKE_BINARY_DIR}/generated/launcher_config_values.cpp @ONLY)
