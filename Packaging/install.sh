#!/bin/sh
# Puts this folder's Velmora into the user's menu, with its icons and its shell completion, or takes them out again.
# Nothing is copied but those small files: the program stays in this folder and updates itself there. When the folder
# has been moved, run this once more.
set -eu

usage() {
    echo "Usage: install.sh [--remove]" >&2
    exit 2
}

fail() {
    echo "install.sh: $1" >&2
    exit 1
}

here=$(CDPATH='' cd -- "$(dirname -- "$0")" && pwd)
data=${XDG_DATA_HOME:-$HOME/.local/share}
entry=app.velmora.Velmora.desktop

# Every file that belongs into the user's data folder, below share/ here and there.
files() {
    (
        cd "$here/share"
        find icons bash-completion fish -type f 2>/dev/null || true
    )
    echo "applications/$entry"
}

install_files() {
    [ -x "$here/bin/velmora" ] || fail "$here/bin/velmora is missing: unpack the whole archive."
    # A menu reads the name in a way of its own, in which these characters have meanings.
    case $here in
    *[\"\\\`\$%\&\|]* | *'
'*) fail "the name of the folder $here has characters that a menu cannot use: move it." ;;
    esac
    files | while IFS= read -r file; do
        mkdir -p "$data/$(dirname "$file")"
        cp "$here/share/$file" "$data/$file.new"
        if [ "$file" = "applications/$entry" ]; then
            sed -e "s|^Exec=velmora|Exec=\"$here/bin/velmora\"|" -e "s|^TryExec=.*|TryExec=$here/bin/velmora|" \
                "$here/share/$file" >"$data/$file.new"
        fi
        mv "$data/$file.new" "$data/$file"
    done
    echo "Velmora is in your menu. Taken out again with: $here/install.sh --remove"
}

remove_files() {
    files | while IFS= read -r file; do
        rm -f "$data/$file"
    done
    echo "Velmora is no longer in your menu. Its settings are in $data/velmora, the program in $here."
}

[ -d "$here/share/applications" ] || fail "$here/share/applications is missing: unpack the whole archive."
case ${1-} in
'') install_files ;;
--remove) remove_files ;;
*) usage ;;
esac
