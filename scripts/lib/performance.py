#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Tables of what switchcfg-bench measured: on the terminal, and as a page with a chart."""
import argparse
import datetime
import json
import os
import re
import subprocess
import sys

INTRODUCTION = """\
# Performance

What the library's calls cost, each beside its floor: the bare system calls, loads or bytes on the wire that the same job
cannot do without. `scripts/bench` builds the release preset, measures in a lab and writes this page.

A row lets short batches of the floor and of the call take turns for {seconds} s, in one process; its ratio is the median
over neighbouring batches, so whatever else the machine does meets both. The quartiles of the ratio say how much it moved.
What runs on one thread alone is measured in processor time, what waits for another process in time on the wall. Calls of a
few loads, and their floors, are chained: each waits for the answer of the one before. Times are medians too, and belong to
this machine; ratios travel.
"""

SCALING = """\
## How cost grows

"Growth" is our time over that of the first line.
"""

PEERS = """\
## Beside other programs

What one would use instead, in the same run. These do not do the same job, so each line is followed by what either side has
that the other lacks. Ours over the peer's: below 1, ours is the faster one.
"""

# What holds a row above its floor when it is over its budget, by the row's name.
HELD_BY = {
    "trap_queued": """\
**A trap into a full queue**: the floor moves the queue by one memmove. Ours moves it piece by piece and notes each, so that a
sender may be killed at any instruction and no trap is torn or sent twice.""",
}

# What is true whatever the figures say, by the peer's name.
HONEST_WORDS = {
    "Redis": """\
**Redis** (a hash over a Unix socket, `HGET` and `HSET`; to disk: append-only file, fsync for each command). Redis gives
names for values, types, expiry, transactions, notification of changes, replication, access from other machines, and a server
that a client's stray pointer cannot reach. Ours gives a load and, for writers, a record lock: no server that could be gone, no
connection, no copy; readers see a word at once, and a daemon needs no code for it to go wrong. Ours has no transaction
over several values for readers, no history, and every process that maps the region can damage it.""",
    "SQLite": """\
**SQLite** (prepared statements, write-ahead log; to disk: `synchronous=FULL`). SQLite gives queries, a schema that can
change, constraints, and transactions that are whole or not there after a crash. Ours gives one page written in place: a value of
one aligned word is old or new after a crash, several are not atomic together, and the layout is fixed for all releases.""",
    "LMDB": """\
**LMDB** (a renewed read transaction, a write transaction per value; to disk: the default, synchronous one). LMDB is the nearest
in kind: mapped memory, many readers, no server. It gives readers a snapshot over all keys, and transactions that survive a
crash. Ours gives places that are known when a program is compiled, so a look-up is no search, and writes in place that all
see at once, without a snapshot. What both cost to disk is what the disk costs.""",
    "syslog(3)": """\
**syslog(3)** (a datagram to a reader of `/dev/log`). syslog keeps one socket open and sends one datagram per line. Ours
makes a connection per message, as the logging daemon's interface wants it: two sends and a close more, which is what the
ratio shows. For that the daemon knows the sender by the socket, takes facility and level as words and not as text, lines of
any length come whole, and a sender never waits for a full reader; with syslog a stopped reader blocks the sender once its queue
is full. syslog can go to any logger and to other machines.""",
    "pgrep": """\
**pgrep** (`pgrep -x`, started each time). pgrep is a program: its start is part of its time, and a daemon that wants the
answer pays for it. It also matches users, terminals, sessions and ages. Ours is a call that gives a list of numbers.""",
    "bare ZeroMQ": """\
**Bare ZeroMQ** (REQ and REP with as many bytes; the rows "remote call" and "request and reply" above). Bare ZeroMQ gives
any pattern of sockets. Ours gives typed messages, numbered functions, a time-out per function, a daemon's death or restart
known within seconds instead of never, a socket that is good again after a failure, and bounds on what a peer can make a
server hold.""",
}


def wording(value, unit):
    if unit != "ns":
        return f"{value:.0f} {unit}"
    for step, name in ((1e9, "s"), (1e6, "ms"), (1e3, "us")):
        if value >= step:
            return f"{value / step:.3g} {name}" if value < 1000 * step else f"{value / step:.0f} {name}"
    return f"{value:.3g} ns"


def ratio_wording(ratio):
    return f"{ratio:.2f}" if ratio >= 0.095 else f"{ratio:.2g}"


class Row:
    def __init__(self, entry):
        parts = [part for part in entry["name"].split("/") if not part.startswith("iterations:") and part != "manual_time"]
        self.name = parts[0]
        self.arguments = parts[1:]
        self.error = entry.get("error_message") if entry.get("error_occurred") else None
        self.title, self.floor_name, self.unit = (entry.get("label") or f"{self.name}||ns").split("|")
        self.value = entry.get
        self.budget = entry.get("budget")
        self.most_above = entry.get("most_above")
        self.over = False
        if self.error:
            return
        self.floor, self.thing = entry["floor"], entry["thing"]
        self.ratio = entry.get("ratio", self.thing / self.floor)
        if self.budget:
            self.over = self.ratio > self.budget
        elif self.most_above:
            self.over = self.thing - self.floor > self.most_above

    def heading(self):
        said = [argument.replace(":", " ") if ":" in argument else argument for argument in self.arguments]
        said = [re.sub(r"^(\w+) (\d+)$", r"\2 \1", argument) for argument in said]
        return ", ".join([self.title, *said])

    def limit(self):
        if self.budget:
            return f"{self.budget:g}"
        return f"{self.most_above:g} {self.unit} more" if self.most_above else ""

    def spread(self):
        low, high = self.value("low"), self.value("high")
        return f"{ratio_wording(low)} to {ratio_wording(high)}" if low is not None else ""

    def verdict(self):
        return "**over**" if self.over else "good" if self.limit() else ""


def table(head, rows, right):
    lines = ["| " + " | ".join(head) + " |", "|" + "|".join("--:" if i in right else "---" for i in range(len(head))) + "|"]
    return "\n".join(lines + ["| " + " | ".join(row) + " |" for row in rows]) + "\n"


def beside_floor(rows):
    return table(
        ["job", "floor", "floor", "ours", "ratio", "quartiles", "at most", ""],
        [[row.heading(), row.floor_name, wording(row.floor, row.unit), wording(row.thing, row.unit), ratio_wording(row.ratio),
          row.spread(), row.limit(), row.verdict()] for row in rows], {2, 3, 4, 5, 6})


def scaling_table(rows):
    what, _, by = rows[0].title.partition(", by ")
    lines = [[f"{int(row.arguments[0]):,}", wording(row.floor, "ns"), wording(row.thing, "ns"), ratio_wording(row.ratio),
              f"{row.thing / rows[0].thing:.3g}"] for row in rows]
    return (f"### {what[0].upper()}{what[1:]}\n\nThe floor: {rows[0].floor_name}.\n\n" +
            table([by, "floor", "ours", "ratio", "growth"], lines, set(range(5))))


def command(*words):
    done = subprocess.run(words, capture_output=True, text=True, check=False)
    return done.stdout.strip()


def machine(context, seconds):
    model = re.search(r"model name\s*: (.*)", open("/proc/cpuinfo", encoding="utf-8").read())
    memory = int(re.search(r"MemTotal:\s*(\d+)", open("/proc/meminfo", encoding="utf-8").read())[1]) / 1048576
    changed = command("git", "status", "--porcelain", "--untracked-files=no", "--", ".", ":!docs/performance.*")
    facts = [
        ("machine", f"{model[1] if model else os.uname().machine}, {context['num_cpus']} cores, {memory:.0f} GiB"),
        ("system", f"Linux {os.uname().release}, {command('c++', '--version').splitlines()[0]}"),
        ("date", datetime.datetime.now(datetime.timezone.utc).strftime("%Y-%m-%d %H:%M UTC")),
        ("commit", command("git", "rev-parse", "--short=12", "HEAD") + (", with changes" if changed else "")),
        ("load average at the start", ", ".join(f"{load:.2f}" for load in context.get("load_avg", []))),
        ("time per row", f"{seconds} s"),
    ]
    return table(["", ""], [list(fact) for fact in facts], set())


def chart(rows):
    """Bars of ratios, each with a mark where its budget ends. Readable on light and on dark pages."""
    rows = [row for row in rows if row.budget]
    left, right, top, step = 340, 56, 58, 24
    width, height = 880, top + step * len(rows) + 16
    most = max(2.1, *(row.ratio for row in rows)) if rows else 2.1
    scale = (width - left - right) / most

    def x(ratio):
        return left + ratio * scale

    def text_of(words):
        return words.replace("`", "").replace("&", "&amp;").replace("<", "&lt;")

    out = [
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" width="{width}" height="{height}" role="img"',
        '  aria-label="Cost of each call as a multiple of its floor, with budgets">',
        "<style>",
        "  .page { fill: #ffffff } text { fill: #24292f; font: 13px system-ui, sans-serif } .small { font-size: 12px; fill: #57606a }",
        "  .bar { fill: #3b82c4 } .over { fill: #c8452f } .grid { stroke: #d0d7de } .floor { stroke: #57606a } .budget { stroke: #24292f }",
        "  @media (prefers-color-scheme: dark) {",
        "    .page { fill: #0d1117 } text { fill: #e6edf3 } .small { fill: #9aa4af }",
        "    .bar { fill: #58a6e8 } .over { fill: #f0705a } .grid { stroke: #30363d } .floor { stroke: #9aa4af } .budget { stroke: #e6edf3 }",
        "  }",
        "</style>",
        f'<rect class="page" width="{width}" height="{height}" rx="6"/>',
        f'<text x="16" y="26" font-weight="600">Cost of each call over its floor</text>',
        f'<text class="small" x="{left}" y="26">bar: measured; upright mark: budget; 1 is the floor</text>',
    ]
    ticks = [i * 0.5 for i in range(int(most / 0.5) + 1)]
    for tick in ticks:
        kind = "floor" if tick == 1 else "grid"
        out.append(f'<line class="{kind}" x1="{x(tick):.1f}" y1="{top - 6}" x2="{x(tick):.1f}" y2="{height - 12}"/>')
        out.append(f'<text class="small" x="{x(tick):.1f}" y="{top - 12}" text-anchor="middle">{tick:g}</text>')
    for i, row in enumerate(rows):
        y = top + i * step
        out.append(f'<text x="{left - 10}" y="{y + 14}" text-anchor="end">{text_of(row.heading())}</text>')
        out.append(f'<rect class="{"over" if row.over else "bar"}" x="{left}" y="{y + 3}" width="{row.ratio * scale:.1f}" height="14" rx="2"/>')
        out.append(f'<line class="budget" stroke-width="2.5" x1="{x(row.budget):.1f}" y1="{y}" x2="{x(row.budget):.1f}" y2="{y + 20}"/>')
        out.append(f'<text class="small" x="{x(max(row.ratio, row.budget)) + 6:.1f}" y="{y + 14}">{ratio_wording(row.ratio)}</text>')
    return "\n".join(out + ["</svg>", ""])


def page(context, seconds, budgeted, others, scaling, peers, missing):
    out = [INTRODUCTION.format(seconds=seconds), machine(context, seconds)]
    over = [row for row in budgeted if row.over]
    out.append(f"## Calls that have a budget\n\n{len(budgeted) - len(over)} of {len(budgeted)} rows are within it.\n")
    out.append("![Cost of each call over its floor](performance.svg)\n")
    out.append(beside_floor(budgeted))
    out += [words + "\n" for name, words in HELD_BY.items() if any(row.name == name for row in over)]
    out.append("## Others that are called often\n")
    out.append(beside_floor(others))
    out.append(SCALING)
    out += [scaling_table(rows) for rows in scaling.values() if rows]
    out.append(PEERS)
    out.append(table(
        ["job", "peer", "peer", "ours", "ours over the peer's", "quartiles"],
        [[row.heading(), row.floor_name, wording(row.floor, "ns"), wording(row.thing, "ns"), ratio_wording(row.ratio),
          row.spread()] for row in peers], {2, 3, 4, 5}))
    there = {row.floor_name for row in peers} | ({"bare ZeroMQ"} if any(row.name == "remote_call" for row in budgeted) else set())
    out += [words + "\n" for name, words in HONEST_WORDS.items() if name in there]
    if missing:
        out.append("## Not measured\n")
        out.append("\n".join(f"- {row.name}: {row.error}" for row in missing) + "\n")
    return "\n".join(out)


def print_table(rows):
    for row in rows:
        verdict = "OVER" if row.over else ""
        print(f"{row.heading():66.66} {wording(row.floor, row.unit):>9} {wording(row.thing, row.unit):>9} "
              f"{ratio_wording(row.ratio):>8} {row.limit():>12} {verdict}")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--rows", required=True, help="what switchcfg-bench wrote")
    parser.add_argument("--seconds", required=True)
    parser.add_argument("--documents", help="folder that receives performance.md and performance.svg")
    arguments = parser.parse_args()
    with open(arguments.rows, encoding="utf-8") as file:
        measured = json.load(file)
    everything = [Row(entry) for entry in measured["benchmarks"]]
    missing = [row for row in everything if row.error]
    rows = [row for row in everything if not row.error]
    peers = [row for row in rows if row.name.startswith("peer_")]
    scaling = {}
    for row in rows:
        if row.name.startswith("scaling_"):
            scaling.setdefault(row.name, []).append(row)
    plain = [row for row in rows if not row.name.startswith(("peer_", "scaling_"))]
    budgeted = [row for row in plain if row.limit()]
    others = [row for row in plain if not row.limit()]

    print(f"{'':66} {'floor':>9} {'ours':>9} {'ratio':>8} {'at most':>12}")
    print_table(budgeted + others)
    for group in scaling.values():
        print()
        print_table(group)
    print()
    for row in peers:
        row.title += ", beside " + row.floor_name
    print_table(peers)
    for row in peers:
        row.title = row.title.rpartition(", beside ")[0]
    for row in missing:
        print(f"not measured: {row.name} {' '.join(row.arguments)}: {row.error}")
    if arguments.documents:
        with open(os.path.join(arguments.documents, "performance.md"), "w", encoding="utf-8") as file:
            file.write(page(measured["context"], arguments.seconds, budgeted, others, scaling, peers, missing))
        with open(os.path.join(arguments.documents, "performance.svg"), "w", encoding="utf-8") as file:
            file.write(chart(budgeted))
    over = [row for row in budgeted if row.over]
    failed = [row for row in missing if not row.name.startswith("peer_")]
    print(f"\n{len(budgeted) - len(over)} within their budget, {len(over)} over, {len(failed)} not measured")
    return 1 if over or failed else 0


if __name__ == "__main__":
    sys.exit(main())
