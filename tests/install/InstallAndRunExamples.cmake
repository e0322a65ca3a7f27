# cmake -P script behind InstallTree.ExamplesBuildAndRun (see CMakeLists.txt).
# Reuses the built tree: only the install and the small examples are built here.

set(prefix ${WORK_DIR}/prefix)
set(run ${WORK_DIR}/run)
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${run})

# Runs a command; stops the test with its output when it fails. OUTPUT_VARIABLE, when
# given, receives standard output.
function(step what)
  cmake_parse_arguments(ARG "" "OUTPUT_VARIABLE" "COMMAND" ${ARGN})
  execute_process(COMMAND ${ARG_COMMAND} WORKING_DIRECTORY ${run}
    RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${what} failed (${result}):\n${out}\n${err}")
  endif()
  if(ARG_OUTPUT_VARIABLE)
    set(${ARG_OUTPUT_VARIABLE} "${out}" PARENT_SCOPE)
  endif()
endfunction()

function(expect_lines what output)
  foreach(pattern ${ARGN})
    if(NOT output MATCHES "${pattern}")
      message(FATAL_ERROR "${what}: no line matching '${pattern}' in:\n${output}")
    endif()
  endforeach()
endfunction()

# The programs run with a configuration directory of their own, and with no hint of where
# the drivers are: the installed library must find them itself.
set(env ${CMAKE_COMMAND} -E env --unset=QVNRT_APP_DIR QVNRT_HOME=${WORK_DIR}/home
    QVNSIM_SPEED_MS=50 PKG_CONFIG_PATH=${prefix}/lib/pkgconfig)

step("install" COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

set(compilers -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_C_COMPILER=${CC})
step("configure examples/app" COMMAND ${CMAKE_COMMAND} -S ${SOURCE_DIR}/examples/app
     -B ${WORK_DIR}/app ${compilers} -DCMAKE_PREFIX_PATH=${prefix})
step("build examples/app" COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/app)
step("configure examples/driver" COMMAND ${CMAKE_COMMAND} -S ${SOURCE_DIR}/examples/driver
     -B ${WORK_DIR}/driver ${compilers} -DCMAKE_PREFIX_PATH=${prefix})
step("build examples/driver" COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/driver)
step("build examples/pkg-config" COMMAND ${env} make -s -C ${SOURCE_DIR}/examples/pkg-config
     BUILD=${WORK_DIR} CXX=${CXX})

set(symbols ACME EURUSD)
set(quotes "quote ACME [0-9]" "quote EURUSD [0-9]")
set(bars "bars ACME [1-9]" "bars EURUSD [1-9]")

# The CMake build, on the default driver: the installed simulation.
step("quote_watch on the installed simulation" OUTPUT_VARIABLE out
     COMMAND ${env} ${WORK_DIR}/app/quote_watch --seconds 20 ${symbols})
expect_lines("quote_watch on the installed simulation" "${out}" ${quotes} ${bars})

# The pkg-config build, on the example driver.
step("quote_watch on fixed_quotes" OUTPUT_VARIABLE out
     COMMAND ${env} ${WORK_DIR}/quote_watch --seconds 20 --quotes-only
             --driver ${WORK_DIR}/driver/libfixed_quotes.so ${symbols})
expect_lines("quote_watch on fixed_quotes" "${out}" ${quotes})

# The installed program finds the installed simulation by the default name.
step("installed qvnrt-cli" OUTPUT_VARIABLE out
     COMMAND ${env} ${prefix}/bin/qvnrt-cli snapshot ACME)
expect_lines("installed qvnrt-cli" "${out}" "ACME +[0-9]")

# The Qt desk, where the Qt host was built: qvnrt::qt found through the same package, on the
# installed simulation, off screen.
if(WITH_QT)
  step("configure examples/desk" COMMAND ${CMAKE_COMMAND} -S ${SOURCE_DIR}/examples/desk
       -B ${WORK_DIR}/desk ${compilers} -DCMAKE_PREFIX_PATH=${prefix})
  step("build examples/desk" COMMAND ${CMAKE_COMMAND} --build ${WORK_DIR}/desk)
  step("desk on the installed simulation" OUTPUT_VARIABLE out
       COMMAND ${env} QT_QPA_PLATFORM=offscreen QVNSIM_STEP_SECONDS=60
               ${WORK_DIR}/desk/desk --width 1 --exit-after-bars 2 --timeout 20)
  expect_lines("desk on the installed simulation" "${out}" "bars ACME [2-9]")
endif()
