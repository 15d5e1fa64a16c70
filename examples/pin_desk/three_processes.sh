#!/usr/bin/env bash
# Shows processes of pin_desk about one named event: one watches it, one signals it, and one stands guard over
# it and is killed. Every step begins as soon as the line before it is there.
#
#     three_processes.sh PROGRAM [ARGUMENT ...]      the program, behind what it runs in
set -euo pipefail

program=("$@")
name="door-$$" # another run beside this one has a door of its own
limit=60       # seconds after which a line counts as missing
folder=$(mktemp -d)
declare -A process lines

finish() {
    local who
    for who in "${!process[@]}"; do
        kill -9 "${process[$who]}" 2>/dev/null || true
    done
    rm -rf "$folder"
}
trap finish EXIT

# start WHO ARGUMENT ...: begins a process.
start() {
    local who=$1 descriptor
    shift
    printf '%-9s $ pin_desk %s\n' "$who" "${*//$name/door}"
    mkfifo "$folder/$who"
    "${program[@]}" "$@" >"$folder/$who" 2>&1 &
    process[$who]=$!
    exec {descriptor}<"$folder/$who"
    rm "$folder/$who"
    lines[$who]=$descriptor
}

# says WHO TEXT: shows the next line of a process, which has to be that one.
says() {
    local line=
    read -r -t "$limit" -u "${lines[$1]}" line || true
    line=${line%$'\r'}
    printf '%-9s | %s\n' "$1" "${line//$name/door}"
    [ "$line" = "$name: $2" ] || { echo "three_processes.sh: \"$2\" was expected" >&2; exit 1; }
}

# ends WHO CODE: the process ends by itself with that exit code.
ends() {
    local code=0
    wait "${process[$1]}" 2>/dev/null || code=$?
    unset "process[$1]"
    [ "$code" = "$2" ] || { echo "three_processes.sh: $1 ended with $code and not with $2" >&2; exit 1; }
}

echo "Two processes wait for the event \"door\"; a third one signals it."
start watcher -watch "$name"
says watcher "watching"
start second -watch "$name"
says second "watching"
start signaller -signal "$name"
says signaller "signal sent"
says watcher "signalled"
says second "signalled"
ends signaller 0
ends watcher 0
ends second 0

echo
echo "One waits; the one that stands guard over the event is killed."
start watcher -watch "$name"
says watcher "watching"
start second -watch "$name"
says second "watching"
start guard -guard "$name" 600
says guard "guarding"
says watcher "guarded"
says second "guarded"
echo "guard     $ kill -9"
{ kill -9 "${process[guard]}" && ends guard 137; } 2>/dev/null # the shell would tell of it, too
says watcher "abandoned by its owner"
says second "abandoned by its owner"
ends watcher 3
ends second 3

echo
echo "A guard that leaves in order is no alarm: the wait goes on, until somebody signals."
start watcher -watch "$name"
says watcher "watching"
start guard -guard "$name" 1
says guard "guarding"
says watcher "guarded"
says guard "the guard leaves"
says watcher "its guard has left"
start signaller -signal "$name"
says signaller "signal sent"
says watcher "signalled"
ends guard 0
ends signaller 0
ends watcher 0

echo
echo "Nobody signals at all."
start watcher -watch "$name" -wait 1
says watcher "watching"
says watcher "timed out"
ends watcher 4
