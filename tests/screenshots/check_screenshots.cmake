# Runs the panel's picture mode on the simulated unit without a display and
# checks that it ends well with every window saved. The panel's settings
# live in a folder of their own, so the user's are never touched.
#   cmake -DPANEL=... -DDATA=... -DWORK=... -P check_screenshots.cmake
file(REMOVE_RECURSE "${WORK}")
file(MAKE_DIRECTORY "${WORK}/config/ZENTA")
file(WRITE "${WORK}/config/ZENTA/ZENTA.conf" "[DATA]
DEVICE=1
F_ASM=${DATA}
CMD_ASM=gpasm -k -w2 -r dec -a inhx8m
F_C=
CMD_C=picl -16F877 -Ecerr.txt
F_EDIT=
CMD_EDIT=
")
execute_process(
  COMMAND "${CMAKE_COMMAND}" -E env "XDG_CONFIG_HOME=${WORK}/config" "XDG_RUNTIME_DIR=${WORK}"
    QT_QPA_PLATFORM=offscreen ZENTA_UNIT=sim "ZENTA_SCREENSHOTS=${WORK}/pictures" "${PANEL}"
  WORKING_DIRECTORY "${WORK}"
  RESULT_VARIABLE status
  ERROR_VARIABLE messages
  TIMEOUT 120)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "zenta-panel ended with ${status}:\n${messages}")
endif()
foreach(picture main-collapsed main help version setup dataview eeview main-after
    fcounter logicview-failed)
  set(file "${WORK}/pictures/${picture}.png")
  if(NOT EXISTS "${file}")
    message(FATAL_ERROR "no ${picture}.png:\n${messages}")
  endif()
  file(SIZE "${file}" size)
  if(size EQUAL 0)
    message(FATAL_ERROR "${picture}.png is empty")
  endif()
endforeach()
