# Installs the built library into a fresh prefix, then configures and builds
# a copy of examples/template against it as a plugin author would, and checks
# what comes out: a 32-bit "my_plugin.orv" exporting the plugin entry points
# and nothing else of its own, and a "check" target that runs the template's
# scenario in the installed toka-host, passing as it stands and failing once
# the scenario expects what the plugin does not do.
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

# The library, the reference host, every public header and the package files.
foreach(file lib/libtoka.so bin/toka-host lib/cmake/Toka/TokaConfig.cmake
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
set(source ${WORK_DIR}/my_plugin)
file(COPY ${TEMPLATE_DIR}/ DESTINATION ${source})
set(build ${WORK_DIR}/build)
run(${CMAKE_COMMAND} -S ${source} -B ${build} -DCMAKE_PREFIX_PATH=${prefix}
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

# The plugin author's CI command. A scenario that passes leaves the picture
# of its last frame; toka-host ran on the installed library.
run(${CMAKE_COMMAND} --build ${build} --target check)
if(NOT EXISTS ${build}/my_plugin_scenario/last-frame.png)
  message(FATAL_ERROR "check passed without running the scenario in toka-host")
endif()

# A step that cannot hold fails the check, with toka-host's report.
file(APPEND ${source}/my_plugin.scenario "expect plugin \"My plugin\" absent\n")
execute_process(COMMAND ${CMAKE_COMMAND} --build ${build} --target check
  RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
string(CONCAT report "my_plugin.scenario:[0-9]+: frame [0-9]+: expect plugin \"My plugin\" absent\n"
  "  expected: plugin \"My plugin\" absent\n"
  "  found:    loaded and disabled\n")
if(result EQUAL 0 OR NOT output MATCHES "${report}")
  message(FATAL_ERROR "a failing scenario did not fail the check (${result}):\n${output}")
endif()

file(REMOVE_RECURSE ${WORK_DIR})
