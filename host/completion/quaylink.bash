# Completion of the quaylink command for bash.
_quaylink() {
  local commands="status tracks export copy-track copy-database files pull"
  local filters="--artist --album --match"
  local word=${COMP_WORDS[COMP_CWORD]}
  local before=${COMP_WORDS[COMP_CWORD - 1]}
  local command="" candidate options
  for candidate in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    case $candidate in
      -*) ;;
      *)
        command=$candidate
        break
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
  elif [[ $command != status && $command != files ]]; then
    compopt -o filenames 2> /dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
  fi
}
complete -F _quaylink quaylink
