# qxutil_add_string_module(TARGET FILE.rc [INCLUDE_DIRECTORIES DIR...])
#
# Makes the string module TARGET (a shared object, TARGET.so, that
# cResourceDLL loads) from the STRINGTABLE blocks of a Windows resource
# script: `qxutil strings compile` writes its source, which is then built.
# "#include" in the script looks in the script's own directory first, then
# in the INCLUDE_DIRECTORIES; the module is remade when the script or any
# file it includes changes. The program is the target qxutil::program.
function(qxutil_add_string_module target script)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "INCLUDE_DIRECTORIES")
  if(arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "qxutil_add_string_module: unknown arguments ${arg_UNPARSED_ARGUMENTS}")
  endif()
  get_filename_component(script "${script}" ABSOLUTE)
  set(includes)
  foreach(dir IN LISTS arg_INCLUDE_DIRECTORIES)
    get_filename_component(dir "${dir}" ABSOLUTE)
    list(APPEND includes -I "${dir}")
  endforeach()
  set(source "${CMAKE_CURRENT_BINARY_DIR}/${target}_strings.cpp")
  set(program qxutil::program)
  get_target_property(aliased qxutil::program ALIASED_TARGET)
  if(aliased)
    set(program ${aliased})
  endif()
  add_custom_command(
    OUTPUT "${source}"
    COMMAND ${program} strings compile "${script}" -o "${source}" ${includes}
            --depfile "${source}.d"
    DEPENDS "${script}" ${program}
    DEPFILE "${source}.d"
    COMMENT "Compiling the string tables of ${script}"
    VERBATIM)
  add_library(${target} MODULE "${source}")
  set_target_properties(${target} PROPERTIES PREFIX "")
endfunction()
