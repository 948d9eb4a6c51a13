# Of the lines of ninja and ctest: the counter at each tenth of the way, and what is neither the counter
# nor a test that passed.
match($0, /^\[ *[0-9]+\/[0-9]+\]/) || match($0, /^ *[0-9]+\/[0-9]+ Test /) {
    counter = substr($0, RSTART, RLENGTH)
    gsub(/[^0-9\/]/, "", counter)
    split(counter, of, "/")
    tenth = int(10 * of[1] / of[2])
    if (tenth > shown) {
        shown = tenth
        printf "  %d of %d\n", of[1], of[2]
        fflush()
    }
    if (/^\[/ || / Passed +[0-9.]+ sec *$/) {
        next
    }
}
/^ +Start +[0-9]+: / || /^ninja: / || /^$/ { next }
{ print; fflush() }
