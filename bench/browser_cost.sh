#!/usr/bin/env bash
# hbbtv-browser on the bundled sample, headless: the time from the AIT section that completes
# the table to the application's first paint, and the memory (proportional set size) of the
# browser and its WebKit processes, over several runs (the median and the range). The
# application comes from the carousel (broadband down), and over HTTP as a TV's server sends
# it (application/vnd.hbbtv.xhtml+xml, from a server on 127.0.0.1 that needs python3), and with
# the broadband server unreachable: a name that does not resolve (in a network namespace of its
# own, loopback only, so no lookup leaves the machine) and a refused connection, each failing
# over to the carousel.
#   bench/browser_cost.sh BUILD_DIR [RUNS]
set -euo pipefail
build=${1:?usage: browser_cost.sh BUILD_DIR [RUNS]}
runs=${2:-7}
browser="$build/tools/hbbtv-browser"
samples="$(cd "$(dirname "$0")/../samples" && pwd)"
work=$(mktemp -d)
trap 'kill "${server:-0}" 2>/dev/null || true; rm -rf "$work"' EXIT

measure() {
    local label=$1; shift
    local isolate=()
    if [ "$label" = "--isolated" ]; then
        isolate=(unshare -rn sh -c 'ip link set lo up && exec "$@"' sh)
        label=$1; shift
    fi
    local paints=() memory=()
    for _ in $(seq "$runs"); do
        out=$(xvfb-run -a "${isolate[@]}" "$browser" --exit-after 100 "$@" 2>/dev/null)
        paints+=("$(sed -n 's/.*first paint in .*: \([0-9]*\) ms after.*/\1/p' <<<"$out")")
        memory+=("$(sed -n 's/.* \([0-9]*\) KiB in all/\1/p' <<<"$out")")
    done
    median() { printf '%s\n' "$@" | sort -n | awk '{a[NR]=$1} END {print a[int((NR+1)/2)] " (" a[1] "-" a[NR] ")"}'; }
    echo "$label: first paint $(median "${paints[@]}") ms, memory $(median "${memory[@]}") KiB (proportional set size, all processes)"
}

measure "sample from the carousel (broadband down)" --no-broadband
measure --isolated "broadband unreachable: the name does not resolve, then the carousel"

# A port just freed: nothing listens there, so connections are refused.
refused=$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
sed "s|http://sample.example/|http://127.0.0.1:$refused/|" "$samples/sample.desc" > "$work/refused.desc"
ln -s "$samples/carousel" "$work/carousel"
"$build/tools/make-sample" "$work/refused.desc" "$work/refused.ts"
measure "broadband unreachable: the connection is refused, then the carousel" "$work/refused.ts"

# The sample's application over HTTP, as application/vnd.hbbtv.xhtml+xml.
port=$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
python3 - "$port" "$samples/carousel" <<'PY' &
import functools, http.server, sys
class Pages(http.server.SimpleHTTPRequestHandler):
    def guess_type(self, path):
        return 'application/vnd.hbbtv.xhtml+xml' if path.endswith('.html') else super().guess_type(path)
    def log_message(self, *args):
        pass
    def translate_path(self, path):
        return super().translate_path(path.replace('/app/', '/', 1))
http.server.ThreadingHTTPServer(('127.0.0.1', int(sys.argv[1])), functools.partial(Pages, directory=sys.argv[2])).serve_forever()
PY
server=$!
sed "s|http://sample.example/|http://127.0.0.1:$port/|" "$samples/sample.desc" > "$work/sample.desc"
"$build/tools/make-sample" "$work/sample.desc" "$work/sample.ts"
sleep 0.5
measure "sample over HTTP (application/vnd.hbbtv.xhtml+xml)" "$work/sample.ts"
