# Completion of the quaylink command for fish. Commands and options are asked of the program's own help.
function __quaylink_offer
    set -l properties index id persistentId location title artist album albumArtist genre composer comment grouping \
        description fileType sortTitle sortArtist sortAlbum podcastUrl podcastFeed trackNumber trackCount discNumber \
        discCount year lengthMs size bitRate sampleRate bpm rating playCount skipCount compilation checked mediaType \
        seasonNumber episodeNumber bookmarkMs added modified lastPlayed lastSkipped released
    set -l word (commandline -ct)
    set -l before (commandline -opc)[2..-1]
    set -l command (string match -v -- '-*' $before)[1]
    set -l help (quaylink $command --help 2>/dev/null)
    set -l arguments (string replace -rf -- '^Usage: quaylink \S+ \[OPTIONS\] ' '' $help | string split ' ')

    # What is expected after the words so far: a value, or else an argument, as the usage has them in a row.
    set -l expected
    for candidate in $before
        if test -n "$expected"
            set expected
        else if string match -q -- '-*' $candidate
            set expected (string replace -rf -- "^  (?:-\w,)?$candidate ([A-Z]{2,}).*" '$1' $help)
        else if test "$candidate" != "$command"
            set -e arguments[1]
        end
    end

    # With what the help says of them, where that stands on the same line.
    if test -z "$expected"; and string match -q -- '-*' $word
        printf '%s\n' --help --quiet --verbose
        string replace -rf -- '^  (?:-\w,)?(--[a-z-]+)(?:.*?   *(\S.*)|.*)$' '$1	$2' $help
        return
    else if test -z "$command"
        string replace -rf -- '^  ([a-z][a-z-]*)   *([A-Z].*)$' '$1	$2' $help
        return
    end
    set -q expected[1]; or set expected $arguments[1]
    switch "$expected"
        case KEY
            printf '%s\n' $properties
        case KIND
            printf '%s\n' audio video podcast audiobook music-video television
        case FOLDER
            __fish_complete_directories $word ''
        case FILE '[FILE]' PATH DEST
            __fish_complete_path $word
    end
end
complete -c quaylink -f -a '(__quaylink_offer)'
