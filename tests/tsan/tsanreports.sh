#!/bin/sh
# Reads ThreadSanitizer report files (TSAN_OPTIONS log_path) and fails when
# one of them concerns code of this project.
#
#   tsanreports.sh <build dir> <report file>...
#
# A data race counts when one of its two accesses has a frame of ours: a
# frame in one of the programs or libraries of the build directory. Races
# whose both accesses lie wholly in the system's libraries are Qt talking to
# itself under its own futex mutexes, which ThreadSanitizer cannot see (the
# thread pool's bookkeeping of idle threads, for one); they are listed by
# their summary line only. Such a race cannot be suppressed by name: the Qt
# functions on its stacks (QListData::realloc_grow, ...) are also the ones a
# race on one of our own lists goes through (the canary's "list" mode).
# Every other kind of report (use after free, lock order, signal) counts
# when any of its stacks has a frame of ours.
set -eu
build=$1
shift
[ $# -gt 0 ] || exit 0
ours=$(find "$build" -type f \( -name '*.so*' -o -perm -u+x \) ! -name '*.o' ! -name '*.sh' \
         -exec basename {} \; 2>/dev/null | sort -u | tr '\n' ' ')
awk -v ours=" $ours " '
function ourFrame(line,    module) {
    if (line !~ /^ +#[0-9]+ /)
        return 0
    if (match(line, /\(([^()+ ]+)\+0x[0-9a-f]+\)$/)) {
        module = substr(line, RSTART + 1, RLENGTH - 2)
        sub(/\+0x[0-9a-f]+$/, "", module)
        return index(ours, " " module " ") > 0
    }
    return 0
}
function finish() {
    if (!inReport)
        return
    if (counts) {
        relevant++
        print report
    } else {
        ignored++
        print "ignored (Qt only): " summary > "/dev/stderr"
    }
    inReport = 0
}
/^WARNING: ThreadSanitizer: / {
    finish()
    inReport = 1; report = ""; summary = ""; counts = 0
    race = ($0 ~ /data race/)
    section = ""
}
/^==[0-9]+==ERROR: ThreadSanitizer/ { finish(); crashes++; print }
inReport {
    report = report $0 "\n"
    if ($0 ~ /^  [A-Z]/) {
        access = ($0 ~ /^  (Atomic )?(Read|Write) of size/ || $0 ~ /^  Previous /)
        section = race ? (access ? "access" : "other") : "any"
    }
    if ((section == "access" || section == "any") && ourFrame($0))
        counts = 1
    if ($0 ~ /^SUMMARY: /) {
        summary = $0
        finish()
    }
}
END {
    finish()
    printf "ThreadSanitizer: %d report(s) on our code, %d crash(es), %d ignored (Qt only)\n", \
        relevant, crashes, ignored > "/dev/stderr"
    exit (relevant + crashes > 0) ? 1 : 0
}
' "$@"
