"""A property list of about 10 MB (as XML), parsed into a tree and written, in XML and binary form and as
old-style text."""
import os
import subprocess

from harness import *

subprocess.check_call([PYTHON, script("make_property_lists.py"), TMP, os.environ.get("BENCH_PLIST_MB", "10")])
xml, binary, text = (os.path.join(TMP, "list." + form) for form in ("xml", "binary", "text"))
note(*("%s: %d bytes," % (os.path.basename(path), os.path.getsize(path)) for path in (xml, binary, text)))

plain = build("property_list_plain")
libplist = build("property_list_libplist", packages=["libplist-2.0"])
expat = build("property_list_expat", packages=["expat"])

for task in ("parse-xml", "parse-binary", "write-xml", "write-binary"):
    # What is written is always what the XML list holds.
    path = binary if task == "parse-binary" else xml
    job = Job("property_list_" + task.replace("-", "_"), rounds=min(ROUNDS, 5))
    if task == "parse-binary":
        job.add("limit_memory_copy", [plain, "limit-copy", path], measures_itself=True)
    if task == "parse-xml":
        job.add("limit_scan_of_markup", [plain, "limit-markup", path], measures_itself=True)
        job.add("expat_tokens_only", [expat, path], measures_itself=True)
    job.add("plain_tree", [plain, task, path], measures_itself=True)
    job.add("libplist", [libplist, task, path], measures_itself=True)
    job.add("plistlib", [PYTHON, script("property_list_plistlib.py"), task, path], measures_itself=True)
    job.ours("PLIST_" + task.upper().replace("-", "_"), xml=xml, bin=binary)
    job.run()

gnustep = build_gnustep("property_list_gnustep")
for task in ("parse-text", "write-text"):
    job = Job("property_list_" + task.replace("-", "_"), rounds=min(ROUNDS, 5))
    if task == "parse-text":
        job.add("limit_memory_copy", [plain, "limit-copy", text], measures_itself=True)
    # It keeps its settings in the home folder.
    job.add("gnustep", ["/usr/bin/env", "HOME=" + TMP, gnustep, task, text] if gnustep else [None], measures_itself=True)
    job.ours("PLIST_" + task.upper().replace("-", "_"), text=text)
    job.run()
