#!/usr/bin/env bash
# installed_library.sh BUILD_FOLDER FOLDER: installs the library, builds the examples with it outside of the tree, by
# CMake and by pkg-config, and runs them. The libraries are those of a standalone build, and so is the product tree.
here=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
source "$here/../../scripts/common.sh"
source "$here/flags.sh"

build=$1
work=$2
rm -rf -- "$work"
mkdir -p "$work"
quietly cmake --install "$build" --component dev --prefix "$work/moved"
# An installation can be moved.
mv "$work/moved" "$work/prefix"
cp -r "$work/prefix/share/doc/libbrask-dev/examples" "$work/examples"
cd "$work"

quietly cmake -S examples -B out -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix"
lacks "$(ninja -C out -t commands)" "$ours|$repo/[^b]"
quietly cmake --build out --parallel "$(nproc)"

flags=$(PKG_CONFIG_PATH=$(dirname "$(find prefix -name brask.pc)") pkg-config --cflags --libs brask)
# shellcheck disable=SC2086 # a list of flags
quietly c++ -std=c++20 examples/shared_records.cpp $flags -o out/shared_records.pkg-config

# output_is TEXT COMMAND…: what a command prints.
output_is() {
    local output
    output=$("${@:2}") || true
    [[ $output == "$1" ]] || die "$2 printed '$output', not '$1'"
}

output_is '' out/shared_records records one 'the second'
output_is '' out/shared_records.pkg-config records three
output_is $'one\nthe second\nthree' cat records

((EUID == 0)) || exit 77 # only root may give files to the panel's account
printf '[transfer]\nparallel = 7\n' >settings.ini
output_is 'session/migration.log' out/session_log session settings.ini
for text in 'session_log started : ' 'is tried 3 times' '7 parallel transfers' 'Exit code: 0'; do
    holds "$(cat session/migration.log)" "$text"
done

output_is $'two words\n--- profile\n2' sh -c 'out/run_command profile echo "two words" | sed "s/^{.*/2/" | uniq'
output_is 'Execution of /bin/false failed with return code 1.' sh -c 'out/run_command profile /bin/false | head -n 1'

printf '%s' "<execution-result status='error'><object name='db' type='database'><message code='' severity='error'>" \
    '<description>Gone</description></message></object></execution-result>' >other.xml
output_is "$(cat "$here/record_run.expected")" sh -c 'out/record_run session other.xml | xmllint --format -'

printf 'a dump' >dump
output_is 'signed and verified' out/sign_dump dump
output_is 'FileNotFoundError' sh -c "out/sign_dump nothing | grep -o '^FileNotFoundError'"
