# Completion of the quaylink command for bash.
_quaylink() {
  local commands="status tracks playlists export copy-track copy-database files pull"
  local filters="--artist --album --genre --match --year --playlist --kind"
  local properties="index id persistentId location title artist album albumArtist genre composer comment grouping
    description fileType sortTitle sortArtist sortAlbum podcastUrl podcastFeed trackNumber trackCount discNumber
    discCount year lengthMs size bitRate sampleRate bpm rating playCount skipCount compilation checked mediaType
    seasonNumber episodeNumber bookmarkMs added modified lastPlayed lastSkipped released"
  local word=${COMP_WORDS[COMP_CWORD]}
  local before=${COMP_WORDS[COMP_CWORD - 1]}
  local command="" arguments=0 value="" candidate options
  for candidate in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    if [[ -n $value ]]; then
      value=""
      continue
    fi
    case $candidate in
      --sort | --columns | --artist | --album | --genre | --match | --year | --playlist | --kind | --name) value=next ;;
      -*) ;;
      *)
        if [[ -n $command ]]; then arguments=$((arguments + 1)); else command=$candidate; fi
        ;;
    esac
  done
  case $before in
    --sort | --columns)
      mapfile -t COMPREPLY < <(compgen -W "$properties" -- "$word")
      return
      ;;
    --kind)
      mapfile -t COMPREPLY < <(compgen -W "audio video podcast audiobook music-video television" -- "$word")
      return
      ;;
    --artist | --album | --genre | --match | --year | --playlist | --name) return ;;
  esac
  options="--help --quiet --verbose"
  case $command in
    "") options="$options --version" ;;
    status | files | playlists) options="$options --json" ;;
    tracks) options="$options --json --csv --columns --sort --reverse $filters" ;;
    export) options="$options --json --dry-run --name $filters" ;;
  esac
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
  elif [[ -z $command ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$word")
  else
    # Where a local file or folder stands among the command's arguments.
    case $command-$arguments in
      tracks-0 | playlists-0 | export-0 | copy-database-0 | copy-track-1 | pull-1)
        compopt -o filenames 2> /dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        ;;
    esac
  fi
}
complete -F _quaylink quaylink
