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

  # libsodium: Debian's source package of the Linux build's release, built
  # statically with mingw-w64 by scripts/build-mingw-libsodium, so no Windows
  # executable ships or imports a DLL that needs the Visual C++ runtime.
  set(LAUNCHER_MINGW_SODIUM_DIR "${CMAKE_SOURCE_DIR}/build/mingw-libsodium"
      CACHE PATH "Static libsodium for Windows (include/, lib/libsodium.a)")
  if(NOT EXISTS "${LAUNCHER_MINGW_SODIUM_DIR}/lib/libsodium.a")
    message(FATAL_ERROR "No static libsodium for Windows in ${LAUNCHER_MINGW_SODIUM_DIR}; run scripts/setup.")
  endif()
  add_library(vl_sodium INTERFACE)
  target_include_directories(vl_sodium SYSTEM INTERFACE "${LAUNCHER_MINGW_SODIUM_DIR}/include")
  target_compile_definitions(vl_sodium INTERFACE SODIUM_STATIC)
  target_link_libraries(vl_sodium INTERFACE "${LAUNCHER_MINGW_SODIUM_DIR}/lib/libsodium.a")

  # WebView2: the SDK's headers (and a header-name shim for mingw-w64). mingw
  # cannot link the SDK's static loader library, so the launcher imports
  # WebView2Loader.dll itself, shipped beside the executable.
  set(webview2_sdk "${LAUNCHER_NUGET_DIR}/microsoft.web.webview2/1.0.3719.77/build/native")
  set(LAUNCHER_WEBVIEW2_LOADER "${webview2_sdk}/x64/WebView2Loader.dll")
  add_library(vl_webview2 INTERFACE)
  target_include_directories(vl_webview2 SYSTEM INTERFACE "${webview2_sdk}/include"
                             "${CMAKE_SOURCE_DIR}/ui/win/compat")
  target_link_libraries(vl_webview2 INTERFACE "${LAUNCHER_WEBVIEW2_LOADER}")

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

