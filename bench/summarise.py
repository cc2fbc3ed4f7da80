#!/usr/bin/env python3
"""Turns the benchmark's JSON files, one per process, into the tables of docs/performance.md (printed)."""
import collections
import json
import re
import statistics
import sys

OURS = ("ours-scalar", "ours-sse4.1", "ours-avx2", "ours-avx512")


def load(paths):
    times = collections.defaultdict(list)
    difference = {}
    for path in paths:
        with open(path, encoding="utf-8") as file:
            for run in json.load(file)["benchmarks"]:
                if run.get("run_type") == "aggregate":
                    continue
                name = tuple(run["name"].split("/repeats")[0].split("|"))
                times[name].append(run["cpu_time"] / 1000.0)
                difference[name] = run["difference"]
    return times, difference


def microseconds(values):
    values = sorted(values)
    low, high = values[len(values) // 10], values[len(values) * 9 // 10]
    return f"{statistics.median(values):.1f} ({low:.1f}-{high:.1f})"


def best_peer(times, difference, task, temperature, wide):
    """Fastest peer whose result is within 1 of ours; those built for AVX-512 only where `wide`."""
    found = []
    for name in times:
        contender = name[3]
        if name[:3] != (*task, temperature) or contender.startswith(("ours", "bound")):
            continue
        if difference[name] <= 1 and (wide or "avx512" not in contender):
            found.append((statistics.median(times[name]), contender))
    return min(found) if found else None


def compare_builds(native, windows):
    """Table of two timer outputs: lowest of several processes each, what the machine does beside this only adds."""
    def read(path):
        best = {}
        with open(path, encoding="utf-8") as file:
            for line in file:
                *name, value = line.strip().split("|")
                best[tuple(name)] = min(best.get(tuple(name), float("inf")), float(value))
        return best
    first, second = read(native), read(windows)
    print("\n### Native build against the module's target\n")
    print("| kernel | size | set | native us | target us | target / native |\n|---|---|---|---|---|---|")
    for name, value in first.items():
        if name in second:
            print(f"| {name[0]} | {name[1]} | {name[2][5:]} | {value:.1f} | {second[name]:.1f} | {second[name] / value:.2f} |")


def main():
    if sys.argv[1] == "--builds":
        compare_builds(*sys.argv[2:4])
        return
    times, difference = load(sys.argv[1:])
    # The runs come in random order.
    order = sorted(times, key=lambda name: (name[0], int(re.match(r"\d+", name[1]).group()), name[1:]))
    tasks = list(dict.fromkeys(name[:2] for name in order))
    for temperature in ("hot", "cold"):
        print(f"\n### {temperature.capitalize()} buffers\n")
        print("| kernel | size | SSE4.1 us | AVX2 us | AVX-512 us | best peer us (AVX2; any) | AVX2 ratio | AVX-512 ratio |"
              " bound, AVX2; AVX-512 |")
        print("|---|---|---|---|---|---|---|---|---|")
        for task in tasks:
            def of(contender):
                return times.get((*task, temperature, contender))
            ours = {name: of(name) for name in OURS}
            cells = [microseconds(ours[name]) if ours[name] else "-" for name in OURS[1:]]
            narrow = best_peer(times, difference, task, temperature, False)
            wide = best_peer(times, difference, task, temperature, True)
            peers = "; ".join(f"{peer[0]:.1f} {peer[1]}" if peer else "none" for peer in (narrow, wide))
            ratios = [f"{peer[0] / statistics.median(ours[name]):.2f}x" if peer and ours[name] else "-"
                      for name, peer in (("ours-avx2", narrow), ("ours-avx512", wide))]
            bounds = [f"{statistics.median(of('bound-' + s)) / statistics.median(ours['ours-' + s]):.0%}"
                      for s in ("avx2", "avx512") if of("bound-" + s) and ours["ours-" + s]]
            print(f"| {task[0]} | {task[1]} | {' | '.join(cells)} | {peers} | {' | '.join(ratios)} | "
                  f"{'; '.join(bounds) or '-'} |")
    print("\n### Every peer, hot (cold), microseconds\n")
    print("| kernel | size | peer | time | largest difference to ours |\n|---|---|---|---|---|")
    for name in order:
        if name[2] == "hot" and not name[3].startswith(("ours", "bound")):
            cold = statistics.median(times[(*name[:2], "cold", name[3])])
            note = "" if difference[name] <= 1 else ", not the same work"
            print(f"| {name[0]} | {name[1]} | {name[3]} | {statistics.median(times[name]):.1f} ({cold:.1f}) | "
                  f"{difference[name]:.0f}{note} |")
    print("\n### With a fresh output buffer per call, microseconds\n")
    print("| kernel | size | set | given buffer | fresh buffer |\n|---|---|---|---|---|")
    for name in order:
        if name[2] == "fresh":
            hot = statistics.median(times[(*name[:2], "hot", name[3])])
            print(f"| {name[0]} | {name[1]} | {name[3][5:]} | {hot:.1f} | {statistics.median(times[name]):.1f} |")


if __name__ == "__main__":
    main()
