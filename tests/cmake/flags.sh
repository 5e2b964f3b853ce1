# shellcheck shell=bash
# What a build would do, for the tests that look at flags; sourced, not run.

# What of our own flags may not reach others.
# shellcheck disable=SC2034 # for whoever sources this
ours='-W(all|extra|no-)|-fstack-protector|FORTIFY|-prefix-map|relro|-z,now|as-needed'

# commands FOLDER OUTPUT: the command that makes one file of a build folder.
commands() {
    ninja -C "$1" -t commands -s "$2"
}

# holds TEXT PATTERN
holds() {
    grep -qE -e "$2" <<<"$1" || die "expected $2 in $1"
}

# lacks TEXT PATTERN
lacks() {
    ! grep -E -e "$2" <<<"$1" || die "expected no $2 in $1"
}
