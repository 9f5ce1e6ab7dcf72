# Completion of velmora-clean for bash.
_velmora_clean()
{
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}
    COMPREPLY=()
    [[ $previous == --ignore-host || $previous == --jobs ]] && return
    if [[ $current == -* ]]; then
        local options='--in-place --ignore-host --report --jsonl --detect --jobs --help --version'
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
    else
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    fi
}
complete -F _velmora_clean velmora-clean
