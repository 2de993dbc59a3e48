#!/usr/bin/env bash
# S1: a save killed at any point leaves the old text or the new one. Traces one save of every kind, lists its system calls,
# and saves again for each of them, killed as it enters that call. Where the file is overwritten in place (S6), a whole copy of
# the old text must stand beside it while it is neither. Also: no call truncates on opening, and a failing sync is a refused
# save (S4). Texts go through PROBE; definition file, log and PDF file through WINDOW-PROBE.
#
#   kill_sweep.sh PROBE WINDOW-PROBE WRITER
#                  ZELKOR_FULL=1: every call of every save (else all of two kinds, and a part of the others)
set -u
export LC_ALL=C ASAN_OPTIONS=detect_leaks=0 QT_QPA_PLATFORM=offscreen
probe=$1 window_probe=$2 writer=$3
memory=/dev/shm   # a kill does not depend on the disk: take memory where there is some
[ -d $memory ] && [ -w $memory ] || memory=${TMPDIR:-/tmp}
work=$(mktemp -d -p $memory) || exit 1
trap 'rm -rf "$work"' EXIT
for name in HOME XDG_CONFIG_HOME XDG_CACHE_HOME XDG_DATA_HOME XDG_STATE_HOME XDG_RUNTIME_DIR; do
  mkdir -m 700 "$work/$name"
  export $name="$work/$name"
done

if ! strace -o /dev/null true 2>/dev/null; then
  echo "skipped: no process can be traced here"
  exit 77
fi

points=0 strays=0
fail() {
  echo "FAILED: $*"
  ls -la "$work/d"
  exit 1
}

# The calls between the marks, each with the count of its name since the program began. Those that change nothing on the disk,
# and come in numbers that vary, are left out.
list_calls() {
  awk '
    { uses[$1]++ }
    /the-save-ends-here/ { exit }
    on && $1 !~ /^(brk|mmap|munmap|mremap|madvise|futex|getrandom|clock_nanosleep)$/ { print $1, uses[$1] }
    /the-save-begins-here/ { on = 1 }'
}

chosen() {  # STEP: one of so many calls
  awk -v step="${ZELKOR_FULL:+1}" -v usual="$1" '(NR - 1) % (step ? step : usual) == 0' "$work/calls"
}

make_text() {  # SIZE LETTER
  head -c "$1" /dev/zero | tr '\0' "$2"
}

prepare() {  # builds the folder of one case
  rm -rf "$work/d"
  mkdir "$work/d"
  target=$work/d/file.txt
  case $kind in
    new) ;;
    symlink) cp "$work/old" "$work/d/real.txt"; ln -s real.txt "$target" ;;
    hardlink) cp "$work/old" "$target"; ln "$target" "$work/d/second.txt" ;;
    *) cp "$work/old" "$target" ;;
  esac
  [ ! -e "$target" ] || chmod 640 "$target"
}

is_new() {  # FILE
  if [ "$kind" = pdf ]; then   # it holds the time of its making
    [ "$(head -c 5 "$1")" = %PDF- ] && [ "$(tail -c 6 "$1")" = %%EOF ] && [ "$(stat -c %s "$1")" -eq "$(stat -c %s "$work/new.pdf")" ]
  else
    cmp -s "$1" "$work/new"
  fi
}

old_or_new() {
  if [ ! -e "$target" ]; then
    [ "$kind" = new ]; return
  fi
  [ ! -e "$target.bak" ] || cmp -s "$target.bak" "$work/old" || return 1
  is_new "$target" && return 0
  [ "$kind" != new ] && cmp -s "$target" "$work/old" && return 0
  [ "$kind" = hardlink ] || return 1
  local copy
  for copy in "$work"/d/.file.txt.zelkor-recovery-*; do cmp -s "$copy" "$work/old" && return 0; done
  return 1
}

sweep() {  # NAME KIND OLD-SIZE NEW-SIZE STEP
  local name=$1 step=$5 call nth mode stray
  kind=$2
  save=("$probe")
  make_text "$3" o > "$work/old"
  make_text "$4" n > "$work/new"
  case $kind in
    definition)
      printf 'SetLanguage:Old\r\n[Keywords]\r\nalways\r\n\r\n' > "$work/old"
      printf 'SetLanguage:New\r\n[Keywords]\r\nalways\r\nbegin\r\n\r\n' > "$work/new" ;;
    log) printf 'a line\r\nanother\r\n' > "$work/new" ;;
  esac
  case $kind in definition|log|pdf) save=("$window_probe" "$kind") ;; esac

  prepare
  strace -o "$work/trace" "${save[@]}" "$target" "$work/new" > "$work/out" || fail "$name: the save alone: $(cat "$work/out")"
  [ "$kind" != pdf ] || cp "$target" "$work/new.pdf"
  is_new "$target" || fail "$name: not saved"
  ! sed -n '/the-save-begins-here/,/the-save-ends-here/p' "$work/trace" | grep -q O_TRUNC || fail "$name: opens with truncation"
  sed -n 's/^\([a-z0-9_]*\)(\(.*\)/\1 \2/p' "$work/trace" | list_calls > "$work/calls"
  [ "$(wc -l < "$work/calls")" -ge 8 ] || fail "$name: too few calls: $(cat "$work/calls")"

  while read -r call nth; do
    prepare
    { strace -o /dev/null -e trace="$call" -e inject="$call:signal=KILL:when=$nth" "${save[@]}" "$target" "$work/new" \
      > /dev/null && fail "$name: not killed at $call $nth"; } 2> /dev/null
    points=$((points + 1))
    old_or_new || fail "$name: neither old nor new after $call $nth"
    for stray in "$work"/d/.zelkor-* "$work"/d/.*.zelkor-recovery-*; do
      [ -e "$stray" ] || continue
      strays=$((strays + 1))
      case $stray in
        *zelkor-recovery-*)   # offered, so it must be a whole text
          cmp -s "$stray" "$work/old" || is_new "$stray" || fail "$name: $stray is not whole after $call $nth" ;;
        *) touch -d '1 hour ago' "$stray" ;;
      esac
      mode=$(stat -c %a "$stray")
      [ $((0$mode & ~0640)) -eq 0 ] || [ "$kind" = new ] || fail "$name: $stray is wider than its target: $mode"
    done
    # What the kill left behind is in nobody's way.
    "${save[@]}" "$target" "$work/new" > /dev/null || fail "$name: no save after a kill at $call $nth"
    is_new "$target" || fail "$name: not saved after a kill at $call $nth"
    # Whoever opens the file next is offered each copy, and takes what is unfinished away.
    "$probe" "$target" > "$work/out" || fail "$name: no look after a kill at $call $nth"
    stray=$(find "$work/d" -name '.zelkor-*' -o -name '.*.zelkor-recovery-*' | wc -l)
    [ "$stray" -eq "$(wc -l < "$work/out")" ] || fail "$name: left behind after $call $nth: $(cat "$work/out")"
  done < <(chosen "$step")

  # S4: a sync that fails is a save that failed, and the old text is back.
  local syncs=$(grep -c '^fsync ' "$work/calls") first=$(awk '/^fsync / { print $2; exit }' "$work/calls") nth
  for ((nth = first; nth < first + syncs; ++nth)); do
    # The first two are those of the definition file's copy, which may fail.
    [ "$kind" = definition ] && [ "$nth" -lt $((first + 2)) ] && continue
    prepare
    strace -o /dev/null -e trace=fsync -e inject="fsync:error=EIO:when=$nth" "${save[@]}" "$target" "$work/new" > "$work/out" \
      2> /dev/null && fail "$name: saved although fsync $nth failed"
    grep -q 'Input/output error' "$work/out" || fail "$name: fsync $nth: $(cat "$work/out")"
    if [ "$kind" = new ]; then
      [ ! -e "$target" ] || fail "$name: fsync $nth: a file was left"
    else
      cmp -s "$target" "$work/old" || fail "$name: fsync $nth: not the old text"
    fi
    [ -z "$(find "$work/d" -name '*zelkor*')" ] || fail "$name: fsync $nth: a stray file"
  done
  echo "$name: $(wc -l < "$work/calls") calls"
}

# The same for the settings (promise C2): the writer merges one value into a file that holds another.
sweep_settings() {  # NAME yes|no: is there a file before
  local name=$1 before=$2 call nth
  kind=settings
  rm -rf "$work/d" && mkdir "$work/d"
  target=$work/d/settings.conf
  [ "$before" = no ] || "$writer" "$target" old 1 1 > /dev/null || fail "$name: no file to begin with"
  [ "$before" = no ] || cp "$target" "$work/old"
  strace -o "$work/trace" "$writer" "$target" new 1 1 > /dev/null || fail "$name: the writer alone"
  cp "$target" "$work/new"
  ! grep -q O_TRUNC "$work/trace" || fail "$name: opens with truncation"
  sed -n 's/^\([a-z0-9_]*\)(\(.*\)/\1 \2/p' "$work/trace" | list_calls > "$work/calls"
  [ "$(wc -l < "$work/calls")" -ge 8 ] || fail "$name: too few calls: $(cat "$work/calls")"
  while read -r call nth; do
    rm -rf "$work/d" && mkdir "$work/d"
    [ "$before" = no ] || cp "$work/old" "$target"
    { strace -o /dev/null -e trace="$call" -e inject="$call:signal=KILL:when=$nth" "$writer" "$target" new 1 1 \
      > /dev/null && fail "$name: not killed at $call $nth"; } 2> /dev/null
    points=$((points + 1))
    if [ -e "$target" ]; then
      cmp -s "$target" "$work/new" || { [ "$before" = yes ] && cmp -s "$target" "$work/old"; } || fail "$name: neither old nor new after $call $nth"
    else
      [ "$before" = no ] || fail "$name: no file after $call $nth"
    fi
    "$writer" "$target" new 1 1 > /dev/null || fail "$name: not written after a kill at $call $nth"
    cmp -s "$target" "$work/new" || fail "$name: not whole after a kill at $call $nth"
  done < <(chosen 3)
  echo "$name: $(wc -l < "$work/calls") calls"
}

sweep "new file" new 0 5000 3
sweep "longer" plain 5000 9000 1
sweep "shorter" plain 9000 5000 5
sweep "to empty" plain 5000 0 5
sweep "symbolic link" symlink 5000 6000 5
sweep "hard link, longer" hardlink 5000 9000 5
sweep "hard link, shorter" hardlink 9000 5000 1
sweep "hard link, to empty" hardlink 5000 0 5
sweep "definition file" definition 0 0 9
sweep "log" log 5000 0 13
sweep "PDF" pdf 5000 400 13
sweep "5 MB" plain 5000000 5000001 17
sweep "5 MB, hard link" hardlink 5000000 4999999 17
sweep_settings "settings" yes
sweep_settings "settings, new" no
echo "$points kills, each left the old text or the new one; $strays files left behind, all swept or offered"
