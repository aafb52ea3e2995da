# Runs keldo-run as a program and checks its output and exit status.
# Called by CTest with -DRUNNER=path -DWORK=folder.
file(MAKE_DIRECTORY ${WORK})

function(run_script name text expected_status)
  file(WRITE ${WORK}/${name}.ksc "${text}")
  execute_process(COMMAND ${RUNNER} ${WORK}/${name}.ksc WORKING_DIRECTORY ${WORK}
                  RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT status EQUAL expected_status)
    message(FATAL_ERROR "${name}: exit ${status}, expected ${expected_status}\n${out}\n${err}")
  endif()
  set(OUT "${out}" PARENT_SCOPE)
  set(ERR "${err}" PARENT_SCOPE)
endfunction()

run_script(dump "new 1d\ndump\n" 0)
string(FIND "${OUT}" "\"caption\": \"1DGraph  1\"" at)
if(at LESS 0)
  message(FATAL_ERROR "dump lacks the caption:\n${OUT}")
endif()
string(FIND "${OUT}" "\"points\": 1024" at)
if(at LESS 0)
  message(FATAL_ERROR "dump lacks the points:\n${OUT}")
endif()

run_script(unknown "new 1d\n\nbogus\n" 2)
if(NOT ERR STREQUAL "line 3: unknown command bogus\n")
  message(FATAL_ERROR "unexpected error text: '${ERR}'")
endif()

run_script(shot "new 1d\nscreenshot ${WORK}/form.png\n" 0)
if(NOT EXISTS ${WORK}/form.png)
  message(FATAL_ERROR "no screenshot written")
endif()
file(SIZE ${WORK}/form.png png_size)
if(png_size LESS 2000)
  message(FATAL_ERROR "screenshot is too small to hold a form: ${png_size} bytes")
endif()

# Standard input as the script.
execute_process(COMMAND sh -c "printf 'new 2d\\ndump\\n' | '${RUNNER}' -" RESULT_VARIABLE status OUTPUT_VARIABLE out)
string(FIND "${out}" "\"caption\": \"2DGraph  1\"" at)
if(NOT status EQUAL 0 OR at LESS 0)
  message(FATAL_ERROR "stdin script failed: ${status}\n${out}")
endif()

# A formula plotted from a script: the graph in the dump, a message for an
# improper formula, and a prompt answered from the script.
run_script(plot "new 1d\nmenu mnu64\nmenu mnuPlotGraph\nset Formula \"2^3^2+x\"\ngo\nset Formula \"sin(x\"\ngo\nanswer 3\nset Formula \"a*x\"\ngo\ndump\n" 0)
foreach(expected "message 23: Improper formula." "prompt: Enter the value of a." "\"peak\": 64.5" "\"peak\": 1.5")
  string(FIND "${OUT}" "${expected}" at)
  if(at LESS 0)
    message(FATAL_ERROR "plot script lacks '${expected}':\n${OUT}")
  endif()
endforeach()

# The pointer, the context menu and the clipboard: a graph copied to the
# clipboard from one form and pasted into another of 128 points; a data file
# opened into a new form, and a short one refused with message 20.
set(DATA ${CMAKE_CURRENT_LIST_DIR}/../data/form1d)
run_script(pointer "new 1d\nmenu mnu64\nmenu mnuPlotGraph\nset Formula \"x\"\ngo\nwait\nmouse down 0.25 0.25 right\npopup mnuCopyToClipboard\ngo\ndump\nnew 1d\nclipboard @${DATA}/clip_128.txt\npopup mnuPasteFromClipboard\ndump\nopen ${DATA}/sine128.kb1\nopen ${DATA}/short.kb1\nmenu mnuTrace\nmouse down 0 0.5\ndump\n" 0)
foreach(expected "\"clipboard\": \"64\\r\\n-0.5\\r\\n0.5\\r\\n-0.5\\r\\n" "\"points\": 128" "\"b\": 3" "message 20: Error loading file."
                 "\"a\": -1" "Index = 64")
  string(FIND "${OUT}" "${expected}" at)
  if(at LESS 0)
    message(FATAL_ERROR "pointer script lacks '${expected}':\n${OUT}")
  endif()
endforeach()

# A form file saved and opened again.
run_script(formfile "new 1d\nmenu mnu128\nmenu mnuPlotGraph\nset Formula \"x^2\"\ngo\nfile ${WORK}/saved.kd1\nmenu mnuOpenSave 3\nopen ${WORK}/saved.kd1\ndump\n" 0)
foreach(expected "\"caption\": \"saved.kd1\"" "\"points\": 128" "\"peak\": 0.25")
  string(FIND "${OUT}" "${expected}" at)
  if(at LESS 0)
    message(FATAL_ERROR "form file script lacks '${expected}':\n${OUT}")
  endif()
endforeach()

# A form without a plot has nothing to point at.
run_script(noplot "new workshop\nmouse down 0 0\n" 2)

# Sound files saved from a script and read back by Python's wave module.
run_script(savesound "new 1d\nmenu mnu64\nmenu mnuPlotGraph\nset Formula \"300*sin(2*pi*x)+x\"\nset EndRValue 1\nset IntervalType2 1\ngo\nwait\nmenu mnuAudioPlay\nset TxtSound(1) 8000\nset TxtSound(2) 0.5\nmenu mnuOpenSave 6\nfile ${WORK}/saved.16.wav\ngo\nset OpBitRate(0) 1\nfile ${WORK}/saved.8.wav\ngo\nopen ${DATA}/../wave/sine16.wav\ndump\n" 0)
execute_process(COMMAND python3 ${CMAKE_CURRENT_LIST_DIR}/../data/check_saved_waves.py ${WORK}
                RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "saved waves differ: ${out}\n${err}")
endif()
string(FIND "${OUT}" "\"points\": 1024" at)
if(at LESS 0)
  message(FATAL_ERROR "the wave file did not open as a graph of 1024 points:\n${OUT}")
endif()

# Pictures saved from a script in four formats and read back by Python
# (PIL), then opened again as graphs.
run_script(saveimage "new 2d\nmenu mnu64\nmenu mnuPlot\nset Formula \"300*(x>0.25)+100+100*x\"\ngo\nfile ${WORK}/saved.pgm\nmenu mnuSaveImage\nfile ${WORK}/saved.png\nmenu mnuSaveImage\nfile ${WORK}/saved.tif\nmenu mnuSaveImage\nfile ${WORK}/saved.bmp\nmenu mnuSaveImage\nopen ${WORK}/saved.png\nopen ${WORK}/saved.tif\ndump\n" 0)
# The system's Python, which has Debian's numpy and PIL.
find_program(SYSTEM_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH)
if(NOT SYSTEM_PYTHON)
  set(SYSTEM_PYTHON python3)
endif()
execute_process(COMMAND ${SYSTEM_PYTHON} ${CMAKE_CURRENT_LIST_DIR}/../data/check_saved_images.py ${WORK}
                RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "saved images differ: ${out}\n${err}")
endif()
foreach(expected "\"caption\": \"2DGraph  3\"" "\"points\": 64" "\"peak\": 192")
  string(FIND "${OUT}" "${expected}" at)
  if(at LESS 0)
    message(FATAL_ERROR "image script lacks '${expected}':\n${OUT}")
  endif()
endforeach()

# A graph number of 0 in the "Remove graph" box names no graph.
run_script(remove0 "new 1d\nmenu mnu64\nmenu mnuPlotGraph\nset Formula \"x\"\ngo\nmenu mnuRemoveGraph\nset TxtAnGr1 0\ngo\n" 0)
if(NOT OUT STREQUAL "message 3: Improper graph specification.\n")
  message(FATAL_ERROR "remove-graph script printed '${OUT}'")
endif()

# A spectrogram that plays: `wait` runs the sound and the scan line's timer
# to their end, and the dump lists where the line stood (a picture of 512
# pixels, 1025 samples at 8000 Hz: 80 pixels every 20 ms).
run_script(scanline "new 1d\nmenu mnuPlotGraph\nset Formula \"sin(40*x)\"\ngo\nmenu mnuSpectrogram\nset TxtGraphStat 1\ngo\ngo\nmenu mnuAudio\nset TxtSound(1) 8000\ngo\nwait\ndump brief\n" 0)
string(FIND "${OUT}" "\"scanline\": [0, 80, 160, 240, 320, 400, 480]" at)
if(at LESS 0)
  message(FATAL_ERROR "scan-line script lacks the positions:\n${OUT}")
endif()
