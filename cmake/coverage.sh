#!/bin/sh
# coverage.sh BUILD_FOLDER LEAST: what the tests that ran in this build have executed, by folder, and each
# file below LEAST percent of its lines with the lines that are left. Fails when a folder is below it.
set -eu

build=$1
least=$2
# Branches that only an exception takes stand behind every call and are none of the source's.
gcovr --root . --object-directory "$build" --exclude-throw-branches --exclude-unreachable-branches \
  --filter 'Common/' --filter 'Libs/' --filter 'host/' --filter 'json/' --filter 'memory/' --filter 'module/' \
  --filter 'tools/tovrin/' --csv "$build/coverage.csv" --txt "$build/coverage.txt" \
  --html-details "$build/coverage.html" -j "$(nproc)"

# filename,line_total,line_covered,line_percent,branch_total,branch_covered,...
awk -F, -v least="$least" '
  NR == 1 { next }
  {
    folder = $1
    sub("/[^/]*$", "", folder)
    lines[folder] += $2; hit[folder] += $3; branches[folder] += $5; taken[folder] += $6
  }
  function percent(part, whole) { return whole ? 100 * part / whole : 100 }
  END {
    printf "%-24s %8s %8s %8s\n", "folder", "lines", "covered", "branches"
    for (folder in lines) {
      covered = percent(hit[folder], lines[folder])
      printf "%-24s %8d %7.1f%% %7.1f%%\n", folder, lines[folder], covered,
             percent(taken[folder], branches[folder]) | "sort"
      if (covered < least) isLow = 1
    }
    close("sort")
    if (isLow) print "a folder is below " least " %"
    exit isLow
  }' "$build/coverage.csv"
