#!/usr/bin/env bash
# What the window costs while it records: CPU of the window's program while it is shown, and while it is hidden in the
# tray, above what cantorel-cli record takes, without the coding that all of them do. All in one private server, on an X
# server and a bus of the run, one after the other in each round; prints the least of the rounds, in percent of one core.
# usage: bench/window_recording.sh [seconds=20] [rounds=3]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-20} rounds=${2:-3}
bin=$PWD/build/release/bin
. scripts/lib/needs.sh
needs sox Xvfb dbus-daemon pipewire wireplumber pw-cat pw-link pw-metadata "$bin/cantorel" "$bin/cantorel-cli" \
    build/release/tests/tray
. scripts/lib/private-world.sh
out=$PRIVATE_WORLD/out && mkdir -p "$out"
export HOME=$PRIVATE_WORLD/home && mkdir -p "$HOME"
"$bin/cantorel-cli" driver install >/dev/null 2>&1

exec 3>"$PRIVATE_WORLD/display"
Xvfb -displayfd 3 -screen 0 1600x1200x24 -nolisten tcp 2>/dev/null &
private_world_pids+=($!)
dbus-daemon --session --nofork --print-address >"$PRIVATE_WORLD/bus" 2>/dev/null &
private_world_pids+=($!)
private_world_until test -s "$PRIVATE_WORLD/display" && private_world_until test -s "$PRIVATE_WORLD/bus"
export DISPLAY=:$(cat "$PRIVATE_WORLD/display") QT_QPA_PLATFORM=xcb DBUS_SESSION_BUS_ADDRESS=$(head -n 1 "$PRIVATE_WORLD/bus")
build/release/tests/tray >"$PRIVATE_WORLD/tray" &
private_world_pids+=($!)
private_world_until grep -q ready "$PRIVATE_WORLD/tray"

sox -n -r 48000 -c 2 -b 16 "$out/sound.wav" synth $((rounds * 3 * (seconds + 8) + 30)) pluck A3 pluck C4 tremolo 0.5 \
    gain -6 2>/dev/null
pw-cat -p --target 0 -P '{ node.name=feeder }' "$out/sound.wav" &
private_world_pids+=($!)
private_world_until sh -c "pw-link -o | grep -q feeder:output_FL"
for side in FL FR; do pw-link feeder:output_$side builtin_microphone:input_$side; done
for setting in "audioInputType 1" "audioFormat 4" "isAutoSkipSilence false" "isBeepBeforeRecording false" \
    "outputFolderPath $out"; do
    # shellcheck disable=SC2086  # a key and its value
    "$bin/cantorel-cli" settings set $setting >/dev/null
done

# Microseconds of all threads but the one that codes: it does the same in all three, and differs by more from run to run
# than all else takes.
cpu() {
    local task
    for task in /proc/"$1"/task/*; do
        [ "$(cat "$task/comm")" = recorder ] || cat "$task/schedstat"
    done | awk '{ sum += $1 } END { printf "%d", sum / 1000 }'
}
measure() { # measure PID: its CPU over the seconds, in percent of one core
    sleep 3
    local before
    before=$(cpu "$1")
    sleep "$seconds"
    awk -v n=$(($(cpu "$1") - before)) -v s="$seconds" 'BEGIN { printf "%.2f\n", n / s / 1e4 }'
}
for ((round = 0; round < rounds; ++round)); do
    "$bin/cantorel-cli" record --quiet >/dev/null 2>&1 &
    pid=$!
    measure $pid >>"$out/cli"
    kill -TERM $pid
    wait $pid 2>/dev/null || true # finishes its file
    "$bin/cantorel" >/dev/null 2>&1 &
    pid=$!
    private_world_until "$bin/cantorel-cli" start
    measure $pid >>"$out/shown"
    item=$(tail -n 1 "$PRIVATE_WORLD/tray")
    dbus-send --session --dest="$item" --print-reply /StatusNotifierItem org.kde.StatusNotifierItem.Activate int32:0 \
        int32:0 >/dev/null
    measure $pid >>"$out/hidden"
    kill -TERM $pid
    wait $pid 2>/dev/null || true # finishes its file
done
least() { sort -g "$out/$1" | head -n 1; } # What else runs on the machine only adds to it.
cli=$(least cli) shown=$(least shown) hidden=$(least hidden)
awk -v c="$cli" -v s="$shown" -v h="$hidden" 'BEGIN {
    printf "cantorel-cli record %.2f %%, window shown %.2f %%, hidden %.2f %% of one core\n", c, s, h
    printf "shown more by %.2f (limit 4), hidden more by %.2f (limit 0.5)\n", s - c, h - c }'
