#!/usr/bin/env bash
# Installs the build into a temporary prefix and checks what a desktop finds there: the
# program, the menu entry and metadata (through their validators), the icon, the manual page
# against the program's --help, the completions in scripted bash and zsh sessions, the licence.
#   install_tree_test.sh BUILD_DIR SOURCE_DIR
set -uo pipefail

build=$1
source_dir=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/usr
failures=0
fail() {
  echo "FAIL: $*" >&2
  failures=$((failures + 1))
}

export XDG_CONFIG_HOME=$work/config XDG_STATE_HOME=$work/state XDG_DATA_HOME=$work/data

if ! cmake --install "$build" --prefix "$prefix" >"$work/install.log" 2>&1; then
  cat "$work/install.log" >&2
  echo "FAIL: cmake --install" >&2
  exit 1
fi

share=$prefix/share
for file in bin/orvantis \
  share/applications/org.orvantis.Orvantis.desktop \
  share/metainfo/org.orvantis.Orvantis.metainfo.xml \
  share/icons/hicolor/scalable/apps/org.orvantis.Orvantis.svg \
  share/man/man1/orvantis.1 \
  share/bash-completion/completions/orvantis \
  share/zsh/site-functions/_orvantis \
  share/doc/orvantis/LICENSE; do
  [[ -s $prefix/$file ]] || fail "$file is not installed"
done
[[ -x $prefix/bin/orvantis ]] || fail "bin/orvantis is not executable"
program=$prefix/bin/orvantis

# The icon in every size, and the SVG the same drawing as the tray icon's built-in one.
for size in 16 22 24 32 48 64 128 256; do
  png=$share/icons/hicolor/${size}x${size}/apps/org.orvantis.Orvantis.png
  file -b "$png" 2>/dev/null | grep -q "PNG image data, $size x $size" || fail "no $size x $size PNG icon"
done
embedded=$(sed -n '/R"svg(/,/)svg"/p' "$source_dir/src/ui/keyboard_icon.cpp" | sed -e 's/.*R"svg(//' -e '/^)svg";$/d')
[[ $embedded == "$(cat "$share/icons/hicolor/scalable/apps/org.orvantis.Orvantis.svg")" ]] ||
  fail "the installed SVG icon differs from the tray icon's drawing in src/ui/keyboard_icon.cpp"

# The validators, on the installed files.
desktop-file-validate "$share/applications/org.orvantis.Orvantis.desktop" || fail "desktop-file-validate"
grep -qx 'Icon=org.orvantis.Orvantis' "$share/applications/org.orvantis.Orvantis.desktop" || fail "desktop file icon"
appstreamcli validate --no-net "$share/metainfo/org.orvantis.Orvantis.metainfo.xml" >"$work/as.log" 2>&1 ||
  { cat "$work/as.log" >&2; fail "appstreamcli validate"; }

# The installed program runs; its version is the one of the metadata's latest release and of
# the Debian package.
version=$("$program" --version | sed -n 's/^Orvantis \([^ ]*\) .*/\1/p')
[[ -n $version ]] || fail "orvantis --version"
grep -q "<release version=\"$version\"" "$share/metainfo/org.orvantis.Orvantis.metainfo.xml" ||
  fail "the metadata has no release $version"
[[ $(sed -n '1s/^orvantis (\([^)-]*\).*/\1/p' "$source_dir/debian/changelog") == "$version" ]] ||
  fail "debian/changelog does not start with version $version"

# The manual page says everything --help says: each entry's synopsis and description, and
# the notes after them, in the rendered page (blanks collapsed, since the page is filled).
normalise() { tr -s ' \n\t' '   ' | sed -e 's/^ //' -e 's/ $//'; }
help=$("$program" --help) || fail "orvantis --help"
page_lines=$(MANWIDTH=2000 LC_ALL=C.UTF-8 man -l "$share/man/man1/orvantis.1" 2>"$work/man.err" | col -bx)
page=$(normalise <<<"$page_lines")
[[ -s $work/man.err ]] && { cat "$work/man.err" >&2; fail "man reports problems in the page"; }
python3 - "$help" "$page" <<'PY' || fail "the manual page and --help disagree"
import re, sys
help_text, page = sys.argv[1], sys.argv[2]
norm = lambda s: " ".join(s.split())
entries, notes, current, in_entries = [], [], None, True
for line in help_text.splitlines()[1:]:
    if not in_entries:
        notes.append(line); continue
    if not line:
        in_entries = False; continue
    if line.startswith("  orvantis"):
        head, tail = (line[:34], line[34:]) if len(line) > 34 and line[33] == " " else (line, "")
        current = [head, tail]; entries.append(current)
    elif line.startswith(" " * 34):
        current[1] += " " + line
    else:
        current[0] += " " + line
missing = [norm(part) for entry in entries for part in entry if norm(part) and norm(part) not in page]
missing += [norm(p) for p in "\n".join(notes).split("\n\n") if norm(p) and norm(p) not in page]
if len(entries) < 10: missing.append(f"only {len(entries)} entries read from --help")
for m in missing: print("not in the manual page:", m, file=sys.stderr)
sys.exit(1 if missing else 0)
PY
for section in NAME SYNOPSIS DESCRIPTION COMMANDS HOTKEYS FILES ENVIRONMENT "EXIT STATUS"; do
  grep -q "^\.SH $section\$" "$share/man/man1/orvantis.1" || fail "the manual page has no $section section"
done
# Every hotkey setting is named in the HOTKEYS section.
hotkeys=$(sed -n '/^HOTKEYS/,/^FILES/p' <<<"$page_lines")
while IFS=$'\t' read -r name _; do
  [[ $name == hotkey || $name == *Hotkey ]] || continue
  grep -q "($name)" <<<"$hotkeys" || fail "the manual page's HOTKEYS section does not name $name"
done < <("$program" settings list)

# The bash completion, as bash runs it for a user pressing Tab.
complete_words() {
  bash --norc --noprofile -c '
    source /usr/share/bash-completion/bash_completion
    source "$1"
    shift
    PATH=$(dirname "$1"):$PATH
    COMP_WORDS=("$@")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    COMP_LINE="${COMP_WORDS[*]}"
    COMP_POINT=${#COMP_LINE}
    _orvantis orvantis "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
    printf "%s\n" "${COMPREPLY[@]}"
  ' complete "$share/bash-completion/completions/orvantis" "$@"
}
words=$(complete_words "$program" "")
for command in $(grep -o '^  orvantis [a-z-]*' <<<"$help" | awk '{print $2}' | sort -u); do
  grep -qx -- "$command" <<<"$words" || fail "bash completion does not offer the command $command"
done
settings_count=$("$program" settings list | wc -l)
[[ $(complete_words "$program" settings get "" | wc -l) == "$settings_count" ]] ||
  fail "bash completion does not offer the $settings_count settings after 'settings get'"
[[ $(complete_words "$program" settings set switchD) == switchDelayMs ]] || fail "bash completion of switchD"
[[ $(complete_words "$program" transform base64D) == base64Decode ]] || fail "bash completion of base64D"
[[ $(complete_words "$program" pomodoro st | sort | tr '\n' ' ') == "start status stop " ]] ||
  fail "bash completion of pomodoro st"
zsh -n "$share/zsh/site-functions/_orvantis" || fail "zsh completion syntax"

# The zsh completion, in an interactive zsh on a pseudo-terminal pressing Tab (zsh_complete.zsh).
zsh_words() {
  zsh -f "$source_dir/data/tests/zsh_complete.zsh" "$share/zsh/site-functions" "$prefix/bin" "$1"
}
words=$(zsh_words 'orvantis ') || fail "zsh completion did not run"
for command in $(grep -o '^  orvantis [a-z-]*' <<<"$help" | awk '{print $2}' | sort -u); do
  grep -qx -- "$command" <<<"$words" || fail "zsh completion does not offer the command $command"
done
[[ $(zsh_words 'orvantis settings get ') == "$("$program" settings list | cut -f1 | sort -u)" ]] ||
  fail "zsh completion does not offer the $settings_count settings after 'settings get'"
[[ $(zsh_words 'orvantis settings set switchD') == switchDelayMs ]] || fail "zsh completion of switchD"
[[ $(zsh_words 'orvantis transform base64D') == base64Decode ]] || fail "zsh completion of base64D"
[[ $(zsh_words 'orvantis pomodoro st' | tr '\n' ' ') == "start status stop " ]] ||
  fail "zsh completion of pomodoro st"

cmp -s "$source_dir/LICENSE" "$share/doc/orvantis/LICENSE" || fail "licence"

((failures == 0)) || exit 1
echo "install tree: all checks passed"
