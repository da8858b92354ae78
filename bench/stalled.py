#!/usr/bin/env python3
"""Runs a command while all of its processes are stopped for some milliseconds again and again, as a busy or a virtual
machine does. What fails only then is a race: between our threads, or between us and the sound server.

usage: stalled.py STOP_MS EVERY_MS COMMAND...
       stalled.py 25 200 ctest --test-dir build/release -L world --repeat until-fail:5
"""

import os
import random
import signal
import subprocess
import sys
import time


def processes_of(session):
    for entry in os.listdir("/proc"):
        try:
            if entry.isdigit() and os.getsid(int(entry)) == session:
                yield int(entry)
        except ProcessLookupError:
            pass


def tell(processes, what):
    for process in processes:
        try:
            os.kill(process, what)
        except ProcessLookupError:
            pass


def main():
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    stop, every = (float(argument) / 1000 for argument in sys.argv[1:3])
    command = subprocess.Popen(sys.argv[3:], start_new_session=True)
    while command.poll() is None:
        time.sleep(every * random.uniform(0.5, 1.5))
        processes = list(processes_of(command.pid))
        tell(processes, signal.SIGSTOP)
        time.sleep(stop * random.uniform(0.5, 1.5))
        tell(processes, signal.SIGCONT)
    sys.exit(command.returncode)


main()
