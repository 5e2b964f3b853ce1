#!/usr/bin/env bash
# A machine that dumps are copied to: dumpsig, and the public key of the server.
source "$(dirname -- "$0")/checks.sh"

# anybody COMMAND…: as an ordinary user.
anybody() {
    setpriv --reuid=nobody --regid=nogroup --clear-groups "$@"
}

cd /srv/dump || exit
apt-get update -qq
check "dumpsig installs by itself" add /root/scenes/dumpsig_*.deb
check "and brings nothing of the others along" ends 1 sh -c 'dpkg-query -W "backup-sign*" "libbrask*" 2>/dev/null | grep .'
check "an ordinary user verifies with the public key alone" \
    prints '^intact' anybody dumpsig verify -k bu_pubkey.txt dump.1 dump.2
printf X | dd of=dump.2 bs=1 seek=1000 conv=notrunc status=none
check "damage is seen" ends 1 anybody dumpsig verify -k bu_pubkey.txt dump.1 dump.2
add man-db bash-completion >/dev/null 2>&1
check "man dumpsig opens" prints '^NAME' man dumpsig
for path in $(man dumpsig | grep -oE '/usr/share/doc/[a-z/-]+\.md' | sort -u); do
    check "$path, of the manual, is there" test -s "$path"
done
check "Tab completes" prints 'SHA256:' types 'dumpsig fing\tbu_\t\n'
