#!/usr/bin/env python3
"""Takes output, microphone, session manager and server away and gives them back at random while a tone is recorded and heard.

usage: bench/unplug.py CANTOREL_CLI [SECONDS] [SEED]

Each round records both sources on a server of its own for a while and prints how far the length of the file is from the
time recorded (against the median of the first rounds, which nothing disturbs, since start and end are told late), how long after each return the tone was heard again, and what was counted as filled or dropped.
"""
import array, json, math, os, random, signal, statistics, subprocess, sys, tempfile, threading, time, wave

RATE, ROUND = 48000, 20
CALM, CALM_ROUND = 5, 3  # rounds that nothing disturbs, and their seconds
CLI = os.path.abspath(sys.argv[1])
SECONDS = float(sys.argv[2]) if len(sys.argv) > 2 else 60
SEED = int(sys.argv[3]) if len(sys.argv) > 3 else random.SystemRandom().randrange(1 << 30)
RANDOM = random.Random(SEED)

HOME = tempfile.mkdtemp(prefix="cantorel-unplug-")
ENV = {k: v for k, v in os.environ.items() if not k.startswith(("DBUS", "PIPEWIRE"))}
ENV.update(HOME=HOME, XDG_CONFIG_HOME=HOME + "/config", XDG_STATE_HOME=HOME + "/state", XDG_DATA_HOME=HOME + "/data",
           XDG_CACHE_HOME=HOME + "/cache", XDG_RUNTIME_DIR=HOME + "/run")


def node(name, description, kind, more):
    return (f'{{ factory.name = support.null-audio-sink node.name = "{name}" node.description = "{description}" '
            f"media.class = {kind} audio.position = [ FL FR ] object.linger = true {more} }}")


OUTPUT = node("builtin_output", "Built-in Output", "Audio/Sink", "priority.session = 1000 priority.driver = 1000")
MICROPHONE = node("builtin_microphone", "Built-in Microphone", "Audio/Source/Virtual",
                  "priority.session = 2000 priority.driver = 2000")
LOOPBACK = node("Tessolar_AudioDevice", "Tessolar_AudioDevice", "Audio/Sink",
                "priority.session = 100 priority.driver = 3000 monitor.channel-volumes = false")


def write(path, text):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w") as file:
        file.write(text)


def run(*words):
    return subprocess.run(words, env=ENV, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                          timeout=20).stdout.decode()


def spawn(*words, **more):
    more.setdefault("stdout", subprocess.DEVNULL)
    return subprocess.Popen(words, env=ENV, stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL, **more)


def end(process, number=signal.SIGTERM):
    if process.poll() is None:
        process.send_signal(number)
        try:
            process.wait(5)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()


def until(condition, seconds=10):
    limit = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > limit:
            return False
        time.sleep(0.02)
    return True


class World:
    def __init__(self):
        self.server = self.manager = None

    def start(self):
        self.server = spawn("pipewire")
        until(lambda: os.path.exists(HOME + "/run/pipewire-0"))
        self.manager = spawn("wireplumber")
        return until(lambda: "default.audio.sink" in run("pw-metadata", "0", "default.audio.sink"))

    def stop(self):
        for process in (self.manager, self.server):
            end(process, signal.SIGKILL)
        if os.path.exists(HOME + "/run/pipewire-0"):
            os.remove(HOME + "/run/pipewire-0")

    def remove(self, name):
        for item in json.loads(run("pw-dump") or "[]"):
            if item.get("info", {}).get("props", {}).get("node.name") == name:
                run("pw-cli", "destroy", str(item["id"]))

    def add(self, arguments):
        run("pw-cli", "create-node", "adapter", arguments)


class Ear:
    """Hears what the output gives out: the moments at which the tone is in it."""

    def __init__(self):
        self.heard, self.process, self.stopping = [], None, False
        self.thread = threading.Thread(target=self.listen)
        self.thread.start()

    def listen(self):
        while not self.stopping:
            if "builtin_output:monitor_FL" not in run("pw-link", "-o"):
                time.sleep(0.02)
                continue
            self.process = spawn("pw-record", "--target", "builtin_output",
                                 "-P", "{ stream.capture.sink=true node.dont-reconnect=true }", "--format", "f32",
                                 "--rate", str(RATE), "--channels", "2", "--latency", "10ms", "-",
                                 stdout=subprocess.PIPE)
            while block := self.process.stdout.read1(4096):
                samples = array.array("f", block[:len(block) // 4 * 4])
                if samples and max(samples) > 0.05:
                    self.heard.append(time.monotonic())
            end(self.process)
            time.sleep(0.02)

    def stop(self):
        self.stopping = True
        if self.process:
            end(self.process)
        self.thread.join()

    def after(self, moment):
        return next((heard - moment for heard in self.heard if heard >= moment), None)


def main():
    write(ENV["XDG_CONFIG_HOME"] + "/wireplumber/main.lua.d/51-world.lua",
          'alsa_monitor.enabled = false\nv4l2_monitor.enabled = false\nlibcamera_monitor.enabled = false\n'
          'default_access.properties["enable-flatpak-portal"] = false\n'
          'stream_defaults.properties["restore-props"] = false\nstream_defaults.properties["restore-target"] = false\n')
    write(ENV["XDG_CONFIG_HOME"] + "/wireplumber/bluetooth.lua.d/51-world.lua", "bluez_monitor.enabled = false\n")
    write(ENV["XDG_CONFIG_HOME"] + "/pipewire/pipewire.conf.d/50-world.conf", "context.objects = [\n" + "".join(
        f"  {{ factory = adapter args = {arguments} }}\n" for arguments in (OUTPUT, MICROPHONE, LOOPBACK)) + "]\n")
    os.makedirs(HOME + "/run", mode=0o700)
    os.makedirs(HOME + "/out")
    tone = array.array("h", (int(8000 * math.sin(2 * math.pi * 440 * (i // 2) / RATE)) for i in range(2 * RATE * 120)))
    with wave.open(HOME + "/tone.wav", "wb") as file:
        file.setparams((2, 2, RATE, 0, "NONE", ""))
        file.writeframes(tone.tobytes())

    def play():
        return spawn("pw-play", HOME + "/tone.wav")

    print(f"seed {SEED}, {SECONDS:g} s")
    world = World()
    world.start()
    worst, usual, returns, latest, unheard, rounds = 0.0, [], 0, 0.0, 0, 0
    begin = time.monotonic()
    while time.monotonic() - begin < SECONDS:
        player = play()
        recorder = spawn(CLI, "record", "--json", "--source", "both", "--format", "2", "--skip-silence", "off",
                         "--folder", HOME + "/out", stdout=subprocess.PIPE)
        events, started = [], []

        def read():
            for line in recorder.stdout:
                if line.startswith(b"{"):
                    events.append(json.loads(line))
                    if events[-1]["event"] == "started":
                        started.append(time.monotonic())

        reader = threading.Thread(target=read)
        reader.start()
        until(lambda: started)
        ear = Ear()
        time.sleep(1 if rounds >= CALM else CALM_ROUND)
        faults = []
        while rounds >= CALM and time.monotonic() - started[0] < ROUND:
            fault = RANDOM.choice(["output", "microphone", "server", "session manager and server"])
            away = RANDOM.uniform(0.3, 3)
            if fault == "output":
                world.remove("builtin_output")
                if ear.process:
                    end(ear.process)  # It may not notice; and it must not hear another device meanwhile.
                time.sleep(away)
                world.add(OUTPUT)
            elif fault == "microphone":
                world.remove("builtin_microphone")
                time.sleep(away)
                world.add(MICROPHONE)
            else:
                if fault != "server":
                    end(world.manager, signal.SIGKILL)
                    time.sleep(away)
                world.stop()
                end(player)
                if ear.process:
                    end(ear.process)
                time.sleep(away)
                world.start()
                player = play()
            back = time.monotonic()
            time.sleep(RANDOM.uniform(2, 3))
            delay = ear.after(back)
            faults.append((fault, away, delay))
            returns += 1
            if delay is None:
                unheard += 1
            else:
                latest = max(latest, delay)
        ear.stop()
        stopped = time.monotonic()
        recorder.send_signal(signal.SIGINT)
        recorder.wait(60)
        reader.join()
        end(player)
        rounds += 1
        finished = next((event for event in events if event["event"] == "finished"), {})
        length, wall = finished.get("seconds", 0), stopped - started[0]
        if rounds <= CALM:
            usual.append(length - wall)
        else:
            worst = max(worst, abs(length - wall - statistics.median(usual)))
        print(f"round {rounds}: {length:.3f} s recorded of {wall:.3f}, dropped {finished.get('droppedFrames')}, "
              f"told lost {sum(e['event'] == 'deviceLost' for e in events)}, "
              f"back {sum(e['event'] == 'deviceBack' for e in events)}; "
              + ", ".join(f"{fault} {away:.1f} s: " + ("unheard" if delay is None else f"heard after {delay:.2f}")
                          for fault, away, delay in faults), flush=True)
    world.stop()
    print(f"{rounds} rounds, {returns} returns: length off by at most {worst * 1000:.0f} ms (limit 50), heard again after "
          f"at most {latest:.2f} s (limit 0.5), {unheard} not heard")


main()
