# Completion of the quaylink command for bash.
_quaylink() {
  local commands="status tracks export copy-track copy-database files pull"
  local filters="--artist --album --match"
  local word=${COMP_WORDS[COMP_CWORD]}
  local before=${COMP_WORDS[COMP_CWORD - 1]}
  local command="" arguments=0 value="" candidate options
  for candidate in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    if [[ -n $value ]]; then
      value=""
      continue
    fi
    case $candidate in
      --sort | --artist | --album | --match | --name) value=next ;;
      -*) ;;
      *)
        if [[ -n $command ]]; then arguments=$((arguments + 1)); else command=$candidate; fi
        ;;
    esac
  done
  case $before in
    --sort)
      mapfile -t COMPREPLY < <(compgen -W "index artist album title location" -- "$word")
      return
      ;;
    --artist | --album | --match | --name) return ;;
  esac
  options="--help --quiet --verbose"
  case $command in
    "") options="$options --version" ;;
    status | files) options="$options --json" ;;
    tracks) options="$options --json --csv --sort --reverse $filters" ;;
    export) options="$options --json --dry-run --name $filters" ;;
  esac
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
  elif [[ -z $command ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$word")
  else
    # Where a local file or folder stands among the command's arguments.
    case $command-$arguments in
      tracks-0 | export-0 | copy-database-0 | copy-track-1 | pull-1)
        compopt -o filenames 2> /dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        ;;
    esac
  fi
}
complete -F _quaylink quaylink
