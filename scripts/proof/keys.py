"""RSA key pairs and signed dumps, read without the libraries of the program under test."""

import base64
import hashlib
import re
from functools import lru_cache

MARKER = b"<Signature xmlns="
DOCUMENT_END = b"</Signature>"
TAIL_RANGE = 4096
# The DER prefix of a SHA-1 DigestInfo (RFC 8017, 9.2).
SHA1_PREFIX = bytes.fromhex("3021300906052b0e03021a05000414")
PEM = re.compile(rb"-----BEGIN ([A-Z ]+)-----\n(.*?)-----END \1-----", re.S)


def der_integers(der):
    """The integers of a DER sequence, in order; nested values are left out."""
    def length_at(at):
        if der[at] < 0x80:
            return der[at], at + 1
        size = der[at] & 0x7F
        return int.from_bytes(der[at + 1 : at + 1 + size], "big"), at + 1 + size

    if der[0] != 0x30:
        raise ValueError("no DER sequence")
    length, at = length_at(1)
    end = at + length
    if end != len(der):
        raise ValueError("cut DER sequence")
    numbers = []
    while at < end:
        tag = der[at]
        length, at = length_at(at + 1)
        if tag == 2:
            numbers.append(int.from_bytes(der[at : at + length], "big"))
        at += length
    return numbers


class Pair:
    """A private and a public key that belong together. Raises ValueError for anything else."""

    def __init__(self, text):
        blocks = {label: base64.b64decode(body) for label, body in PEM.findall(text)}
        try:
            private = der_integers(blocks[b"RSA PRIVATE KEY"])
            public = der_integers(blocks[b"RSA PUBLIC KEY"])
        except (KeyError, IndexError) as fault:
            raise ValueError(f"not two keys: {fault}") from fault
        if len(private) != 9 or private[1:3] != public:
            raise ValueError("the keys do not belong together")
        self.modulus, self.exponent = public
        if pow(pow(2, private[3], self.modulus), self.exponent, self.modulus) != 2:
            raise ValueError("the private key does not sign")
        self.public_text = text[text.index(b"-----BEGIN RSA PUBLIC KEY-----") :].rstrip(b"\n") + b"\n"
        # What must never be seen anywhere else: the lines of the private key.
        private_text = text[: text.index(b"-----END RSA PRIVATE KEY-----")]
        self.secrets = [line for line in private_text.split(b"\n") if len(line) == 64]


@lru_cache(maxsize=64)
def pair_of(text):
    """The pair that a text holds, or None if it holds none."""
    try:
        return Pair(text)
    except (TypeError, ValueError):
        return None


def element(document, name):
    found = re.search(rb"<" + name + rb">([^<]*)</" + name + rb">", document)
    return base64.b64decode(found.group(1)) if found else b""


def verifies(volumes, pair):
    """Whether the dump, a list of bytes, carries the pair's signature as its tail."""
    last = volumes[-1]
    position = last.rfind(MARKER, max(0, len(last) - TAIL_RANGE))
    if position <= 0:
        return False
    document = last[position:]
    if not document.rstrip(b"\n").endswith(DOCUMENT_END):
        return False
    digest = hashlib.sha1(b"".join(volumes[:-1]) + last[:position]).digest()
    if element(document, b"DigestValue") != digest:
        return False
    size = (pair.modulus.bit_length() + 7) // 8
    signature = int.from_bytes(element(document, b"SignatureValue"), "big")
    opened = pow(signature, pair.exponent, pair.modulus).to_bytes(size, "big")
    padding = b"\xff" * (size - 3 - len(SHA1_PREFIX) - len(digest))
    return opened == b"\x00\x01" + padding + b"\x00" + SHA1_PREFIX + digest
