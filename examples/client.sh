#!/bin/sh
# Signs and verifies through sign.cgi, with curl:
#
#   client.sh sign PROJECT data|base64|file VALUE
#   client.sh verify PROJECT data|base64|file VALUE SIGNATURE
#
# VALUE of data and base64 is text, @FILE for the bytes of a local file, or - for standard input. A
# server takes requests of 8 MiB, which hold some 3.3 MB of random bytes. PROJECT and a file's path
# are paths of the server, whose program is at SIGN_URL, or http://127.0.0.1/sign.cgi. Sends a form.
# Prints the signature, true or false. Exit status:
# 0 signed or valid, 1 not valid, 2 wrong usage, 3 refused by the program, 4 no answer from it.
set -u
url=${SIGN_URL:-http://127.0.0.1/sign.cgi}
too_large="request too large; put the data into a file on the server and name it as 'file'"

fail() {
    status=$1
    shift
    printf 'client.sh: %s\n' "$*" >&2
    exit "$status"
}

case $#,${1:-},${3:-} in
    4,sign,data | 4,sign,base64 | 4,sign,file) operation=create ;;
    5,verify,data | 5,verify,base64 | 5,verify,file) operation=verify ;;
    *)
        fail 2 'usage: client.sh sign|verify PROJECT data|base64|file VALUE [SIGNATURE]'
        ;;
esac
project=$2 member=$3 value=$4
# The name that genpairs puts in front is not part of the signature: with it, nothing verifies.
signature=${5:-}
signature=${signature#signature:}

# Base64 data of more than three bytes is signed with a zero byte in front of its last group. What
# was signed as base64 is verified as base64.
writing=plain
if [ "$member" = base64 ]; then
    member=data writing=base64
fi

# A "+" in form text is a space: --data-urlencode escapes it, and "=", "&" and "%". "=" stands in
# front of a text, "@-" for standard input. (Behind "@", the name of a file could hold a "=".)
case $member,$value in
    data,-) value=@- ;;
    data,@*)
        { [ -r "${value#@}" ] && [ ! -d "${value#@}" ]; } || fail 2 "${value#@}: cannot be read"
        exec <"${value#@}"
        value=@-
        ;;
    *) value="=$value" ;;
esac
set -- --data "sig_$operation=true" --data genpairs=true \
    --data-urlencode "project=$project" --data-urlencode "sig_$member$value" \
    --data "sig_data_encoding=$writing" --data-urlencode "sig=$signature"
answer=$(curl --silent --show-error --max-time 60 --write-out '\n%{http_code} %{content_type}' \
    "$@" "$url") || fail 4 "no answer from $url"
type=${answer##*
}
answer=${answer%
*}
case $type in
    200\ *) ;;
    "400 text/plain"*) fail 3 "refused: $answer" ;;
    413\ *) fail 4 "no answer from the program: HTTP status 413, $too_large" ;;
    *) fail 4 "no answer from the program: HTTP status $type" ;;
esac
# A form is answered in pairs.
case $operation,$answer in
    create,signature:?*) printf '%s\n' "${answer#signature:}" ;;
    verify,valid:true) echo true ;;
    verify,valid:false)
        echo false
        exit 1
        ;;
    *) fail 4 "no answer from the program: HTTP status $type" ;;
esac
