"""What was measured: held against the targets, as a table, as a chart."""

CONTESTANTS = ("program", "shell script", "floor", "empty")
# Asked anew each time, on purpose.
NOT_LEGACY = ("/usr/kelp/etc/secret.key",)


def is_legacy_file(path):
    """Whether a household's old settings are in the file."""
    return path.startswith(("/usr/kelp/etc/", "/etc/hostapd/")) and path not in NOT_LEGACY


def _get(results, *names):
    for name in names:
        results = (results or {}).get(name)
    return results


def targets(results):
    """What README and docs/benchmarks.md promise. Without a value where it could not be measured."""
    program = results["program"]

    def less_cpu(kind):
        own, peer = _get(program, kind, "cpu_ms"), _get(results, "shell script", kind, "cpu_ms")
        return peer / own if own and peer else None

    opens = [count for path, count in program["opens"].items() if is_legacy_file(path)]
    rows = [
        ("times less CPU time than the shell script, in memory", less_cpu("in_memory"), ">=", 15, 1),
        ("times less CPU time than the shell script, on disk", less_cpu("on_disk"), ">=", 8, 1),
        ("times the instructions of the empty program", program["instructions"] / results["empty"]["instructions"], "<=", 2.75, 2),
        ("system calls", sum(program["system_calls"].values()), "<=", 430, 0),
        ("opens of a legacy file at most", max(opens, default=0), "<=", 2, 0),
        ("MiB of memory at its peak", program["peak_kib"] / 1024, "<=", 6, 2),
        ("KiB of stripped program", program["stripped_bytes"] / 1024, "<=", 250, 1),
    ]
    rows += [(f"times the work for 10 times the stations, up to {step['stations']}", step["ratio"], "<=", 10.5, 2)
             for step in results["growth"] if "ratio" in step]
    return [{"text": text, "value": value, "bound": bound, "at_least": sign == ">=", "decimals": decimals,
             "met": value is not None and (value >= bound if sign == ">=" else value <= bound)}
            for text, value, sign, bound, decimals in rows]


def _row(label, cells, width=30):
    return f"{label:<{width}}" + "".join(f"{cell:>14}" for cell in cells)


def table(results):
    """For a person."""
    lines = ["", f"{results['device']}, {results['runs']} runs of each", "", _row("", CONTESTANTS)]

    def rows(label, value, show, with_parts=False):
        values = [value(results[name]) for name in CONTESTANTS]
        if values[0] is None:
            return
        lines.append(_row(label, ["-" if one is None else show(one) for one in values]))
        if with_parts:
            lines.append(_row("  to the program's", [f"{one / values[0]:.2f}" for one in values]))

    for kind, place in (("in_memory", "in memory"), ("on_disk", "on disk")):
        for name, clock in (("cpu_ms", "CPU"), ("wall_ms", "wall")):
            rows(f"{clock} time, {place}, ms", lambda one, k=kind, n=name: _get(one, k, n), "{:.2f}".format, True)
    rows("instructions", lambda one: one["instructions"], "{:,}".format, True)
    rows("system calls", lambda one: sum(one["system_calls"].values()), "{:,}".format)
    rows("  flushes", lambda one: one["flushes"], "{:,}".format)
    rows("peak memory, KiB", lambda one: one["peak_kib"], "{:,}".format)
    for label, name in (("stripped size, KiB", "stripped_bytes"), ("  with its libraries", "bytes_with_libraries")):
        rows(label, lambda one, n=name: one.get(n), lambda size: f"{size / 1024:,.1f}")

    calls = sorted(results["program"]["system_calls"].items(), key=lambda call: (-call[1], call[0]))
    lines += ["", "The program's system calls, the loader's included"] + [f"{count:8}  {name}" for name, count in calls]
    lines += ["", "Opens of each input file"] + [f"{n:8}  {path}" for path, n in sorted(results["program"]["opens"].items())]

    own = {"device": "the device as it is", "instructions": results["program"]["instructions"],
           "system_calls": sum(results["program"]["system_calls"].values())}
    lines += ["", _row("The program on", ["instructions", "to the empty", "system calls"])]
    lines += [_row(one["device"], [f"{one['instructions']:,}", f"{one['instructions'] / results['empty']['instructions']:.2f}",
                                   f"{one['system_calls']:,}"]) for one in [own, *results["other_devices"]]]
    if results["growth"]:
        lines += ["", f"{'stations':>10}{'instructions':>18}{'to step before':>16}{'peak memory, KiB':>18}"]
        lines += [f"{step['stations']:10,}{step['instructions']:18,}"
                  + (f"{step['ratio']:16.2f}" if "ratio" in step else f"{'-':>16}") + f"{step['peak_kib']:18,}"
                  for step in results["growth"]]
        lines.append("(to step before: beyond the instructions of a run without stations)")
    lines += ["", "Targets"]
    for target in results["targets"]:
        value = "-" if target["value"] is None else f"{target['value']:.{target['decimals']}f}"
        word = "met" if target["met"] else "MISSED" if target["value"] is not None else "not measured"
        lines.append(f"{value:>10}  {target['text']:<62} at {'least' if target['at_least'] else 'most'} "
                     f"{target['bound']:.{target['decimals']}f}: {word}")
    return "\n".join(lines)


PANELS = (
    ("CPU time of a run with its files in memory, ms", lambda one: _get(one, "in_memory", "cpu_ms")),
    ("CPU time of a run with its files on disk, ms", lambda one: _get(one, "on_disk", "cpu_ms")),
    ("Wall time of a run with its files on disk, ms", lambda one: _get(one, "on_disk", "wall_ms")),
    ("Instructions of a run, millions", lambda one: one["instructions"] / 1e6),
    ("Peak memory of the largest process, MiB", lambda one: one["peak_kib"] / 1024),
)
LEFT, LONGEST, STEP = 120, 480, 24  # where bars begin; the longest; from one to the next


def chart(results):
    """For the documentation, as SVG."""
    parts = []
    top = 44
    for title, value in PANELS:
        bars = [(name, value(results[name])) for name in CONTESTANTS]
        if bars[0][1] is None:
            continue
        parts.append(f'<text class="title" x="16" y="{top + 14}">{title}</text>')
        scale = LONGEST / max(measured for _, measured in bars)
        for place, (name, measured) in enumerate(bars):
            y = top + STEP * (place + 1)
            end = LEFT + max(1.0, scale * measured)
            kind = "program" if name == "program" else "other"
            parts += [f'<text x="{LEFT - 8}" y="{y + 13}" text-anchor="end">{name}</text>',
                      f'<rect class="{kind}" x="{LEFT}" y="{y}" width="{end - LEFT:.1f}" height="18"/>',
                      f'<text x="{end + 6:.1f}" y="{y + 13}">{measured:.1f}</text>']
        top += STEP * len(bars) + 34
    body = "\n  ".join(parts)
    return f"""<svg xmlns="http://www.w3.org/2000/svg" width="720" height="{top}" viewBox="0 0 720 {top}" role="img">
  <title>What a migration costs</title>
  <style>
    text {{ font: 13px sans-serif; fill: #24292f; }}
    .title {{ font-weight: bold; }}
    .program {{ fill: #1f6feb; }}
    .other {{ fill: #8c959f; }}
  </style>
  <rect width="100%" height="100%" fill="#ffffff"/>
  <text x="16" y="24">Migration of {results['device']}, {results['runs']} runs</text>
  {body}
</svg>
"""
