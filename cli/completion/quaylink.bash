# Completion of the quaylink command for bash. Commands and options are asked of the program's own help.
_quaylink() {
  local properties="index id persistentId location title artist album albumArtist genre composer comment grouping
    description fileType sortTitle sortArtist sortAlbum podcastUrl podcastFeed trackNumber trackCount discNumber
    discCount year lengthMs size bitRate sampleRate bpm rating playCount skipCount compilation checked mediaType
    seasonNumber episodeNumber bookmarkMs added modified lastPlayed lastSkipped released"
  local word=${COMP_WORDS[COMP_CWORD]} expected="" candidate command="" help options arguments=()
  for candidate in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    [[ $candidate == -* ]] || { command=$candidate && break; }
  done
  help=$(quaylink ${command:+"$command"} --help 2> /dev/null)
  # Each with the word that stands for its value, if it takes one, such as "--sort KEY".
  options=$(sed -n 's/^  \(-[a-z],\)\{0,1\}\(--[a-z-]*\)\( [A-Z][A-Z]*\b[^:]\)\{0,1\}.*/\2\3/p' <<< "$help")

  # What is expected after the words so far: a value, or else an argument, as the usage has them in a row.
  read -ra arguments < <(sed -n 's/^Usage: quaylink [a-z-]* \[OPTIONS\]//p' <<< "$help")
  for candidate in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    if [[ -n $expected ]]; then
      expected=""
    elif [[ $candidate == -* ]]; then
      expected=$(sed -n "s/^$candidate \([A-Z]*\).*/\1/p" <<< "$options")
    elif [[ $candidate != "$command" ]]; then
      arguments=("${arguments[@]:1}")
    fi
  done

  if [[ -z $expected && $word == -* ]]; then
    options="--help --quiet --verbose ${options//[A-Z=, ]/}"
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word" | sort -u)
    return
  fi
  [[ -n $expected ]] || expected=${arguments[0]-}
  case $command-$expected in
    -*) mapfile -t COMPREPLY < <(compgen -W "$(sed -n 's/^  \([a-z][a-z-]*\)   *[A-Z].*/\1/p' <<< "$help")" -- "$word") ;;
    *-KEY) mapfile -t COMPREPLY < <(compgen -W "$properties" -- "$word") ;;
    *-KIND) mapfile -t COMPREPLY < <(compgen -W "audio video podcast audiobook music-video television" -- "$word") ;;
    *-FOLDER | *-FILE | *-\[FILE\] | *-PATH | *-DEST)
      compopt -o filenames 2> /dev/null
      candidate=-f
      [[ $expected != FOLDER ]] || candidate=-d
      mapfile -t COMPREPLY < <(compgen $candidate -- "$word")
      ;;
  esac
}
complete -F _quaylink quaylink
