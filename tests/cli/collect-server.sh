#!/bin/sh
# One request to a stand-in collection server, run by socat (EXEC) in the caller's folder: a
# GET is noted in gets.txt and answered with reply.http; a POST's body is added to
# received.txt and answered with a receipt numbered by the bodies received so far.
read -r request
len=0
while IFS= read -r line; do
    line=$(printf '%s' "$line" | tr -d '\r') && [ -n "$line" ] || break
    case "$line" in [Cc]ontent-[Ll]ength:*) len=$(echo "${line#*:}" | tr -d ' ') ;; esac
done
case "$request" in GET*) echo "$request" >> gets.txt && cat reply.http && exit ;; esac
{ head -c "$len" && echo; } >> received.txt
printf 'HTTP/1.0 200 OK\r\nContent-Type: text/xml\r\n\r\n<r><cc>0</cc><receipt>%s</receipt></r>' \
    "$(wc -l < received.txt)"
