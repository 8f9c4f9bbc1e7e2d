# Installs the built library into a fresh prefix, then configures and builds
# examples/template against it as a plugin author would, and checks what
# comes out: a 32-bit "my_plugin.orv" exporting the plugin entry points and
# nothing else of its own.
foreach(var TOKA_BUILD_DIR TOKA_HEADER_DIR TEMPLATE_DIR WORK_DIR CXX_COMPILER NM)
  if(NOT DEFINED ${var} OR "${${var}}" STREQUAL "")
    message(FATAL_ERROR "${var} is not set")
  endif()
endforeach()

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output
    ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "failed (${result}): ${ARGN}\n${output}")
  endif()
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
run(${CMAKE_COMMAND} --install ${TOKA_BUILD_DIR} --prefix ${prefix})

# The library, every public header and the package files.
foreach(file lib/libtoka.so lib/cmake/Toka/TokaConfig.cmake
    lib/cmake/Toka/TokaConfigVersion.cmake lib/cmake/Toka/TokaTargets.cmake)
  if(NOT EXISTS ${prefix}/${file})
    message(FATAL_ERROR "not installed: ${file}")
  endif()
endforeach()
file(GLOB headers RELATIVE ${TOKA_HEADER_DIR} ${TOKA_HEADER_DIR}/*.h)
file(GLOB installed RELATIVE ${prefix}/include/toka ${prefix}/include/toka/*)
list(SORT headers)
list(SORT installed)
if(NOT headers STREQUAL installed)
  message(FATAL_ERROR "installed headers: ${installed}\nexpected: ${headers}")
endif()

# Configured as the machine's default (64-bit) project: the package must
# still be found and build a 32-bit plugin.
set(build ${WORK_DIR}/build)
run(${CMAKE_COMMAND} -S ${TEMPLATE_DIR} -B ${build} -DCMAKE_PREFIX_PATH=${prefix}
  -DCMAKE_CXX_COMPILER=${CXX_COMPILER})
run(${CMAKE_COMMAND} --build ${build})

set(plugin ${build}/my_plugin.orv)
if(NOT EXISTS ${plugin})
  file(GLOB_RECURSE built RELATIVE ${build} ${build}/*.orv ${build}/*.so)
  message(FATAL_ERROR "no my_plugin.orv; built: ${built}")
endif()
# ELF magic, then class 1: 32-bit.
file(READ ${plugin} ident HEX LIMIT 5)
if(NOT ident STREQUAL "7f454c4601")
  message(FATAL_ERROR "not a 32-bit ELF object: ${ident}")
endif()

execute_process(COMMAND ${NM} -D --defined-only ${plugin} OUTPUT_VARIABLE symbols
  RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "nm failed on ${plugin}")
endif()
string(REGEX MATCHALL "[0-9a-f]+ T [A-Za-z_][A-Za-z0-9_]*" functions "${symbols}")
string(REGEX REPLACE "[0-9a-f]+ T " "" functions "${functions}")
list(SORT functions)
set(expected OrvanePluginDisable OrvanePluginEnable OrvanePluginReceiveMessage
  OrvanePluginStart OrvanePluginStop)
if(NOT functions STREQUAL expected)
  message(FATAL_ERROR "exported functions: ${functions}\nexpected: ${expected}\n${symbols}")
endif()

file(REMOVE_RECURSE ${WORK_DIR})
