"""A million file names made valid for Windows, and with what is not ASCII spelled out."""
from harness import *

plain = build("strings_plain")
icu = build("strings_icu", packages=["icu-i18n", "icu-uc"])

job = Job("strings", rounds=min(ROUNDS, 5))
job.add("limit_copy_of_name", [plain, "copy"], measures_itself=True)
job.add("byte_loop", [plain, "loop"], measures_itself=True)
job.add("icu_set", [icu, "set"], measures_itself=True)
job.add("icu_expression", [icu, "expression"], measures_itself=True)
for way in ("expression", "table"):
    job.add("python_" + way, [PYTHON, script("strings_python.py"), way], measures_itself=True)
job.ours("STRINGS")
job.run()
