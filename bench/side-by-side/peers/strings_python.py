"""strings_python.py expression|table: names of the same mixture, made valid the two ways that Python packages do it."""
import re
import statistics
import sys
import time

stems = ["IMG", "Holiday Photos", "Track", "Meeting notes", "Beethoven - Symphony", "backup", "My Document", "clip"]
odd = ["a:b?", "50/50", "what?*", "<draft>", 'say "hi"', "x|y\\z", "tab\there", "C:\\Temp"]
wide = ["Café", "Музыка", "音乐", "naïve", "Übung", "😀 smile", "Dvořák", "日本"]
names = []
for number in range(1000000):
    kind = number * 7919 % 100
    if kind < 60:
        names.append("%s %06d.jpg" % (stems[number & 7], number))
    elif kind < 80:
        names.append("%s %s %d.jpg" % (stems[number & 7], odd[number // 8 & 7], number))
    elif kind < 95:
        names.append("%s %s %d.jpg" % (wide[number // 8 & 7], stems[number & 7], number))
    else:
        names.append("%s %d%s" % (stems[number & 7], number, ". "[number & 1]))

forbidden = {c: "_" for c in list(range(1, 32)) + [ord(c) for c in '\\/:*?"<>|']}
expression = re.compile(r'[\\/:*?"<>|\x01-\x1f]|[. ]$')


def by_expression():
    for name in names:
        expression.sub("_", name)


def by_table():
    for name in names:
        name = name.translate(forbidden)
        if name[-1] in ". ":
            name = name[:-1] + "_"


times = []
for _ in range(3):
    begin = time.perf_counter()
    by_expression() if sys.argv[1] == "expression" else by_table()
    times.append(time.perf_counter() - begin)
print("RESULT valid_ns_per_name", statistics.median(times) * 1e9 / len(names))
