# Completion of switchcfg for bash: the command itself knows what can follow.
_switchcfg() {
    mapfile -t COMPREPLY < <(switchcfg complete-words "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
}
complete -o default -F _switchcfg switchcfg
