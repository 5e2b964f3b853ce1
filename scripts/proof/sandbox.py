"""A worker's own tree: a product root, a dump, a session folder. Reset before each case, looked at after it."""

import ctypes
import os
import shutil
import subprocess
import tempfile
from pathlib import Path

from keys import Pair

PAGE = 4096
ARCHIVED = "pair.pem.20240229T235959.000000Z"
FILLER = ".filler"  # so that no file system has the size 0, which means no limit
CLONE_NEWNS = 0x00020000
CLONE_NEWUSER = 0x10000000
MS_BIND = 4096
MS_REMOUNT = 32
MS_REC_PRIVATE = 16384 | 1 << 18
PR_SET_CHILD_SUBREAPER = 36

libc = ctypes.CDLL(None, use_errno=True)


def checked(result):
    if result != 0:
        raise OSError(ctypes.get_errno(), os.strerror(ctypes.get_errno()))


def mount(source, target, kind, flags, options=None):
    encode = lambda text: None if text is None else str(text).encode()
    checked(libc.mount(encode(source), encode(target), encode(kind), flags, encode(options)))


def unmount(target):
    checked(libc.umount2(str(target).encode(), 0))


def become_subreaper():
    """Makes this process the parent of every orphan below it, so that none gets away unseen."""
    checked(libc.prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0))


def enter_own_mounts():
    """Gives this process mounts of its own: as root, or as the root of a user namespace. Raises OSError."""
    uid, gid = os.getuid(), os.getgid()
    checked(libc.unshare(CLONE_NEWNS if uid == 0 else CLONE_NEWNS | CLONE_NEWUSER))
    if uid != 0:
        Path("/proc/self/setgroups").write_text("deny")
        Path("/proc/self/uid_map").write_text(f"{uid} {uid} 1")
        Path("/proc/self/gid_map").write_text(f"{gid} {gid} 1")
    mount("none", "/", None, MS_REC_PRIVATE)


def can_have_own_mounts():
    child = os.fork()
    if child != 0:
        return os.waitpid(child, 0)[1] == 0
    try:
        enter_own_mounts()
        os._exit(0)
    except OSError:
        os._exit(1)


class Build:
    """A standalone build, whose site paths nobody has chosen."""

    def __init__(self, folder):
        self.folder = Path(folder).resolve()
        self.product_root = self.folder / "standalone/opt/bsa"
        self.kept_product = self.product_root.with_name(self.product_root.name + ".kept")
        self.tool = self.folder / "bin/backup_sign"


class Sandbox:
    """`own_mounts`: only this process sees the product tree that it works on. Otherwise put_back() has to be called
    at the end, which gives the build its own one back."""

    def __init__(self, build, home, own_mounts):
        self.build = build
        self.own_mounts = own_mounts
        self.root = Path(tempfile.mkdtemp(dir=home))
        self.product = build.product_root
        self.dump = self.root / "dump"
        self.session = self.root / "session"
        self.custom = self.root / "custom"
        self.temp = self.root / "tmp"
        self.var = self.product / "var"
        self.store = self.var / "backup_certificate"
        self.pair_file = self.store / "pair.pem"
        self.published = self.product / "admin/htdocs/bu_pubkey.txt"
        self.helper = self.product / "admin/bin/backup_restore_helper"
        self.real_helper = self.product / "admin/bin/real_helper"
        self.trace = self.root / "trace"
        self.volumes = [self.dump / "volume.1", self.dump / "volume.2"]
        self.env = {"PATH": "/usr/bin:/bin", "LC_ALL": "C", "TMPDIR": str(self.temp)}
        self._lay_out()
        self._make_samples()

    def _lay_out(self):
        for folder in (self.dump, self.custom, self.temp):
            folder.mkdir()
        if self.own_mounts:
            self._cover_product()
            # The panel's group is there on every server with a panel.
            self._cover(Path("/etc/group"), Path("/etc/group").read_text() + "bsaadm:x:64999:\n")
            if Path("/etc/nsswitch.conf").exists():
                self._cover(Path("/etc/nsswitch.conf"), "passwd: files\ngroup: files\n")
        else:
            self._replace_product()
        for folder in (self.var, self.published.parent):
            empty(folder)
        self.helper.rename(self.real_helper)

    def _cover_product(self):
        copy = self.root / "product"
        shutil.copytree(self.product, copy)
        mount(copy, self.product, None, MS_BIND)

    def _cover(self, path, text):
        cover = self.root / f"cover.{path.name}"
        cover.write_text(text)
        mount(cover, path, None, MS_BIND)

    def _replace_product(self):
        self.put_back(self.build)  # a run that was killed may have left its own tree
        shutil.copytree(self.product, self.root / "product")
        self.product.rename(self.build.kept_product)
        shutil.move(self.root / "product", self.product)

    @staticmethod
    def put_back(build):
        if build.kept_product.exists():
            shutil.rmtree(build.product_root)
            build.kept_product.rename(build.product_root)

    def _make_samples(self):
        """Two pairs, as the tool makes them, and a dump that is signed with the first one."""
        # Two whole blocks and a rest, so that the stream is read in more than one way; the last page of the last
        # volume has room for a part of a document.
        self.contents = [os.urandom(2100000), os.urandom(17 * PAGE - 600)]
        self.set_helper("")
        self.write_dump(self.contents)
        self.command("--generate")
        self.other_pair_text = self.pair_file.read_bytes()
        self.command("--generate")
        self.pair_text = self.pair_file.read_bytes()
        self.published_text = self.published.read_bytes()
        self.pair, self.other_pair = Pair(self.pair_text), Pair(self.other_pair_text)
        self.command("--sign-dump", *self.volumes)
        self.signed = [volume.read_bytes() for volume in self.volumes]
        first = bytearray(self.contents[0])
        first[1234567] ^= 1
        self.changed = [bytes(first), self.signed[1]]

    def command(self, *arguments):
        """Runs the tool undisturbed and insists on its success."""
        subprocess.run([self.build.tool, *arguments], env=self.env, cwd=self.root, check=True, timeout=60)

    def set_helper(self, prefix):
        """Puts a script in the helper's place that runs `prefix` and then becomes the real helper."""
        self.helper.write_text(f'#!/bin/sh\n{prefix}\nexec {self.real_helper} "$@"\n')
        self.helper.chmod(0o755)

    def write_dump(self, contents):
        self.dump_before = contents
        for volume, content in zip(self.volumes, contents):
            volume.write_bytes(content)

    def read_dump(self):
        return [volume.read_bytes() for volume in self.volumes]

    def reset(self, dump, stored, archived=False):
        """The state before a run: this dump, with or without a stored and an archived pair, no session, no logs."""
        for folder in (self.var, self.custom, self.temp, self.session):
            empty(folder)
        if self.session.exists():
            self.session.rmdir()
        self.published.write_bytes(self.published_text)
        if stored:
            self.store.mkdir(mode=0o700)
            self._store(self.pair_file, self.pair_text)
        if archived:
            self._store(self.store / ARCHIVED, self.other_pair_text)
        self.write_dump(dump)

    @staticmethod
    def _store(path, text):
        path.touch(mode=0o600)
        path.write_bytes(text)

    def files(self):
        """Every file that a run can have left."""
        found = []
        for top in (self.dump, self.session, self.custom, self.temp, self.var, self.published.parent,
                    self.product / "BMM"):
            for folder, _, names in os.walk(top):
                found += [Path(folder, name) for name in names if name != FILLER]
        return found


def empty(folder):
    if not folder.exists():
        return
    for entry in os.scandir(folder):
        if entry.is_dir(follow_symlinks=False):
            shutil.rmtree(entry.path)
        else:
            os.unlink(entry.path)
