# Runs examples/audio_editor.ksc through keldo-run in a folder of its own
# (its program folder too) and checks what it left there with Python.
# Called by CTest with -DRUNNER=path -DPYTHON=path -DSOURCE=folder -DWORK=folder.
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
execute_process(COMMAND ${CMAKE_COMMAND} -E env KELDO_HOME=. ${RUNNER} ${SOURCE}/examples/audio_editor.ksc
                WORKING_DIRECTORY ${WORK} RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "keldo-run: exit ${status}\n${out}\n${err}")
endif()
execute_process(COMMAND ${PYTHON} ${SOURCE}/tests/data/check_audio_editor.py ${WORK}
                RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "check_audio_editor.py: exit ${status}\n${out}\n${err}")
endif()
