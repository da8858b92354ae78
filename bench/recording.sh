#!/usr/bin/env bash
# CPU and memory of a running recording against pw-record piped into ffmpeg with the same coder settings, both in one
# private server, fed with the same sound, one after the other. Prints ratios, and what the main thread takes of a core:
# the timers of the session, the levels and the schedule run there and nothing else does.
# usage: bench/recording.sh [seconds=60]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
cli=$PWD/build/release/bin/cantorel-cli
. scripts/lib/needs.sh
needs sox ffmpeg pipewire wireplumber pw-cat pw-link pw-record pw-loopback pw-metadata "$cli"
. scripts/lib/private-world.sh
out=$PRIVATE_WORLD/out && mkdir -p "$out"
"$cli" driver install 2>/dev/null >/dev/null
sox -n -r 48000 -c 2 -b 16 "$out/sound.wav" synth $((seconds * 3 + 30)) pluck A3 pluck C4 gain -6 2>/dev/null

feed() { # feed PORT-PREFIX-OF-TARGET: plays the sound into it for the rest of the run
    pw-cat -p --target 0 -P "{ node.name=$2 }" "$out/sound.wav" &
    private_world_pids+=($!)
    private_world_until sh -c "pw-link -o | grep -q $2:output_FL"
    pw-link "$2:output_FL" "$1_FL" && pw-link "$2:output_FR" "$1_FR"
}
cpu() { awk '{ print $14 + $15 }' "/proc/$1/stat"; }          # clock ticks
resident() { awk '/VmRSS/ { print $2 }' "/proc/$1/status"; }  # KiB
main_thread() { cut -d' ' -f1 "/proc/$1/task/$1/schedstat"; }  # nanoseconds on a core
ticks=$(getconf CLK_TCK)

# measure NAME PID...: CPU and memory of the processes over the seconds, once they have settled
measure() {
    local name=$1 before=0 after=0 memory=0
    shift
    sleep 2
    for pid in "$@"; do before=$((before + $(cpu "$pid"))); done
    sleep "$seconds"
    for pid in "$@"; do
        after=$((after + $(cpu "$pid")))
        memory=$((memory + $(resident "$pid")))
    done
    awk -v t=$((after - before)) -v h="$ticks" -v s="$seconds" -v m="$memory" -v n="$name" \
        'BEGIN { printf "%-44s %.2f s a minute, %.1f MiB\n", n, t / h * 60 / s, m / 1024 }'
    eval "$name=$((after - before)) ${name}_memory=$memory"
}

ours() { # ours NAME SOURCE
    "$cli" record --source "$2" --format 4 --skip-silence off --folder "$out" --quiet >/dev/null 2>&1 &
    local pid=$! before
    sleep 2
    before=$(main_thread "$pid")
    measure "$1" "$pid"
    awk -v t=$(($(main_thread "$pid") - before)) -v s=$((seconds + 2)) \
        'BEGIN { printf "%-44s %.2f %%\n", "its main thread, of one core", t / s / 1e7 }'
    kill -KILL "$pid" # its conversion is not what is measured
    wait "$pid" 2>/dev/null || true
}
peer() { # peer NAME TARGET [OTHER-PID]
    local name=$1 target=$2
    shift 2
    mkfifo "$out/pipe"
    ffmpeg -nostdin -v error -y -f f32le -ar 48000 -ac 2 -i "$out/pipe" -c:a aac -aac_coder fast -aac_pns 0 -aac_is 0 \
        -aac_tns 0 -b:a 256k "$out/peer.m4a" &
    local coder=$!
    pw-record --target "$target" "${capture[@]}" --format f32 --rate 48000 --channels 2 - >"$out/pipe" &
    local recorder=$!
    measure "$name" "$recorder" "$coder" "$@"
    kill "$recorder" "$coder" 2>/dev/null || true
    wait "$recorder" "$coder" 2>/dev/null || true
    rm -f "$out/pipe"
}
ratio() { awk -v a="$1" -v b="$2" -v n="$3" 'BEGIN { printf "%-44s %.2f\n", n, a / b }'; }

feed builtin_microphone:input feeder
capture=(-P '{ node.name=recorder }')
ours mic mic
peer mic_peer builtin_microphone
feed Tessolar_AudioDevice:playback player
ours system system
pw-loopback -C Tessolar_AudioDevice -P builtin_output --capture-props='{ stream.capture.sink=true }' >/dev/null 2>&1 &
loopback=$!
private_world_pids+=($loopback)
capture=(-P '{ stream.capture.sink=true }')
peer system_peer Tessolar_AudioDevice "$loopback"

ratio "$mic" "$mic_peer" "CPU, microphone / pw-record | ffmpeg"
ratio "$system" "$system_peer" "CPU, system / that and pw-loopback"
ratio "$mic_memory" "$mic_peer_memory" "memory, microphone / pw-record | ffmpeg"
ratio "$system_memory" "$system_peer_memory" "memory, system / that and pw-loopback"
