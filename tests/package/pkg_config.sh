# Builds and runs the outside client with the flags that qnlib.pc gives.
# Arguments: pkg-config, compiler, library folder of the installed tree, source, folder to build in.
set -eu
flags=$(PKG_CONFIG_PATH="$3/pkgconfig" "$1" --cflags --libs qnlib)
mkdir -p "$5"
"$2" -std=c++20 "$4" $flags -Wl,-rpath,"$3" -o "$5/client_by_pkg_config"
"$5/client_by_pkg_config"
