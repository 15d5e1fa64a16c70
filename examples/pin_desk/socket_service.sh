#!/usr/bin/env bash
# Shows pin_desk as a service on a local socket and its clients, who come and go. Every step begins as soon as
# the line before it is there.
#
#     socket_service.sh PROGRAM
set -euo pipefail

program=$1
limit=60 # seconds after which a line counts as missing
folder=$(mktemp -d)
socket=$folder/desk
declare -A process output input

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
    local shown="$*"
    shown=${shown//$folder\//}
    printf "%-6s $ %s\n" "$who" "${shown//$program/pin_desk}"
    mkfifo "$folder/$who.in" "$folder/$who.out"
    "$@" <"$folder/$who.in" >"$folder/$who.out" 2>&1 &
    process[$who]=$!
    exec {descriptor}>"$folder/$who.in"
    input[$who]=$descriptor
    exec {descriptor}<"$folder/$who.out"
    output[$who]=$descriptor
    rm "$folder/$who.in" "$folder/$who.out"
}
pin_desk() { exec "$program" "$@"; }

# In a login of its own, which is a session of its own.
new_login() { echo "$EUID" >/proc/self/loginuid && exec "$@"; }

# asks WHO LINE
asks() {
    printf '%-6s > %s\n' "$1" "$2"
    printf '%s\n' "$2" >&"${input[$1]}"
}

# says WHO TEXT: shows the lines of a process up to the one that has this text.
says() {
    local line=
    while IFS= read -r -t "$limit" -u "${output[$1]}" line; do
        line=${line//$folder\//}
        printf '%-6s | %s\n' "$1" "$line"
        [[ $line != *"$2"* ]] || return 0
    done
    echo "socket_service.sh: \"$2\" was expected" >&2
    exit 1
}

# ends WHO CODE: the process ends by itself with that exit code.
ends() {
    local code=0
    wait "${process[$1]}" 2>/dev/null || code=$?
    unset "process[$1]"
    [ "$code" = "$2" ] || {
        timeout 5 cat <&"${output[$1]}" >&2 || true # what it said last
        echo "socket_service.sh: $1 ended with $code and not with $2" >&2
        exit 1
    }
}

echo "A desk whose PINs are good for a second, and two clients of one session, who share a table."
start desk pin_desk -serve "$socket" -expire 1
says desk "the desk serves on desk"
start anna pin_desk -ask "$socket"
start ben pin_desk -ask "$socket"
asks anna "op=store card=0001 owner=Anna Ivanova pin=3441"
says anna "done: stored for Anna Ivanova"
asks ben "op=list"
says ben "done: 1 card: 0001"
says desk "the PIN of 0001 has expired"
asks anna "op=check card=0001 pin=3441"
says anna "refused: the PIN has expired"

echo
echo "Who a client is, the desk knows from the socket: nobody comes to another session's cards by what he says."
asks ben "op=list session=999999"
says ben "malformed: who asks is known from the socket"
if (new_login true) 2>/dev/null; then
    start clara new_login "$program" -ask "$socket"
    asks clara "op=show card=0001"
    says clara "refused: no such card"
    asks clara "op=leave"
    says clara "done: left as the last one"
    ends clara 0
else
    echo "(The system lets us begin no login here, so there is one session.)"
fi

echo
echo "The last client takes the table along. Who is still there at SIGTERM is told."
asks anna "op=leave"
says anna "done: left"
ends anna 0
echo "desk   $ kill -TERM"
kill -TERM "${process[desk]}"
says ben "# the desk closes"
ends ben 0
says desk "opened, "
ends desk 0
[ ! -e "$socket" ] || { echo "socket_service.sh: the socket is still there" >&2; exit 1; }
