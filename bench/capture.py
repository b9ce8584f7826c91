"""Recordings against those of ffmpeg: the same display, the same moving picture, the same encoder with its settings."""

import contextlib
import os
import re
import statistics
import subprocess
import sys
import time
from dataclasses import dataclass

from figure import Figure

SIZE = "1280x800"
RATE = 30  # frames a second
SECONDS = int(os.environ.get("QUENBY_BENCH_CAPTURE_SECONDS", 20))  # shorter for trying out
ROUNDS = 3  # of both, in turn
STARTS = 5
# Twice as many pictures as frames: each frame has something new to show, whenever it is taken.
PATTERN_RATE = 2 * RATE
ENCODER = "x264enc"
# What the program sets that encoder to; the movies tell whether it is the same.
LIKEWISE = ["-c:v", "libx264", "-preset", "veryfast", "-crf", "23", "-g", str(2 * RATE), "-pix_fmt", "yuv420p"]


@dataclass
class Recording:
    first_frame_ms: float
    end_ms: float
    cpu: float  # seconds, of the whole process
    movie: dict = None  # what bench_movie says of it
    size: int = 0  # bytes
    settings: bytes = b""  # of the encoder

    def of_frame(self, value):
        """Divided among the frames that show something new: the others cost next to nothing."""
        return value / (self.movie["frames"] - self.movie["repeated"])


@contextlib.contextmanager
def desktop():
    """A virtual desktop that is there as long as it is used: the environment of whoever uses it."""
    session = subprocess.Popen(["scripts/desktop/session.sh", "--screen", SIZE, "--", "sh", "-c",
                                'echo "$DISPLAY $XDG_RUNTIME_DIR"; exec cat'],
                               stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    try:
        line = session.stdout.readline()
        if not line:
            sys.exit("The virtual desktop did not start; its own words stand above")
        display, runtime = line.rstrip("\n").split(" ", 1)
        yield dict(os.environ, DISPLAY=display, XDG_RUNTIME_DIR=runtime)
    finally:
        session.stdin.close()
        session.wait()


@contextlib.contextmanager
def moving_picture(binaries, environment):
    size = SIZE.split("x")
    program = subprocess.Popen([binaries / "bench_pattern", "0", "0", *size, str(PATTERN_RATE)], env=environment,
                               stdout=subprocess.PIPE, text=True)
    try:
        if program.stdout.readline() != "ready\n":
            sys.exit("There is no picture to record; its own words stand above")
        yield
    finally:
        program.terminate()
        program.wait()


def named_values(text):
    return {name: float(value) for name, value in (line.split() for line in text.splitlines())}


def finish(process):
    """Its processor time; it has ended or ends now, and well."""
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"{' '.join(map(str, process.args))} failed; its own words stand above")
    return usage.ru_utime + usage.ru_stime


def record_ours(binaries, environment, path, seconds, *options):
    process = subprocess.Popen([binaries / "bench_capture", str(seconds), str(RATE), ENCODER, path, *options],
                               env=dict(environment, QT_LOGGING_RULES="quenby.capture.info=false"),
                               stdout=subprocess.PIPE, text=True)
    said = named_values(process.stdout.read())
    return Recording(cpu=finish(process), **said)


def record_theirs(environment, path, seconds):
    """It says how far it is, and ends in good order when it reads a q."""
    start = time.monotonic()
    process = subprocess.Popen(["ffmpeg", "-v", "error", "-y", "-progress", "pipe:1", "-stats_period", "0.01", "-f",
                                "x11grab", "-framerate", str(RATE), "-video_size", SIZE, "-i", environment["DISPLAY"],
                                *LIKEWISE, path], env=environment, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                               text=True)
    for line in process.stdout:
        if line.startswith("frame=") and int(line.split("=")[1]) > 0:
            break
    first = time.monotonic()
    # Nobody reads what it says of all the others until it ends, and so it says little.
    reader = subprocess.Popen(["cat"], stdin=process.stdout, stdout=subprocess.DEVNULL)
    time.sleep(seconds)
    stop = time.monotonic()
    process.stdin.write("q")
    process.stdin.close()
    cpu = finish(process)
    end = time.monotonic()
    reader.wait()
    return Recording(first_frame_ms=1000 * (first - start), end_ms=1000 * (end - stop), cpu=cpu)


def look_at(recording, binaries, path):
    """Afterwards, when nothing is measured any more."""
    out = subprocess.run([binaries / "bench_movie", path], check=True, stdout=subprocess.PIPE, text=True)
    recording.movie = named_values(out.stdout)
    data = path.read_bytes()
    recording.size = len(data)
    recording.settings = re.search(rb"x264 - core [^\0]*options: ([ -~]*=[ -~]*)", data)[1]
    path.unlink()
    return recording


def pairs(binaries, folder, environment):
    """Ours and theirs, each first in turn. The very first of each warms up what the others find in memory."""
    record_ours(binaries, environment, folder / "warm.mov", 1)
    record_theirs(environment, folder / "theirs warm.mov", 1)
    for i in range(ROUNDS):
        ours, theirs = folder / f"ours {i}.mov", folder / f"theirs {i}.mov"
        if i % 2:
            b, a = record_theirs(environment, theirs, SECONDS), record_ours(binaries, environment, ours, SECONDS)
        else:
            a, b = record_ours(binaries, environment, ours, SECONDS), record_theirs(environment, theirs, SECONDS)
        a, b = look_at(a, binaries, ours), look_at(b, binaries, theirs)
        if a.settings != b.settings:
            sys.exit(f"The encoders are not set alike:\n{a.settings.decode()}\n{b.settings.decode()}")
        yield a, b


def middle(values):
    return statistics.median(list(values))


def recordings(rounds):
    ours = [a for a, _ in rounds]
    # Missing ones, and those that show nothing new.
    dropped = [max(0, SECONDS * RATE - one.movie["frames"]) + one.movie["unreadable"] + one.movie["repeated"]
               for one in ours]
    gap_ms = [max(one.movie["longest_gap"] for one in both) / PATTERN_RATE * 1000 for both in zip(*rounds)]
    return [Figure.at_most("capture.cpu_vs_ffmpeg", middle(a.of_frame(a.cpu) / b.of_frame(b.cpu) for a, b in rounds),
                           "ratio", 1.1),
            Figure("capture.cpu_of_a_core", round(middle(100 * a.cpu / a.movie["seconds"] for a in ours), 1), "%", "",
                   ""),
            Figure.at_most("capture.file_vs_ffmpeg", middle(a.of_frame(a.size) / b.of_frame(b.size) for a, b in rounds),
                           "ratio", 1.1),
            Figure.at_most("capture.dropped_frames", middle(dropped), "", 0),
            Figure("capture.dropped_frames_of_ffmpeg", middle(b.movie["repeated"] for _, b in rounds), "", "", ""),
            Figure("capture.longest_gap", round(gap_ms[0], 1), "ms", "", ""),
            Figure("capture.longest_gap_of_ffmpeg", round(gap_ms[1], 1), "ms", "", ""),
            Figure("capture.stop_to_movie", round(middle(a.end_ms for a in ours), 1), "ms", "", ""),
            Figure("capture.stop_to_movie_vs_ffmpeg", round(middle(a.end_ms / b.end_ms for a, b in rounds), 3),
                   "ratio", "", "")]


def starts(binaries, folder, environment):
    """Of a session that was made while the user selected, of one that is made at once, and of ffmpeg."""
    ready, at_once, theirs = [], [], []
    for i in range(STARTS):
        ready.append(record_ours(binaries, environment, folder / f"ready {i}.mov", 1).first_frame_ms)
        at_once.append(record_ours(binaries, environment, folder / f"at once {i}.mov", 1, "--at-once").first_frame_ms)
        theirs.append(record_theirs(environment, folder / "theirs.mov", 1).first_frame_ms)
    return [Figure("capture.first_frame", round(middle(ready), 1), "ms", "", ""),
            Figure("capture.first_frame_at_once", round(middle(at_once), 1), "ms", "", ""),
            Figure.at_most("capture.first_frame_vs_ffmpeg", middle(a / b for a, b in zip(ready, theirs)), "ratio", 1.0)]


def overlay(binaries):
    """Its frames while a rectangle is dragged on it; bench_overlay.cpp says against what."""
    session = ["scripts/desktop/session.sh", "--screen", "1920x1080", "--"]
    out = subprocess.run([*session, binaries / "bench_overlay"], check=True, stdout=subprocess.PIPE, text=True)
    said = named_values(out.stdout)
    return [Figure.at_most("capture.overlay_missed_frames", said["missed_percent"], "%", 1),
            Figure("capture.overlay_missed_of_rubber_band", said["peer_missed_percent"], "%", "", ""),
            Figure("capture.overlay_p99_frame", said["p99_ms"], "ms", "", ""),
            Figure.at_most("capture.overlay_frame_vs_rubber_band", said["frame_cpu_ms"] / said["peer_frame_cpu_ms"],
                           "ratio", 1.5),
            Figure("capture.overlay_opening", round(said["opening_ms"], 1), "ms", "", "")]


def program(binaries):
    """The same in the desktop program, from click to click; bench/recording.sh says what is measured."""
    session = ["scripts/desktop/session.sh", "--keyring", "unlocked", "--"]
    out = subprocess.run([*session, "bench/recording.sh", binaries], check=True, stdout=subprocess.PIPE, text=True)
    return [Figure("capture." + name.removesuffix("_ms"), value, "ms", "", "")
            for name, value in named_values(out.stdout).items()]


def capture(binaries, folder):
    with desktop() as environment, moving_picture(binaries, environment):
        figures = recordings(list(pairs(binaries, folder, environment))) + starts(binaries, folder, environment)
    return figures + overlay(binaries) + program(binaries)
