#!/usr/bin/env bash
# subproject.sh FOLDER: configures the project as a part of another, and looks at what its compiler and linker would get.
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/../../scripts/common.sh"

tree=$1
rm -rf -- "$tree"
quietly cmake -S "$repo/tests/cmake/consumer" -B "$tree" -G Ninja

# flags OUTPUT: all that the rule for one output says.
flags() {
    ninja -C "$tree" -t commands -s "$1"
}
# holds TEXT PATTERN; lacks TEXT PATTERN
holds() {
    grep -qE -e "$2" <<<"$1" || die "expected $2 in $1"
}
lacks() {
    ! grep -E -e "$2" <<<"$1" || die "expected no $2 in $1"
}

ours='-W(all|extra|no-)|-fstack-protector|FORTIFY|-prefix-map|relro|-z,now|as-needed'
compiled=$(flags CMakeFiles/consumer.dir/consumer.cpp.o)
holds "$compiled" '-std=(gnu|c)\+\+20'
holds "$compiled" "-I$repo( |$)"
lacks "$compiled" "$ours"
linked=$(flags consumer)
holds "$linked" 'libbackup_sign_lib.a .*libbrask_runtime.a'
lacks "$linked" "$ours"
holds "$(flags brask/lib/runtime/CMakeFiles/brask_runtime.dir/bsa_conf.cpp.o)" '-Wextra .*FORTIFY'

# Nothing of ours is installed, and only the libraries are built.
lacks "$(cat "$tree/brask/cmake_install.cmake")" 'file\(INSTALL'
lacks "$(ninja -C "$tree" -t targets all)" '^brask/(bin/|.*gtest)'
