# Installs one or more builds of Toka (one per architecture) into one fresh
# prefix, side by side, and checks each as a plugin author would use it:
# - its files in its own multiarch folder, none overwritten by the other's;
# - the plugin template configured against it with find_package(Toka): a
#   "my_plugin.orv" of its architecture exporting the plugin entry points and
#   nothing else of its own, and a "check" target that runs the template's
#   scenario in its installed toka-host, passing as it stands and failing
#   once the scenario expects what the plugin does not do;
# - the same plugin built without CMake, with pkg-config --cflags --libs toka.
#
#   cmake -DBUILD_DIRS="build/plain;build/plain64" -DSOURCE_DIR=. -DWORK_DIR=... -P tests/install_test.cmake
foreach(var BUILD_DIRS SOURCE_DIR WORK_DIR)
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

function(expect_elf_class file class)
  file(READ ${file} ident HEX LIMIT 5)
  if(NOT ident STREQUAL "7f454c460${class}")
    message(FATAL_ERROR "${file}: not an ELF object of class ${class}: ${ident}")
  endif()
endfunction()

# The names of the functions that a file exports, sorted.
function(defined_functions file out)
  execute_process(COMMAND nm -D --defined-only ${file} OUTPUT_VARIABLE symbols RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "nm failed on ${file}")
  endif()
  string(REGEX MATCHALL "[0-9a-f]+ T [A-Za-z_][A-Za-z0-9_]*" names "${symbols}")
  string(REGEX REPLACE "[0-9a-f]+ T " "" names "${names}")
  list(SORT names)
  set(${out} ${names} PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
foreach(build IN LISTS BUILD_DIRS)
  run(${CMAKE_COMMAND} --install ${build} --prefix ${prefix})
endforeach()

file(GLOB headers RELATIVE ${SOURCE_DIR}/include/toka ${SOURCE_DIR}/include/toka/*.h)
file(GLOB installed RELATIVE ${prefix}/include/toka ${prefix}/include/toka/*)
list(SORT headers)
list(SORT installed)
if(NOT headers STREQUAL installed)
  message(FATAL_ERROR "installed headers: ${installed}\nexpected: ${headers}")
endif()

foreach(build IN LISTS BUILD_DIRS)
  file(STRINGS ${build}/CMakeCache.txt arch REGEX "^TOKA_ARCH:")
  string(REGEX REPLACE ".*=" "" arch "${arch}")
  if(arch STREQUAL "32")
    set(tuple i386-linux-gnu)
    set(class 1)
    set(host bin/toka-host)
  else()
    set(tuple x86_64-linux-gnu)
    set(class 2)
    set(host bin/toka-host64)
  endif()
  set(libdir ${prefix}/lib/${tuple})
  foreach(file ${libdir}/libtoka.so ${prefix}/${host} ${libdir}/cmake/Toka/TokaConfig.cmake
      ${libdir}/cmake/Toka/TokaConfigVersion.cmake ${libdir}/cmake/Toka/TokaTargets.cmake
      ${libdir}/pkgconfig/toka.pc)
    if(NOT EXISTS ${file})
      message(FATAL_ERROR "${arch}-bit: not installed: ${file}")
    endif()
  endforeach()
  expect_elf_class(${libdir}/libtoka.so ${class})
  expect_elf_class(${prefix}/${host} ${class})

  # The template, configured as a plugin author would, as a project of the
  # machine's default (64-bit) kind: the package found must be the one of
  # the architecture asked for, and build a plugin of that architecture.
  set(source ${WORK_DIR}/my_plugin)
  set(out ${WORK_DIR}/build${arch})
  file(REMOVE_RECURSE ${source})
  file(COPY ${SOURCE_DIR}/examples/template/ DESTINATION ${source})
  run(${CMAKE_COMMAND} -S ${source} -B ${out} -DCMAKE_PREFIX_PATH=${prefix} -DTOKA_ARCH=${arch})
  run(${CMAKE_COMMAND} --build ${out})
  set(plugin ${out}/my_plugin.orv)
  if(NOT EXISTS ${plugin})
    message(FATAL_ERROR "${arch}-bit: no my_plugin.orv")
  endif()
  expect_elf_class(${plugin} ${class})
  defined_functions(${plugin} functions)
  set(expected OrvanePluginDisable OrvanePluginEnable OrvanePluginReceiveMessage
    OrvanePluginStart OrvanePluginStop)
  if(NOT functions STREQUAL expected)
    message(FATAL_ERROR "${arch}-bit plugin exports: ${functions}\nexpected: ${expected}")
  endif()

  # The plugin author's CI command: the scenario runs in the installed host
  # of the plugin's architecture, on the installed library.
  run(${CMAKE_COMMAND} --build ${out} --target check)
  if(NOT EXISTS ${out}/my_plugin_scenario/last-frame.png)
    message(FATAL_ERROR "${arch}-bit: check passed without running the scenario in toka-host")
  endif()
  file(READ ${out}/CTestTestfile.cmake tests)
  if(NOT tests MATCHES "${prefix}/${host}\"? [^\n]*${libdir}/libtoka.so")
    message(FATAL_ERROR "${arch}-bit: the scenario does not run ${host} on its own library:\n${tests}")
  endif()

  # A step that cannot hold fails the check, with toka-host's report.
  file(APPEND ${source}/my_plugin.scenario "expect plugin \"My plugin\" absent\n")
  execute_process(COMMAND ${CMAKE_COMMAND} --build ${out} --target check
    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  string(CONCAT report "my_plugin.scenario:[0-9]+: frame [0-9]+: expect plugin \"My plugin\" absent\n"
    "  expected: plugin \"My plugin\" absent\n"
    "  found:    loaded and disabled\n")
  if(result EQUAL 0 OR NOT output MATCHES "${report}")
    message(FATAL_ERROR "${arch}-bit: a failing scenario did not fail the check (${result}):\n${output}")
  endif()

  # Without CMake: one compiler line with pkg-config's flags.
  set(ENV{PKG_CONFIG_PATH} ${libdir}/pkgconfig)
  execute_process(COMMAND pkg-config --cflags --libs toka OUTPUT_VARIABLE flags
    RESULT_VARIABLE result OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${arch}-bit: pkg-config does not find toka")
  endif()
  separate_arguments(flags UNIX_COMMAND "${flags}")
  run(c++ -shared -fPIC -fvisibility=hidden ${source}/my_plugin.cpp -o ${out}/pc_plugin.orv ${flags})
  expect_elf_class(${out}/pc_plugin.orv ${class})
  message(STATUS "${arch}-bit Toka installed at ${prefix}: library, host, package and pkg-config pass")
endforeach()

file(REMOVE_RECURSE ${WORK_DIR})
