# Completion of velmora for bash.
complete -W "--help --version" velmora
