#!/usr/bin/env bash
# Installs what was built into a folder of its own, checks the files that the desktop reads, and works with the installed
# programs as a person and the desktop's launcher do.
# usage: installed.sh BUILD
set -euo pipefail
build=$1
world=$(mktemp -d)
trap 'rm -rf "$world"' EXIT
fail() { echo "$*" >&2; exit 1; }

# Nothing of the machine's own session and settings, and nothing of the build tree.
for name in $(compgen -e | grep -E '^(XDG_|CANTOREL_)') DISPLAY WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS; do
    unset "$name"
done
export HOME=$world/home XDG_RUNTIME_DIR=$world/run XDG_DATA_DIRS=$world/usr/share QT_QPA_PLATFORM=offscreen
export CANTOREL_DEBUG=1 # nothing is asked of the maker
mkdir -p "$HOME/Music" "$world/run"
chmod 700 "$world/run"
cmake --install "$build" --prefix "$world/usr" >"$world/log" || { cat "$world/log"; exit 1; }
cd "$world/usr"

echo "What the desktop reads"
id=com.tessolar.Cantorel
# The validator of Debian 12 knows the format up to version 1.4, and not the one key that 1.5 brought.
sed 's/^Version=1.5$/Version=1.4/; /^SingleMainWindow=/d' "share/applications/$id.desktop" >"$world/$id.desktop"
desktop-file-validate "$world/$id.desktop"
appstreamcli validate --no-net --no-color "share/metainfo/$id.metainfo.xml" || fail "the software catalogue refuses it"
for program in $(sed -n 's/.*<binary>\(.*\)<.*/\1/p' "share/metainfo/$id.metainfo.xml"); do
    [ -x "bin/$program" ] || fail "the catalogue names $program, which is not installed"
    zcat "share/man/man1/$program.1.gz" | grep -q '^\.SH NAME' || fail "$program has no manual page"
done
for size in 16 22 24 32 48 64 128 256 512; do
    # The width and height of a PNG are its bytes 17 to 24.
    read -r wide high < <(od -An -j16 -N8 -t u4 --endian=big "share/icons/hicolor/${size}x$size/apps/$id.png")
    [ "$wide $high" = "$size $size" ] || fail "the icon of $size is $wide x $high"
done
[ -s "share/icons/hicolor/scalable/apps/$id.svg" ] && [ -s "share/icons/hicolor/symbolic/apps/$id-symbolic.svg" ]
grep -qx "ExecStart=$world/usr/bin/cantorel-cli tasks run" lib/systemd/user/cantorel-tasks.service ||
    fail "the unit does not name the installed program"
bash -n share/bash-completion/completions/cantorel-cli
zsh -n share/zsh/vendor-completions/_cantorel-cli
fish --no-execute share/fish/vendor_completions.d/cantorel-cli.fish

echo "The command line"
export PATH=$world/usr/bin:$PATH
cd /
[ "$(cantorel-cli lang get btnSave --code de)" = Speichern ] || fail "the languages are not found"
cantorel-cli record --backend embedded --source mic --seconds 1 --folder "$HOME/Music"
[ -s "$(echo "$HOME"/Music/*.mp3)" ] || fail "no recording was made"

echo "The window, and the launcher's actions"
export QT_LOGGING_RULES='*=false' world
cantorel-cli settings set audioInputType 1 # the microphone; software devices have no virtual one
launcher=$world/usr/share/applications/$id.desktop
action() { sed -n "/^\[Desktop Action $1\]/,\$s/^Exec=//p" "$launcher" | head -n 1; }
toggle=$(action toggle) stop=$(action stop)
[ "$toggle" ] && [ "$stop" ] || fail "the launcher has not both actions"
export toggle stop
dbus-run-session -- bash -euo pipefail -c '
    stopped() { cantorel-cli status --json 2>/dev/null | grep -q "\"stopped\""; }
    cantorel --backend=embedded 2>"$world/window" &
    window=$!
    trap "kill -KILL $window 2>/dev/null || true" EXIT
    for ((i = 0; i < 120; i++)); do
        ! cantorel-cli stop >"$world/answer" 2>&1 || break
        sleep 0.25
    done
    eval "$toggle" >"$world/answer" 2>&1
    ! stopped || { cat "$world/answer" "$world/window"; exit 1; }
    eval "$stop"
    for ((i = 0; i < 120; i++)); do
        ! stopped || break
        sleep 0.25
    done
    stopped
    kill -TERM $window
    wait $window
'
