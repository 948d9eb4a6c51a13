#!/usr/bin/env bash
# Builds the programs and shows them at work, each request with its response:
#
#   scripts/demo.sh                  exits 0 only if every answer was as it must be; those of nph-sign.cgi are
#                                    shown only when they are not
#   scripts/demo.sh --serve [PORT]   goes on to serve sign.cgi on 127.0.0.1 (port 8080) until Ctrl-C
set -euo pipefail
cd "$(dirname "$0")/.."
export LC_ALL=C              # ${#text} counts bytes
export PATH=$PATH:/usr/sbin  # where lighttpd is, and not every user looks

usage() {
    echo "usage: scripts/demo.sh [--serve [PORT]]" >&2
    exit 2
}

serve=
port=8080
if [[ $# -gt 0 ]]; then
    [[ $1 == --serve && $# -le 2 ]] || usage
    serve=yes
    port=${2:-$port}
    [[ $port =~ ^[1-9][0-9]{0,4}$ && $port -le 65535 ]] || usage
fi

port_is_taken() {
    (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null
}
if [[ -n $serve ]] && port_is_taken; then
    echo "demo: port $port of 127.0.0.1 is in use; choose another: scripts/demo.sh --serve PORT" >&2
    exit 1
fi

programs=$PWD/build/release
work=$(mktemp -d /tmp/sign-demo.XXXXXX)
server=

clean_up() {
    if [[ -n $server ]]; then
        kill -TERM "$server" 2>/dev/null || true
        wait "$server" 2>/dev/null || true
    fi
    rm -rf "$work"
}
trap clean_up EXIT
trap 'exit 130' INT TERM

exchanges=0
wrong=0

# A backslash at the end of a line is not part of it: the line goes on.
indented() {
    tr -d '\r' <"$1" | sed 's/.\{110\}/&\\\n/g' | sed 's/^/    | /'
    echo
}

complain() {
    echo "  WRONG: $*"
    right=
}

# Starts program $1 as a web server does, with a body of type $2 and text $3, and writes what came.
# The answer must be, byte for byte, what $4 (status), $5 (content type) and $6 (an extended regular
# expression for the body) say; the body is left in $body, the signature in it in $signature.
exchange() {
    local program=$1 type=$2 text=$3 status=$4 answer_type=$5 pattern=$6
    local exit_status=0 expected_exit=0 first_line="Status: $status" right=yes
    [[ $program == nph-* ]] && first_line="HTTP/1.0 $status"
    [[ $status == 200* ]] || expected_exit=255

    printf '  CONTENT_TYPE=%s CONTENT_LENGTH=%d %s\n' "$type" "${#text}" "$program"
    printf %s "$text" >"$work/request"
    indented "$work/request"
    (
        cd "$work"
        exec env -i GATEWAY_INTERFACE=CGI/1.1 SERVER_PROTOCOL=HTTP/1.1 REQUEST_METHOD=POST \
            SCRIPT_NAME="/$program" CONTENT_TYPE="$type" CONTENT_LENGTH=${#text} \
            "$programs/$program" <request >response 2>errors
    ) || exit_status=$?
    echo "  exit status $exit_status"
    indented "$work/response"

    # What follows the first empty line; the responses of the program end without a line feed.
    body=$(sed '1,/^\r$/d' "$work/response")
    [[ $body =~ ^$pattern$ ]] || complain "the body does not match $pattern"
    signature=${BASH_REMATCH[1]:-}
    printf '%s\r\nContent-Type: %s\r\nContent-Length: %d\r\n\r\n%s' \
        "$first_line" "$answer_type" "${#body}" "$body" >"$work/expected"
    cmp -s "$work/expected" "$work/response" ||
        complain "expected '$first_line', type $answer_type, the body's length, and no more"
    [[ $exit_status -eq $expected_exit ]] || complain "expected exit status $expected_exit"
    [[ ! -s $work/errors ]] || complain "standard error: $(cat "$work/errors")"

    exchanges=$((exchanges + 1))
    [[ -n $right ]] || wrong=$((wrong + 1))
}

form=application/x-www-form-urlencoded
json=application/json
signature_text='([A-Za-z0-9+/]{4,56}={0,2})'
json_signature="\\{\"signature\":\"$signature_text\"\\}"

heading() {
    printf '\n%s\n\n' "$1"
}

# A request as JSON, in two lines: operation $1 under project $2 over member $3, "data" or "file", which
# is $4; signature $5, if there is one.
json_request() {
    printf '{"mode":"%s","project":"%s",\n "signature":{"%s":"%s"%s}}' "$1" "$2" "$3" "$4" \
        "${5:+,\"signature\":\"$5\"}"
}

# A signature as a form's value: the signs that mean something else there, escaped.
form_escaped() {
    local text=${1//+/%2B}
    printf %s "${text//=/%3D}"
}

use_forms() {
    local program=$1 sig
    heading "$program: sign a text, as a form"
    exchange "$program" $form 'project=demo.project&sig_create=true&sig_data=hello+world' \
        '200 OK' text/plain "$signature_text"
    sig=$(form_escaped "$signature")

    heading "$program: verify it"
    exchange "$program" $form "project=demo.project&sig_verify=true&sig_data=hello+world&sig=$sig" \
        '200 OK' text/plain true

    heading "$program: verify another text against it"
    exchange "$program" $form "project=demo.project&sig_verify=true&sig_data=hello+World&sig=$sig" \
        '200 OK' text/plain false

    heading "$program: sign a file, with the name of the result in front"
    exchange "$program" $form \
        'project=demo.project&sig_create=true&sig_file=letter.txt&genpairs=true' \
        '200 OK' text/plain "signature:$signature_text"
    sig=$(form_escaped "$signature")

    heading "$program: verify it"
    exchange "$program" $form "project=demo.project&sig_verify=true&sig_file=letter.txt&sig=$sig" \
        '200 OK' text/plain true
}

use_json() {
    local program=$1 project=demo.project
    heading "$program: sign a text, as JSON"
    exchange "$program" $json "$(json_request generateSignature $project data 'hello world')" \
        '200 OK' $json "$json_signature"
    local sig=$signature

    heading "$program: verify it"
    exchange "$program" $json "$(json_request verifySignature $project data 'hello world' "$sig")" \
        '200 OK' $json '\{"valid":true\}'

    heading "$program: verify another text against it"
    exchange "$program" $json "$(json_request verifySignature $project data 'hello World' "$sig")" \
        '200 OK' $json '\{"valid":false\}'

    heading "$program: sign a file"
    exchange "$program" $json "$(json_request generateSignature $project file letter.txt)" \
        '200 OK' $json "$json_signature"
    sig=$signature

    heading "$program: verify it"
    exchange "$program" $json "$(json_request verifySignature $project file letter.txt "$sig")" \
        '200 OK' $json '\{"valid":true\}'
}

be_refused() {
    heading "$1: a refusal: both a text and a file"
    exchange "$1" $form 'project=demo.project&sig_create=true&sig_data=hello&sig_file=letter.txt' \
        '400 Bad Request' text/plain "Either 'data' or 'file' parameter is required"
}

# Shows a command, to be pasted as it stands, and runs it; its output must match $2.
curl_command() {
    printf '\n%s\n' "$1"
    body=$(bash -c "$1") || body="curl failed with $?"
    printf '    | %s\n' "$body"
    if [[ ! $body =~ ^$2$ ]]; then
        echo "demo: that answer is wrong" >&2
        exit 1
    fi
    signature=${BASH_REMATCH[1]:-}
}

serve_until_interrupted() {
    local url=http://127.0.0.1:$port/sign.cgi project=$work/demo.project sig tries=0
    # The configuration as installed, but for the folder of the programs.
    mkdir "$work/programs"
    cp "$programs"/{sign.cgi,nph-sign.cgi,limited} "$work/programs"
    sed "s|/usr/libexec/sign-cgi|$work/programs|g" deploy/lighttpd.conf >"$work/sign.conf"
    cat >"$work/lighttpd.conf" <<EOF
server.bind = "127.0.0.1"
server.port = $port
server.document-root = "$work/programs"
server.errorlog = "$work/error.log"
server.upload-dirs = ( "$work" )
# No file is handed out, and no folder listed.
server.compat-module-load = "disable"
include "$work/sign.conf"
EOF
    lighttpd -D -f "$work/lighttpd.conf" </dev/null >"$work/server-output" 2>&1 &
    server=$!
    # The log names the server's start: an answer on the port alone may be another server's.
    until grep -qs 'server started' "$work/error.log"; do
        tries=$((tries + 1))
        if [[ $tries -gt 100 ]] || ! kill -0 "$server" 2>/dev/null; then
            cat "$work/server-output" "$work/error.log" >&2 2>/dev/null || true
            echo "demo: lighttpd does not start on 127.0.0.1:$port; is the port in use?" >&2
            exit 1
        fi
        sleep 0.1
    done

    heading "Serving $url. Each of these commands was just run, with this answer:"
    local post="curl -s $url"$' \\\n '
    curl_command "$post -d project=$project -d sig_create=true -d sig_data=hello" "$signature_text"
    sig="-d sig_verify=true --data-urlencode sig=$signature"
    curl_command "$post -d project=$project -d sig_data=hello"$' \\\n '" $sig" true

    post+=" -H 'Content-Type: $json' -d"
    curl_command "$post '$(json_request generateSignature "$project" data hello)'" "$json_signature"
    sig=$signature
    curl_command "$post '$(json_request verifySignature "$project" data hello "$sig")'" \
        '\{"valid":true\}'

    heading "The project and the server's log are in $work until Ctrl-C ends the server."
    trap 'echo; echo "demo: stopped"; exit 0' INT TERM
    wait "$server" || true
    server=
    echo "demo: the server ended by itself" >&2
    exit 1
}

# One of several demonstrations at a time.
build() {
    local lock
    mkdir -p build
    exec {lock}>build/demo.lock
    flock "$lock"
    echo "Building build/release"
    if ! cmake --preset release >"$work/build.log" 2>&1; then
        cat "$work/build.log" >&2
        echo "demo: cmake could not configure build/release" >&2
        exit 1
    fi
    if ! cmake --build --preset release 2>&1 | awk -f scripts/tenths.awk; then
        echo "demo: build/release could not be built" >&2
        exit 1
    fi
    exec {lock}>&-
}

scripts/install-packages.sh build ${serve:+serve}
build

"$programs/projectctl" create "$work/demo.project"
printf 'Dear reader,\n\nthis file is signed.\n' >"$work/letter.txt"

use() {
    use_forms "$1"
    use_json "$1"
    be_refused "$1"
}
use sign.cgi
shown=$exchanges
use nph-sign.cgi >"$work/nph"
heading "nph-sign.cgi: the same $((exchanges - shown)) requests; its answers begin with 'HTTP/1.0', not with 'Status:'"
[[ $wrong -eq 0 ]] || cat "$work/nph"

if [[ $wrong -gt 0 ]]; then
    heading "demo: $wrong of $exchanges answers are WRONG"
    exit 1
fi
heading "demo: all $exchanges answers are as they must be"
[[ -z $serve ]] || serve_until_interrupted
