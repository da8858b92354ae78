#!/usr/bin/env python3
"""The window against a bare Qt window with one label, both on an X server of the run: start to the first painted frame,
and resident memory at rest, with a library of so many recordings. Prints ratios of medians.

usage: bench/window.py [pairs=15] [recordings=0]"""
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
PAIRS = int(sys.argv[1]) if len(sys.argv) > 1 else 15
RECORDINGS = sys.argv[2] if len(sys.argv) > 2 else "0"
OURS = [ROOT / "build/release/bin/cantorel", "--backend=embedded"]
BARE = [ROOT / "build/release/bin/bare_window"]

for needed in (OURS[0], BARE[0], "Xvfb"):
    if not shutil.which(needed):
        sys.exit(f"window.py needs {needed}; run scripts/packages build test, and scripts/build release cantorel bare_window.")


def painted_and_memory(command, environment):
    """Seconds until the program says that it has painted, and its resident KiB two seconds later."""
    begin = time.perf_counter()
    child = subprocess.Popen(command, env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    for line in child.stderr:
        if "first frame" in line:
            break
    seconds = time.perf_counter() - begin
    time.sleep(2)
    status = Path(f"/proc/{child.pid}/status").read_text()
    resident = int(next(line for line in status.splitlines() if line.startswith("VmRSS")).split()[1])
    child.terminate()
    child.wait()
    return seconds, resident


with tempfile.TemporaryDirectory() as home:
    reader, writer = os.pipe()
    server = subprocess.Popen(["Xvfb", "-displayfd", str(writer), "-screen", "0", "1600x1200x24", "-nolisten", "tcp"],
                              pass_fds=[writer], stderr=subprocess.DEVNULL)
    display = os.read(reader, 16).decode().strip()
    (Path(home) / "run").mkdir(mode=0o700)
    # A machine that has been set up: with the virtual device, and with a session bus.
    drop_in = Path(home) / ".config/pipewire/pipewire.conf.d/50-Tessolar_AudioDevice.conf"
    drop_in.parent.mkdir(parents=True)
    drop_in.touch()
    bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"], stdout=subprocess.PIPE,
                           stderr=subprocess.DEVNULL, text=True)
    environment = {"HOME": home, "PATH": "/usr/bin:/bin", "DISPLAY": f":{display}", "QT_QPA_PLATFORM": "xcb",
                   "XDG_RUNTIME_DIR": f"{home}/run", "DBUS_SESSION_BUS_ADDRESS": bus.stdout.readline().strip(),
                   "CANTOREL_SHOW_FRAME": "1"}
    if RECORDINGS != "0":
        subprocess.run([ROOT / "build/release/bin/library_bench", "--store", home, RECORDINGS], env=environment,
                       check=True)
    pairs = [(painted_and_memory(OURS, environment), painted_and_memory(BARE, environment)) for _ in range(PAIRS)]
    for process in (bus, server):
        process.terminate()
        process.wait()

median = lambda values: statistics.median(list(values))
print(f"start to the first frame / a bare window: {median(o[0] / b[0] for o, b in pairs):.2f}"
      f"  ({median(o[0] for o, _ in pairs) * 1000:.0f} ms)")
print(f"resident memory at rest / a bare window:  {median(o[1] / b[1] for o, b in pairs):.2f}"
      f"  ({median(o[1] for o, _ in pairs) / 1024:.1f} MiB)")
