# FOLDER MEGABYTES: the lists of the job: list.xml of about that size, list.binary with the same content,
# and list.text, where numbers and dates are texts. Always the same bytes.
import datetime
import os
import plistlib
import sys

folder, megabytes = sys.argv[1], float(sys.argv[2])


def record(i):
    return {
        "name": "FILE_%06d.JPG" % i,
        "type": i % 2,
        "path": "/Volumes/Device %d/DCIM/100 & more/IMG_%06d.jpg" % (i % 7, i),
        "size": i * 7919,
        "ratio": i / 7,
        "visible": bool(i % 2),
        "sync mod date": datetime.datetime(2010, 1, 1) + datetime.timedelta(seconds=i * 61),
        "digest": bytes((i * k) & 255 for k in range(1, 17)),
        "tags": ["tag%d" % (i % 13), "caf\u00e9" if i % 5 == 0 else "plain", "b<%d>" % (i % 3)],
        "children": {"A": i, "B": "value %d" % (i % 1000)},
    }


content = {"info": {"records": [record(i) for i in range(int(megabytes * 1e6 / 760))]}}
for name, form in (("list.xml", plistlib.FMT_XML), ("list.binary", plistlib.FMT_BINARY)):
    with open(os.path.join(folder, name), "wb") as file:
        plistlib.dump(content, file, fmt=form)


def quoted(text):
    escapes = {'"': '\\"', "\\": "\\\\"}
    return '"' + "".join(escapes.get(c) or (c if ord(c) < 128 else "\\U%04x" % ord(c)) for c in text) + '"'


def text_of(value, level):
    """Old-style text with its usual quotes and indentation."""
    inner, outer = "    " * (level + 1), "    " * level
    if isinstance(value, dict):
        entries = ("%s%s = %s;\n" % (inner, text_of(key, 0), text_of(value[key], level + 1)) for key in sorted(value))
        return "{\n" + "".join(entries) + outer + "}"
    if isinstance(value, list):
        return "(\n" + ",\n".join(inner + text_of(element, level + 1) for element in value) + "\n" + outer + ")"
    if isinstance(value, bytes):
        digits = value.hex()
        return "<" + " ".join(digits[i:i + 8] for i in range(0, len(digits), 8)) + ">"
    text = {True: "YES", False: "NO"}[value] if isinstance(value, bool) else str(value)
    return text if text.isascii() and text.isalnum() else quoted(text)


with open(os.path.join(folder, "list.text"), "w") as file:
    file.write(text_of(content, 0))
