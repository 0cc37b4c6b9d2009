# fish completion for kelvo: the tool itself tells what a word can become.
function __kelvo_complete
    set -l words (commandline -opc)
    set -l last (commandline -ct | string unescape)
    for line in ($words[1] __complete $words[2..-1] "$last" 2>/dev/null)
        if test "$line" = :files
            __fish_complete_path "$last"
        else
            echo $line
        end
    end
end
complete -c kelvo -f -a '(__kelvo_complete)'
