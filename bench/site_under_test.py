"""What is measured, and on what: the built programs, dumps, and a key of each kind."""

import os
import shutil
import subprocess
import tempfile
from functools import cached_property
from pathlib import Path

from measure import ENVIRONMENT

MIB = 1 << 20
PAGE = 4096


class Site:
    """Its files are in a folder beside the build, and gone at the end of the `with` that it is used in."""

    def __init__(self, build, quick):
        self.quick = quick
        self.size = (16 if quick else 1024) * MIB
        self.build = Path(build).resolve()
        product = self.build / "standalone/opt/bsa"
        self.tool = self.build / "bin/backup_sign"
        self.dumpsig = self.build / "bin/dumpsig"
        self.bare_loop = self.build / "bin/bare_loop"
        self.bare_start = self.build / "bin/bare_start"
        self.helper = product / "admin/bin/backup_restore_helper"
        self.public_key = product / "admin/htdocs/bu_pubkey.txt"

    def __enter__(self):
        self.work = Path(tempfile.mkdtemp(prefix="figures.", dir=self.build))
        self.gpg_home = Path(tempfile.mkdtemp())  # by a short name: it is part of a socket's
        return self

    def __exit__(self, *_):
        self.call("gpgconf", "--homedir", self.gpg_home, "--kill", "all")
        shutil.rmtree(self.gpg_home, ignore_errors=True)
        shutil.rmtree(self.work)

    def call(self, *argv, output=subprocess.DEVNULL, stdin=subprocess.DEVNULL):
        """Runs a command that is not measured."""
        done = subprocess.run(argv, env=ENVIRONMENT, cwd=self.work, stdin=stdin, stdout=output,
                              stderr=subprocess.PIPE, check=False)
        if done.returncode != 0:
            raise SystemExit(f"bench: failed: {' '.join(map(str, argv))}\n{done.stderr.decode(errors='replace')}")
        return done.stdout

    def content(self, size):
        """A dump, not signed. With its document it will be no longer than `size`, as signify takes no more than 1 GiB."""
        path = self.work / f"dump.{size}"
        if not path.exists():
            with open(path, "wb") as dump:
                for _ in range(0, size, MIB):
                    dump.write(os.urandom(min(size, MIB)))
                dump.flush()
                os.fsync(dump.fileno())  # or writing it back would run beside the first measurements
        os.truncate(path, size - PAGE)
        return path

    def signed(self, size):
        path = self.content(size)
        self.call(self.tool, "--sign-dump", path)
        return path

    @cached_property
    def key(self):
        """The private key of the pair that the tool signs with; its public key is beside it."""
        key = self.work / "key.pem"
        pair = self.call(self.tool, "--get-certificate", output=subprocess.PIPE)
        key.write_bytes(pair.split(b"\n\n")[0] + b"\n")
        self.call("openssl", "rsa", "-in", key, "-pubout", "-out", f"{key}.pub")
        return key

    def openssl_verify(self, path):
        """The words that verify a file as it is now."""
        signature = f"{path}.rsa"
        self.call("openssl", "dgst", "-sha1", "-sign", self.key, "-out", signature, path)
        return ("openssl", "dgst", "-sha1", "-verify", f"{self.key}.pub", "-signature", signature, path)

    def minisign_verify(self, path):
        secret, public, signature = self.work / "minisign.key", self.work / "minisign.pub", f"{path}.minisig"
        self.call("minisign", "-G", "-W", "-s", secret, "-p", public)
        self.call("minisign", "-S", "-s", secret, "-m", path, "-x", signature)
        return ("minisign", "-V", "-q", "-p", public, "-m", path, "-x", signature)

    def signify_verify(self, path):
        secret, public, signature = self.work / "signify.sec", self.work / "signify.pub", f"{path}.sig"
        self.call("signify-openbsd", "-G", "-n", "-s", secret, "-p", public)
        self.call("signify-openbsd", "-S", "-s", secret, "-m", path, "-x", signature)
        return ("signify-openbsd", "-V", "-q", "-p", public, "-m", path, "-x", signature)

    def gpg_verify(self, path):
        gpg, signature = ("gpg", "--homedir", self.gpg_home, "--batch", "--quiet"), f"{path}.gpg"
        self.call(*gpg, "--passphrase", "", "--quick-generate-key", "bench", "rsa3072", "sign", "never")
        self.call(*gpg, "--output", signature, "--detach-sign", path)
        self.call(*gpg, "--verify", signature, path)  # which also brings its database of trust up to date
        return (*gpg, "--verify", signature, path)
