# Installs the virtual device: its description for every start of the sound server, and at once where a server answers.
# The placeholders are filled in before the script runs; nothing in their values is taken for a command.

IFS= read -r driver <<'END_OF_VALUE'
{dirverPath}
END_OF_VALUE
IFS= read -r name <<'END_OF_VALUE'
{driverName}
END_OF_VALUE
IFS= read -r folder <<'END_OF_VALUE'
{dirverInstallPath}
END_OF_VALUE

fail() {
    echo "$1" >&2
    exit 1
}

# The folders for drivers are names: what they mean here is a folder of the person's own.
case "$folder" in
/Library/Extensions/ | /System/Library/Extensions/)
    folder=${XDG_CONFIG_HOME:-$HOME/.config}/pipewire/pipewire.conf.d ;;
*) fail "The driver cannot be installed in $folder." ;;
esac
installed=$folder/50-${name%.kext}.conf
unfinished=$folder/.50-${name%.kext}.$$

arguments=$(sed -n '/args = {/,/}/p' "$driver" 2>/dev/null | sed 's/.*args = //' | tr -s '\n ' ' ')
node=$(printf '%s' "$arguments" | sed -n 's/.*node\.name = "\([^"]*\)".*/\1/p')
[ -n "$node" ] || fail "The driver $driver cannot be read; install Cantorel again."

# Readers see the old file or the new one, never half of one.
if ! (mkdir -p "$folder" && cat "$driver" >"$unfinished" && mv -f "$unfinished" "$installed") 2>/dev/null; then
    rm -f "$unfinished" 2>/dev/null
    fail "The virtual device cannot be installed because $folder cannot be written; check its permissions and the space left."
fi

# Without a server that answers the device comes with the server's next start.
timeout 5 pw-cli info 0 >/dev/null 2>&1 || exit 0
is_there() { timeout 5 pw-cli ls Node 2>/dev/null | grep -qF "node.name = \"$node\""; }
is_there || timeout 5 pw-cli create-node adapter "$arguments" >/dev/null 2>&1
patience=50
until is_there; do
    patience=$((patience - 1))
    [ $patience -gt 0 ] || fail "The virtual device is installed but the sound server did not make it; log out and in again."
    sleep 0.1
done
