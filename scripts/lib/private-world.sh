# Sourced: starts a PipeWire server of its own with made devices in a temporary folder, and ends it with the shell.
# Sets PRIVATE_WORLD to the folder. The caller's home folder stays what it is; configuration and state are the world's.

PRIVATE_WORLD=$(mktemp -d)
private_world_pids=()
private_world_end() {
    for ((i = ${#private_world_pids[@]} - 1; i >= 0; i--)); do kill "${private_world_pids[i]}" 2>/dev/null || true; done
    wait 2>/dev/null || true
    rm -rf "$PRIVATE_WORLD"
}
trap private_world_end EXIT

mkdir -p "$PRIVATE_WORLD"/{run,state} "$PRIVATE_WORLD"/config/pipewire/pipewire.conf.d \
    "$PRIVATE_WORLD"/config/wireplumber/{main,bluetooth}.lua.d
chmod 700 "$PRIVATE_WORLD/run"
export XDG_RUNTIME_DIR=$PRIVATE_WORLD/run XDG_CONFIG_HOME=$PRIVATE_WORLD/config XDG_STATE_HOME=$PRIVATE_WORLD/state
unset PIPEWIRE_RUNTIME_DIR PIPEWIRE_REMOTE PULSE_SERVER

cat >"$XDG_CONFIG_HOME/wireplumber/main.lua.d/51-private.lua" <<'LUA'
alsa_monitor.enabled = false
v4l2_monitor.enabled = false
libcamera_monitor.enabled = false
default_access.properties["enable-flatpak-portal"] = false
stream_defaults.properties["restore-props"] = false
stream_defaults.properties["restore-target"] = false
device_defaults.properties["use-persistent-storage"] = false
LUA
echo 'bluez_monitor.enabled = false' >"$XDG_CONFIG_HOME/wireplumber/bluetooth.lua.d/51-private.lua"
cat >"$XDG_CONFIG_HOME/pipewire/pipewire.conf.d/50-private.conf" <<'CONF'
context.objects = [
  { factory = adapter args = { factory.name = support.null-audio-sink
      node.name = "builtin_output" node.description = "Built-in Output" media.class = Audio/Sink
      audio.position = [ FL FR ] priority.session = 1000 priority.driver = 1000 object.linger = true } }
  { factory = adapter args = { factory.name = support.null-audio-sink
      node.name = "builtin_microphone" node.description = "Built-in Microphone" media.class = Audio/Source/Virtual
      audio.position = [ FL FR ] priority.session = 2000 priority.driver = 2000 object.linger = true } }
]
CONF

# Waits for a condition, ten seconds at most.
private_world_until() {
    for ((i = 0; i < 500; i++)); do
        "$@" >/dev/null 2>&1 && return 0
        sleep 0.02
    done
    echo "The private sound server did not start; its messages:" >&2
    cat "$PRIVATE_WORLD"/*.log >&2
    return 1
}
private_world_ready() { pw-metadata 0 default.audio.sink 2>/dev/null | grep -q builtin_output; }

pipewire 2>"$PRIVATE_WORLD/pipewire.log" &
private_world_pids+=($!)
private_world_until test -S "$XDG_RUNTIME_DIR/pipewire-0"
wireplumber 2>"$PRIVATE_WORLD/wireplumber.log" &
private_world_pids+=($!)
private_world_until private_world_ready
