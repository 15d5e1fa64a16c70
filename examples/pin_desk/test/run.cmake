# Runs the program as its users do: cmake -DPROGRAM=... -DFOLDER=<this folder> -P run.cmake
# EMULATOR is what the program of another system runs in, WORK a folder to write to.
string(REPLACE "|" ";" EMULATOR "${EMULATOR}")

# Leaves the exit code in `code` and the output, with plain line ends, in `output`.
macro(run)
    execute_process(COMMAND ${EMULATOR} "${PROGRAM}" ${ARGN} RESULT_VARIABLE code OUTPUT_VARIABLE output
                    ERROR_VARIABLE output)
    string(REPLACE "\r" "" output "${output}")
endmacro()

function(expect what)
    cmake_parse_arguments(PARSE_ARGV 1 wanted "" "CODE" "TEXTS;NO_TEXTS")
    if(NOT code EQUAL wanted_CODE)
        message(SEND_ERROR "${what}: exit code ${code}, not ${wanted_CODE}; the output:\n${output}")
    endif()
    foreach(text IN LISTS wanted_TEXTS)
        string(FIND "${output}" "${text}" position)
        if(position EQUAL -1)
            message(SEND_ERROR "${what}: \"${text}\" is missing in the output:\n${output}")
        endif()
    endforeach()
    foreach(text IN LISTS wanted_NO_TEXTS)
        string(FIND "${output}" "${text}" position)
        if(NOT position EQUAL -1)
            message(SEND_ERROR "${what}: \"${text}\" is in the output:\n${output}")
        endif()
    endforeach()
endfunction()

set(requests "${FOLDER}/requests.txt")
set(help "-in <file>" "-in\t- File of requests in UTF-8, one on a line.")

run(-in "${requests}" -key 0a0B)
file(READ "${FOLDER}/answers.txt" answers)
if(NOT code EQUAL 0 OR NOT output STREQUAL answers)
    message(SEND_ERROR "The answers (exit code ${code}) are not those of answers.txt:\n${output}")
endif()

run(-QUIET -in "${requests}")
expect("-quiet leaves out what was done" CODE 0
       TEXTS "13  malformed: " "PIN wrong, blocked" "28 requests" NO_TEXTS "stored for" "PIN right")

run(-in "${requests}" -limit 0x2 -tries 1)
expect("-limit ends the work" CODE 0 TEXTS "\n2 requests: 2 done" NO_TEXTS "K0")

run()
expect("no file is named" CODE 2 TEXTS ${help})
run(-in "${FOLDER}/missing.txt")
expect("the file is missing" CODE 2 TEXTS ${help} "missing.txt cannot be read.")
run(-in "${FOLDER}")
expect("the file is a folder" CODE 2 TEXTS ${help} "cannot be read.")
run(-in "${requests}" -unknown)
expect("a parameter is unknown" CODE 2 TEXTS ${help} NO_TEXTS "stored for")
run(-in "${requests}" -tries 0)
expect("no try is allowed" CODE 2 TEXTS ${help})
run(-help)
expect("the help is asked for" CODE 0 TEXTS ${help})
run(--version)
expect("the version is asked for" CODE 0 TEXTS "qnLib ${VERSION}")

# A line that is too long and one that isn't UTF-8; Wine's file names follow the locale, so only here by name.
string(REPEAT "x" 70000 long)
file(WRITE "${WORK}/faulty.txt" "op=list\r\n${long}\nop=list owner=")
execute_process(COMMAND printf "\\374\\nop=list owner=\\0\\nop=list" OUTPUT_FILE "${WORK}/tail.txt")
execute_process(COMMAND cat "${WORK}/faulty.txt" "${WORK}/tail.txt" OUTPUT_FILE "${WORK}/Zürich Анна.txt")
if("${EMULATOR}" STREQUAL "")
    run(-in "${WORK}/Zürich Анна.txt")
    expect("lines that cannot be read as text" CODE 0
           TEXTS "2  malformed: the line is longer" "3  malformed: the line is not UTF-8"
                 "4  malformed: the line is not UTF-8" "    5  " "5 requests: 2 done")
endif()
