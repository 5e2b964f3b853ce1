#!/usr/bin/env bash
# site_paths.sh FOLDER: configures one build folder in turn as either kind of build.
source "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/../../scripts/common.sh"

tree=$1
root=$tree/standalone
rm -rf -- "$tree"

# expect TEXT ARGUMENT…: what CMake says with these arguments holds the text, its line breaks aside.
expect() {
    local said
    said=$(cmake -S "$repo/tests/cmake/site_paths" -B "$tree" "${@:2}" 2>&1 | tr -s '\n ' ' ') || true
    [[ $said == *"$1"* ]] || die "with ${*:2}: expected '$1' in '$said'"
}

server='paths /etc/bsa/bsa.conf /opt/bsa /var/kestrelia/feedback-disabled '
standalone="paths $root/etc/bsa/bsa.conf $root/opt/bsa $root/var/kestrelia/feedback-disabled "
expect "$server"
expect "$standalone" -DBRASK_STANDALONE=ON
expect 'writes below' -DBRASK_PRODUCT_ROOT=/opt/bsa
expect 'writes below' -DBRASK_PRODUCT_ROOT="$root/../../x"
expect "$standalone" -UBRASK_PRODUCT_ROOT
expect "$server" -DBRASK_STANDALONE=OFF
expect 'must be an absolute path' -DBRASK_CONF_FILE=etc/bsa.conf
expect 'paths /srv/bsa.conf /opt/bsa ' -DBRASK_CONF_FILE=/srv/bsa.conf
expect 'is in the build folder' -DBRASK_CONF_FILE="$root/etc/bsa/bsa.conf"
