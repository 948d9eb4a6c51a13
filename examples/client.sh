#!/bin/sh
# Signs and verifies through sign.cgi, with curl:
#
#   client.sh [--form] sign PROJECT data|base64|file VALUE
#   client.sh [--form] verify PROJECT data|base64|file VALUE SIGNATURE
#
# Asks in JSON, or as a form. PROJECT and a file's path are paths of the server, whose program is at
# SIGN_URL, or http://127.0.0.1/sign.cgi. Prints the signature, true or false. Exit status:
# 0 signed or valid, 1 not valid, 2 wrong usage, 3 refused by the program, 4 no answer of it.
set -u
url=${SIGN_URL:-http://127.0.0.1/sign.cgi}

fail() {
    status=$1
    shift
    printf 'client.sh: %s\n' "$*" >&2
    exit "$status"
}

# Text $1 as a JSON string: quotes, backslashes and control characters are escaped.
json() {
    printf '%s\n' "$1" | LC_ALL=C awk '
        BEGIN {
            for (i = 1; i < 32; i++) escape[sprintf("%c", i)] = sprintf("\\u%04x", i)
            escape["\""] = "\\\""
            escape["\\"] = "\\\\"
            printf "\""
        }
        NR > 1 { printf "\\n" }
        {
            for (i = 1; i <= length($0); i++) {
                c = substr($0, i, 1)
                printf "%s", c in escape ? escape[c] : c
            }
        }
        END { printf "\"" }'
}

form=
if [ "${1:-}" = --form ]; then
    form=yes
    shift
fi
case $#,${1:-},${3:-} in
    4,sign,data | 4,sign,base64 | 4,sign,file) operation=create mode=generateSignature ;;
    5,verify,data | 5,verify,base64 | 5,verify,file) operation=verify mode=verifySignature ;;
    *)
        fail 2 'usage: client.sh [--form] sign|verify PROJECT data|base64|file VALUE [SIGNATURE]'
        ;;
esac
project=$2 member=$3 value=$4
# The name that genpairs puts in front is no part of the signature: with it, nothing verifies.
signature=${5:-}
signature=${signature#signature:}

# Base64 data of more than three bytes is signed with a zero byte in front of its last group. What
# was signed as base64 is verified as base64.
writing=plain
if [ "$member" = base64 ]; then
    member=data writing=base64
fi

if [ -n "$form" ]; then
    # A "+" in form text is a space: --data-urlencode escapes it, and "=", "&" and "%".
    set -- --data "sig_$operation=true" --data genpairs=true \
        --data-urlencode "project=$project" --data-urlencode "sig_$member=$value" \
        --data "sig_data_encoding=$writing" --data-urlencode "sig=$signature"
else
    # The type must be these bytes alone. With a charset behind them, the body would be a form.
    set -- --header 'Content-Type: application/json' --data-raw "{\"mode\":\"$mode\",
        \"project\":$(json "$project"),\"signature\":{\"$member\":$(json "$value"),
        \"encoding\":\"$writing\",\"signature\":$(json "$signature")}}"
fi
answer=$(curl --silent --show-error --max-time 60 --write-out '\n%{http_code} %{content_type}' \
    "$@" "$url") || fail 4 "no answer from $url"
type=${answer##*
}
answer=${answer%
*}
case $type in
    200\ *) ;;
    "400 text/plain"*) fail 3 "refused: $answer" ;;
    *) fail 4 "no answer of the program, but HTTP status $type" ;;
esac
# A form is answered in pairs, and JSON in JSON without white space.
case $operation,$answer in
    create,signature:*) printf '%s\n' "${answer#signature:}" ;;
    create,'{"signature":"'*'"}') printf '%s\n' "$answer" | cut -d '"' -f 4 ;;
    verify,valid:true | verify,'{"valid":true}') echo true ;;
    verify,valid:false | verify,'{"valid":false}')
        echo false
        exit 1
        ;;
    *) fail 4 "no answer of the program, but HTTP status $type" ;;
esac
