#!/usr/bin/env python3
"""Makes the archives of this folder: what a stranger may send under the name of a zip archive.

    ./make.py            writes them anew, always the same bytes

Each has a line in archives.txt: its name, and whether its good member has to come out ("good.txt" with
the text "good"), by bsdtar and by unzip. Archives are unpacked in sandbox/temporary/FOLDER; what they
reach for is sandbox/sentinel and /tmp/tav-hostile.
"""

import os
import struct
import zlib

HERE = os.path.dirname(os.path.abspath(__file__))
FILE, FOLDER, LINK = 0o100644, 0o40755, 0o120777
DATE, TIME = (2009 - 1980) << 9 | 6 << 5 | 15, 12 << 11
UNIX = 3 << 8 | 20
SENTINEL = b"../../sentinel"
ABSOLUTE = b"/tmp/tav-hostile"


class Entry:
    """A member; whatever its records are to say instead of the truth is given by name."""

    def __init__(self, name, data=b"", mode=FILE, method=0, **lies):
        self.name, self.data, self.mode, self.method = name, data, mode, method
        self.lies = lies

    def packed(self):
        if self.method == 8:
            compressor = zlib.compressobj(9, zlib.DEFLATED, -15)
            return compressor.compress(self.data) + compressor.flush()
        return self.lies.get("raw", self.data)

    def numbers(self, where):
        """CRC and both sizes, as the record says them."""
        def said(what, truth):
            return self.lies.get(where + "_" + what, self.lies.get(what, truth))
        return (said("crc", zlib.crc32(self.data)), said("packed_size", len(self.packed())),
                said("size", len(self.data)))

    def local(self):
        name = self.lies.get("local_name", self.name)
        extra = self.lies.get("extra", b"")
        flags = self.lies.get("local_flags", self.lies.get("flags", 0))
        header = struct.pack("<IHHHHHIIIHH", 0x04034B50, 20, flags, self.lies.get("local_method", self.method),
                             self.lies.get("time", TIME), self.lies.get("date", DATE), *self.numbers("local"),
                             len(name), self.lies.get("extra_length", len(extra)))
        return header + name + extra + self.packed() + self.lies.get("descriptor", b"")

    def central(self, offset):
        extra = self.lies.get("central_extra", self.lies.get("extra", b""))
        header = struct.pack("<IHHHHHHIIIHHHHHII", 0x02014B50, self.lies.get("made_by", UNIX), 20,
                             self.lies.get("flags", 0), self.method, self.lies.get("time", TIME),
                             self.lies.get("date", DATE), *self.numbers("central"), len(self.name), len(extra), 0, 0,
                             0, self.mode << 16 | (0x10 if self.mode & 0o170000 == 0o40000 else 0),
                             self.lies.get("offset", offset))
        return header + self.name + extra


def end(count, size, offset, comment=b"", comment_length=None):
    return struct.pack("<IHHHHIIH", 0x06054B50, 0, 0, count, count, size, offset,
                       len(comment) if comment_length is None else comment_length) + comment


def archive(*entries, comment=b"", before=b"", shared=False, **lies):
    """The bytes of a zip archive; with `shared` the central entries all name the first member's data."""
    body, central = before, b""
    for number, entry in enumerate(entries):
        offset = 0 if shared else len(body)
        if not shared or number == 0:
            body += entry.local()
        central += entry.central(offset)
    said = {"count": len(entries), "size": len(central), "offset": len(body), "comment": comment, **lies}
    return body + central + end(**said)


GOOD = Entry(b"good.txt", b"good\n")


def link(name, target, **lies):
    return Entry(name, target, LINK, **lies)


def folder(name, mode=FOLDER):
    return Entry(name + b"/", b"", mode)


def evil(name, **lies):
    return Entry(name, b"evil\n", **lies)


ARCHIVES = []


def add(name, content, bsdtar="good", unzip="good"):
    ARCHIVES.append(("%03d-%s.zip" % (len(ARCHIVES) + 1, name), content, bsdtar, unzip))


def zipped(name, *entries, bsdtar="good", unzip="good", **rest):
    add(name, archive(*entries, GOOD, **rest), bsdtar, unzip)


# Names that lead elsewhere.
zipped("absolute", evil(ABSOLUTE + b"/x"))
zipped("absolute-slashes", evil(b"//" + ABSOLUTE + b"/x"), evil(b"///tmp/tav-hostile"))
zipped("parent", evil(b"../evil"))
zipped("grandparent-replaces", evil(SENTINEL + b"/file"))
zipped("parent-behind-folder", evil(b"a/../../evil"), evil(b"a/b/../../../evil"))
zipped("parent-behind-dot", evil(b"./../evil"), evil(b".//..//evil"), evil(b"././.././evil"))
zipped("parent-itself", evil(b".."), evil(b"."), evil(b"./"))
zipped("parent-folder", folder(b".."), folder(b"../evil"), folder(b"."), folder(b"/"))
zipped("parent-at-the-end", evil(b"a/.."), evil(b"a/../.."), evil(b"b/."))
zipped("backslashes", evil(b"..\\..\\sentinel\\file"), evil(b"a\\..\\..\\..\\evil"))
zipped("backslashes-of-dos", evil(b"..\\..\\sentinel\\file", made_by=20), evil(b"..\\evil", made_by=11 << 8))
zipped("drive-letters", evil(b"C:\\evil"), evil(b"C:/evil"), evil(b"c:../evil"))
zipped("network-names", evil(b"\\\\server\\share\\evil"), evil(b"//server/share/evil"))
zipped("tilde", evil(b"~/evil"), evil(b"~root/evil"))
zipped("almost-dots", evil(b".../evil"), evil(b". ./evil"), evil(b".. /evil"), evil(b"..\t/evil"))
zipped("escaped-dots", evil(b"%2e%2e/evil"), evil(b"..%2fevil"), evil(b"\xc0\xae\xc0\xae/evil"),
       evil(b"\xc0\xae\xc0\xae\xc0\xafevil", flags=0x800))
zipped("wide-dots", evil("．．/evil".encode(), flags=0x800), evil("‥/evil".encode(), flags=0x800))
zipped("nul-in-names", evil(b"a\0/../../../evil"), evil(b"..\0/evil"), evil(b"\0../evil"), evil(b"b\0"))
zipped("no-name", evil(b""), evil(b"/"), evil(b"//"))
zipped("control-characters", evil(b"new\nline"), evil(b"\x1b[2J"), evil(b"\r\r"), evil(b"\x7f\x01"))
zipped("no-utf8", evil(b"\xff\xfe"), evil(b"\xff\xfd", flags=0x800), evil(b"\xed\xa0\x80", flags=0x800))
zipped("long-name", evil(b"n" * 255), evil(b"n" * 256), evil(b"n" * 5000))
zipped("deep", evil(b"a/" * 1500 + b"evil"))
zipped("options", evil(b"-rf"), evil(b"--help"), evil(b"-C"), evil(b"@evil"), evil(b"-d/x"))
zipped("patterns", evil(b"[x]*?"), evil(b"*"), evil(b"?"), evil(b"{a,b}"), evil(b"$(evil)"), evil(b"`evil`"))
zipped("other-name-in-extra-field",
       evil(b"harmless", extra=struct.pack("<HHBI", 0x7075, 5 + 7, 1, zlib.crc32(b"harmless")) + b"../evil"))

# Links.
zipped("link-to-password-file", link(b"l", b"/etc/passwd"), link(b"d/l", b"//etc//passwd"))
zipped("file-through-link-to-root", link(b"l", b"/"), evil(b"l/tmp/tav-hostile"))
zipped("file-through-link-to-parent", link(b"l", b".."), evil(b"l/evil"))
zipped("file-through-link-to-sentinel", link(b"l", SENTINEL), evil(b"l/file"), evil(b"l/new"))
zipped("file-through-inner-link", folder(b"d"), link(b"d/l", b"../" + SENTINEL), evil(b"d/l/file"))
zipped("folder-through-link", link(b"l", SENTINEL), folder(b"l"), folder(b"l/new"), evil(b"l/new/x"))
zipped("link-through-link", link(b"l", SENTINEL), link(b"l/m", b"file"))
zipped("file-over-link", link(b"x", SENTINEL + b"/file"), evil(b"x"))
zipped("link-over-file", evil(b"x"), link(b"x", SENTINEL + b"/file"))
zipped("link-over-folder", folder(b"d"), evil(b"d/x"), link(b"d", SENTINEL), evil(b"d/file"))
zipped("file-before-its-link", evil(b"l/file"), link(b"l", SENTINEL))
zipped("chain", link(b"a", b"b"), link(b"b", b"c"), link(b"c", b"d/.."), folder(b"d"), link(b"e", b"f/../.."),
       link(b"f", b"a"))
zipped("chain-of-steps", link(b"a", b".."), link(b"b", b"a/.."), link(b"c", b"b/.."), evil(b"c/evil"))
zipped("up-and-out", folder(b"p/q/r"), link(b"p/q/up", b"../.."), link(b"p/q/r/e", b"../up/../x"),
       link(b"p/q/r/ok", b"../up/good.txt"))
zipped("long-chain", *[link(b"l%d" % n, b"l%d" % (n + 1)) for n in range(100)], link(b"l100", b".."))
zipped("circles", link(b"self", b"self"), link(b"a", b"b"), link(b"b", b"a/.."), link(b"c", b"c/../.."))
zipped("links-that-stay", link(b"ok", b"good.txt"), folder(b"d"), link(b"d/ok", b"../good.txt"),
       link(b"dot", b"."), link(b"missing", b"nothing/here"), link(b"back", b"d/../good.txt"))
zipped("links-of-many-slashes", link(b"a", b".//..//./.."), link(b"b", b"./././../evil"), link(b"c", b"/" * 9))
zipped("link-with-much-text", link(b"l", b"../" * 350000, method=8), bsdtar="-")
zipped("link-of-longest-text", link(b"l", b"../" * 1365, method=8), link(b"m", b"a/../" * 818 + b"..", method=8))
zipped("link-without-text", link(b"l", b""), link(b"m", b"\0"), link(b"n", b"good.txt\0/../../.."))
zipped("link-outside", link(b"../l", b"/"), link(ABSOLUTE, b"/"), link(SENTINEL + b"/l", b"/"))
zipped("link-in-other-case", link(b"L", SENTINEL), evil(b"l/file"), evil(b"L/file"))
zipped("link-in-extra-field",
       evil(b"l", mode=0, extra=struct.pack("<HHIHIHH", 0x756E, 14 + 14, 0, LINK, 14, 0, 0) + SENTINEL))
zipped("links-of-resources", link(b"__MACOSX", SENTINEL), evil(b"__MACOSX/._good.txt"))
zipped("resources", folder(b"__MACOSX"), evil(b"__MACOSX/._good.txt"), link(b"__MACOSX/l", SENTINEL),
       evil(b"d/__MACOSX/x"))
zipped("unix-links-of-dos", Entry(b"l", b"/etc/passwd", LINK, made_by=20), Entry(b"m", b"/", LINK, made_by=19 << 8))

# Rights and kinds.
zipped("lent-rights", evil(b"suid", mode=0o104755), evil(b"sgid", mode=0o102755), folder(b"d", 0o43777),
       evil(b"all", mode=0o107777, extra=struct.pack("<HHBBIBI", 0x7875, 11, 1, 4, 0, 4, 0)))
zipped("kinds", Entry(b"pipe", b"", 0o10644), Entry(b"character", b"", 0o20666), Entry(b"block", b"", 0o60666),
       Entry(b"socket", b"", 0o140644), Entry(b"none", b"", 0), Entry(b"strange", b"", 0o170777))
zipped("locked-folders", folder(b"shut", 0o40000), evil(b"shut/x", mode=0o100000), link(b"shut/l", b"/"),
       folder(b"shut/in", 0o40000), link(b"shut/in/l", b"/"), folder(b"read", 0o40555), link(b"read/l", b"/"),
       folder(b"blind", 0o40311), link(b"blind/l", b"/"))

# Names that meet.
zipped("twins", evil(b"x"), evil(b"x"), evil(b"x"), evil(b"good.txt"))
zipped("file-and-folder", evil(b"x"), evil(b"x/y"), evil(b"x/y/z"))
zipped("folder-and-file", folder(b"x"), evil(b"x/y"), evil(b"x"))
zipped("case-twins", evil(b"A"), evil(b"a"), evil(b"GOOD.TXT"))
zipped("folder-with-content", Entry(b"d/", b"content", FOLDER), Entry(b"e/", b"content"))

# Sizes.
zipped("bomb", Entry(b"zeros", bytes(20_000_000), method=8))
MANY = [Entry(b"zeros%d" % n, bytes(200_000), method=8) for n in range(200)]
add("overlapping-bomb", archive(*MANY, shared=True), "-", "-")
add("twin-bomb", archive(*[Entry(b"zeros", bytes(200_000), method=8) for n in range(200)], shared=True), "-", "-")
zipped("nested", Entry(b"inner.zip", archive(Entry(b"inner.zip", archive(evil(b"../evil"))))))
zipped("crc", evil(b"x", crc=1), Entry(b"y", b"evil" * 100, method=8, crc=1))
zipped("too-long", evil(b"x", size=4000), Entry(b"y", b"evil" * 100, method=8, size=4_000_000))
zipped("too-short", Entry(b"y", b"evil" * 100, method=8, size=4))
zipped("endless-data", evil(b"x", size=0xFFFFFFFE, packed_size=0xFFFFFFFE), bsdtar="-", unzip="-")
zipped("local-sizes-lie", evil(b"x", local_size=1, local_packed_size=100000), unzip="-")
zipped("sizes-of-64-bits", evil(b"x", size=0xFFFFFFFF, packed_size=0xFFFFFFFF,
                                extra=struct.pack("<HHQQ", 1, 16, 1 << 63, 1 << 63)), bsdtar="-")
zipped("short-field-of-64-bits", evil(b"x", size=0xFFFFFFFF, packed_size=0xFFFFFFFF,
                                      extra=struct.pack("<HHI", 1, 4, 7)), bsdtar="-", unzip="-")
zipped("extra-field-lies", evil(b"x", extra=struct.pack("<HH", 0x7875, 60000)),
       evil(b"y", extra=b"UT\xff\xff"), bsdtar="-")
zipped("extra-length-lies", evil(b"x", extra_length=60000), bsdtar="-", unzip="-")
zipped("descriptor-lies", Entry(b"x", b"evil" * 100, method=8, flags=8, local_crc=0, local_size=0,
                                local_packed_size=0, descriptor=struct.pack("<IIII", 0x08074B50, 1, 2, 3)))
zipped("descriptor-of-stored", Entry(b"x", b"PK\x01\x02PK\x05\x06evil", flags=8, local_crc=0, local_size=0,
                                     local_packed_size=0), unzip="-")
zipped("broken-stream", evil(b"x", raw=b"\xff" * 50, packed_size=50, size=1000, local_method=8), bsdtar="-")
zipped("unknown-method", Entry(b"x", b"evil", method=99), Entry(b"y", b"evil", method=255))

# Lists of members.
zipped("local-name-differs", evil(b"harmless", local_name=SENTINEL + b"/new"), evil(b"h2", local_name=b"/tmp/tav-hostile"))
zipped("central-name-differs", evil(SENTINEL + b"/new", local_name=b"harmless"))
zipped("many-members-said", evil(b"x"), count=0xFFFF)
zipped("no-members-said", evil(b"x"), count=0)
zipped("list-elsewhere", evil(b"x"), offset=0x7FFFFFFF, unzip="-")
zipped("list-before-the-file", evil(b"x"), offset=0, size=0xFFFFFFF0, unzip="-")
zipped("member-elsewhere", evil(b"x", offset=0x7FFFFFFF), evil(b"y", offset=1), bsdtar="-")
zipped("comment-with-an-archive", evil(b"x"), comment=archive(evil(b"../evil")), bsdtar="-", unzip="-")
zipped("comment-too-long", evil(b"x"), comment_length=60000)
zipped("two-archives", evil(b"x"), before=archive(evil(b"../evil")))
zipped("bytes-before", evil(b"x"), before=b"PK00")
add("bytes-behind", archive(GOOD) + b"\0" * 3000, "good", "good")
add("many-members", archive(*[Entry(b"%d/f" % n) for n in range(400)], GOOD), "good", "good")
zipped("dates", evil(b"a", date=0, time=0), evil(b"b", date=0xFFFF, time=0xFFFF), evil(b"c", date=0x1FF))

# Broken off, and no archives.
WHOLE = archive(GOOD, Entry(b"x", b"evil" * 1000))
add("cut-in-the-list", WHOLE[:-40], "good", "-")
add("cut-in-a-member", WHOLE[:200], "good", "-")
add("cut-in-a-header", WHOLE[:20], "-", "-")
add("four-bytes", b"PK\x03\x04", "-", "-")
add("no-bytes", b"", "-", "-")
add("no-members", end(0, 0, 0), "-", "-")
add("text", b"This is no archive.\n", "-", "-")
add("signatures", b"PK\x03\x04" * 2000, "-", "-")
add("ends", end(1, 46, 0) * 500, "-", "-")

# Members that nobody can read.
zipped("encrypted", evil(b"d/x", raw=b"\xaa" * 30, packed_size=30, flags=1), bsdtar="-", unzip="-")
zipped("encrypted-behind-a-folder", folder(b"d"), evil(b"d/x", raw=b"\xaa" * 30, packed_size=30, flags=1),
       bsdtar="-", unzip="-")
zipped("encrypted-in-the-list-only", evil(b"x", flags=1, local_flags=0), bsdtar="-", unzip="-")
zipped("encrypted-strongly", evil(b"x", raw=b"\xaa" * 40, packed_size=40, flags=0x41), bsdtar="-", unzip="-")
zipped("encrypted-in-the-header-only", folder(b"d"), evil(b"x", flags=0, local_flags=1, raw=b"\xaa" * 30,
                                                       packed_size=30))


# Other formats by the name of zip.
def tar_header(name, size=0, kind=b"0", target=b"", mode=0o644, device=(0, 0)):
    header = bytearray(512)
    header[0:len(name)] = name
    for offset, length, number in ((100, 8, mode), (108, 8, 0), (116, 8, 0), (124, 12, size), (136, 12, 0),
                                   (329, 8, device[0]), (337, 8, device[1])):
        header[offset:offset + length] = b"%0*o\0" % (length - 1, number)
    header[156:157] = kind
    header[157:157 + len(target)] = target
    header[257:265] = b"ustar\x0000"
    header[148:156] = b" " * 8
    header[148:156] = b"%06o\0 " % sum(header)
    return bytes(header)


def tar(first=b"first"):
    return (tar_header(first) + tar_header(SENTINEL + b"/new", 5) + b"evil\n".ljust(512, b"\0") +
            tar_header(b"hard", kind=b"1", target=SENTINEL + b"/file") +
            tar_header(b"hard", 5) + b"evil\n".ljust(512, b"\0") +
            tar_header(b"hard2", kind=b"1", target=b"/etc/passwd") +
            tar_header(b"soft", kind=b"2", target=SENTINEL) +
            tar_header(b"soft/new", 5) + b"evil\n".ljust(512, b"\0") +
            tar_header(b"hard3", kind=b"1", target=b"soft/file") +
            tar_header(b"hard4", 5, kind=b"1", target=b"soft/file") + b"evil\n".ljust(512, b"\0") +
            tar_header(b"null", kind=b"3", device=(1, 3)) + tar_header(b"disk", kind=b"4", device=(8, 0)) +
            tar_header(b"pipe", kind=b"6") + tar_header(b"suid", mode=0o6755) + bytes(1024))


def cpio(name, target):
    def record(name, mode, data):
        name += b"\0"
        return (b"070707" + b"".join(b"%06o" % number for number in (0, 1, mode, 0, 0, 1, 0)) + b"%011o" % 0 +
                b"%06o" % len(name) + b"%011o" % len(data) + name + data)
    return record(name, LINK, target) + record(name + b"/x", FILE, b"evil\n") + record(b"TRAILER!!!", 0, b"")


def gzip(data):
    compressor = zlib.compressobj(9, zlib.DEFLATED, -15)
    return (b"\x1f\x8b\x08\0\0\0\0\0\0\x03" + compressor.compress(data) + compressor.flush() +
            struct.pack("<II", zlib.crc32(data), len(data)))


add("tar", tar(), "-", "-")
add("tar-that-begins-as-zip", tar(b"PK\x03\x04first") + archive(GOOD), "-", "good")
add("tar-in-gzip-in-gzip", gzip(gzip(tar_header(b"again", 0) * 20000)), "-", "-")
add("mtree", b"#mtree\n./evil type=file mode=0644\n../evil type=file\n./null type=char device=native,1,3\n", "-", "-")
add("cpio", cpio(b"l", SENTINEL), "-", "-")
add("uuencoded", b"begin 644 ../evil\n%979I;`H`\n`\nend\n", "-", "-")
add("other-signatures", b"7z\xbc\xaf\x27\x1c" + bytes(100), "-", "-")
add("script", b"#!/bin/sh\ntouch /tmp/tav-hostile\n", "-", "-")


def main():
    for old in os.listdir(HERE):
        if old.endswith(".zip"):
            os.remove(os.path.join(HERE, old))
    with open(os.path.join(HERE, "archives.txt"), "w", encoding="ascii") as table:
        for name, content, bsdtar, unzip in ARCHIVES:
            with open(os.path.join(HERE, name), "wb") as file:
                file.write(content)
            table.write("%s %s %s\n" % (name, bsdtar, unzip))


if __name__ == "__main__":
    main()
