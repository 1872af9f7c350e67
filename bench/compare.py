#!/usr/bin/python3
"""Measures a migration beside a shell script that does the same, beside the bare file operations and beside a program
that does nothing, all on the same device image. Run by scripts/bench."""

import argparse
import json
import pathlib
import subprocess
import sys

import contestants
import device
import report

FILTERS = "etc/hostapd/mac_filter/"


def bytes_of(build, name):
    stripped = build / (name + ".stripped")
    subprocess.run(["strip", "-o", stripped, build / name], check=True)
    size = stripped.stat().st_size
    stripped.unlink()
    return size


def measure(on, build, options):
    """All figures of the four on the device, and the four."""
    program = contestants.program(options.build_number)
    before, after = on.change(program)
    different = contestants.differing_documents(after, on.change(contestants.PEER)[1])
    if different:
        raise RuntimeError("the shell script does not write the same " + " ".join(different))
    opens, libraries = on.opens(program)
    four = [program, contestants.PEER, contestants.floor(on, opens, before, after), contestants.EMPTY]
    figures = {}
    for one in four:
        calls = on.system_calls(one)
        figures[one.name] = {"instructions": on.instructions(one), "peak_kib": on.peak_kib(one), "system_calls": calls,
                             "flushes": sum(calls.get(name, 0) for name in ("fsync", "fdatasync", "sync", "syncfs"))}
    for name, file in (("program", "kelpwifiupdater"), ("floor", "bench-floor"), ("empty", "bench-empty")):
        figures[name]["stripped_bytes"] = bytes_of(build, file)
    figures["program"]["bytes_with_libraries"] = figures["program"]["stripped_bytes"] + sum(
        pathlib.Path(path).stat().st_size for path in libraries)
    figures["program"]["opens"] = opens
    return figures, four


def take_times(on, four, options, figures, kind):
    for one, times in zip(four, on.times(four, options.runs)):
        figures[one.name][kind] = times


def cost(on, one, **more):
    return {"instructions": on.instructions(one), "system_calls": sum(on.system_calls(one).values()), **more}


def growth(on, program, most):
    """With no stations on its filter list, then with 100 and ten times as many up to `most`."""
    steps = []
    stations = 0
    (on.image / FILTERS / "mf_allow.conf").write_text("")
    while stations <= most:
        (on.image / FILTERS / "mf_deny.conf").write_text(contestants.filter_list(stations))
        step = {"stations": stations, "instructions": on.instructions(program), "peak_kib": on.peak_kib(program)}
        if len(steps) >= 2:
            fixed = steps[0]["instructions"]
            step["ratio"] = (step["instructions"] - fixed) / (steps[-1]["instructions"] - fixed)
        steps.append(step)
        stations = stations * 10 or 100
    return steps


def other_devices(on, program):
    files = sorted((on.image / device.WIFI.lstrip("/")).glob("wifi_ap_*"))
    for file in files:
        file.write_text("")
    others = [cost(on, program, device="access-point files empty")]
    for file in files:
        file.unlink()  # which the archive then misses
    return others + [cost(on, program._replace(status=1), device="no access-point files")]


def main():
    parser = argparse.ArgumentParser(prog="scripts/bench", description="Measures what a migration costs.")
    parser.add_argument("build", type=pathlib.Path, help=argparse.SUPPRESS)
    parser.add_argument("--device", type=pathlib.Path, default=contestants.HERE.parent / "devices/tri-band-mesh-router")
    parser.add_argument("--from", dest="build_number", default="8000")
    parser.add_argument("--runs", type=int, default=25)
    parser.add_argument("--stations", type=int, default=100_000)
    parser.add_argument("--json", type=pathlib.Path)
    parser.add_argument("--chart", type=pathlib.Path)
    options = parser.parse_args()
    programs = contestants.programs(options.build)

    with device.device(options.device, programs) as on:
        figures, four = measure(on, options.build, options)
        take_times(on, four, options, figures, "in_memory")
        results = {"device": options.device.name, "runs": options.runs, **figures,
                   "other_devices": other_devices(on, four[0])}
    if not device.is_in_memory(options.build):
        with device.device(options.device, programs, options.build) as on:
            # The floor's steps are those of the device in memory.
            contestants.floor(on, figures["program"]["opens"], *on.change(four[0]))
            take_times(on, four, options, figures, "on_disk")
    with device.device(options.device, programs) as on:
        results["growth"] = growth(on, four[0], options.stations) if options.stations else []
    results["targets"] = report.targets(results)

    print(report.table(results))
    (options.json or options.build / "bench.json").write_text(json.dumps(results, indent=2) + "\n")
    if options.chart:
        options.chart.write_text(report.chart(results))


if __name__ == "__main__":
    device.enter_namespace()
    try:
        main()
    except (RuntimeError, OSError, subprocess.CalledProcessError) as error:
        sys.exit(f"bench: {error}")
