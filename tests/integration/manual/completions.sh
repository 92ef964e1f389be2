#!/usr/bin/env bash
# Completes command lines of corvel in bash, fish and zsh as a person would, and compares what comes.
#
# Usage: completions.sh [FOLDER]    with the files completion.bash, .fish and .zsh of FOLDER, else the installed ones;
#                                   `corvel` must be in the path
set -uo pipefail

folder=${1:+$(cd "$1" && pwd -P)}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch" || exit 2
export HOME=$scratch
touch shot.0001.exr
failed=0

# compare SHELL LINE GOT WANTED…: each wanted word must be a line of what came.
compare() {
    local shell=$1 line=$2 got=$3 word
    shift 3
    for word in "$@"; do
        if ! grep -qxF -- "$word" <<<"$got"; then
            printf '%s: "%s" gives no "%s" but: %s\n' "$shell" "$line" "$word" "${got//$'\n'/ }"
            failed=1
        fi
    done
}

inBash() {
    bash --norc -c '
        if [[ -n $0 ]]; then source "$0"; else
            source /usr/share/bash-completion/bash_completion
            _completion_loader corvel
        fi
        read -ra COMP_WORDS <<<"$1"
        [[ $1 == *" " ]] && COMP_WORDS+=("")
        COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
        _corvel
        printf "%s\n" "${COMPREPLY[@]}"' "${folder:+$folder/completion.bash}" "$1"
}

inFish() {
    fish --private -c "
        test -n '$folder'; and source '$folder/completion.fish'
        complete -C '$1'" | cut -f 1
}

# zsh completes in its line editor only: a line typed, the tabulator pressed, and the line looked at.
inZsh() {
    FOLDER=$1 LINE=$2 zsh -f "$scratch/complete.zsh" | sed 's/ *$//'
}
cat >complete.zsh <<'END'
zmodload zsh/zpty
zpty shell zsh -f -i || exit
zpty -w shell "PS1=; fpath=(\$FOLDER \$fpath); autoload -U compinit; compinit -D -u"
zpty -w shell 'show() { BUFFER="print -r -- \"<$BUFFER>\""; zle accept-line }; zle -N show'
zpty -w shell 'bindkey "^I" complete-word; bindkey "^X" show; print ready-$((1 + 1))'
until [[ $output == ready-2* ]]; do zpty -r shell output || exit; done
zpty -n -w shell "$LINE"$'\t\x18'
until [[ $output == *"<corvel"*">"* && $output != *"print -r"* ]]; do zpty -r shell output || exit; done
print -r -- "${${output##*<}%%>*}"
END

mkdir zsh
[[ -n $folder ]] && cp "$folder/completion.zsh" zsh/_corvel
zshFolder=${folder:+$scratch/zsh}

for shell in Bash Fish; do
    compare $shell 'corvel ' "$("in$shell" 'corvel ')" render codecs info
    compare $shell 'corvel ren' "$("in$shell" 'corvel ren')" render
    compare $shell 'corvel render --qual' "$("in$shell" 'corvel render --qual')" --quality
    compare $shell 'corvel render --quality Lo' "$("in$shell" 'corvel render --quality Lo')" Low Lossless
    compare $shell 'corvel render sh' "$("in$shell" 'corvel render sh')" shot.0001.exr
    compare $shell 'corvel render --codec ap4' "$("in$shell" 'corvel render --codec ap4')" ap4h
    compare $shell 'corvel presets ' "$("in$shell" 'corvel presets ')" list show save delete
    compare $shell 'corvel presets save --' "$("in$shell" 'corvel presets save --')" --description --codec
    compare $shell 'corvel presets save --codec ap4' "$("in$shell" 'corvel presets save --codec ap4')" ap4h
done
compare zsh 'corvel ren' "$(inZsh "$zshFolder" 'corvel ren')" 'corvel render'
compare zsh 'corvel render --qual' "$(inZsh "$zshFolder" 'corvel render --qual')" 'corvel render --quality'
compare zsh 'corvel render --quality Loss' "$(inZsh "$zshFolder" 'corvel render --quality Loss')" \
    'corvel render --quality Lossless'
compare zsh 'corvel render sh' "$(inZsh "$zshFolder" 'corvel render sh')" 'corvel render shot.0001.exr'
compare zsh 'corvel render --codec avc' "$(inZsh "$zshFolder" 'corvel render --codec avc')" 'corvel render --codec avc1'
compare zsh 'corvel presets sa' "$(inZsh "$zshFolder" 'corvel presets sa')" 'corvel presets save'
compare zsh 'corvel presets save --desc' "$(inZsh "$zshFolder" 'corvel presets save --desc')" \
    'corvel presets save --description'

((failed)) || printf 'bash, fish and zsh complete commands, options, words, files and codecs\n'
exit "$failed"
