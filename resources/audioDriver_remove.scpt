# Removes the virtual device: its description, and the device itself where a server answers. The placeholders are filled
# in before the script runs; nothing in their values is taken for a command.

IFS= read -r name <<'END_OF_VALUE'
{driverName}
END_OF_VALUE
IFS= read -r folder <<'END_OF_VALUE'
{dirverInstallPath}
END_OF_VALUE
IFS= read -r driver <<'END_OF_VALUE'
{dirverPath}
END_OF_VALUE

fail() {
    echo "$1" >&2
    exit 1
}

# The folders for drivers are names: what they mean here is a folder of the person's own.
case "$folder" in
/Library/Extensions/ | /System/Library/Extensions/)
    folder=${XDG_CONFIG_HOME:-$HOME/.config}/pipewire/pipewire.conf.d ;;
*) fail "The driver cannot be removed from $folder." ;;
esac
rm -f "$folder/50-${name%.kext}.conf" 2>/dev/null ||
    fail "The virtual device cannot be removed because $folder cannot be written; check its permissions."

node=$(sed -n 's/.*node\.name = "\([^"]*\)".*/\1/p' "$driver")
timeout 5 pw-cli info 0 >/dev/null 2>&1 || exit 0
devices() {
    timeout 5 pw-cli ls Node 2>/dev/null | awk -v line="node.name = \"$node\"" '
        $1 == "id" { id = $2; sub(/,/, "", id) }
        index($0, line) { print id }'
}
for id in $(devices); do
    timeout 5 pw-cli destroy "$id" >/dev/null 2>&1
done
[ -z "$(devices)" ] || fail "The virtual device will be gone when you have logged out and in again."
