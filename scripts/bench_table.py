"""The table of what everything costs, from the figures of scripts/bench, and what of it misses a goal or breaks a limit."""
import re
import statistics

PROVIDER_GOAL = 1.20
FRAME = 1 / 60  # seconds

# What the store does, what it cannot do without, and the most that it may take of that.
STORE_GOALS = [
    ("read a setting", "StoreRead/1", "BareRead", "open, read, close", 1.15),
    ("write a durable setting", "StoreWrite/durable", "BareWrite/file_and_folder",
     "write, fsync, rename, fsync of the folder", 1.10),
    ("write a volatile setting", "StoreWrite/volatile", None, "", None),
    ("dconf reads", "DconfRead", "StoreRead/1", "the store", None),
    ("dconf writes", "DconfWrite", "StoreWrite/durable", "the store", None),
]
EXPLORER_ROWS = [
    ("`enabled:voice`, a switch that reads two inputs", "BM_Question/enabled"),
    ("`visible:voice`, a whole rule", "BM_Question/visible"),
    ("`enabled:voice-wake-up`", "BM_Question/dimmed"),
    ("`title:voice-settings-google`", "BM_Question/text"),
    ("`value:situational-hint`, reads JSON", "BM_Question/read_json"),
    ("`choices:voice-assistant`", "BM_Question/list"),
    ("`set:situational-hint=1`, writes JSON", "BM_Question/write_json"),
    ("`set:voice-assistant=2`", "BM_Question/choose"),
    ("every question under every policy, with diagrams and proofs", "BM_WholeTable"),
]


def table(figures):
    """The section of docs/performance.md."""
    misses = []
    lines = [f"{figures['machine']}; commit `{figures['commit']}`, {figures['date']}. `scripts/bench --write` writes this"
             " section."]
    lines += provider_table(figures["provider"], misses)
    if "store" in figures:
        lines += (store_table(figures["store"], misses) + command_table(figures["commands"], misses) +
                  window_table(figures["window"], misses) + explorer_table(figures["explorer"]))
    lines += ["", "### What misses its goal", ""] + [f"- {miss}" for miss in misses or ["Nothing does."]]
    return "\n".join(lines) + "\n"


def broken_limits(figures):
    """What the provider may never take more of, and does."""
    return [f"{what}: {figure}, not {wanted}" for what, figure, wanted, good in limits(figures["provider"]) if good is False]


def limits(provider):
    """(what, figure, limit, whether it is kept) of each; what was not measured is neither kept nor broken."""
    stack, size, off = provider["stack"], provider["library_size"], provider["trace"]["off_instructions"]
    return [("stack of a page", f"{stack:,} bytes", "less than 8 KiB", stack < 8192),
            ("a trace event that is off: instructions", f"{off:.1f}", "one load, test and jump", off <= 4),
            ("the stripped library for 32-bit ARM", f"{size:,} bytes" if size else "not measured", "at most 128 KiB",
             size <= 128 * 1024 if size else None)]


def met(good):
    """None is no goal at all."""
    return "" if good is None else "yes" if good else "**no**"


def judged(misses, what, figure, wanted, good):
    """The cells of a row that tell its goal and whether it is met. Whoever misses one is noted."""
    if good is False:
        misses.append(f"{what}: {figure}, not {wanted}")
    return f"{wanted} | {met(good)} |"


def shown_time(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.1f} {unit}"
    return f"{nanoseconds:.0f} ns"


def spread(values):
    return f"{shown_time(statistics.median(values))} ({shown_time(min(values))} - {shown_time(max(values))})"


def grown(prefix, rows, shown):
    """What was measured with so many of something, by their number."""
    counts = {int(re.match(r"\d+", name.removeprefix(prefix))[0]): row for name, row in rows.items() if name.startswith(prefix)}
    return ", ".join(f"{count}: {shown(counts[count])}" for count in sorted(counts))


def provider_table(provider, misses):
    lines = ["", "### The provider beside the calls that it makes", "",
             f"The goal is at most {PROVIDER_GOAL:.2f} times the instructions of the calls.", "",
             "| asked | calls | instructions | bare | ratio | met | time | bare | ratio (lowest - highest) |"
             " allocations (bare) | bytes (bare) |", "|---|---|---|---|---|---|---|---|---|---|---|"]
    above = []
    for row in provider["questions"]:
        ratio = row["instructions"] / row["bare_instructions"]
        if ratio > PROVIDER_GOAL:
            above.append(f"{row['name']} {ratio:.2f}")
        lines.append(
            f"| {row['name']} | {row['calls']} | {row['instructions']:,} | {row['bare_instructions']:,} | {ratio:.2f} |"
            f" {met(ratio <= PROVIDER_GOAL)} | {shown_time(row['ns'])} | {shown_time(row['bare_ns'])} |"
            f" {row['ratio']:.2f} ({row['ratio_low']:.2f} - {row['ratio_high']:.2f}) |"
            f" {row['allocations']:,} ({row['bare_allocations']:,}) | {row['bytes']:,} ({row['bare_bytes']:,}) |")
    page, trace = provider["questions"][0], provider["trace"]
    ratio = trace["on_instructions"] / trace["bare_instructions"]
    event = f"{trace['on_instructions']:.0f} by {trace['bare_instructions']:.0f}, {ratio:.2f}"
    if ratio > PROVIDER_GOAL:
        above.append(f"a trace event that is on {ratio:.2f}")
    if above:
        misses.append(f"the provider's instructions by those of its calls, at most {PROVIDER_GOAL:.2f}: {'; '.join(above)}")
    lines += ["", "| of the provider | figure | goal | met |", "|---|---|---|---|",
              f"| instructions of its own code, of a page | {page['own_instructions']:,} | | |",
              f"| instructions of the C library's comparing keys | {page['key_instructions']:,} | | |",
              f"| a trace event that is on: instructions, by the storage's own | {event} | at most {PROVIDER_GOAL:.2f} |"
              f" {met(ratio <= PROVIDER_GOAL)} |"]
    return lines + [f"| {what} | {figure} | {judged(misses, what, figure, wanted, good)}"
                    for what, figure, wanted, good in limits(provider)]


def store_table(turns, misses):
    lines = ["", "### The store", "", "| | time (lowest - highest) | beside | time | ratio | goal | met |",
             "|---|---|---|---|---|---|---|"]
    for what, name, other, beside, most in STORE_GOALS:
        ratio = statistics.median(turns[name]) / statistics.median(turns[other]) if other else None
        shown = f"{ratio:.2f}" if ratio else ""
        verdict = judged(misses, what, f"{shown} times the bare calls", f"below {most:.2f}", ratio < most) if most else "| |"
        lines.append(f"| {what} | {spread(turns[name])} | {beside} | {spread(turns[other]) if other else ''} | {shown} |"
                     f" {verdict}")
    for kind in ("durable", "volatile"):
        seen, others = turns[f"ChangeSeen/{kind}/1"], turns["DconfChangeSeen"]
        sooner = statistics.median(others) / statistics.median(seen)
        what, shown = f"a {kind} change is seen", f"{sooner:.1f} times sooner"
        lines.append(f"| {what} | {spread(seen)} | dconf | {spread(others)} | {shown} |"
                     f" {judged(misses, what, shown, 'over 5', sooner > 5)}")
    for title, prefix in (("read a setting among so many keys", "StoreRead/"),
                          ("a volatile change is seen by the last of so many watchers", "ChangeSeen/volatile/")):
        lines.append(f"| {title} | {grown(prefix, turns, lambda times: shown_time(statistics.median(times)))} | | | | | |")
    return lines


def command_table(commands, misses):
    lines = ["", "### Whole commands", "",
             f"`vtv run` plays the {commands['scenarios']} scenarios of the tests, each on a TV of its own.", "",
             "| command | time (lowest - highest) | of the processor | goal | met |", "|---|---|---|---|---|"]
    for name, times in commands["clock"].items():
        times = [time * 1e9 for time in times]
        computed = statistics.median(commands["processor"][name]) * 1e9
        median = statistics.median(times)
        verdict = (judged(misses, f"`{name}`", shown_time(median), "below 10 ms", median < 10e6) if name == "vtv show"
                   else "| |")
        lines.append(f"| `{name}` | {spread(times)} | {shown_time(computed)} | {verdict}")
    for name, times in commands["seen"].items():
        lines.append(f"| `{name}` tells what a command writes | {spread([time * 1e9 for time in times])} | | | |")
    return lines


def window_table(window, misses):
    lines = ["", "### The window, on a display in memory (Xvfb, 1280x720)", "",
             "| from, to the frame on the display that shows it | time (lowest - highest) | goal | met |", "|---|---|---|---|"]
    for what, name, most in (("the start of `vtv window`", "first", None), ("a key", "key", 2 * FRAME),
                             ("another process's value in the store", "other", 2 * FRAME)):
        times = [time * 1e9 for time in window[name]]
        median = statistics.median(times)
        verdict = (judged(misses, f"from {what} to its frame", shown_time(median), "two frames at 60 Hz (33.3 ms)",
                          median < most * 1e9) if most else "| |")
        lines.append(f"| {what} | {spread(times)} | {verdict}")
    resident, own = (window["memory"][name] / 2**20 for name in ("Rss", "Pss"))
    return lines + [f"| its memory | {resident:.0f} MiB, of which its share is {own:.0f} MiB | | |"]


def explorer_table(explorer):
    lines = ["", "### The explorer, with one worker, in the processor's time", "", "| asked | questions | a second |",
             "|---|---|---|"]
    for what, name in EXPLORER_ROWS:
        row = explorer[name]
        lines.append(f"| {what} | {row['questions']:,.0f} | {rounded(row['rate'])} |")
    for what, prefix in (("how every item looks, by the assistants of the policy", "BM_Assistants/"),
                         ("`visible:voice`, by the inputs that may vary", "BM_Inputs/"),
                         ("how every item looks, by the most values of an input", "BM_Values/")):
        lines.append(f"| {what} | {grown(prefix, explorer, lambda row: format(row['questions'], ',.0f'))} | |")
    return lines


def rounded(number):
    """To two digits."""
    return f"{float(f'{number:.1e}'):,.0f}"
