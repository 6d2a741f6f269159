"""table.py FILE...: the measurements as tables, with the ratios of ours to every peer (below 1: we are
faster, or smaller) and to the limit of the job. Status 1 when the control counts say that somebody
skipped work."""
import json
import sys

# Counts that have to agree between the programs of a job, within that share.
CONTROLS = {"found": 0, "nodes": 0, "processes": 0.02}
SHOWN = ["pass_us", "parse_ms", "write_ms", "wall_ms", "peak_rss_mb"]

tables = {}
for name in sys.argv[1:]:
    with open(name) as file:
        for line in file:
            entry = json.loads(line)
            tables.setdefault(entry["job"], {}).setdefault(entry["metric"], {})[entry["peer"]] = entry

disagreements = 0
for job, metrics in tables.items():
    # Programs that measure themselves also pay for their start and their data: their wall time is no result.
    own_metric = next((metric for metric in SHOWN[:3] if metric in metrics), None)
    print("\n" + job)
    for metric, share in CONTROLS.items():
        counts = {peer: entry["value"] for peer, entry in metrics.get(metric, {}).items()}
        if counts and max(counts.values()) - min(counts.values()) > share * max(counts.values()):
            print("  !! the counts of %s disagree: %s" % (metric, counts))
            disagreements += 1
        if metric == "found" and 0 in counts.values():
            print("  !! not found by everybody: %s" % counts)
            disagreements += 1
    for metric in SHOWN:
        peers = metrics.get(metric, {})
        if metric == "wall_ms":
            peers = {peer: entry for peer, entry in peers.items() if peer not in metrics.get(own_metric, {})} \
                if own_metric else peers
        if not peers:
            continue
        ours = peers["ours"]["value"] if "ours" in peers else None
        limits = [entry["value"] for peer, entry in peers.items() if peer.startswith("limit") and metric != "peak_rss_mb"]
        print("  %-26s %12s  %-25s %8s %8s" % (metric, "median", "least .. most", "ours/it", "it/limit"))
        for peer, entry in sorted(peers.items(), key=lambda item: item[1]["value"]):
            against_ours = "%8.2f" % (ours / entry["value"]) if ours is not None and peer != "ours" else "%8s" % ""
            against_limit = "%8.2f" % (entry["value"] / min(limits)) if limits else ""
            spread = "%g .. %g" % (entry["min"], entry["max"])
            print("    %-24s %12g  %-25s %s %s" % (peer, entry["value"], spread, against_ours, against_limit))
sys.exit(1 if disagreements else 0)
