#!/usr/bin/python3
"""make.py FOLDER: fills a new folder with whatever a walk may stumble over.

  names/       bytes that are no UTF-8, names of 255 bytes, newlines, blanks and dots at the end,
               twins that differ in case or in their normal form
  links/       loops, links to ancestors, siblings, nothing and each other: 2^40 ways through 40 folders
  special/     a pipe, a socket and, for root, a device
  nested/      2000 folders in each other, longer than any path that the kernel takes
  unreadable/  a folder that nobody but root can read
  outside/     what links lead to

Removed like any tree: `rm -rf` after `chmod -R u+rwx`.
"""
import os
import socket
import stat
import sys

NESTED = 2000
NAMES = [
    b"plain.txt", b"\xff\xfe no utf-8", b"half \xc3", b"over\xc0\xaflong", b"\xed\xa0\x80 surrogate",
    b"a" * 255, "\u00e9".encode() * 127 + b"x", b"line\nbreak", b"tab\tand\rreturn", b"\x01\x7f",
    b"dot.", b"dots...", b"blank ", b" blank", b"...", b"-rf", b"~", b"~root", b"%s%n%@", b"back\\slash", b"a:b*?\"<>|",
    "\u00e9".encode(), "e\u0301".encode(), b"Twin", b"TWIN", b"twin", b"QuillboxCopyFile.tmp.not",
]


def make(root):
    os.mkdir(b"names")
    for name in NAMES:
        with open(b"names/" + name, "wb") as file:
            file.write(b"x")

    os.mkdir("outside")
    with open("outside/kept", "wb") as file:
        file.write(b"outside")
    os.mkdir("links")
    for name, target in (("self", "self"), ("here", "."), ("up", ".."), ("root", root), ("slash", "/"), ("a", "b"), ("b", "a"),
                         ("nothing", "no such thing"), ("through", "plain/x"), ("file", "../names/plain.txt"),
                         ("sibling", "../outside"), ("empty-way", "././."), ("long", "../links/" * 400)):
        os.symlink(target, "links/" + name)
    # Each folder has two links to the next: every walk that follows them takes 2^40 ways.
    for i in range(40):
        os.mkdir("links/%d" % i)
        for side in ("left", "right"):
            os.symlink("../%d" % ((i + 1) % 40), "links/%d/%s" % (i, side))
    for i in range(45):
        os.symlink("chain%d" % (i + 1), "links/chain%d" % i)
    os.symlink("../outside", "links/chain45")

    os.mkdir("special")
    os.mkfifo("special/pipe")
    folder = os.getcwd()
    os.chdir("special")
    socket.socket(socket.AF_UNIX).bind("socket")
    os.chdir(folder)
    try:
        os.mknod("special/device", 0o600 | stat.S_IFCHR, os.makedev(1, 3))
    except OSError:
        pass  # only root may

    os.mkdir("unreadable")
    with open("unreadable/kept", "wb") as file:
        file.write(b"x")
    os.chmod("unreadable", 0)

    os.mkdir("nested")
    os.chdir("nested")
    for i in range(NESTED):
        os.mkdir("folder %04d" % i)
        with open("zlast", "wb") as file:
            file.write(b"x")
        os.chdir("folder %04d" % i)


if __name__ == "__main__":
    os.makedirs(sys.argv[1], exist_ok=True)
    os.chdir(sys.argv[1])
    make(os.getcwd())
