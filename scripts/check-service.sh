#!/bin/sh
# Asks a served sign.cgi whether it works, for a monitoring system:
#
#   check-service.sh URL [--sign] [-p PROJECT] [-w SECONDS] [-c SECONDS] [-t SECONDS] [-- CURL-OPTIONS]
#
#   -p PROJECT   the path on the server: of check.project (/usr/share/sign-cgi/check.project), or with
#                --sign of your own project
#   --sign       signs under PROJECT and verifies that signature, instead of a known one
#   -w SECONDS   WARNING if the slowest answer took longer
#   -c SECONDS   CRITICAL if the slowest answer took longer
#   -t SECONDS   the time for all requests (10)
#   -h           prints this and exits with 3
#
# Exit status: 0 OK, 1 WARNING, 2 CRITICAL, 3 UNKNOWN. Prints one line: what is broken (the server,
# the URL, the program or the project) and in which step; behind "|" the time of the slowest answer.
# What stands behind "--" is for curl, such as --cacert FILE or --noproxy '*'.
#
# check.project has no private scalar: without --sign nothing is signed.
set -u
export LC_ALL=C # decimal points, and bytes as characters

data='sign-cgi check'
signature='0o5y4Q4q7VRU6odVJ/i3dK6bAQXASrU21N6PxnZIE+AD9iP/GSUrk/SA'
altered='0o54yQ4q7VRU6odVJ/i3dK6bAQXASrU21N6PxnZIE+AD9iP/GSUrk/SA'

project='/usr/share/sign-cgi/check.project' # the prefix may hold spaces
sign='' own=''
url='' warning='' critical='' limit=10
slowest=0 spent=0
number=0 step=''

# Ends with state $1, its word $2 and text $3, which must be one line and hold no "|".
finish() {
    printf 'sign.cgi %s: %s | time=%ss;%s;%s;0;%s\n' "$2" "$(printf %s "$3" | tr '|\n' '  ')" \
        "$slowest" "$warning" "$critical" "$limit"
    exit "$1"
}

unknown() {
    finish 3 UNKNOWN "$1"
}

broken() {
    finish 2 CRITICAL "$1 (step $step)"
}

# Whether $1 > $2, and the sum of such numbers.
above() {
    awk -v a="$1" -v b="$2" 'BEGIN { exit !(a + 0 > b + 0) }'
}

sum() {
    awk -v a="$1" -v b="$2" 'BEGIN { printf "%.6f", a + b }'
}

is_time() {
    case $1 in
        *[!0-9.]* | *.*.* | .* | *. | ?????????????*) false ;;
        *) above "$1" 0 ;;
    esac
}

usage() {
    slowest=0 limit=10 warning='' critical=''
    unknown "$1; usage: check-service.sh URL [--sign] [-p PROJECT] [-w SECONDS] [-c SECONDS] [-t SECONDS]"
}

while [ $# -gt 0 ]; do
    case $1 in
        --)
            shift
            break
            ;;
        -h | --help)
            sed -n '2,/^[^#]/ { /^#/ s/^# \{0,1\}//p; }' "$0"
            exit 3
            ;;
        --sign) sign=yes ;;
        -[pwct])
            [ $# -gt 1 ] || usage "$1 needs a value"
            case $1 in
                -p) project=$2 own=yes ;;
                -w) warning=$2 ;;
                -c) critical=$2 ;;
                -t) limit=$2 ;;
            esac
            shift
            ;;
        -*) usage "there is no option $1" ;;
        *)
            [ -z "$url" ] || usage "there is more than one URL"
            url=$1
            ;;
    esac
    shift
done
case $url in
    http://?* | https://?*) ;;
    '') usage "no URL is given" ;;
    *) usage "$url is not an http or https URL" ;;
esac
for time in "$limit" ${warning:+"$warning"} ${critical:+"$critical"}; do
    is_time "$time" || usage "'$time' is not a time in seconds"
done
[ -z "$warning" ] || [ -z "$critical" ] || ! above "$warning" "$critical" ||
    usage "the time for WARNING is above that for CRITICAL"
[ -n "$project" ] || usage "no project is given"
[ -z "$sign" ] || [ -n "$own" ] || usage "--sign needs -p and your own project"
command -v curl >/dev/null || unknown "curl is not installed"
body=$(mktemp) || unknown "mktemp makes no file for the answer"
trap 'rm -f "$body"' EXIT
trap 'exit 3' HUP INT TERM

# Asks, with options of curl and parameters of a form; leaves $http, $type and the bytes in $body.
ask() {
    left=$(sum "$limit" "-$spent")
    above "$left" 0 || broken "program: the answers took more than $limit s in all"
    # More than 64 KiB is no answer of the program, and no disk is filled with it.
    answer=$(
        trap '' XFSZ
        ulimit -f 128
        curl --disable --silent --show-error --globoff --max-time "$left" --output "$body" \
            --write-out '%{http_code} %{time_total} %{time_connect} %{content_type}' \
            --data-urlencode "project=$project" --data-urlencode "sig_data=$data" "$@" "$url" 2>&1
    )
    result=$?
    # What curl says of a failure stands in front, on lines of its own.
    complaint=${answer%
*}
    read -r http time connected type <<END
${answer##*
}
END
    spent=$(sum "$spent" "$time")
    ! above "$time" "$slowest" || slowest=$time
    case $result in
        0) ;;
        2 | 3 | 4 | 26 | 43 | 48) unknown "curl cannot ask: $complaint" ;;
        6) broken "server: its name is not found: $complaint" ;;
        7) broken "server: no connection: $complaint" ;;
        28)
            above "$connected" 0 || broken "server: no connection within $limit s"
            [ "$number" = 1 ] || broken "program: no answer within $limit s"
            broken "server: connected, but no answer within $limit s: it hangs, or the program does"
            ;;
        23) broken "url: an answer of over 64 KiB: this is not the program" ;;
        35 | 51 | 53 | 54 | 58 | 59 | 60 | 66 | 77 | 80 | 82 | 83 | 90 | 91)
            broken "server: no secure connection: $complaint"
            ;;
        *) broken "server: the connection broke: $complaint" ;;
    esac
}

# The first bytes of the answer, fit for one line.
excerpt() {
    printf "status %s, type %s, '%s'" "$http" "${type:-none}" \
        "$(head -c 60 "$body" | tr -c '[:print:]' '?')"
}

answered() {
    case $http,$type in
        # A server may add a charset to a text.
        "$1,text/plain" | "$1,text/plain;"*) printf %s "$2" | cmp -s - "$body" ;;
        *) false ;;
    esac
}

# What it is if it is not the answer that is due.
judge() {
    case $http,$type in
        404,*) broken "url: nothing is there (status 404)" ;;
        401,* | 403,* | 407,*) broken "url: this client is not let in (status $http)" ;;
        421,*) broken "url: the server does not answer for this host name (status 421)" ;;
        3??,*) broken "url: the server sends the client elsewhere (status $http)" ;;
        500,*) broken "program: it fails, or cannot be started (status 500)" ;;
        502,* | 503,* | 504,*) broken "server: it gets no answer from the program (status $http)" ;;
        200,text/plain* | 400,text/plain* | 200,) broken "program: a wrong answer: $(excerpt)" ;;
        *) broken "url: this is not the program: $(excerpt)" ;;
    esac
}

begin() {
    number=$((number + 1))
    step="$number, $1"
}

# Takes the answer for $signature if it is one.
is_signature() {
    signature=$(tr -d '\000' <"$body")
    case $signature in
        '' | *[!A-Za-z0-9+/=]*) false ;;
        *) [ ${#signature} -le 56 ] && answered 200 "$signature" ;;
    esac
}

begin 'a request that must be refused'
ask "$@" --data sig_verify=true
answered 400 "'signature' parameter is required" || judge

unusable="$project is missing, damaged, not readable by the server's user, or another project"
if [ -n "$sign" ]; then
    begin 'signing'
    ask "$@" --data sig_create=true --data encoding=plain
    if answered 400 'Signature generation failed'; then
        broken "project: $project is missing, damaged, not readable by the server's user, or can only verify"
    fi
    is_signature || judge
    case $signature in
        A*) altered=B${signature#?} ;;
        *) altered=A${signature#?} ;;
    esac
    unusable="what is signed under $project is not valid under it; do all machines have the same one?"
fi

begin 'the signature'
ask "$@" --data sig_verify=true --data-urlencode "sig=$signature"
if answered 200 false; then
    broken "project: $unusable"
fi
answered 200 true || judge

begin 'an altered signature'
ask "$@" --data sig_verify=true --data-urlencode "sig=$altered"
if answered 200 true; then
    broken "program: it accepts a signature that is not valid"
fi
answered 200 false || judge

text="refused, ${sign:+signed, }verified and rejected as it must be, the slowest in $slowest s"
[ -z "$critical" ] || ! above "$slowest" "$critical" || finish 2 CRITICAL "slow: $text"
[ -z "$warning" ] || ! above "$slowest" "$warning" || finish 1 WARNING "slow: $text"
finish 0 OK "$text"
