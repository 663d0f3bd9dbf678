# SPDX-License-Identifier: Apache-2.0
# run(<command>...): if the command fails, fails the test with the command's output; otherwise its
# standard output is in `output`.
macro(run)
  execute_process(
    COMMAND ${ARGN}
    RESULT_VARIABLE result
    OUTPUT_VARIABLE output
    ERROR_VARIABLE errors)
  if(NOT result EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "${command}\nfailed: ${result}\n${output}\n${errors}")
  endif()
endmacro()

# expect_equal(<what> <value> <expected>)
function(expect_equal what value expected)
  if(NOT value STREQUAL expected)
    message(FATAL_ERROR "${what}: expected\n${expected}\nbut got\n${value}")
  endif()
endfunction()
