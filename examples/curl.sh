#!/bin/sh
# Requests to sign.cgi with curl, one after the other, each with its answer:
#
#   curl.sh [URL [PROJECT [FILE]]]
#
# PROJECT and FILE are paths of the server. Each command works by itself, in a shell that has these
# variables:
url=${1:-http://127.0.0.1/sign.cgi}
project=${2:-/var/lib/sign-cgi/my.project}
file=${3:-/usr/share/common-licenses/GPL-3}

set -eu
letter=$(mktemp)
trap 'rm -f "$letter"' EXIT
printf 'Dear reader,\0\377\n' >"$letter" # a file of this machine, with bytes that are not text

heading() {
    printf '\n%s\n' "$*"
}

# Ends with what the server said instead of a signature; curl itself reports a failed connection.
stop() {
    printf '%s\n' "$1" >&2
    exit 1
}

heading '== Form'

heading 'Sign a text:'
signature=$(curl -sS --fail-with-body --data-urlencode "project=$project" -d sig_create=true \
    --data-urlencode 'sig_data=1 + 1 = 2' "$url") || stop "$signature"
echo "$signature"

heading 'Verify it (true):'
curl -sS -w '\n' --data-urlencode "project=$project" -d sig_verify=true \
    --data-urlencode 'sig_data=1 + 1 = 2' --data-urlencode "sig=$signature" "$url"

heading 'Verify another text against it (false):'
curl -sS -w '\n' --data-urlencode "project=$project" -d sig_verify=true \
    --data-urlencode 'sig_data=1 + 1 = 3' --data-urlencode "sig=$signature" "$url"

heading 'Sign a file of the server:'
signature=$(curl -sS --fail-with-body --data-urlencode "project=$project" -d sig_create=true \
    --data-urlencode "sig_file=$file" "$url") || stop "$signature"
echo "$signature"

heading 'Verify it (true):'
curl -sS -w '\n' --data-urlencode "project=$project" -d sig_verify=true \
    --data-urlencode "sig_file=$file" --data-urlencode "sig=$signature" "$url"

heading 'Sign the bytes of a file of this machine:'
signature=$(curl -sS --fail-with-body --data-urlencode "project=$project" -d sig_create=true \
    --data-urlencode "sig_data@$letter" "$url") || stop "$signature"
echo "$signature"

heading 'Verify it (true):'
curl -sS -w '\n' --data-urlencode "project=$project" -d sig_verify=true \
    --data-urlencode "sig_data@$letter" --data-urlencode "sig=$signature" "$url"

heading '== JSON'

heading 'Sign a text:'
answer=$(curl -sS --fail-with-body -H 'Content-Type: application/json' -d '{
    "mode": "generateSignature", "project": "'"$project"'",
    "signature": {"data": "1 + 1 = 2"}}' "$url") || stop "$answer"
echo "$answer"
signature=$(printf %s "$answer" | cut -d '"' -f 4)

heading 'Verify it (true):'
curl -sS -w '\n' -H 'Content-Type: application/json' -d '{
    "mode": "verifySignature", "project": "'"$project"'",
    "signature": {"data": "1 + 1 = 2", "signature": "'"$signature"'"}}' "$url"

heading 'Verify another text against it (false):'
curl -sS -w '\n' -H 'Content-Type: application/json' -d '{
    "mode": "verifySignature", "project": "'"$project"'",
    "signature": {"data": "1 + 1 = 3", "signature": "'"$signature"'"}}' "$url"

heading 'Sign a file of the server, and be answered in bare text:'
signature=$(curl -sS --fail-with-body -H 'Content-Type: application/json' -d '{
    "mode": "generateSignature", "project": "'"$project"'", "encoding": "plain",
    "signature": {"file": "'"$file"'"}}' "$url") || stop "$signature"
echo "$signature"

heading 'Verify it (true):'
curl -sS -w '\n' -H 'Content-Type: application/json' -d '{
    "mode": "verifySignature", "project": "'"$project"'",
    "signature": {"file": "'"$file"'", "signature": "'"$signature"'"}}' "$url"

heading '== Refusals: status 400, and the message alone'

heading 'Sign nothing:'
curl -sS -w ' (status %{http_code})\n' --data-urlencode "project=$project" -d sig_create=true \
    "$url"

heading 'Verify without a signature:'
curl -sS -w ' (status %{http_code})\n' --data-urlencode "project=$project" -d sig_verify=true \
    --data-urlencode 'sig_data=1 + 1 = 2' "$url"

heading 'Sign under a project that is not there:'
curl -sS -w ' (status %{http_code})\n' -d project=/nonexistent -d sig_create=true \
    -d sig_data=hello "$url"

heading 'Verify under it, which is not refused:'
curl -sS -w ' (status %{http_code})\n' -d project=/nonexistent -d sig_verify=true \
    -d sig_data=hello --data-urlencode "sig=$signature" "$url"

heading '== Trap: more than three bytes of base64 data are signed with a zero byte among them'

heading 'Sign the six bytes ABCDEF, written in base64 (on one line: a line break would be refused):'
data=$(printf ABCDEF | base64 -w 0)
signature=$(curl -sS --fail-with-body --data-urlencode "project=$project" -d sig_create=true \
    --data-urlencode "sig_data=$data" -d sig_data_encoding=base64 "$url") || stop "$signature"
echo "$signature"

heading 'Wrong: verify it with the bytes as they are (false):'
curl -sS -w '\n' --data-urlencode "project=$project" -d sig_verify=true \
    -d sig_data=ABCDEF --data-urlencode "sig=$signature" "$url"

heading 'Right: verify it with the data in the same encoding (true):'
curl -sS -w '\n' --data-urlencode "project=$project" -d sig_verify=true \
    --data-urlencode "sig_data=$data" -d sig_data_encoding=base64 \
    --data-urlencode "sig=$signature" "$url"

heading 'Right: verify it with the bytes that were signed, ABC, a zero byte, DEF (true):'
curl -sS -w '\n' --data-urlencode "project=$project" -d sig_verify=true \
    -d sig_data=ABC%00DEF --data-urlencode "sig=$signature" "$url"

heading '== Trap: with genpairs, the name in front is not part of the signature'

heading 'Sign a text, with the name of the result in front:'
answer=$(curl -sS --fail-with-body --data-urlencode "project=$project" -d sig_create=true \
    -d genpairs=true -d sig_data=hello "$url") || stop "$answer"
echo "$answer"

heading 'Wrong: send the answer back as it came (false):'
curl -sS -w '\n' --data-urlencode "project=$project" -d sig_verify=true \
    -d sig_data=hello --data-urlencode "sig=$answer" "$url"

heading 'Right: cut the name off (true):'
curl -sS -w '\n' --data-urlencode "project=$project" -d sig_verify=true \
    -d sig_data=hello --data-urlencode "sig=${answer#signature:}" "$url"

heading '== Trap: a content type of more than application/json makes the body a form'

heading 'Wrong: with a charset (refused):'
curl -sS -w ' (status %{http_code})\n' -H 'Content-Type: application/json; charset=utf-8' -d '{
    "mode": "generateSignature", "project": "'"$project"'",
    "signature": {"data": "hello"}}' "$url"

heading 'Right: the bare type:'
curl -sS -w '\n' -H 'Content-Type: application/json' -d '{
    "mode": "generateSignature", "project": "'"$project"'",
    "signature": {"data": "hello"}}' "$url"

heading 'Wrong: multipart/form-data, which curl makes of -F (refused):'
curl -sS -w ' (status %{http_code})\n' -F "project=$project" -F sig_create=true \
    -F sig_data=hello "$url"

heading '== Trap: "+" is a space in form text, so a signature is percent-encoded'

heading 'Sign a text until there is a "+" in the signature:'
signature=
until [ "$signature" != "${signature#*+}" ]; do
    signature=$(curl -sS --fail-with-body --data-urlencode "project=$project" -d sig_create=true \
        -d sig_data=hello "$url") || stop "$signature"
done
echo "$signature"

heading 'Wrong: send it as it is (false):'
curl -sS -w '\n' --data-urlencode "project=$project" -d sig_verify=true \
    -d sig_data=hello -d "sig=$signature" "$url"

heading 'Right: "+" as %2B and "=" as %3D, as --data-urlencode writes them (true):'
curl -sS -w '\n' --data-urlencode "project=$project" -d sig_verify=true \
    -d sig_data=hello --data-urlencode "sig=$signature" "$url"
