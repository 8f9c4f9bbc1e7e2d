# The exported interface is exactly the names of exports.list; the linker
# version script written from it hides everything else, including template
# code that the standard library would otherwise export. Both the library's
# build and the fuzzer's own build of it link with this script.
function(toka_write_version_script exports_list output)
  file(STRINGS ${exports_list} export_lines REGEX "^[A-Za-z_]")
  set(map "{\n  global:\n")
  foreach(name IN LISTS export_lines)
    string(APPEND map "    ${name};\n")
  endforeach()
  string(APPEND map "  local: *;\n};\n")
  file(CONFIGURE OUTPUT ${output} CONTENT "${map}")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${exports_list})
endfunction()

# The same names as a dynamic list, for a program that links the library's
# code in and must export its interface to the plugins it loads (and nothing
# else of its own).
function(toka_write_dynamic_list exports_list output)
  file(STRINGS ${exports_list} export_lines REGEX "^[A-Za-z_]")
  set(list "{\n")
  foreach(name IN LISTS export_lines)
    string(APPEND list "  ${name};\n")
  endforeach()
  string(APPEND list "};\n")
  file(CONFIGURE OUTPUT ${output} CONTENT "${list}")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${exports_list})
endfunction()
