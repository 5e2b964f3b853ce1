#!/usr/bin/env bash
# A machine with the library's package and a compiler.
source "$(dirname -- "$0")/checks.sh"


check "the library installs" add ./libbrask-dev_*.deb g++ cmake make pkg-config
cp -r /usr/share/doc/libbrask-dev/examples /srv && cd /srv/examples || exit
check "CMake builds the examples with it" sh -c 'cmake -B out && cmake --build out'
read -ra flags < <(pkg-config --cflags --libs brask)
check "pkg-config builds one" c++ -std=c++20 shared_records.cpp "${flags[@]}" -o records
check "which runs" prints '^a record$' sh -c './records file "a record" && cat file'
