"""The figures of bench/run: each is a ratio of two things measured in the same run, or a size."""

import argparse
import contextlib
import json
import os
import pathlib
import re
import statistics
import subprocess
import sys
import tempfile
from dataclasses import asdict

from capture import capture
from figure import Figure, measure

GIB = 1 << 30
# The kernel's copying into the page cache costs one program twice what it cost the other a second ago; many pairs
# make that even.
PAIRS = 15
# Of tabs, before what they hold is measured; --rest shortens it for trying out.
rest_seconds = 300


class Transfers:
    """A TLS sink with a certificate of its own, and both programs talking to it in turn."""

    def __init__(self, binaries, folder):
        self.binaries, self.folder = binaries, folder
        certificate, key = folder / "sink.pem", folder / "sink.key"
        subprocess.run(
            ["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", "/CN=127.0.0.1",
             "-addext", "subjectAltName=IP:127.0.0.1", "-keyout", key, "-out", certificate],
            check=True, stderr=subprocess.DEVNULL)
        self.sink = subprocess.Popen([binaries / "bench_sink", certificate, key], stdout=subprocess.PIPE, text=True)
        port = self.sink.stdout.readline().split()[-1]
        self.base = f"https://127.0.0.1:{port}"
        self.environment = dict(os.environ, SSL_CERT_FILE=str(certificate))
        self.curl = ["curl", "-s", "-S", "--http1.1", "--cacert", certificate]
        for proxy in ("http_proxy", "https_proxy", "all_proxy", "HTTPS_PROXY", "ALL_PROXY"):
            self.environment.pop(proxy, None)

    def close(self):
        self.sink.terminate()
        self.sink.wait()

    def ratios(self, name, ours, theirs, written=()):
        """Ours over theirs, pair by pair and each first in turn, so that a drift of the machine's speed falls out.

        Files that a transfer writes are removed before the next: freeing the last one's pages is not its work.
        """
        def one(command):
            for path in written:
                path.unlink(missing_ok=True)
            return measure(command, self.environment)

        one(ours), one(theirs)
        pairs = []
        for i in range(PAIRS):
            first, second = (ours, theirs) if i % 2 else (theirs, ours)
            usage = one(first), one(second)
            pairs.append(usage if i % 2 else usage[::-1])
        wall = statistics.median(a.wall / b.wall for a, b in pairs)
        cpu = statistics.median(a.cpu / b.cpu for a, b in pairs)
        return [Figure.at_most(f"{name}.wall_vs_curl", wall, "ratio", 1.15),
                Figure.at_most(f"{name}.cpu_vs_curl", cpu, "ratio", 1.15)]

    def upload(self):
        source = self.folder / "source.bin"
        write_random(source, GIB)
        ours = [self.binaries / "bench_transfer", "upload", self.base, source]
        theirs = [*self.curl, "-T", source, f"{self.base}/put"]
        figures = self.ratios("upload", ours, theirs)
        source.unlink()
        return figures

    def download(self):
        address = f"{self.base}/bytes/{GIB}"
        written = self.folder / "ours.bin", self.folder / "theirs.bin"
        ours = [self.binaries / "bench_transfer", "download", address, written[0]]
        theirs = [*self.curl, "-o", written[1], address]
        return self.ratios("download", ours, theirs, written)


def transfers(which):
    def run(binaries, folder):
        both = Transfers(binaries, folder)
        try:
            return getattr(both, which)()
        finally:
            both.close()
    return run


@contextlib.contextmanager
def local_drive(binaries, folder, niceness=0):
    """A local Drive that runs as long as it is used: its data folder, and the environment of whoever uses it."""
    environment = dict(os.environ, HOME=str(folder), XDG_DATA_HOME=str(folder / "data"),
                       XDG_STATE_HOME=str(folder / "state"), XDG_CACHE_HOME=str(folder / "cache"),
                       XDG_CONFIG_HOME=str(folder / "config"))
    drive = folder / "drive"
    server = subprocess.Popen(["nice", "-n", str(niceness), binaries / "quenby-localdrive", "--data", drive, "--quiet"],
                              stdout=subprocess.PIPE, text=True, env=environment)
    try:
        if not server.stdout.readline():
            sys.exit("quenby-localdrive did not start; its own words stand above")
        yield drive, environment
    finally:
        server.terminate()
        server.wait()


def write_random(path, size):
    block = os.urandom(1 << 20)
    with open(path, "wb") as file:
        for start in range(0, size, len(block)):
            file.write(block[:size - start])


def memory(binaries, folder):
    """Peak memory of the command line's upload of 1 GiB, above that of 1 byte."""
    with local_drive(binaries, folder) as (drive, environment):
        # Signed in beforehand, so that the two uploads differ in nothing but the size.
        measure([binaries / "quenby", "signin", "--local", "--local-data", drive], environment)
        peaks = []
        for size in (1, GIB):
            source = folder / f"{size}.bin"
            with open(source, "wb") as file:
                file.truncate(size)
            command = [binaries / "quenby", "upload", source, "--local", "--local-data", drive, "--quiet"]
            peaks.append(measure(command, environment).peak_kib)
            source.unlink()
    return [Figure.at_most("memory.upload_1GiB_above_1B", (peaks[1] - peaks[0]) / 1024, "MiB", 16)]


def google(program):
    """The median real time of each benchmark of one program, in nanoseconds. Short repetitions take turns, so that what
    the machine does meanwhile falls on all of them alike."""
    out = subprocess.run([program, "--benchmark_format=json", "--benchmark_repetitions=15",
                          "--benchmark_enable_random_interleaving=true", "--benchmark_min_time=0.05",
                          "--benchmark_report_aggregates_only=true"], check=True, capture_output=True, text=True)
    factor = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
    report = json.loads(out.stdout[out.stdout.index("{"):])
    return {re.sub(r"(/real_time)?(/repeats:\d+)?(_median)?$", "", entry["run_name"]):
            entry["real_time"] * factor[entry["time_unit"]]
            for entry in report["benchmarks"] if entry.get("aggregate_name") == "median"}


def instructions(program, count):
    """What one round with so many fetchers executes, start-up included; exact, whatever else the machine does."""
    out = subprocess.run(["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", program,
                          f"--benchmark_filter=/{count}/", "--benchmark_min_time=0"],
                         check=True, capture_output=True, text=True)
    return int(re.search(r"Collected : (\d+)", out.stderr)[1])


def fetchers(binaries, _):
    """Time tells of the caches too: ten thousand fetchers are more than fit in them. Instructions tell of the queue."""
    program = binaries / "bench_fetchers"
    times = google(program)
    small = times["startAndFinishQueuedFetchers/100"] / 100
    large = times["startAndFinishQueuedFetchers/10000"] / 10000
    executed = {count: instructions(program, count) for count in (100, 1000, 10000)}
    few = (executed[1000] - executed[100]) / 900
    many = (executed[10000] - executed[1000]) / 9000
    return [Figure("fetchers.time_of_one_of_10000", round(large / 1000, 2), "us", "", ""),
            Figure.at_most("fetchers.instructions_10000_vs_1000", many / few, "ratio", 1.1),
            Figure.at_most("fetchers.time_10000_vs_100", large / small, "ratio", 1.5)]


def json_replies(binaries, _):
    times = google(binaries / "bench_json")
    peer = times["qJsonDocument"]
    return [Figure.at_least("json.change_list_vs_qjson", peer / times["usableChangeList"], "ratio", 8),
            Figure.at_least("json.sorted_dates_vs_qjson", peer / times["sortedModificationDates"], "ratio", 1.5)]


def agent(binaries, folder):
    """The desktop program in a virtual desktop with a tray and a keyring; bench/agent.sh says what is measured."""
    session = ["scripts/desktop/session.sh", "--panel", "xfce4", "--keyring", "unlocked", "--home", folder, "--"]
    out = subprocess.run([*session, "bench/agent.sh", binaries], check=True, stdout=subprocess.PIPE, text=True)
    values = {name: float(value) for name, value in (line.split() for line in out.stdout.splitlines())}
    units = {"launch_ms": "ms", "memory_mib": "MiB", "cpu_ticks": "ticks", "wakeups": "", "bus_messages": "",
             "repaints": ""}
    goals = {"launch_ms": 400, "idle_wakeups": 25, "idle_memory_mib": 45, "idle_own_memory_mib": 12,
             "idle_bus_messages": 0, "idle_repaints": 0}
    figures = []
    for name in sorted(values, key=lambda name: (name.startswith("after"), name)):
        unit = next(unit for ending, unit in units.items() if name.endswith(ending))
        figures.append(Figure.at_most(f"agent.{name}", values[name], unit, goals[name]) if name in goals
                       else Figure(f"agent.{name}", values[name], unit, "", ""))
    return figures


def dropped(rounds, binaries, drive, files, *count):
    """The frames of the interface while a folder's files are uploaded; bench_interface.cpp says what is measured."""
    session = ["scripts/desktop/session.sh", "--panel", "xfce4", "--notifications", "dunst", "--"]
    measured = []
    for _ in range(rounds):
        out = subprocess.run([*session, binaries / "bench_interface", "upload", drive, files, *count], check=True,
                             stdout=subprocess.PIPE, text=True)
        measured.append({name: float(value) for name, value in (line.split() for line in out.stdout.splitlines())})
    return measured


def interface(binaries, folder):
    """Sixty frames a second: while much is uploaded at once, and when thousands of files are dropped.

    The Drive is a stranger's computer here: it gets the time that nobody else wants.
    """
    large, small = folder / "large", folder / "small"
    large.mkdir(), small.mkdir()
    for i in range(2):
        write_random(large / f"film {i}.mov", GIB // 2)
    for i in range(50):
        write_random(large / f"picture {i}.png", 1 << 20)
    for i in range(5000):
        (small / f"note {i}.txt").write_text(f"note {i}")
    with local_drive(binaries, folder, niceness=19) as (drive, _):
        much = dropped(7, binaries, drive, large)
        many = dropped(3, binaries, drive, small, "200")

    def middle(rounds, value):
        return statistics.median(value(one) for one in rounds)

    return [Figure.at_least("interface.frames_in_time", middle(much, lambda one: one["in_time_percent"]), "%", 99),
            Figure.at_least("interface.frames_in_time_vs_idle",
                            middle(much, lambda one: one["in_time_percent"] / one["peer_in_time_percent"]), "ratio",
                            0.99),
            Figure.at_most("interface.p99_lateness_vs_idle",
                           middle(much, lambda one: one["p99_ms"] / one["peer_p99_ms"]), "ratio", 1.5),
            Figure.at_most("interface.answer_to_5000_files", middle(many, lambda one: one["answer_ms"]), "ms", 50),
            Figure.at_most("interface.worst_pause_after", middle(many, lambda one: one["worst_ms"]), "ms", 50),
            Figure("interface.worst_pause_of_idle", middle(many, lambda one: one["peer_worst_ms"]), "ms", "", "")]


def popover_opening(run):
    """By a click on the status item, to the moment when every row in sight has its thumbnail on the screen."""
    openings = [run("open", "10") for _ in range(7)]
    first = [value for one in openings for value in one["first_ms"]]
    later = sorted(value for one in openings for value in one["later_ms"])
    calls = [value for one in openings for value in one["later_from_call_ms"]]
    return [Figure.at_most("popover.first_opening", statistics.median(first), "ms", 50),
            Figure("popover.first_opening_worst", round(max(first), 3), "ms", "", ""),
            Figure.at_most("popover.later_opening", statistics.median(later), "ms", 50),
            Figure("popover.later_opening_p95", round(later[len(later) * 95 // 100], 3), "ms", "", ""),
            Figure("popover.later_opening_from_call", round(statistics.median(calls), 3), "ms", "", "")]


def popover_scrolling(run):
    frames = {name: values[0] for name, values in run("scroll").items()}
    return [Figure.at_least("popover.frames_in_time", frames["in_time_percent"], "%", 99),
            Figure.at_least("popover.frames_in_time_vs_plain_list",
                            frames["in_time_percent"] / frames["peer_in_time_percent"], "ratio", 0.99),
            Figure.at_most("popover.frame_vs_plain_list", frames["frame_ms"] / frames["peer_frame_ms"], "ratio", 1.5),
            Figure("popover.p99_lateness", round(frames["p99_ms"], 3), "ms", "", ""),
            Figure.at_most("popover.p99_lateness_vs_plain_list", frames["p99_ms"] / frames["peer_p99_ms"], "ratio",
                           1.5)]


def popover_polling(run, drive):
    poll = {name: values[0] for name, values in run("poll", drive).items()}
    return [Figure.at_most("popover.empty_poll_repaints", poll["repaints"], "", 0),
            Figure("popover.empty_poll_cpu", round(poll["cpu_us"], 1), "us", "", ""),
            Figure("popover.empty_poll_wakeups", poll["wakeups"], "", "", "")]


def popover_long_list(run):
    """Each in a process of its own, as the first answer after a start is: there memory is not yet at hand."""
    pairs = []
    for i in range(7):
        names = ("list", "read") if i % 2 else ("read", "list")
        pairs.append({name: values[0] for which in names for name, values in run(which).items()})

    def middle(value):
        return statistics.median(value(one) for one in pairs)

    return [Figure("popover.27_pages", round(middle(lambda one: one["from_last_byte_ms"]), 3), "ms", "", ""),
            Figure.at_most("popover.27_pages_vs_qjson",
                           middle(lambda one: one["from_last_byte_ms"] / one["peer_ms"]), "ratio", 1.0),
            Figure("popover.27_pages_cpu_vs_qjson",
                   round(middle(lambda one: one["from_last_byte_cpu_ms"] / one["peer_cpu_ms"]), 3), "ratio", "", ""),
            Figure("popover.27_pages_paging_vs_qjson",
                   round(middle(lambda one: one["from_request_ms"] / one["peer_ms"]), 3), "ratio", "", ""),
            Figure.at_most("popover.27_pages_longest_pause", middle(lambda one: one["pause_ms"]), "ms", 16.7),
            Figure("popover.longest_pause_of_idle", round(middle(lambda one: one["idle_pause_ms"]), 3), "ms", "", "")]


def popover(binaries, folder):
    """The popover under a panel's tray; bench_popover.cpp says what is measured."""
    def run(*arguments):
        session = ["scripts/desktop/session.sh", "--panel", "xfce4", "--"]
        out = subprocess.run([*session, binaries / "bench_popover", *arguments], check=True, stdout=subprocess.PIPE,
                             text=True)
        values = {}
        for name, value in (line.split() for line in out.stdout.splitlines()):
            values.setdefault(name, []).append(float(value))
        return values

    figures = popover_opening(run) + popover_scrolling(run)
    with local_drive(binaries, folder) as (drive, _):
        figures += popover_polling(run, drive)
    return figures + popover_long_list(run)


def workspace_tabs(binaries, folder):
    """From a press on the bar's button for a new tab; bench_workspace.cpp says to what."""
    with local_drive(binaries, folder) as (drive, _):
        base = json.loads((drive / "endpoint.json").read_text())["url"]
        session = ["scripts/desktop/session.sh", "--screen", "1400x900", "--", binaries / "bench_workspace"]
        out = subprocess.run([*session, base, "40"], check=True, stdout=subprocess.PIPE, text=True)
    figures = []
    for name, what in ("frame_ms", "new_tab_frame"), ("page_ms", "new_tab_page"):
        values = sorted(float(line.split()[1]) for line in out.stdout.splitlines() if line.startswith(name))
        figures += [Figure(f"workspace.{what}", round(statistics.median(values), 3), "ms", "", ""),
                    Figure(f"workspace.{what}_p95", round(values[len(values) * 95 // 100], 3), "ms", "", "")]
    return figures


def workspace(binaries, folder):
    """The workspace's tabs: how fast one opens, and what twenty hold in memory; bench/workspace.sh says of which."""
    figures = workspace_tabs(binaries, folder)
    session = ["scripts/desktop/session.sh", "--panel", "xfce4", "--keyring", "unlocked", "--screen", "1400x900", "--"]
    out = subprocess.run([*session, "bench/workspace.sh", binaries, str(rest_seconds)], check=True,
                         stdout=subprocess.PIPE, text=True)
    held = {name: float(value) for name, value in (line.split() for line in out.stdout.splitlines())}
    one = held["one_tab"]
    return figures + [Figure("workspace.memory_1_tab", one, "MiB", "", ""),
                      Figure.at_most("workspace.memory_20_restored_vs_1", held["restored"] / one, "ratio", 1.3),
                      Figure("workspace.memory_20_seen_vs_1", round(held["seen"] / one, 3), "ratio", "", ""),
                      Figure("workspace.memory_20_restored_vs_chromium", round(held["restored"] / held["chromium"], 3),
                             "ratio", "", ""),
                      Figure("workspace.memory_20_seen_vs_chromium", round(held["seen"] / held["chromium"], 3), "ratio",
                             "", "")]


GROUPS = {"upload": transfers("upload"), "download": transfers("download"), "memory": memory, "json": json_replies,
          "fetchers": fetchers, "agent": agent, "interface": interface, "popover": popover,
          "workspace": workspace, "capture": capture}


def main():
    parser = argparse.ArgumentParser(prog="bench/run")
    parser.add_argument("binaries", type=pathlib.Path)
    parser.add_argument("names", nargs="*", metavar="NAME", help=", ".join(GROUPS))
    parser.add_argument("--json", action="store_true")
    parser.add_argument("--rest", type=int, default=rest_seconds, metavar="SECONDS")
    options = parser.parse_args()
    globals()["rest_seconds"] = options.rest
    if unknown := set(options.names) - GROUPS.keys():
        parser.error(f"no such figures: {', '.join(unknown)}; there are {', '.join(GROUPS)}")
    figures = []
    scratch = pathlib.Path("build/bench").absolute()
    scratch.mkdir(parents=True, exist_ok=True)
    for name in options.names or GROUPS:
        with tempfile.TemporaryDirectory(dir=scratch) as folder:
            found = GROUPS[name](options.binaries.absolute(), pathlib.Path(folder))
        figures += found
        if not options.json:
            for figure in found:
                print(f"{figure.name:36} {figure.value:10g} {figure.unit:6} {figure.goal:8} {figure.met}", flush=True)
    if options.json:
        print(json.dumps([asdict(figure) for figure in figures], indent=2))


if __name__ == "__main__":
    main()
