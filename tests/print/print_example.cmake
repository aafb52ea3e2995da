# Runs examples/print.ksc through keldo-run with its printer writing a PDF,
# then checks the sheet and the saved picture with check_print_example.py.
# Called by CTest with -DRUNNER=path -DSOURCE=folder -DWORK=folder. The check runs
# on the system's Python, whose PIL the setup script installs.
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
execute_process(COMMAND ${CMAKE_COMMAND} -E env KELDO_HOME=. KELDO_PRINT_PDF=sheet.pdf QT_QPA_PLATFORM=offscreen
                        ${RUNNER} --strict ${SOURCE}/examples/print.ksc
                WORKING_DIRECTORY ${WORK} RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "print.ksc: exit ${status}\n${out}\n${err}")
endif()
find_program(SYSTEM_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH)
if(NOT SYSTEM_PYTHON)
  set(SYSTEM_PYTHON python3)
endif()
execute_process(COMMAND ${SYSTEM_PYTHON} ${SOURCE}/tests/data/check_print_example.py ${WORK}
                RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "check_print_example.py: exit ${status}\n${out}\n${err}")
endif()
