#!/bin/sh
# Plants the faults of tests/mutants/faults.txt one at a time in a copy of the sources, and tells which of them the
# tests catch: mutants.sh FOLDER [PATTERN]. With a PATTERN only the faults whose line it matches. The copy and its
# builds stay in FOLDER for the next run. Fails when a fault cannot be planted, or survives without a known reason.
set -eu
cd "$(dirname "$0")/.."
[ $# -ge 1 ] || { echo "usage: $0 FOLDER [PATTERN]" >&2; exit 2; }
sources="CMakeLists.txt cmake lanes platform QX tests"
mkdir -p "$1/source"
work=$(cd "$1" && pwd)
list=$work/list

# A line a fault, its fields between tabs.
perl -00 -ne 'my %f = (reason => "-"); $f{$1} = $2 while /^(\w+): +(.*)$/mg;
    print join("\t", @f{qw(name file old new test reason)}), "\n" if $f{name}' tests/mutants/faults.txt |
    grep -E -e "${2:-}" >"$list"

# Only files that differ are copied and get a new time, so that little is built anew.
refresh() {
    find $sources -type f | while read -r file; do
        cmp -s "$file" "$work/source/$file" && continue
        mkdir -p "$(dirname "$work/source/$file")"
        cp "$file" "$work/source/$file"
    done
    (cd "$work/source" && find $sources -type f) | while read -r file; do
        [ -e "$file" ] || rm "$work/source/$file"
    done
}

# A test is AREA or threads/AREA: the program of a folder, or its part that runs threads under ThreadSanitizer.
kind_of() { case $1 in threads/*) echo threads ;; *) echo plain ;; esac; }

configure() {
    sanitizer=$([ "$1" = threads ] && echo thread || true)
    cmake -S "$work/source" -B "$work/$1" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O1 \
        "-DQX_SANITIZE=$sanitizer" -DQX_BUILD_TOOLS=OFF -DQX_BUILD_BENCH=OFF >"$work/log"
}
build() { cmake --build "$work/$(kind_of "$1")" -j 1 --target "test_${1#threads/}" >"$work/log" 2>&1; }
check() {
    filter=*
    [ "$(kind_of "$1")" = plain ] || filter="*Thread*:*Banded*"
    TSAN_OPTIONS=halt_on_error=1 timeout 900 "$work/$(kind_of "$1")/bin/test_${1#threads/}" --gtest_fail_fast "--gtest_filter=$filter" \
        >"$work/log" 2>&1
}

# The old text must be there once; blanks stand for any blanks.
plant() {
    OLD=$2 NEW=$3 perl -0777 -i -pe '
        my $old = join "\\s+", map { quotemeta } split " ", $ENV{OLD};
        my $count = () = /$old/g;
        s/$old/$ENV{NEW}/;
        END { exit($count == 1 ? 0 : 1) }' "$work/source/$1"
}

failed_test() { sed -n '/^.  FAILED/{s/.*\] *\([^ ,]*\).*/\1/p;q}' "$work/log"; }

# What the tests of a fault say: caught, survived, or that it does not build.
verdict() {
    for test in $1; do
        build "$test" || { echo "does not build"; return; }
        check "$test" || { echo caught by "$test" $(failed_test); return; }
    done
    echo survived
}

refresh
for test in $(cut -f 5 "$list" | tr ' ' '\n' | sort -u); do
    configure "$(kind_of "$test")"
    build "$test" && check "$test" || { echo "$test fails without a fault: see $work/log" >&2; exit 1; }
done

caught=0 known=0 bad=0
tab=$(printf '\t')
while IFS=$tab read -r name file old new tests reason; do
    cp "$work/source/$file" "$work/without"
    if plant "$file" "$old" "$new"; then said=$(verdict "$tests"); else said="cannot be planted"; fi
    cp "$work/without" "$work/source/$file"
    case $said in
        caught*) caught=$((caught + 1)) ;;
        survived) [ "$reason" = - ] && bad=$((bad + 1)) || { known=$((known + 1)) said="survived, as known: $reason"; } ;;
        *) bad=$((bad + 1)) ;;
    esac
    echo "$said: $name ($file)"
done <"$list"
echo "$caught of $(wc -l <"$list") faults caught, $known without effect, $bad at fault"
[ "$bad" -eq 0 ]
