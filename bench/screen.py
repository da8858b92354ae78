#!/usr/bin/env python3
"""What recording a screen costs: CPU and memory of record-screen against ffmpeg's grab of the same display with the same
coder settings, in turns, on moving pictures and on a still screen. Goals: 1.0 moving, 0.2 still, 1.0 memory. A round in which pictures were dropped says little: take a smaller size or a quieter machine.
With --apart it looks instead at sound and picture of two moments so many seconds apart: within a frame of each other.
usage: bench/screen.py BUILD_FOLDER [--seconds N] [--rounds N] [--size WxH] | BUILD_FOLDER --apart SECONDS"""
import argparse
import json
import os
import signal
import statistics
import subprocess
import tempfile
import time
from pathlib import Path

arguments = argparse.ArgumentParser()
arguments.add_argument("build", type=Path)
arguments.add_argument("--seconds", type=int, default=8)
arguments.add_argument("--rounds", type=int, default=3)
arguments.add_argument("--size", default="800x600")
arguments.add_argument("--apart", type=int)
options = arguments.parse_args()
if options.apart is not None:
    raise SystemExit(subprocess.run([options.build / "tests/screen_recorder_world_test", "--gtest_filter=*FlashAndClick*"],
                                    env=dict(os.environ, CANTOREL_SECONDS_APART=str(options.apart))).returncode)


def measured(command, environment):
    """CPU seconds, peak memory in MiB and output of a program."""
    output = tempfile.TemporaryFile()
    process = subprocess.Popen(command, env=environment, stdout=output, stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    output.seek(0)
    if process.returncode != 0:
        raise SystemExit(f"{command[0]} failed: {output.read()}")
    return usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024, output.read()


def started(command, environment=None, **kind):
    return subprocess.Popen(command, env=environment, **kind)


def pictures(file):
    return int(subprocess.run(["ffprobe", "-v", "error", "-select_streams", "v", "-count_packets", "-show_entries",
                               "stream=nb_read_packets", "-of", "csv=p=0", file], capture_output=True, check=True).stdout)


with tempfile.TemporaryDirectory() as folder:
    read, write = os.pipe()
    server = started(["Xvfb", "-displayfd", str(write), "-screen", "0", f"{options.size}x24", "-nolisten", "tcp", "-noreset"],
                     pass_fds=[write], stderr=subprocess.DEVNULL)
    display = ":" + os.read(read, 32).decode().strip()
    environment = dict(os.environ, DISPLAY=display, HOME=folder, XDG_STATE_HOME=folder, XDG_CONFIG_HOME=folder)
    seconds = str(options.seconds)
    ours = [options.build / "bin/cantorel-cli", "--json", "record-screen", "--audio", "off", "--seconds", seconds,
            "--output", f"{folder}/ours.mp4"]
    theirs = ["ffmpeg", "-y", "-v", "error", "-f", "x11grab", "-framerate", "30", "-video_size", options.size, "-i", display,
              "-t", seconds, "-c:v", "libx264", "-preset", "veryfast", "-tune", "zerolatency", "-b:v", "8M", "-maxrate",
              "16M", "-bufsize", "16M", "-bf", "0", "-g", "300", "-pix_fmt", "yuv420p", f"{folder}/theirs.mp4"]
    try:
        for name in ("moving", "still"):
            mover = started([options.build / "bin/moving_screen"], environment) if name == "moving" else None
            time.sleep(0.5)
            cpu, memory, dropped = [], [], 0
            for _ in range(options.rounds):
                theirCpu, theirMemory, _ = measured(theirs, environment)
                ourCpu, ourMemory, told = measured(ours, environment)
                dropped += json.loads(told.splitlines()[-1])["droppedPictures"]
                ourPictures, theirPictures = pictures(f"{folder}/ours.mp4"), pictures(f"{folder}/theirs.mp4")
                cpu.append(ourCpu / theirCpu)
                memory.append(ourMemory / theirMemory)
                print(f"{name}: CPU {ourCpu:.2f} / {theirCpu:.2f} s, memory {ourMemory:.0f} / {theirMemory:.0f} MiB, "
                      f"pictures {ourPictures} / {theirPictures}")
            print(f"{name}: CPU x {statistics.median(cpu):.2f}, memory x {statistics.median(memory):.2f}, "
                  f"{dropped} pictures dropped")
            if mover:
                mover.send_signal(signal.SIGTERM)
                mover.wait()
    finally:
        server.terminate()
        server.wait()
