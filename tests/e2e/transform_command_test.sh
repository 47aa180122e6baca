#!/usr/bin/env bash
# transform_command_test.sh: `orvantis transform` as a shell uses it, through pipes and files:
# the exact bytes of the result with no line break added, the exit status and the message of a
# refused input, the list, and digests and Base64 of a file of several megabytes beside the
# coreutils tools. Needs no desktop.
# shellcheck source-path=SCRIPTDIR source=e2e_lib.sh
source "$(dirname "$0")/e2e_lib.sh"

[[ -x $ORVANTIS_BIN ]] || fail "no program at $ORVANTIS_BIN"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export XDG_CONFIG_HOME=$work/config XDG_STATE_HOME=$work/state XDG_DATA_HOME=$work/data

# Exactly the result: no line break is added, the input's own stays.
printf 'hello' | "$ORVANTIS_BIN" transform md5 >"$work/out" || fail "md5 exited $?"
[[ $(od -An -c "$work/out" | tr -d ' \n') == "5d41402abc4b2a76b9719d911017c592" ]] || fail "md5: $(od -c "$work/out")"
printf 'aGVsbG8\n' | "$ORVANTIS_BIN" transform base64Decode >"$work/out"
cmp -s "$work/out" <(printf 'hello') || fail "base64Decode: $(od -c "$work/out")"
printf 'привет\n' | "$ORVANTIS_BIN" transform upper >"$work/out"
cmp -s "$work/out" <(printf 'ПРИВЕТ\n') || fail "upper: $(od -c "$work/out")"

# A refused input: its description and a line break on standard error, nothing on standard
# output, exit 1.
status=0
printf 'a$b=' | "$ORVANTIS_BIN" transform base64Decode >"$work/out" 2>"$work/err" || status=$?
[[ $status == 1 ]] || fail "base64Decode of a\$b= exited $status"
[[ ! -s $work/out ]] || fail "output after a refusal: $(cat "$work/out")"
cmp -s "$work/err" <(printf 'Invalid input for Base64.\n') || fail "message: $(cat "$work/err")"

# Input that is not UTF-8: exit 2, with a message.
status=0
printf 'a\xff' | "$ORVANTIS_BIN" transform trim >"$work/out" 2>"$work/err" || status=$?
[[ $status == 2 ]] || fail "ill-formed input exited $status"
grep -q "not valid UTF-8" "$work/err" || fail "no message: $(cat "$work/err")"

# The list: 25 names, a tab, the English name.
"$ORVANTIS_BIN" transform --list >"$work/list"
[[ $(wc -l <"$work/list") == 25 ]] || fail "list: $(cat "$work/list")"
[[ $(head -1 "$work/list") == $'md5\tMD5' ]] || fail "first: $(head -1 "$work/list")"
[[ $(sed -n 23p "$work/list") == $'unixToISO\tUnix timestamp → ISO 8601' ]] || fail "23rd: $(sed -n 23p "$work/list")"

# Five megabytes of text beside the coreutils tools.
python3 -c "
import random, sys
random.seed(3)
sys.stdout.write(''.join(random.choice('abcdefghij klmnopqrstuvwxyzабвгд😀\n') for _ in range(2500000)))
" >"$work/text"
for tool in md5 sha1 sha256 sha512; do
  ours=$("$ORVANTIS_BIN" transform "$tool" <"$work/text")
  theirs=$("${tool}sum" <"$work/text" | cut -d' ' -f1)
  [[ $ours == "$theirs" ]] || fail "$tool: $ours, ${tool}sum: $theirs"
done
"$ORVANTIS_BIN" transform base64Encode <"$work/text" >"$work/b64"
cmp -s "$work/b64" <(base64 -w 0 "$work/text") || fail "base64Encode differs from base64 -w 0"
base64 "$work/text" | "$ORVANTIS_BIN" transform base64Decode >"$work/back"
cmp -s "$work/back" "$work/text" || fail "base64Decode of the wrapped form differs"

# Base64 of a file on standard input is read and written in pieces: the same bytes as through
# a pipe, from where the input stands, and the whole transform's outcome where the pieces
# can't give it.
# shellcheck disable=SC2002  # a pipe, not the file, on purpose
cat "$work/text" | "$ORVANTIS_BIN" transform base64Encode >"$work/b64-pipe"
cmp -s "$work/b64-pipe" "$work/b64" || fail "base64Encode of a pipe differs from that of the file"
base64 "$work/text" >"$work/wrapped"
"$ORVANTIS_BIN" transform base64Decode <"$work/wrapped" >"$work/back"
cmp -s "$work/back" "$work/text" || fail "base64Decode of the wrapped file differs"
{ head -c 3 >/dev/null; "$ORVANTIS_BIN" transform base64Encode; } <"$work/text" >"$work/b64-rest"
cmp -s "$work/b64-rest" <(tail -c +4 "$work/text" | base64 -w 0) || fail "base64Encode did not start where the input stood"
head -c 3000000 /dev/urandom >"$work/binary"
base64 "$work/binary" >"$work/binary.b64"
"$ORVANTIS_BIN" transform base64Decode <"$work/binary.b64" >"$work/binary-back"
cmp -s "$work/binary-back" <(printf '(non-UTF8) '; od -An -v -tx1 "$work/binary" | tr -d ' \n') ||
  fail "base64Decode of bytes that are not UTF-8 is not their hex"
{ cat "$work/wrapped"; printf 'QQ=\tQ'; } >"$work/bad.b64"
status=0
"$ORVANTIS_BIN" transform base64Decode <"$work/bad.b64" >"$work/out" 2>"$work/err" || status=$?
[[ $status == 1 && ! -s $work/out ]] || fail "base64Decode of a bad file exited $status with $(wc -c <"$work/out") bytes out"
cmp -s "$work/err" <(printf 'Invalid input for Base64.\n') || fail "message: $(cat "$work/err")"
"$ORVANTIS_BIN" transform hexEncode <"$work/text" >"$work/hex"
cmp -s "$work/hex" <(basenc --base16 -w 0 "$work/text" | tr 'A-F' 'a-f') || fail "hexEncode of the file differs from basenc"
{ head -c 4000000 "$work/text"; printf '\xff'; } >"$work/not-utf8"
status=0
"$ORVANTIS_BIN" transform base64Encode <"$work/not-utf8" >"$work/out" 2>"$work/err" || status=$?
[[ $status == 2 && ! -s $work/out ]] || fail "base64Encode of a file that is not UTF-8 exited $status with $(wc -c <"$work/out") bytes out"
status=0
"$ORVANTIS_BIN" transform hexEncode <"$work/not-utf8" >"$work/out" 2>"$work/err" || status=$?
[[ $status == 2 && ! -s $work/out ]] || fail "hexEncode of a file that is not UTF-8 exited $status with $(wc -c <"$work/out") bytes out"
note "PASS"
