# Completion of velmora for bash.
complete -W "--settings --popover --clean --pause --quit --help --version" velmora
