#!/usr/bin/env bash
# subproject.sh FOLDER: configures the project as a part of another, and looks at what its compiler and linker would get.
here=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
source "$here/../../scripts/common.sh"
source "$here/flags.sh"

tree=$1
rm -rf -- "$tree"
quietly cmake -S "$here/consumer" -B "$tree" -G Ninja

compiled=$(commands "$tree" examples/CMakeFiles/sign_dump.dir/sign_dump.cpp.o)
holds "$compiled" '-std=(gnu|c)\+\+20'
holds "$compiled" "-I$repo( |$)"
lacks "$compiled" "$ours"
linked=$(commands "$tree" examples/sign_dump)
holds "$linked" 'libbackup_sign_lib.a .*libbrask_runtime.a'
lacks "$linked" "$ours"
holds "$(commands "$tree" _deps/brask-build/lib/runtime/CMakeFiles/brask_runtime.dir/bsa_conf.cpp.o)" '-Wextra .*FORTIFY'

# Nothing of ours is installed, and only the libraries are built.
lacks "$(cat "$tree/_deps/brask-build/cmake_install.cmake")" 'file\(INSTALL'
lacks "$(ninja -C "$tree" -t targets all)" '^_deps/brask-build/(bin/|.*gtest)'
