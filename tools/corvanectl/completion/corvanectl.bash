# bash completion for corvanectl; the words come from the program itself.
# shellcheck shell=bash

_corvanectl() {
  local words=() word last i
  COMPREPLY=()
  # "--host=ADDRESS" comes as three words; quotes and backslashes are there as they were typed.
  for ((i = 1; i <= COMP_CWORD; i++)); do
    word=${COMP_WORDS[i]}
    word=${word#[\"\']}
    word=${word//\\/}
    last=${words[*]: -1}
    if [[ $word == '=' && $last == -?* ]]; then
      words[-1]+='='
    elif [[ $last == -?*= ]]; then
      words[-1]+=$word
    else
      words+=("$word")
    fi
  done
  mapfile -t COMPREPLY < <("${COMP_WORDS[0]}" --complete "${words[@]}" 2>/dev/null)
  compopt -o filenames 2>/dev/null
  [[ ${#COMPREPLY[@]} != 1 || ${COMPREPLY[0]} != */ ]] || compopt -o nospace 2>/dev/null
}

complete -F _corvanectl corvanectl
