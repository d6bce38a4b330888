#!/bin/sh
# Runs the given test programs once under de_DE.UTF-8, where the decimal
# separator is a comma. When the machine has no such locale, one is built
# with localedef (Debian package locales) into WORK and used through LOCPATH.
#   comma_locale.sh WORK PROGRAM...
set -eu
work="$1"
shift
name=de_DE.UTF-8
# coreutils' printf follows the locale; the shell's own may not.
separator() { LC_ALL=$name /usr/bin/printf '%.1f' 1.5 2>/dev/null || true; }
if [ "$(separator)" != "1,5" ]; then
  mkdir -p "$work"
  # Built once per build folder.
  if [ ! -d "$work/$name" ] && ! localedef -i de_DE -f UTF-8 "$work/$name" >"$work/localedef.log" 2>&1; then
    echo "cannot build $name (install the Debian package locales):" >&2
    cat "$work/localedef.log" >&2
    exit 1
  fi
  LOCPATH="$work"
  export LOCPATH
fi
if [ "$(separator)" != "1,5" ]; then
  echo "$name does not write 1.5 as 1,5 here; the run would prove nothing" >&2
  exit 1
fi
LC_ALL=$name
LANG=$name
export LC_ALL LANG
status=0
for program in "$@"; do
  echo "== $program under $LC_ALL"
  "$program" --gtest_brief=1 || status=1
done
exit $status
