#!/bin/bash
# faults_test.sh FXRENDER FAULTS_LIBRARY [STRIDE]: lets calls of the renderer fail, one in each run,
# and looks at what stands afterwards: the right result with code 0, or the old file, a code that is
# documented, one line, and nothing left over. STRIDE is from one allocation that fails to the next:
# 1 takes hours. Below the usual one, every call to the system fails once with every error.
set -u
fxrender=$1
library=$2
usual=4000
stride=${3:-$usual}
all=
[ "$stride" = $usual ] || all=1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder" || exit 1
export QT_QPA_PLATFORM=offscreen
failures=0
runs=0

{ printf 'P5 96 64 255\n'; head -c 6144 /dev/urandom; } >noise.pgm
"$fxrender" apply noise.pgm -o in.png -q -f "Blur and enhance:Blur=3" || exit 1
"$fxrender" apply in.png -o cells.png -q -f "Adaptive threshold:Size=31,Min=0" || exit 1

printf old | tee old-out.png >old-out.tif
"$fxrender" save old-project.fxp in.png -f "Dilate_Erode" >/dev/null || exit 1

fail() {
    echo "FAILED: $fault: $*"
    failures=$((failures + 1))
}

# attempt FAULT RESULT COMMAND...: one run.
attempt() {
    fault="$1 ($what)"
    local result=$2
    code=0
    cp "old-$result" "$result"
    FX_FAULT=$1 FX_COUNT=count LD_PRELOAD=$library "$fxrender" "${@:3}" >out 2>err || code=$?
    runs=$((runs + 1))
    calls=$(cat count 2>/dev/null || echo 0)
    rm -f count
    case $code in
        0) cmp -s "$result" "good-$result" || fail "ends with 0 and another result" ;;
        65 | 66 | 73 | 74 | 75)
            cmp -s "$result" "old-$result" || cmp -s "$result" "good-$result" ||
                fail "ends with $code, and the file is neither the old one nor whole"
            [ "$(wc -l <err)" = 1 ] || fail "ends with $code and $(wc -l <err) lines: $(head -3 err)"
            case $1 in memory*) [ $code = 75 ] || fail "ends with $code: $(cat err)" ;; esac
            ;;
        *) fail "ends with $code: $(head -3 err)" ;;
    esac
    [ ! -e report.json ] || [ "$(tail -c 2 report.json)" = "}" ] || fail "cuts the report short"
    local strange
    strange=$(find . -type f ! -name noise.pgm ! -name in.png ! -name cells.png ! -name 'good-*' ! -name 'old-*' \
        ! -name out ! -name err ! -name "$result" ! -name report.json)
    if [ -n "$strange" ]; then
        fail "leaves $strange"
        rm -f $strange
    fi
}

# sweep WHAT RESULT COMMAND...
sweep() {
    what=$1
    local result=$2
    "$fxrender" "${@:3}" >/dev/null || fail "does not work without a fault"
    mv "$result" "good-$result"
    attempt "memory 0" "$result" "${@:3}"
    local count=$calls n
    [ "$count" -gt 100 ] || fail "only $count allocations were seen"
    for ((n = 1 + RANDOM % stride; n <= count; n += stride)); do
        attempt "memory $n" "$result" "${@:3}"
    done
    local call error calls_to_fail="write fsync rename open linkat ftruncate"
    # All filters' results are saved in the same way.
    [ -n "$all" ] || [ "$3" != apply ] || [ "$result" = out.tif ] || calls_to_fail=""
    for call in $calls_to_fail; do
        attempt "$call 0" "$result" "${@:3}"
        local number=$calls
        for ((n = 1; n <= number; n++)); do
            local errors=(ENOSPC EIO EDQUOT) chosen
            chosen=${errors[RANDOM % 3]}
            for error in "${errors[@]}"; do
                [ -n "$all" ] || [ $error = "$chosen" ] || continue
                attempt "$call $n $error" "$result" "${@:3}"
            done
        done
    done
    rm -f "$result"
    "$fxrender" "${@:3}" >/dev/null
    cmp -s "$result" "good-$result" || fail "the next run without a fault differs"
    echo "$what: $count allocations"
    rm -f "$result"
}

apply() {
    sweep "$1" out.png apply "$2" -o out.png -q --jobs 1 -f "$1"
}
apply "Channel separation:Channel=4" in.png
apply "Blur and enhance:Blur=5,Enhance=true" in.png
apply "Adaptive threshold:Size=31,Min=0" in.png
apply "Dilate_Erode:Dilate=3" in.png
apply "Open_Close:Dilate=3" in.png
apply "Degauss:Method=1" in.png
apply "Degauss:Method=0" in.png
apply "Object separator" cells.png
sweep "save" project.fxp save project.fxp in.png -f "Blur and enhance:Blur=5"
what=report
apply_report=(apply cells.png -o out.tif -q --jobs 1 --report report.json -f "Object separator")
sweep "report" out.tif "${apply_report[@]}"
# A plug-in that is tried in a process of its own, which the system does not grant.
what=plug-in
plugin=$(dirname "$fxrender")/../plugins/libBasicFiltersPlugin.so
for call in memory fork execve; do
    attempt "$call 1 ENOMEM" out.tif apply cells.png -o out.tif -q --plugin "$plugin" -f "Object separator"
    [ "$code" = 75 ] || fail "ends with $code: $(cat err)"
done
grep -q "no process for the plug-in" err || fail "says: $(cat err)"
echo "$runs runs, $failures failures"
[ "$failures" = 0 ]
