#!/usr/bin/env bash
# Manual check that a PIN being typed is kept out of the UI server's core dumps.
#
# Starts a private Xvfb with openbox, the UI server and a verify dialog (ukey-uictl), types a
# known PIN into it with xdotool, and while the dialog is open takes two cores of the server
# with gdb's gcore, every kind of mapping asked for through /proc/PID/coredump_filter:
#   - as a crash would write it (mappings marked MADV_DONTDUMP left out): every copy of the PIN
#     in it outside the session's shared region is a finding; the check passes with 0;
#   - with the MADV_DONTDUMP mappings included: proves that the PIN was typed and that the
#     procedure finds it where it is (at least one copy), so that the 0 above means something.
# Copies are searched as ASCII, UTF-16LE and UTF-32LE and reported by the mapping they lie in;
# the copies in the live server are listed too, with whether their mapping is locked.
#
#   scripts/core-check.sh [BUILD_BIN_DIR]     (default: build/bin beside this script)
# Needs: Xvfb, openbox, xdotool, xprop, gdb (gcore), python3. Exit 0 when the check passes.
set -euo pipefail
export LC_ALL=C.UTF-8
root=$(cd "$(dirname "$0")/.." && pwd)
bin=${1:-$root/build/bin}
pin='Qz7Kw3Xv9Pm2'
# shellcheck source=scripts/private-display.sh
source "$root/scripts/private-display.sh"
start_private_display

main="core-check-$$"
"$bin/ukey-uiserver" "$main" >/dev/null 2>&1 &
server=$!
pids+=($server)
# Ready once its main session answers (a status poll with no dialog is answered at once).
wait_for 10 "$bin/ukey-uictl" raw --main "$main" --cmd 3
"$bin/ukey-uictl" verify --main "$main" --min 4 --max 16 >"$work/answer" 2>&1 &
uictl=$!
pids+=($uictl)
window=$(dialog_window "$work/answer")
sleep 0.5 # the dialog takes the keyboard once mapped
xdotool type --delay 40 "$pin"
sleep 0.5

# Copies in the live process, per mapping, with whether the mapping is locked and left out of
# dumps; the last line is their number.
python3 - "$server" "$pin" >"$work/live" <<'EOF'
import sys
pid, pin = sys.argv[1], sys.argv[2]
flags, start = {}, None
for line in open('/proc/%s/smaps' % pid):
    head = line.split()[0]
    if '-' in head and not head.endswith(':'):
        start = int(head.split('-')[0], 16)
    elif head == 'VmFlags:':
        flags[start] = line.split()[1:]
total = 0
mem = open('/proc/%s/mem' % pid, 'rb', 0)
for line in open('/proc/%s/maps' % pid):
    f = line.split(None, 5)
    lo, hi = (int(x, 16) for x in f[0].split('-'))
    try:
        mem.seek(lo)
        data = mem.read(hi - lo)
    except (OSError, ValueError, OverflowError):
        continue
    for enc in ('ascii', 'utf-16-le', 'utf-32-le'):
        n = data.count(pin.encode(enc))
        if n:
            total += n
            vm = flags.get(lo, [])
            print('  %d x %s in %s %s (locked: %s, left out of dumps: %s)' % (
                n, enc, f[0], f[5].strip() if len(f) > 5 else '[anonymous]',
                'lo' in vm, 'dd' in vm))
print(total)
EOF
echo "core-check: copies in the live server:"
cat "$work/live"

# Every kind of mapping (anonymous and file-backed, private and shared, huge pages, headers).
echo 0x1ff >"/proc/$server/coredump_filter"
cp "/proc/$server/maps" "$work/maps"
# The client is held meanwhile: while gdb holds the server, the client would see no heartbeat
# and give up, and the session would end the dialog.
kill -STOP "$uictl" || { echo "core-check: the client ended early" >&2; cat "$work/answer" >&2; exit 1; }
# Both cores in one attach: once gdb lets the server go, its stalled heartbeat may make it take
# the client for gone and end the dialog.
gdb -q -batch -p "$server" -ex 'set use-coredump-filter on' \
    -ex 'set dump-excluded-mappings off' -ex "gcore $work/core" \
    -ex 'set dump-excluded-mappings on' -ex "gcore $work/core-all" >"$work/gdb.log" 2>&1 &&
    test -s "$work/core" && test -s "$work/core-all" || { cat "$work/gdb.log" >&2; exit 1; }
kill -CONT "$uictl"

# Copies of the PIN per mapping: core file offsets mapped back to addresses through the core's
# load segments, addresses to the server's mappings. Prints the count outside the session's
# shared region (a GUID-named channel file) last.
count_copies() {
    python3 - "$1" "$work/maps" "$pin" <<'EOF'
import re, struct, sys
core = open(sys.argv[1], 'rb').read()
pin = sys.argv[3]
wide = core[4] == 2
ph_off = struct.unpack_from('<Q' if wide else '<I', core, 0x20 if wide else 0x1C)[0]
ph_size, ph_num = struct.unpack_from('<HH', core, 0x36 if wide else 0x2A)
loads = []
for i in range(ph_num):
    at = ph_off + i * ph_size
    if wide:
        kind, _, off, vaddr, _, filesz = struct.unpack_from('<IIQQQQ', core, at)
    else:
        kind, off, vaddr, _, filesz = struct.unpack_from('<IIIII', core, at)
    if kind == 1 and filesz:
        loads.append((off, filesz, vaddr))
maps = []
for line in open(sys.argv[2]):
    f = line.split(None, 5)
    lo, hi = (int(x, 16) for x in f[0].split('-'))
    maps.append((lo, hi, f[5].strip() if len(f) > 5 else '[anonymous]'))
guid = re.compile(r'/[0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}\}?$')
found, outside = {}, 0
for enc in ('ascii', 'utf-16-le', 'utf-32-le'):
    needle = pin.encode(enc)
    at = core.find(needle)
    while at >= 0:
        where = 'outside the load segments'
        for off, size, vaddr in loads:
            if off <= at < off + size:
                addr = vaddr + at - off
                where = next((p for lo, hi, p in maps if lo <= addr < hi), 'unmapped')
                break
        found[(enc, where)] = found.get((enc, where), 0) + 1
        outside += 0 if guid.search(where) else 1
        at = core.find(needle, at + 1)
for (enc, where), n in sorted(found.items()):
    print('  %d x %s in %s' % (n, enc, where))
print(outside)
EOF
}
echo "core-check: core as a crash writes it:"
count_copies "$work/core" | tee "$work/found"
echo "core-check: core with the MADV_DONTDUMP mappings:"
count_copies "$work/core-all" | tee "$work/found-all"

held=$(tail -n1 "$work/found-all")
leaked=$(tail -n1 "$work/found")
if (($(tail -n1 "$work/live") == 0 || held == 0)); then
    echo "core-check: FAILED: the PIN typed is not in the server (typing did not arrive?)" >&2
    exit 1
fi
if ((leaked != 0)); then
    echo "core-check: FAILED: $leaked copies of the PIN outside the session's shared region" >&2
    exit 1
fi
echo "core-check: passed: 0 copies in the core; $held in the mappings left out of it"
