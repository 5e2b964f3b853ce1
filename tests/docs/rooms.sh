#!/usr/bin/env bash
# rooms.sh: the picture of the rooms, source and drawing, has every room of README.md's table, and the files that
# CONTRIBUTING.md names are there.
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/../../scripts/common.sh"
cd "$repo"

rooms=$(grep -E '^\| [0-9]+ \|' README.md | cut -d'|' -f3 | grep -oE '[a-z0-9_/]+/' | sed 's,/$,,')
[[ -n $rooms ]] || die "README.md has no table of rooms"
for room in $rooms; do
    if ! grep -qF "\"$room\"" docs/rooms.dot || ! grep -qF ">$room<" docs/rooms.svg; then
        die "docs/rooms.dot or .svg lacks $room"
    fi
done

grep -oE "\`[a-z0-9_/.-]+/[a-z0-9_.-]+\`" CONTRIBUTING.md | tr -d "\`" | while read -r path; do
    [[ -e $path || $path == build/* ]] || die "CONTRIBUTING.md names $path, which isn't there"
done
