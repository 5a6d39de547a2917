# Completion of switchlab for bash: the command itself knows what can follow.
_switchlab() {
    mapfile -t COMPREPLY < <(switchlab complete-words "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
}
complete -o default -F _switchlab switchlab
