# Completion of velmora-clean for bash.
_velmora_clean()
{
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}
    COMPREPLY=()
    [[ $previous == --ignore-host ]] && return
    if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W '--ignore-host --report --jsonl --detect --help --version' -- "$current")
    else
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    fi
}
complete -F _velmora_clean velmora-clean
