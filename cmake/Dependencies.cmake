# Where every third-party piece comes from; scripts/setup installs them.
set(LAUNCHER_NUGET_DIR "${CMAKE_SOURCE_DIR}/build/nuget" CACHE PATH "Folder the NuGet packages are restored into")

if(WIN32)
  # Debian's GoogleTest sources, built with the cross compiler.
  set(gtest_force_shared_crt OFF CACHE BOOL "" FORCE)
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  if(NOT TARGET GTest::gtest_main)
    add_library(GTest::gtest ALIAS gtest)
    add_library(GTest::gtest_main ALIAS gtest_main)
  endif()

  # libsodium: the NuGet package's win-x64 DLL, shipped beside each executable.
  # The package has no headers; the API is stable, so Debian's headers describe it.
  set(LAUNCHER_SODIUM_DLL "${LAUNCHER_NUGET_DIR}/libsodium/1.0.22/runtimes/win-x64/native/libsodium.dll")
  set(sodium_include "${CMAKE_BINARY_DIR}/sodium-include")
  file(COPY /usr/include/sodium.h /usr/include/sodium DESTINATION "${sodium_include}")
  add_library(vl_sodium INTERFACE)
  target_include_directories(vl_sodium SYSTEM INTERFACE "${sodium_include}")
  target_link_libraries(vl_sodium INTERFACE "${LAUNCHER_SODIUM_DLL}")

  # SHA-256 comes from CNG.
  add_library(vl_sha256_provider INTERFACE)
  target_link_libraries(vl_sha256_provider INTERFACE bcrypt)
else()
  find_package(GTest REQUIRED)
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(SODIUM REQUIRED IMPORTED_TARGET libsodium)
  add_library(vl_sodium INTERFACE)
  target_link_libraries(vl_sodium INTERFACE PkgConfig::SODIUM)

  # SHA-256 comes from OpenSSL's libcrypto.
  pkg_check_modules(LIBCRYPTO REQUIRED IMPORTED_TARGET libcrypto)
  add_library(vl_sha256_provider INTERFACE)
  target_link_libraries(vl_sha256_provider INTERFACE PkgConfig::LIBCRYPTO)
endif()
include(GoogleTest)

# Runtime DLLs that a Windows executable needs beside it.
function(vl_copy_runtime_dlls target)
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_COMMAND} -E copy_if_different "${LAUNCHER_SODIUM_DLL}" "$<TARGET_FILE_DIR:${target}>")
endfunction()
