# Completion of velmora for bash.
complete -W "--settings --pause --quit --help --version" velmora
