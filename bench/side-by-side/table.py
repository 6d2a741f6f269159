"""table.py FILE...: the measurements as tables, with the ratios of ours to every peer (below 1: we are
faster, or smaller), by medians and by the least of each, and of everybody to the limit of the job.
Status 1 when the control counts say that somebody skipped work, or when what is limited is above its limit."""
import json
import sys

# Counts that have to agree between the programs of a job, within that share.
CONTROLS = {"bytes": 0, "found": 0, "nodes": 0, "processes": 0.02, "records": 0, "fields": 0, "entries": 0, "files": 0}
# What may not be more than so much.
MOST = {"memory_growth_mb": 8}
OWN = ["ns_per_record", "copy_ms", "us_per_file", "pass_us", "pass_ms", "parse_ms", "write_ms", "valid_ns_per_name", "trans_ns_per_name"]
SHOWN = [*OWN, "wall_ms", "peak_rss_mb"]

tables = {}
for name in sys.argv[1:]:
    with open(name) as file:
        for line in file:
            entry = json.loads(line)
            tables.setdefault(entry["job"], {}).setdefault(entry["metric"], {})[entry["peer"]] = entry

disagreements = 0
for job, metrics in tables.items():
    # Programs that measure themselves also pay for their start and their data: their wall time is no result.
    own_metric = next((metric for metric in OWN if metric in metrics), None)
    print("\n" + job)
    for metric, share in CONTROLS.items():
        if metric == "nodes" and own_metric == "write_ms":
            continue  # What is written may be shared and indented differently.
        counts = {peer: entry["value"] for peer, entry in metrics.get(metric, {}).items()}
        if counts and max(counts.values()) - min(counts.values()) > share * max(counts.values()):
            print("  !! the counts of %s disagree: %s" % (metric, counts))
            disagreements += 1
        if metric == "found" and 0 in counts.values():
            print("  !! not found by everybody: %s" % counts)
            disagreements += 1
    for metric, most in MOST.items():
        for peer, entry in metrics.get(metric, {}).items():
            if entry["max"] >= most:
                print("  !! %s of %s is %.3g, not below %g" % (metric, peer, entry["max"], most))
                disagreements += 1
    for metric in SHOWN:
        peers = metrics.get(metric, {})
        if metric == "wall_ms":
            peers = {peer: entry for peer, entry in peers.items() if peer not in metrics.get(own_metric, {})} \
                if own_metric else peers
        if not peers:
            continue
        ours = peers.get("ours")
        limits = [entry["value"] for peer, entry in peers.items() if peer.startswith("limit") and metric != "peak_rss_mb"]
        print("  %-26s %10s  %-22s %8s %8s %9s" % (metric, "median", "least .. most", "ours/it", "by least", "it/limit"))
        for peer, entry in sorted(peers.items(), key=lambda item: item[1]["value"]):
            columns = ["", "", ""]
            if ours and peer != "ours":
                columns[:2] = ["%.2f" % (ours[key] / entry[key]) for key in ("value", "min")]
            if limits:
                columns[2] = "%.2f" % (entry["value"] / min(limits))
            spread = "%.4g .. %.4g" % (entry["min"], entry["max"])
            print("    %-24s %10.4g  %-22s %8s %8s %9s" % (peer, entry["value"], spread, *columns))
sys.exit(1 if disagreements else 0)
