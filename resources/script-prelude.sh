# Read before every script that the program runs: words that scripts use and the shell does not know.

# tell application "Finder" to shut down
tell() {
    case "$*" in
    "application Finder to shut down")
        if command -v dbus-send >/dev/null; then
            dbus-send --system --print-reply --dest=org.freedesktop.login1 /org/freedesktop/login1 \
                org.freedesktop.login1.Manager.PowerOff boolean:true
        else
            systemctl poweroff
        fi
        ;;
    *)
        echo "tell: not understood: $*" >&2
        return 1
        ;;
    esac
}
