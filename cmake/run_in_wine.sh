#!/bin/sh
# Runs a Windows program by Wine: run_in_wine.sh LOADER PROGRAM [ARGUMENTS]. The services that Wine starts
# beside the first program inherit its output and outlive it, so the output goes through a file: whoever reads
# ours would else wait for them.
output=$(mktemp) || exit 1
trap 'rm -f "$output"' EXIT
"$@" >"$output" 2>&1 </dev/null
status=$?
cat "$output"
exit $status
