#!/usr/bin/env bash
# Prints what a shared module exports, demangled and sorted: the form of cmake/exports.txt.
set -euo pipefail
nm -D --defined-only "$1" | awk '{ print $NF }' | sed 's/@.*//' | c++filt | LC_ALL=C sort -u
