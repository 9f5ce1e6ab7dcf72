# Completion of velmora for bash.
complete -W "--settings --popover --pause --quit --help --version" velmora
