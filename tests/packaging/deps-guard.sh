#!/bin/sh
# deps-guard.sh SOURCE BUILD: all the build found and the tests run comes from `make deps` (its
# list, their dependencies or the base system), not from what this machine happens to have.
# With ENTRY... after BUILD: its own test, which must fail naming each ENTRY taken out.
set -eu
source=$1 build=$2
shift 2
if [ $# -gt 0 ]; then
    out=$(ZAV_DROP="$*" sh "$0" "$source" "$build") && { echo "the guard missed $*"; exit 1; }
    for e; do echo "$out" | grep -q "comes from $e, which" || { echo "missed $e"; exit 1; }; done
    exit 0
fi
work=$(mktemp -d) && trap 'rm -rf "$work"' EXIT
make -s -C "$source" print-packages | tr ' ' '\n' | grep . |
    grep -vxF "$(echo ${ZAV_DROP:-} | tr ' ' '\n')" > "$work/listed" || { echo "none listed"; exit 1; }

# The closure of the listed and base packages (Essential or Priority required) over Depends and
# Pre-Depends: every installed alternative, virtual names through their providers.
dpkg-query -W -f='${db:Status-Abbrev}\t${Package}\t${Priority}\t${Essential}\t${Provides}\t${Pre-Depends}, ${Depends}\n' |
    awk -F'\t' -v listed="$work/listed" '
function clean(d) { sub(/ *\(.*/, "", d); sub(/:.*/, "", d); gsub(/ /, "", d); return d }
BEGIN { while ((getline p < listed) > 0) root[p] = 1 }
$1 ~ /^ii/ {
    have[$2] = 1; deps[$2] = $6
    if ($3 == "required" || $4 == "yes") root[$2] = 1
    for (i = split($5, prov, ","); i > 0; i--)
        if ((v = clean(prov[i])) != "") providers[v] = providers[v] " " $2
}
END {
    for (p in root) if (p in have) { queue[++tail] = p; seen[p] = 1 }
    for (head = 1; head <= tail; head++)
        for (i = split(deps[queue[head]], alts, /[,|]/); i > 0; i--) if ((d = clean(alts[i])) != "")
            for (j = split((d in have ? d : "") providers[d], c, " "); j > 0; j--)
                if (!(c[j] in seen)) { seen[c[j]] = 1; queue[++tail] = c[j] }
    for (p in seen) print p
}' | sort -u > "$work/allowed"
grep -vxFf "$work/allowed" "$work/listed" |
    sed 's/^/make deps lists /; s/$/, which is not installed/' | grep . && exit 1

# The CMake packages, headers and libraries the build used; the programs the tests run (first
# words of shell commands and CMake COMMANDs, what a C++ test starts).
{
    sed -n 's/^[A-Za-z0-9_]*_DIR:PATH=\(\/usr\/.*\)$/\1/p' "$build/CMakeCache.txt" |
        while read -r dir; do find "$dir" -maxdepth 1 -name '*.cmake' | head -1; done
    ninja -C "$build" -t deps 2>/dev/null | grep -o '^ *\/usr\/[^ ]*' | sed 's/^ *//'
    grep -o '/usr/lib/[^ ]*\.so[^ ]*' "$build/build.ninja"
} | sort -u | sed "s/^/used by the build\t/" > "$work/used"
{
    find "$source/tests" "$source/benchmarks" -name '*.sh' -exec grep -hv '^[[:space:]]*#' {} + |
        sed 's/\$(/\n/g; s/`/\n/g; s/&&/\n/g; s/||/\n/g; s/[|;(){}!]/\n/g' |
        sed 's/^[[:space:]]*//; s/^\(if\|then\|else\|elif\|do\|while\|until\|exec\|command -v\|timeout [0-9.]*s\?\|[A-Za-z_][A-Za-z0-9_]*=[^ ]*\)[[:space:]]\+//' |
        awk '{ print $1 }'
    find "$source/tests" "$source/benchmarks" -name CMakeLists.txt -exec grep -ho 'COMMAND [^ $]*' {} + |
        awk '{ print $2 }'
    find "$source/tests" \( -name '*.cpp' -o -name '*.h' \) -exec grep -ho 'start("[a-z][a-z0-9_.+-]*"' {} + |
        sed 's/start("//; s/"//'
} | grep -E '^[A-Za-z][A-Za-z0-9_.+-]*$' | grep -vE '^(zav|zavcli|zavcli-audio|zav_.*)$' | sort -u |
    while read -r word; do
        p=$(command -v -- "$word" 2>/dev/null) || continue
        case "$p" in /*) printf "program %s\t%s\n" "$word" "$(readlink -f "$p")" ;; esac
    done >> "$work/used"

# Owners in one dpkg call, each file asked for on both sides of the merged /usr.
cut -f2 "$work/used" | awk '{ print; if (sub(/^\/usr/, "")) print; else print "/usr" $0 }' |
    xargs -r dpkg -S 2>/dev/null | sed 's/^\([^:]*\)\(:[a-z0-9]*\)\?: /\1\t/' > "$work/owners" || true
awk -F'\t' 'FILENAME == ARGV[1] { ok[$1] = 1; next } FILENAME == ARGV[2] { own[$2] = $1; next } {
    u = substr($2, 1, 4) == "/usr" ? substr($2, 5) : "/usr" $2; o = ($2 in own) ? own[$2] : own[u]
    if (o == "") { print $1 " (" $2 ") comes from no Debian package"; bad = 1 }
    else if (!(o in ok)) { print $1 " (" $2 ") comes from " o ", which make deps does not install"
        bad = 1 }
} END { if (!bad) print "ok: " FNR " files and programs checked"; exit bad }' \
    "$work/allowed" "$work/owners" "$work/used"
