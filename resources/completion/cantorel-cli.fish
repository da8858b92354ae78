# Completion of cantorel-cli for fish: the program itself says what may stand there.
function __cantorel_cli_proposed
    set -l typed (commandline -opc) (commandline -ct)
    set -l proposed ($typed[1] __complete $typed[2..-1] 2>/dev/null)
    if test (count $proposed) -gt 0
        printf '%s\n' $proposed
    else
        __fish_complete_path (commandline -ct)
    end
end
complete -c cantorel-cli -f -a '(__cantorel_cli_proposed)'
