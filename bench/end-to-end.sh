#!/usr/bin/env bash
# End-to-end speed of ondrels-synth on a photo-like 512 x 512 texture set
# (colour RGB, normal, grey height; 8-bit PNG), default parameters, seed 7.
# Prints medians of RUNS runs: 2048 x 2048 on idle cores and beside a busy
# process, G'MIC's patch re-synthesis of the colour layer alone when `gmic`
# is installed, seconds per megapixel from 1024 to 4096 (8192 with --big),
# and the peak memory of the largest run against its pixel data.
#   bench/end-to-end.sh [BUILD_DIR] [--runs N] [--big]
set -euo pipefail

build=build
runs=5
big=0
while [ $# -gt 0 ]; do
  case "$1" in
    --runs) runs=$2; shift ;;
    --big) big=1 ;;
    *) build=$1 ;;
  esac
  shift
done
synth="$build/cli/ondrels-synth"
make_set="$build/tools/ondrels-make-photo-set"
for tool in "$synth" "$make_set"; do
  [ -x "$tool" ] || { echo "missing $tool: build first" >&2; exit 1; }
done

work=$(mktemp -d)
busy_pid=""
cleanup() {
  [ -n "$busy_pid" ] && kill "$busy_pid" 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT

"$make_set" "$work/in" 512 1
inputs=("$work/in/gravel_color.png" "$work/in/gravel_normal.png" "$work/in/gravel_displacement.png")

# seconds and peak kilobytes of one command, as "S KB"
measure() {
  local start end
  if [ -x /usr/bin/time ]; then
    /usr/bin/time -f "%e %M" -o "$work/time" "$@" >/dev/null 2>&1
    cat "$work/time"
  else
    start=$(date +%s.%N)
    "$@" >/dev/null 2>&1
    end=$(date +%s.%N)
    echo "$(awk -v a="$start" -v b="$end" 'BEGIN { print b - a }') 0"
  fi
}

ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.3f", a / b }'; }
median() { sort -n | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }

# median seconds of RUNS runs of ondrels-synth at SIZE; leaves the peak KB of the last run in $work/peak
synth_median() {
  local size=$1 r out
  for r in $(seq "$runs"); do
    out=$(measure "$synth" "${inputs[@]}" --size "${size}x${size}" --seed 7 -q -o "$work/out")
    echo "${out%% *}"
    echo "${out##* }" > "$work/peak"
  done | median
}

echo "ondrels-synth end to end, 3 layers from 512 x 512 photo-like PNGs, seed 7, median of $runs runs"
echo "load average before: $(cut -d' ' -f1-3 /proc/loadavg)"
"$synth" "${inputs[@]}" --size 2048x2048 --seed 7 -o "$work/out" 2>&1 | grep "patches out of" | sed 's/^/  2048: /'

t2048=$(synth_median 2048)
echo "  2048 x 2048, idle cores:        $t2048 s"

sh -c 'while :; do :; done' &
busy_pid=$!
t_busy=$(synth_median 2048)
kill "$busy_pid"
busy_pid=""
echo "  2048 x 2048, one busy process:  $t_busy s"

if command -v gmic >/dev/null 2>&1; then
  t_gmic=$(for r in $(seq "$runs"); do
    out=$(measure gmic -v - "${inputs[0]}" syntexturize_matchpatch 2048,2048 o "$work/gmic.png")
    echo "${out%% *}"
  done | median)
  echo "  G'MIC syntexturize_matchpatch, colour layer only, 2048 x 2048: $t_gmic s ($(ratio "$t_gmic" "$t2048") times ours)"
else
  echo "  G'MIC not installed: no comparison"
fi

sizes="1024 2048 4096"
[ "$big" = 1 ] && sizes="$sizes 8192"
echo "scaling (seconds per output megapixel):"
for size in $sizes; do
  t=$(synth_median "$size")
  echo "  $size: $t s, $(ratio "$t" "$(awk -v s="$size" 'BEGIN { print s * s / 1e6 }')") s/MP, peak $(cat "$work/peak") KB"
done
# Float pixel data: 7 channels in and out, 4 bytes each.
last=${sizes##* }
data_kb=$(( (512 * 512 + last * last) * 7 * 4 / 1024 ))
echo "  pixel data at $last: $data_kb KB; peak / data = $(ratio "$(cat "$work/peak")" "$data_kb")"
echo "load average after: $(cut -d' ' -f1-3 /proc/loadavg)"
