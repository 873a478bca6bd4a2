#!/usr/bin/env bash
# Refreshes translations/*.ts from the sources with lupdate: new texts come in unfinished,
# texts gone from the sources leave, and no line numbers are kept, so a refresh shows only
# what changed. Translate the unfinished entries afterwards (Qt Linguist or an editor).
#
# --check changes nothing and fails when a refresh would change a file, when lupdate
# cannot tell the class of a tr() call, when an entry has no finished translation, or when
# a translation's %1, %2... differ from its source's. The test suite runs it.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bins=$(qtpaths6 --query QT_HOST_BINS 2>/dev/null || echo /usr/lib/qt6/bin)
lupdate=${LUPDATE:-$bins/lupdate}
lrelease=${LRELEASE:-$bins/lrelease}
ts_files=("$root"/translations/zelmor_*.ts)

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Every source but the platform layer's, which holds no user texts.
find "$root/src" -path "$root/src/platform" -prune -o \( -name '*.cpp' -o -name '*.h' \) -print |
  sort >"$work/sources.lst"

# Runs lupdate over the sources into the given .ts files; its warnings go to stdout.
refresh() {
  "$lupdate" -silent -locations none -no-obsolete -no-ui-lines -I "$root/src" \
    "@$work/sources.lst" -ts "$@" 2>&1
}

if [ "${1:-}" != "--check" ]; then
  refresh "${ts_files[@]}"
  for ts in "${ts_files[@]}"; do
    "$lrelease" "$ts" -qm "$work/out.qm" | grep -E 'unfinished|untranslated' | sed "s|^|$(basename "$ts"): |"
  done
  exit 0
fi

failed=0
copies=()
for ts in "${ts_files[@]}"; do
  cp "$ts" "$work/" && copies+=("$work/$(basename "$ts")")
done
warnings=$(refresh "${copies[@]}")
if [ -n "$warnings" ]; then
  echo "lupdate cannot place every text; the lookup at run time would miss it:"
  echo "$warnings"
  failed=1
fi
for ts in "${ts_files[@]}"; do
  name=$(basename "$ts")
  if ! diff -u "$ts" "$work/$name" >"$work/diff"; then
    echo "$name is out of date; run scripts/update-translations.sh and translate:"
    head -n 60 "$work/diff"
    failed=1
  fi
  report=$("$lrelease" "$ts" -qm "$work/out.qm")
  if ! grep -q ' 0 unfinished)' <<<"$report" || grep -q 'untranslated' <<<"$report"; then
    echo "$name has entries without a finished translation:"
    echo "$report"
    failed=1
  fi
  # A missing or extra placeholder shows as a raw %1 or drops an argument at run time.
  perl -0777 -ne '
    while (/<message>(.*?)<\/message>/gs) {
      my $m = $1;
      my ($source) = $m =~ /<source>(.*?)<\/source>/s;
      my ($translation) = $m =~ /<translation[^>]*>(.*?)<\/translation>/s;
      my $marks = sub { join " ", sort($_[0] =~ /%(?:\d+|n)/g) };
      next if !length($translation // "") || $marks->($source) eq $marks->($translation);
      print "$ARGV: placeholders differ: $source\n";
      $bad = 1;
    }
    END { exit($bad ? 1 : 0) }' "$ts" || failed=1
done
exit "$failed"
