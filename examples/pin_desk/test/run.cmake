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

# The desk's own session, in which clients are who name none: a login has one, a build machine mostly none.
file(WRITE "${WORK}/own.txt" "op=list")
run(-in "${WORK}/own.txt")
if(NOT output MATCHES "session ([0-9]+) ")
    message(FATAL_ERROR "The desk's own session is not told:\n${output}")
endif()
set(own ${CMAKE_MATCH_1})
set(requests "${WORK}/requests.txt")
configure_file("${FOLDER}/requests.txt" "${requests}" @ONLY)
set(no_file "The system cannot find the file") # in the platform's own words
if(NOT "${EMULATOR}" STREQUAL "")
    set(no_file "File not found")
endif()
set(help "-in <file>" "-in\t- File of requests in UTF-8, one on a line.")

file(READ "${FOLDER}/answers.txt" answers)
string(SUBSTRING "${own}       " 0 7 padded)
string(REPLACE "{own}" "${padded}" answers "${answers}")
foreach(key 0a0B 0A:0b)
    run(-in "${requests}" -key ${key})
    string(FIND "${output}" "\n28 requests: 13 done, 8 refused, 7 malformed\n" end)
    string(SUBSTRING "${output}" 0 ${end} printed)
    if(NOT code EQUAL 0 OR NOT printed STREQUAL answers)
        message(SEND_ERROR "The answers (exit code ${code}) are not those of answers.txt:\n${output}")
    endif()
    expect("the summary" CODE 0 TEXTS "   21 requests,  61.9% done, 3 cards, 0 blocked\n"
           "no session         7 malformed lines\n3 cards, 0 blocked\naudit digest " "==\n1 session opened, 1 closed\n")
    string(REGEX MATCH "audit digest [^\n]*" digest "${output}")
endforeach()

# Sessions of clients, where the platform gives tokens for them to a program like this one.
run(-in "${FOLDER}/sessions.txt")
if("${EMULATOR}" STREQUAL "")
    file(READ "${FOLDER}/sessions_answers.txt" answers)
    if(NOT code EQUAL 0 OR NOT output STREQUAL answers)
        message(SEND_ERROR "The answers (exit code ${code}) are not those of sessions_answers.txt:\n${output}")
    endif()
else()
    expect("no token for a session" CODE 0 TEXTS "refused  no serving this session: " "\n12 requests: 0 done, 12 refused"
           "\n0 sessions opened, 0 closed")
    foreach(task -serve -ask)
        run(${task} desk.sock)
        expect("${task} elsewhere" CODE 5 TEXTS "${task} is not there on this system")
    endforeach()
endif()

# Clients at a time, each with a thread; one who leaves makes room.
set(lines "")
foreach(client RANGE 1 65)
    string(APPEND lines "op=list client=${client}\n")
endforeach()
file(WRITE "${WORK}/crowd.txt" "${lines}op=leave client=9\nop=list client=65\n")
run(-in "${WORK}/crowd.txt")
expect("a crowd of clients" CODE 0 TEXTS "refused  too many clients" "\n67 requests: 66 done, 1 refused")

run(-QUIET -in "${requests}" -key 0a0b)
expect("-quiet leaves out what was done" CODE 0
       TEXTS "13  malformed: " "PIN wrong, blocked" "28 requests" NO_TEXTS "stored for" "PIN right")

run(-in "${requests}" -key 0a0b -quiet)
expect("the digest is over what is not printed, too" CODE 0 TEXTS "${digest}\n")
run(-in "${requests}" -key 0a0c -quiet)
expect("the digest is over the receipts, too" CODE 0 TEXTS "audit digest " NO_TEXTS "${digest}\n")

run(-in "${requests}" -limit 2 -tries 1)
expect("-limit ends the work" CODE 0 TEXTS "\n2 requests: 2 done" NO_TEXTS "K0")

run(-in "${requests}" -limit 1)
expect("one of a kind" CODE 0 TEXTS "\n1 request: 1 done" "1 request, 100.0% done, 1 card, 0 blocked\n1 card, 0 blocked\naudit digest "
       NO_TEXTS "no session")
run(-in "${requests}" -tries abc -tries 99)
expect("the last value counts" CODE 0)

# A command line that is refused: what is wrong stands before the help.
macro(expect_refusal reason)
    run(${ARGN})
    expect("${ARGN}" CODE 2 TEXTS "${reason}" ".\n\nUsage:" ${help} NO_TEXTS "stored for")
endmacro()

expect_refusal("-in is missing")
expect_refusal("-in needs a value" -quiet -in)
expect_refusal("-tries needs a value" -in "${requests}" -tries)
expect_refusal("I don't know -frob" -in "${requests}" -frob)
expect_refusal("missing.txt cannot be read: ${no_file}" -in "${FOLDER}/missing.txt")
expect_refusal("cannot be read: it is a directory" -in "${FOLDER}")
foreach(tries 0 100 -1 +3 0x2 abc 4294967299)
    expect_refusal("-tries takes a number from 1 to 99" -in "${requests}" -tries ${tries})
endforeach()
foreach(limit abc -1 1x 1234567890)
    expect_refusal("-limit takes a number of up to 9 digits" -in "${requests}" -limit ${limit})
endforeach()
foreach(key zz 0a1 0a:1 0a: :0a 0a::1b 0a-1b)
    expect_refusal("-key takes pairs of hexadecimal digits" -in "${requests}" -key ${key})
endforeach()
foreach(seconds 1x 1234567 -in)
    expect_refusal("-guard takes a name and a number of up to 6 digits" -guard x ${seconds})
endforeach()
expect_refusal("-guard takes a name and a number of up to 6 digits" -guard x)
expect_refusal("-guard needs a value" -guard)
expect_refusal("-wait takes a number of up to 6 digits" -watch x -wait 1234567)
foreach(seconds 1x 1234567)
    expect_refusal("-expire takes a number of up to 6 digits" -in "${requests}" -expire ${seconds})
endforeach()
foreach(seconds 0 1x 1234567)
    expect_refusal("-idle takes a number from 1 to 999999" -serve x -idle ${seconds})
endforeach()
expect_refusal("-serve and -ask are two tasks" -ask x -serve x)
expect_refusal("-in and -guard are two tasks" -guard x 1 -in "${requests}")
expect_refusal("-set takes expire=0 to expire=999999, or tries=1 to tries=99" -set colour=3)
run(-policy)
expect("the policy is listed" CODE 0)
foreach(option -help --help)
    run(${option})
    expect("the help is asked for" CODE 0 TEXTS ${help})
endforeach()
run(--version)
expect("the version is asked for" CODE 0 TEXTS "qnLib ${VERSION}")

# Processes alone with a named event; three_processes.sh shows them together.
run(-signal "pin_desk: nobody watches")
expect("there is no event to signal" CODE 5 TEXTS "nobody watches: cannot be signalled: ${no_file}\n")
run(-watch "folder\\\\name" -wait 1) # a macro's arguments are read twice
expect("no name of an event" CODE 5 TEXTS "folder\\name: cannot be watched: ")
run(-guard "pin_desk: the guard" 9 -guard "pin_desk: a guard" 0)
expect("the last -guard counts" CODE 0 TEXTS "a guard: guarding\n" "a guard: the guard leaves\n" NO_TEXTS "the guard: ")

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

# Names are shown to others, so nothing in them may steer a terminal.
string(ASCII 27 escape)
file(WRITE "${WORK}/steering.txt" "op=store card=1 owner=A${escape}[2J pin=1234\nop=store card=1 owner=B pin=1234\n")
run(-in "${WORK}/steering.txt")
expect("a name with a control character" CODE 0 TEXTS "1  malformed: " "a name of up to 60 characters"
       "stored for B")

# Dates of requests and stamps in the user's locale.
file(WRITE "${WORK}/dates.txt" "op=store card=1 owner=A pin=1234 until=31.12.2099 18:00\nop=show card=1\n"
     "op=store card=2 owner=B pin=1234 until=1.5.2001\nop=check card=2 pin=1234\n"
     "op=store card=3 owner=C pin=1234 until=tomorrow\nop=check card=1 pin=1234 until=1.5.2099")
foreach(locale 0x419 1049)
    run(-in "${WORK}/dates.txt" -locale ${locale})
    expect("dates in Russian" CODE 0
           TEXTS "until 31.12.2099 18:00:00" "the card has expired" "malformed: until is not a date"
                 "malformed: check takes no until" "done     stored for A")
    if(NOT output MATCHES "^[0-9][0-9]\\.[0-9][0-9]\\.20[0-9][0-9] [0-9][0-9]:[0-9][0-9]:[0-9][0-9]  +1  ")
        message(SEND_ERROR "The first line has no stamp in Russian:\n${output}")
    endif()
endforeach()

# Local times, in a zone 5:30 ahead: three hours from now by the system's clock are long over there.
function(write_Time shift format variable) # seconds from now
    string(TIMESTAMP now "%s" UTC)
    math(EXPR now "${now} + ${shift}")
    set(ENV{SOURCE_DATE_EPOCH} ${now}) # the time that is written instead of the present one
    string(TIMESTAMP text "${format}" UTC)
    unset(ENV{SOURCE_DATE_EPOCH})
    set(${variable} "${text}" PARENT_SCOPE)
endfunction()

write_Time(10800 "%d.%m.%Y %H:%M:30" later)
file(WRITE "${WORK}/local.txt" "op=store card=1 owner=A pin=1234 until=${later}\nop=show card=1\nop=check card=1 pin=1234\n"
     "op=store card=2 owner=B pin=1234 until=31.12.1500\nop=check card=2 pin=1234\n"
     "op=store card=3 owner=C pin=1234 until=0:00\nop=store card=4 owner=D pin=1234 until=30.12.1899")
set(ENV{TZ} "EAST-5:30")
foreach(ahead 0 19800)
    set(option "")
    set(texts "PIN right" "the card has expired") # the second card's
    if(ahead)
        set(option -local)
        set(texts "4  malformed: until is not a date" "no such card")
    endif()
    write_Time(${ahead} "%d.%m.%Y %H:%M" before)
    run(-in "${WORK}/local.txt" -locale 0x419 ${option})
    write_Time(${ahead} "%d.%m.%Y %H:%M" after)
    expect("dates in a zone 5:30 ahead ${option}" CODE 0
           TEXTS "until ${later}\n" "6  malformed: until is not a date" "7  malformed: until is not a date" ${texts})
    if(NOT output MATCHES "^(${before}|${after}):")
        message(SEND_ERROR "The first line's stamp is not ${before}, ${option}:\n${output}")
    endif()
    string(REGEX MATCHALL "the card has expired" expired "${output}")
    list(LENGTH expired count) # the second card by the system's time, the first one by local time
    if(NOT count EQUAL 1)
        message(SEND_ERROR "${count} cards have expired, ${option}:\n${output}")
    endif()
endforeach()
unset(ENV{TZ})
foreach(locale abc 0xFC09 0x 0x41G -1 0x123456789)
    expect_refusal("-locale takes the identifier of a locale" -in "${requests}" -locale ${locale})
endforeach()
