# The page players see: ui/page built by esbuild into one HTML file with its
# script and style inlined, embedded as resource 200 (resources.rc names it
# "page.html" and Resources.cmake finds it in VL_GENERATED_RESOURCE_DIR).
# Needs node and the packages `npm ci` installs at the repository root
# (scripts/setup does both).
set(VL_GENERATED_RESOURCE_DIR "${CMAKE_BINARY_DIR}/generated/resources")
set(VL_PAGE_FILE "${VL_GENERATED_RESOURCE_DIR}/page.html")
find_program(VL_NODE node REQUIRED)
file(GLOB_RECURSE vl_page_sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/ui/page/*")
add_custom_command(OUTPUT "${VL_PAGE_FILE}"
  COMMAND "${VL_NODE}" "${CMAKE_SOURCE_DIR}/ui/page/build.mjs" "${VL_PAGE_FILE}"
  DEPENDS ${vl_page_sources} "${CMAKE_SOURCE_DIR}/package-lock.json"
  COMMENT "Building the page (ui/page)")
