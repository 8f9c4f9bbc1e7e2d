# The exported interface is exactly the names of exports.list; the linker
# version script written from it hides everything else, including template
# code that the standard library would otherwise export. Both the library's
# build and the fuzzer's own build of it link with this script.
function(toka_write_version_script exports_list output)
  _toka_write_export_names(${exports_list} ${output} "{\n  global:\n" "    " "  local: *;\n};\n")
endfunction()

# The same names as a dynamic list, for a program that links the library's
# code in and must export its interface to the plugins it loads (and nothing
# else of its own).
function(toka_write_dynamic_list exports_list output)
  _toka_write_export_names(${exports_list} ${output} "{\n" "  " "};\n")
endfunction()

# Writes the names of exports_list, one a line after indent and ended by
# ";", between head and tail; the build configures again when the list
# changes.
function(_toka_write_export_names exports_list output head indent tail)
  file(STRINGS ${exports_list} export_lines REGEX "^[A-Za-z_]")
  set(text "${head}")
  foreach(name IN LISTS export_lines)
    string(APPEND text "${indent}${name};\n")
  endforeach()
  string(APPEND text "${tail}")
  file(CONFIGURE OUTPUT ${output} CONTENT "${text}")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${exports_list})
endfunction()
