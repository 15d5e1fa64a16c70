#!/usr/bin/env bash
# Linux: the C and C++ runtimes take wchar_t for 32 bits, so nothing built here may call their wide functions.
# Arguments: modules and object files. Prints each undefined symbol of that family and exits with 1.
set -euo pipefail

c_names='(wcs|wmem|wcp)[a-z]+(_l)?|v?[fs]?w(printf|scanf)|v?sn?wprintf|mbs(n)?(r)?towcs|wcs(n)?rtombs|mbr?towc|wcr?tomb|f?(get|put)wc|(get|put)wchar|f(get|put)ws|wcs?width|ungetwc|fwide|btowc|wctob|open_wmemstream'
cxx_names='std::.*(basic_string|basic_string_view|char_traits|basic_[io]*stream|basic_.*buf|ctype|codecvt|collate|num_[a-z]*|money[a-z_]*|time_[a-z]*|messages|numpunct|__[a-z_]*)(_byname)?<wchar_t|std::wc(out|in|err|log)'

[ $# -gt 0 ] || { echo "wide symbols: no modules to check"; exit 1; }
status=0
for module in "$@"; do
    case "$module" in
    *.o) dynamic= ;;
    *) dynamic=-D ;;
    esac
    found=$(nm $dynamic --undefined-only "$module" | awk '{ print $NF }' | sed 's/@.*//' | c++filt |
            grep -xE "(__|__isoc[0-9]+_)?($c_names)(_chk)?|.*($cxx_names).*" || true)
    if [ -n "$found" ]; then
        echo "$module calls wide functions of the runtime:" $found
        status=1
    fi
done
echo "wide symbols: $# modules and objects"
exit $status
