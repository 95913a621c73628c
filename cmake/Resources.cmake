# Resources compiled into the program, listed once in ui/resources/resources.rc.
# Windows: windres compiles the script into RCDATA resources. Linux: the
# RCDATA lines become byte tables in a generated C++ file that registers
# itself with platform::LoadEmbeddedResource. Either way the bytes are the
# files' bytes, unchanged.
#
# Included from the top-level CMakeLists.txt (defines vl_embedded_resources and
# vl_embed_resources); also run as a script at build time to write the table.

# Reads the "<id> RCDATA "<file>"" lines of a resource script into a list of
# "<id>|<absolute file>" entries. A file is looked for beside the script,
# then among the files the build generates (`generated`, the page).
function(vl_read_resource_list script generated out)
  get_filename_component(base "${script}" DIRECTORY)
  file(STRINGS "${script}" lines REGEX "^[ \t]*[0-9]+[ \t]+RCDATA[ \t]+\"[^\"]+\"")
  set(entries "")
  foreach(line IN LISTS lines)
    string(REGEX MATCH "^[ \t]*([0-9]+)[ \t]+RCDATA[ \t]+\"([^\"]+)\"" _ "${line}")
    set(file "${base}/${CMAKE_MATCH_2}")
    if(NOT EXISTS "${file}")
      set(file "${generated}/${CMAKE_MATCH_2}")
    endif()
    list(APPEND entries "${CMAKE_MATCH_1}|${file}")
  endforeach()
  set(${out} "${entries}" PARENT_SCOPE)
endfunction()

if(CMAKE_SCRIPT_MODE_FILE)
  # Script mode: -DSCRIPT=<resources.rc> -DGENERATED=<folder> -DOUTPUT=<generated .cpp>
  vl_read_resource_list("${SCRIPT}" "${GENERATED}" entries)
  set(arrays "")
  set(table "")
  foreach(entry IN LISTS entries)
    string(REPLACE "|" ";" parts "${entry}")
    list(GET parts 0 id)
    list(GET parts 1 file)
    file(READ "${file}" hex HEX)
    string(LENGTH "${hex}" digits)
    math(EXPR size "${digits} / 2")
    if(size EQUAL 0)
      set(bytes "0")
    else()
      string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
    endif()
    string(APPEND arrays "constexpr std::uint8_t kResource${id}[] = {${bytes}};\n")
    string(APPEND table "    {${id}, kResource${id}, ${size}},\n")
  endforeach()
  string(CONCAT code
    "// Generated from ui/resources/resources.rc by cmake/Resources.cmake; do not edit.\n"
    "#include <cstdint>\n\n#include \"platform/embedded_resource_table.h\"\n\nnamespace {\n\n"
    "${arrays}\nconstexpr platform::SEmbeddedResource kResources[] = {\n${table}};\n\n"
    "[[maybe_unused]] const bool kRegistered = platform::RegisterEmbeddedResources(kResources);\n\n"
    "}  // namespace\n")
  file(WRITE "${OUTPUT}" "${code}")
  return()
endif()

set(VL_RESOURCE_SCRIPT "${CMAKE_SOURCE_DIR}/ui/resources/resources.rc")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${VL_RESOURCE_SCRIPT}")
vl_read_resource_list("${VL_RESOURCE_SCRIPT}" "${VL_GENERATED_RESOURCE_DIR}" vl_resource_entries)
set(vl_resource_files "")
foreach(entry IN LISTS vl_resource_entries)
  string(REGEX REPLACE "^[0-9]+\\|" "" file "${entry}")
  list(APPEND vl_resource_files "${file}")
endforeach()

if(WIN32)
  enable_language(RC)
  add_library(vl_embedded_resources OBJECT "${VL_RESOURCE_SCRIPT}")
  # windres looks for the files it embeds in its include folders too.
  target_include_directories(vl_embedded_resources PRIVATE "${VL_GENERATED_RESOURCE_DIR}")
  # windres reports no dependencies, so the listed files are named here.
  set_source_files_properties("${VL_RESOURCE_SCRIPT}" PROPERTIES OBJECT_DEPENDS "${vl_resource_files}")
else()
  set(vl_resource_table "${CMAKE_BINARY_DIR}/generated/embedded_resources.cpp")
  add_custom_command(OUTPUT "${vl_resource_table}"
    COMMAND ${CMAKE_COMMAND} -DSCRIPT=${VL_RESOURCE_SCRIPT} -DGENERATED=${VL_GENERATED_RESOURCE_DIR}
            -DOUTPUT=${vl_resource_table}
            -P "${CMAKE_CURRENT_LIST_DIR}/Resources.cmake"
    DEPENDS "${VL_RESOURCE_SCRIPT}" ${vl_resource_files} "${CMAKE_CURRENT_LIST_FILE}"
    COMMENT "Embedding the resources listed in resources.rc")
  add_library(vl_embedded_resources OBJECT "${vl_resource_table}")
endif()

# Links the resources into an executable. Their objects go in directly (not
# through a static library) so the linker keeps them although no code
# refers to them by name.
function(vl_embed_resources target)
  target_sources(${target} PRIVATE $<TARGET_OBJECTS:vl_embedded_resources>)
  add_dependencies(${target} vl_embedded_resources)
endfunction()
