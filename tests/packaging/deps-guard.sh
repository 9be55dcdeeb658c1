#!/bin/sh
# deps-guard.sh SOURCE BUILD: everything the build found and every program the tests run must
# come from `make deps`: from a package in its list, from what those depend on, or from the
# base system (Essential or Priority required). A machine that merely happens to have a
# package installed hides a missing entry; this guard makes such an entry fail the suite.
set -eu
source=$1
build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# ZAV_DEPS_LIST stands in for the Makefile's list when the guard's own test takes entries out.
echo "${ZAV_DEPS_LIST:-$(make -s -C "$source" print-packages)}" | tr ' ' '\n' | sed '/^$/d' > "$work/listed"
[ -s "$work/listed" ] || { echo "make print-packages listed nothing"; exit 1; }

# Installed packages: name, whether base, what they provide and depend on.
dpkg-query -W -f='${db:Status-Abbrev}\t${Package}\t${Priority}\t${Essential}\t${Provides}\t${Pre-Depends}, ${Depends}\n' |
    awk -F'\t' '$1 ~ /^ii/' > "$work/installed"

# The closure of the listed and base packages over Depends and Pre-Depends (every installed
# alternative, virtual names through their providers).
awk -F'\t' -v listed="$work/listed" '
function clean(d) { sub(/ *\(.*/, "", d); sub(/:.*/, "", d); gsub(/ /, "", d); return d }
BEGIN { while ((getline p < listed) > 0) root[p] = 1 }
{
    name = $2; have[name] = 1; deps[name] = $6
    if ($3 == "required" || $4 == "yes") root[name] = 1
    n = split($5, prov, ","); for (i = 1; i <= n; i++) { v = clean(prov[i]); if (v != "") providers[v] = providers[v] " " name }
}
END {
    for (p in root) if (p in have) { queue[++tail] = p; seen[p] = 1 }
    for (head = 1; head <= tail; head++) {
        n = split(deps[queue[head]], alts, /[,|]/)
        for (i = 1; i <= n; i++) {
            d = clean(alts[i]); if (d == "") continue
            cands = (d in have ? d : "") providers[d]
            m = split(cands, c, " ")
            for (j = 1; j <= m; j++) if (!(c[j] in seen)) { seen[c[j]] = 1; queue[++tail] = c[j] }
        }
    }
    for (p in seen) print p
}' "$work/installed" | sort -u > "$work/allowed"

for p in $(cat "$work/listed"); do
    grep -qx "$p" "$work/allowed" || { echo "make deps lists $p, which is not installed"; exit 1; }
done

# What the build used from the system: the CMake packages it found, the headers its objects
# include and the libraries it links.
{
    sed -n 's/^[A-Za-z0-9_]*_DIR:PATH=\(\/usr\/.*\)$/\1/p' "$build/CMakeCache.txt" |
        while read -r dir; do find "$dir" -maxdepth 1 -name '*.cmake' | head -1; done
    ninja -C "$build" -t deps 2>/dev/null | grep -o '^ *\/usr\/[^ ]*' | sed 's/^ *//'
    grep -o '/usr/lib/[^ ]*\.so[^ ]*' "$build/build.ninja"
} | sort -u | sed "s/^/used by the build\t/" > "$work/used"

# Programs the tests and scripts run: the first word of each command in the shell scripts and
# of each CMake COMMAND, and the program named first in a C++ test's string.
{
    find "$source/tests" "$source/benchmarks" -name '*.sh' -exec grep -hv '^[[:space:]]*#' {} + |
        sed 's/\$(/\n/g; s/`/\n/g; s/&&/\n/g; s/||/\n/g; s/[|;(){}!]/\n/g' |
        sed 's/^[[:space:]]*//; s/^\(if\|then\|else\|elif\|do\|while\|until\|exec\|command -v\|timeout [0-9.]*s\?\|[A-Za-z_][A-Za-z0-9_]*=[^ ]*\)[[:space:]]\+//' |
        awk '{ print $1 }'
    find "$source/tests" "$source/benchmarks" -name CMakeLists.txt -exec grep -ho 'COMMAND [^ $]*' {} + |
        awk '{ print $2 }'
    find "$source/tests" \( -name '*.cpp' -o -name '*.h' \) -exec grep -ho 'start("[a-z][a-z0-9_.+-]*"' {} + |
        sed 's/start("//; s/"//'
} | grep -E '^[A-Za-z][A-Za-z0-9_.+-]*$' | sort -u > "$work/words"
while read -r word; do
    case "$word" in zav|zavcli|zavcli-audio|zav_*) continue ;; esac
    p=$(command -v -- "$word" 2>/dev/null) || continue
    case "$p" in /*) printf "program %s\t%s\n" "$word" "$(readlink -f "$p")" ;; esac
done < "$work/words" >> "$work/used"

# Owners in one dpkg call, each file asked for on both sides of the merged /usr.
cut -f2 "$work/used" | awk '{ print; if (sub(/^\/usr/, "")) print; else print "/usr" $0 }' |
    xargs -r dpkg -S 2>/dev/null | sed 's/^\([^:]*\)\(:[a-z0-9]*\)\?: /\1\t/' > "$work/owners" || true

status=0
while IFS='	' read -r what path; do
    o=$(awk -F'\t' -v a="$path" -v b="${path#/usr}" '$2 == a || $2 == b || $2 == "/usr" a { print $1; exit }' "$work/owners")
    if [ -z "$o" ]; then
        echo "$what ($path) comes from no Debian package"; status=1
    elif ! grep -qx "$o" "$work/allowed"; then
        echo "$what ($path) comes from $o, which make deps does not install"; status=1
    fi
done < "$work/used"

[ $status = 0 ] && echo "ok: $(wc -l < "$work/used") files and programs checked"
exit $status
