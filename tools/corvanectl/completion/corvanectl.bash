# bash completion for corvanectl; the words come from the program itself.
# shellcheck shell=bash

_corvanectl() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} i
  COMPREPLY=()
  # "--host=ADDRESS" comes as three words.
  if [[ $current == = ]]; then
    current=
  elif [[ $previous == = ]]; then
    previous=${COMP_WORDS[COMP_CWORD-2]}
  fi
  for ((i = 1; i < COMP_CWORD; i++)); do
    case ${COMP_WORDS[i]} in
      -H | --host | -p | --port | -t | --timeout)
        ((i++))
        [[ ${COMP_WORDS[i]} == = ]] && ((i++))
        ;;
      -*) ;;
      *)
        # Behind the command: parameters, most of which are paths.
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
        compopt -o filenames 2>/dev/null
        return
        ;;
    esac
  done
  case $previous in
    -H | --host)
      mapfile -t COMPREPLY < <(compgen -A hostname -- "$current")
      return
      ;;
    -p | --port | -t | --timeout) return ;;
  esac
  if [[ $current == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W '--help --host --port --timeout --xml --version' -- "$current")
  else
    mapfile -t COMPREPLY < <(compgen -W "$("${COMP_WORDS[0]}" --complete 2>/dev/null)" -- "$current")
  fi
}

complete -F _corvanectl corvanectl
