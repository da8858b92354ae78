#!/usr/bin/env python3
"""Start to exit of "cantorel-cli settings get" against "ffmpeg -version": the median ratio of 50 pairs.

usage: bench/startup.py [program]"""
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

PROGRAM = sys.argv[1] if len(sys.argv) > 1 else Path(__file__).resolve().parents[1] / "build/release/bin/cantorel-cli"

for needed in (PROGRAM, "ffmpeg"):
    if not shutil.which(needed):
        sys.exit(f"startup.py needs {needed}; run scripts/packages build run, and scripts/build.")


def seconds(command, environment):
    begin = time.perf_counter()
    subprocess.run(command, check=True, env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return time.perf_counter() - begin


with tempfile.TemporaryDirectory() as home:
    environment = {"HOME": home, "PATH": "/usr/bin:/bin"}
    ratios = [seconds([PROGRAM, "settings", "get", "audioFormat"], environment)
              / seconds(["ffmpeg", "-version"], environment) for _ in range(50)]
print(f"settings get / ffmpeg -version: {statistics.median(ratios):.3f}")
