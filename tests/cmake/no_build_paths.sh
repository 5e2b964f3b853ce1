#!/usr/bin/env bash
# no_build_paths.sh SOURCE_FOLDER BUILD_FOLDER PROGRAM…: only the site paths of a standalone build may be in a program.
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/../../scripts/common.sh"

for program in "${@:3}"; do
    grep -qF 'GLIBC' <(strings -a "$program") || die "$program can't be read"
    found=$(strings -a "$program" | grep -F -e "$1" -e "$2" -e ../ | grep -vF "$2/standalone/") || true
    [[ -z $found ]] || die "$program holds $found"
done
