#!/bin/bash
# fxrender_kill_test.sh FXRENDER [KILLS]: kills runs of a project at random moments and goes on with
# them. At the end the outputs must be, byte for byte, those of a run that nobody disturbed, with
# nothing beside them but records, and verify must find nothing wrong.
set -eu
fxrender=$1
kills=${2:-6}
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

frames=${FX_KILL_INPUT:-shot_####.png}
if [ -z "${FX_KILL_INPUT:-}" ]; then
    # A picture of noise, and frames that differ by what the keys make of it.
    { printf 'P5 640 480 255\n'; head -c $((640 * 480)) /dev/urandom; } >noise.pgm
    "$fxrender" apply noise.pgm -o shot_0000.png -f "Blur and enhance:Blur=4" -q
    for i in $(seq 1 29); do cp shot_0000.png "$(printf 'shot_%04d.png' "$i")"; done
fi
"$fxrender" save reel.fxp "$frames" -f "Blur and enhance:Blur=0=1;29=13" \
    -f "Channel separation:Channel=1" -f "Adaptive threshold:Size=31,Min=0" \
    -f "Degauss:Threshold=0=2;29=9" >/dev/null
begin=$(date +%s%N)
"$fxrender" render reel.fxp -o calm/ -q
span=$((($(date +%s%N) - begin) / 1000))

done_before=0
killed=0
runs=0
while [ "$killed" -lt "$kills" ]; do
    runs=$((runs + 1))
    [ "$runs" -le $((20 * kills)) ] # else nothing is ever killed
    "$fxrender" render reel.fxp -o out/ -q --resume --jobs $((1 + runs % 2)) 2>/dev/null &
    moment=$((RANDOM * 32768 + RANDOM))
    sleep "$(printf '%d.%06d' $((moment % span / 1000000)) $((moment % span % 1000000)))"
    kill -KILL $! 2>/dev/null || true
    code=0
    wait $! 2>/dev/null || code=$?
    [ "$code" -ne 137 ] || killed=$((killed + 1))
    [ -d out ] || continue
    # Work is kept, and what stands is whole.
    for file in out/*.*; do [ ! -e "$file" ] || cmp "$file" "calm/${file#out/}"; done
    there=$(find out -maxdepth 1 -type f ! -name '.*' | wc -l)
    [ "$there" -ge "$done_before" ]
    done_before=$there
    # With nothing left to do there is nothing to kill.
    if [ "$there" -ge 28 ]; then rm -rf out; done_before=0; fi
done
"$fxrender" render reel.fxp -o out/ -q --resume
diff -r --exclude=.fxrender calm out
"$fxrender" verify reel.fxp -o out/
echo "$killed of $runs runs killed"
