# bash completion for kelvo: the tool itself tells what a word can become.
_kelvo() {
  local line=${COMP_LINE:0:COMP_POINT} word gap last words=() breaks='' quoted answer
  # bash also breaks words at "=" and ":"; what stands together is one.
  for word in "${COMP_WORDS[@]:0:COMP_CWORD+1}"; do
    gap=${line%%[![:blank:]]*}
    line=${line#"$gap"}
    [[ ${line:0:${#word}} == "$word" ]] || word=$line # the cursor stands in it
    line=${line#"$word"}
    if [[ -n $gap || ${#words[@]} -eq 0 ]]; then words+=("$word"); else words[-1]+=$word; fi
  done
  ((${#words[@]} > 1)) || return
  last=${words[-1]#[\"\']}
  last=${last//\\/}
  words[-1]=$last
  [[ $COMP_WORDBREAKS != *=* ]] || breaks+='='
  [[ $COMP_WORDBREAKS != *:* ]] || breaks+=':'
  # bash puts the answers in place of what stands behind the last break.
  gap=''
  [[ -z $breaks || $last != *["$breaks"]* ]] || gap=${last%"${last##*["$breaks"]}"}
  COMPREPLY=()
  while IFS= read -r answer; do
    if [[ $answer == :files ]]; then
      compopt -o filenames
      mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -f -- "$last")
      continue
    fi
    answer=${answer%%$'\t'*}
    [[ $answer != *[=/.] ]] || compopt -o nospace
    answer=${answer#"$gap"}
    printf -v quoted %q "$answer"
    [[ $answer =~ ^[][A-Za-z0-9_./=:,@%+-]*$ ]] || answer=$quoted
    COMPREPLY+=("$answer")
  done < <("${words[0]/#\~\//$HOME/}" __complete "${words[@]:1}" 2>/dev/null)
}
complete -F _kelvo kelvo
