# What a build or a test run prints, without what went well: each tenth of that is one line.

function advance(done, total) {
    tenth = int(10 * done / total)
    if (tenth > shown) {
        shown = tenth
        print 10 * tenth " %"
        fflush()
    }
}

match($0, /^\[[0-9]+\/[0-9]+\] /) {
    split(substr($0, 2, RLENGTH - 3), step, "/")
    if (step[2] > 1)
        advance(step[1], step[2])
    next
}
/^ *[0-9]+\/[0-9]+ Test +#[0-9]+: .* Passed +[0-9.]+ sec *$/ {
    split($1, step, "/")
    advance(step[1], step[2])
    next
}
/^ *Start +[0-9]+: / { next }
{
    print
    fflush()
}
