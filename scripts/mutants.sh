#!/usr/bin/env bash
# Mutation check of the test suite: applies one-line faults to the product code, one at a time,
# rebuilds only the test programs that should notice, runs them and records whether they did.
#
#   scripts/mutants.sh [-f ID_REGEX] [-b BUILD_DIR] [-o RESULTS] [-t SECONDS] [-l] [-n]
#     -f  only mutants whose id matches this (extended) regex
#     -b  build directory (default: build-mut), configured here when missing
#     -o  results file (default: BUILD_DIR/mutants.results)
#     -t  time limit per test program run (default: 900 s); a run cut off counts as killed
#     -l  list the mutants and check that every pattern occurs exactly once; build nothing
#     -n  skip the clean run of the selected programs before the mutants
#
# Each result line reads "<id> <KILLED|SURVIVED|BUILD-FAIL|NOT-APPLIED> <detail>". The source
# is restored after every mutant, also when the script is interrupted.
set -u

ROOT=$(cd "$(dirname "$0")/.." && pwd)
FILTER='.'
BUILD="$ROOT/build-mut"
RESULTS=""
RUN_LIMIT=900
LIST_ONLY=0
SKIP_CLEAN=0
while getopts "f:b:o:t:ln" opt; do
    case $opt in
        f) FILTER=$OPTARG ;;
        b) BUILD=$(realpath -m "$OPTARG") ;;
        o) RESULTS=$(realpath -m "$OPTARG") ;;
        t) RUN_LIMIT=$OPTARG ;;
        l) LIST_ONLY=1 ;;
        n) SKIP_CLEAN=1 ;;
        *) exit 2 ;;
    esac
done
RESULTS=${RESULTS:-$BUILD/mutants.results}

# id ~~ file ~~ test programs (comma-separated, each "prog" or "prog:gtest_filter")
#    ~~ exact text (must occur once in the file) ~~ replacement
MUTANTS=$(cat <<'EOF'
pin-run-flip ~~ source/CPinValidater.cpp ~~ test_source_policy ~~ if (int(pu1[i]) != int(pu1[iBase]) + iStep * (i - iBase)) { ~~ if (int(pu1[i]) == int(pu1[iBase]) + iStep * (i - iBase)) {
pin-same-bound ~~ source/CPinValidater.cpp ~~ test_source_policy ~~ for (int i = 1; i < m_i4RunLength; ++i) { ~~ for (int i = 1; i < m_i4RunLength - 1; ++i) {
pin-distinct ~~ source/CPinValidater.cpp ~~ test_source_policy ~~ return iDistinct < m_i4MinDistinct; ~~ return iDistinct <= m_i4MinDistinct;
pin-old-same ~~ source/CPinValidater.cpp ~~ test_source_policy ~~ memcmp(szNewPin, szOldPin, cchNew) == 0) { ~~ memcmp(szNewPin, szOldPin, cchNew) != 0) {
pin-strength ~~ source/CPinValidater.cpp ~~ test_source_policy ~~ return NY_PIN_STRENGTH_MEDIUM; ~~ return NY_PIN_STRENGTH_FAIR;
pin-wrap ~~ source/CPinValidater.cpp ~~ test_source_policy ~~ return (u1Prev == '9' && u1Cur == '0') || (u1Prev == 'z' && u1Cur == 'a') || ~~ return (u1Prev == '9' && u1Cur == '1') || (u1Prev == 'z' && u1Cur == 'a') ||
pin-msg-id ~~ source/CPinValidater.cpp ~~ test_source_policy ~~ constexpr unsigned int NY_MSG_SAME_AS_OLD = 0x00210092; ~~ constexpr unsigned int NY_MSG_SAME_AS_OLD = 0x00210093;
cfg-walk-bound ~~ NyCommon/config/NyCfgRecords.h ~~ test_NyCommon_config ~~ if (uint64_t(u4ValueLength) + u4HeaderSize > u8Remaining) { ~~ if (uint64_t(u4ValueLength) > u8Remaining) {
cfg-tree-get ~~ NyCommon/config/NyCfgTree.cpp ~~ test_NyCommon_config ~~ if (pItem->pLeaves == nullptr || u4Variant >= pItem->u4Count) { ~~ if (pItem->pLeaves == nullptr || u4Variant > pItem->u4Count) {
cfg-hex-digit ~~ NyCommon/config/CNyCfgExpander.cpp ~~ test_NyCommon_config ~~ return c - 'A' + 10; ~~ return c - 'A' + 11;
cfg-expand-room ~~ NyCommon/config/CNyCfgExpander.cpp ~~ test_NyCommon_config ~~ if (m_cbOut + cbLiteral + cbReplacement + 1 > m_cbCapacity) { ~~ if (m_cbOut + cbLiteral + cbReplacement > m_cbCapacity) {
cfg-string-size ~~ NyCommon/config/NyCfgString.cpp ~~ test_NyCommon_config ~~ if (u4Capacity < cbNeeded) { ~~ if (u4Capacity + 1 < cbNeeded) {
logq-full ~~ NyCommon/log/CLockfreeArrayQueue.cpp ~~ test_NyCommon_log ~~ if (((u4Reserve + 1) & u4Mask) == (u4Read & u4Mask)) { ~~ if ((u4Reserve & u4Mask) == (u4Read & u4Mask)) {
logq-index ~~ NyCommon/log/CLockfreeArrayQueue.cpp ~~ test_NyCommon_log ~~ size_t uIndex = u4Position & (m_u4Capacity - 1); ~~ size_t uIndex = (u4Position + 1) & (m_u4Capacity - 1);
log-level ~~ NyCommon/log/CNyLogger.cpp ~~ test_NyCommon_log,test_NyCommon_runtime ~~ pItem->u4Level = enLevel; ~~ pItem->u4Level = enLevel == LOG_ERROR ? LOG_INFO : enLevel;
log-mutex-name ~~ NyCommon/log/CNyShmLogger.cpp ~~ test_NyCommon_log ~~ constexpr const char* NY_SHMLOG_MUTEX_SUFFIX = "}"; ~~ constexpr const char* NY_SHMLOG_MUTEX_SUFFIX = "";
safe-copy-cut ~~ NyCommon/runtime/NySafe.cpp ~~ test_NyCommon_runtime ~~ bool bFits = cchSrc <= cchDest - 1; ~~ bool bFits = cchSrc <= cchDest;
safe-cat-room ~~ NyCommon/runtime/NySafe.cpp ~~ test_NyCommon_runtime ~~ size_t cchRoom = cchDest - cchDst - 1; ~~ size_t cchRoom = cchDest - cchDst;
safe-memcpy-wipe ~~ NyCommon/runtime/NySafe.cpp ~~ test_NyCommon_runtime ~~ NySafeReport("NyMemCpy", "cchDest < cchCount");\n        memset(pvDest, 0, cchDest); ~~ NySafeReport("NyMemCpy", "cchDest < cchCount");
convert-clear ~~ NyCommon/runtime/NyConvert.cpp ~~ test_NyCommon_runtime ~~ memset(pvOut, 0, cbUnit);  // never leave a partial, unterminated text behind ~~ (void)cbUnit;
uuid-size ~~ NyCommon/os/NyUuid.cpp ~~ test_NyCommon_os ~~ if (cchBuf < NY_UUID_TEXT_SIZE) { ~~ if (cchBuf + 1 < NY_UUID_TEXT_SIZE) {
ipcname-sep ~~ NyCommon/ipc/NyIpcName.cpp ~~ test_NyCommon_ipc ~~ pOut[i] = (ch == '/' || ch == '\\' || ch == ' ') ? '_' : ch; ~~ pOut[i] = (ch == '/' || ch == ' ') ? '_' : ch;
fileref-empty ~~ NyCommon/ipc/NyFileRef.cpp ~~ test_NyCommon_ipc ~~ } else if (pOut->u4Length == 0) { ~~ } else if (pOut->u4Length == 1) {
uiparam-flag ~~ NyCommon/uiblock/NyUiParamProtect.cpp ~~ test_NyCommon_uiblock ~~ pParam->u4Protected = bEncrypt ? UI_PARAM_PROTECTED : UI_PARAM_CLEAR; ~~ pParam->u4Protected = UI_PARAM_PROTECTED;
uiparam-skip-dec ~~ NyCommon/uiblock/NyUiParamProtect.cpp ~~ test_NyCommon_uiblock ~~ if (pParam->u4Protected == UI_PARAM_CLEAR) { ~~ if (false) {
uiparam-get-u4 ~~ NyCommon/uiblock/NyUiParam.h ~~ test_NyCommon_uiblock ~~ return uint32_t(pu1[0]) | uint32_t(pu1[1]) << 8 | uint32_t(pu1[2]) << 16 | ~~ return uint32_t(pu1[1]) | uint32_t(pu1[1]) << 8 | uint32_t(pu1[2]) << 16 |
tdes-key-part ~~ NyCommon/uiblock/NyTripleDesKey.cpp ~~ test_NyCommon_uiblock ~~ constexpr uint32_t kPartBOffset = 6;  // bytes 6 to 19 of SHA-1(constant) ~~ constexpr uint32_t kPartBOffset = 5;
keccak-pad ~~ NyCommon/crypto/NyKeccak.cpp ~~ test_NyCommon_crypto ~~ XorByte(au8State, u4Rate - 1, 0x80); ~~ XorByte(au8State, u4Rate - 2, 0x80);
hash-sha384 ~~ NyCommon/crypto/NyHash.cpp ~~ test_NyCommon_crypto ~~ {NY_HASH_SHA384, 48, 128, 64, "SHA384"}, ~~ {NY_HASH_SHA384, 48, 128, 64, "SHA512"},
comm-event-suffix ~~ NyCommon/comm/CNyShmCommunication.cpp ~~ test_NyCommon_comm ~~ const char* const SZ_SUFFIX_RESPONSE = "_Event_Response"; ~~ const char* const SZ_SUFFIX_RESPONSE = "_Event_Respons";
session-users ~~ NyCommon/comm/CCommShmSessionRecord.cpp ~~ test_NyCommon_comm ~~ ++it->second.u4Users;\n        Store(it, hSession, pInfo, nullptr); ~~ Store(it, hSession, pInfo, nullptr);
heartbeat-set ~~ NyCommon/comm/CCommHeartBeat.cpp ~~ test_NyCommon_comm ~~ u4Result = NyEventSetForWaiters(pThis->m_hConnected, COMM_HEARTBEAT_MAX_WAKES, &u4Waiting); ~~ u4Result = 0;
liveness-substring ~~ source/ClientLiveness.cpp ~~ test_source_service ~~ bFound = IsAllDigits(pEntry->d_name) && strstr(pEntry->d_name, szPid) != nullptr; ~~ bFound = IsAllDigits(pEntry->d_name) && strcmp(pEntry->d_name, szPid) == 0;
main-server-pid ~~ source/MainServer.cpp ~~ test_source_service ~~ blkResp.uServerPid = NyOsGetCurrentPid(); ~~ blkResp.uServerPid = 0;
main-level ~~ source/MainServer.cpp ~~ test_source_service ~~ return u4Result != NY_OK ? LOG_ERROR : LOG_TRACE; ~~ return u4Result != NY_OK ? LOG_INFO : LOG_TRACE;
svc-wipe-answer ~~ source/GUIService.cpp ~~ test_source_service ~~ // Never let a clear answer (it may hold PINs) out of a protected exchange.\n                NyMemSafeClear(pResp, sizeof(*pResp)); ~~ // Never let a clear answer (it may hold PINs) out of a protected exchange.
svc-protect-answer ~~ source/GUIService.cpp ~~ test_source_service ~~ if (u4Result == NY_OK && bProtected) { ~~ if (u4Result == NY_OK && !bProtected) {
session-guid ~~ source/SessionManager.cpp ~~ test_source_service ~~ size_t cchCopy = strnlen(szSrc, cchDest - 1); ~~ size_t cchCopy = strnlen(szSrc, cchDest - 2);
ui-filter-skip ~~ source/ui/GUIEntryFilter.cpp ~~ test_source_ui ~~ if (!IsAdmitted(szText, InsertionLength(szText, iLen), nullptr)) { ~~ if (!IsAdmitted(szText, InsertionLength(szText, iLen), nullptr) && false) {
ui-space-edge ~~ source/ui/GUIEntryFilter.cpp ~~ test_source_ui ~~ bAdmitted = iCursor != 0 && iCursor != iEnd; ~~ bAdmitted = iCursor != iEnd;
EOF
)

die() {
    echo "mutants.sh: $*" >&2
    exit 2
}

# Prints the fields of mutant line $1, one per line: id, file, programs, pattern, replacement.
fields() {
    python3 - "$1" <<'PY'
import sys
parts = [p.strip() for p in sys.argv[1].split(" ~~ ")]
if len(parts) != 5:
    sys.exit("bad mutant line: " + sys.argv[1])
for p in parts[:3]:
    print(p)
PY
}

# Applies (mode "apply") or only counts (mode "check") the mutant's pattern in its file; "\n" in
# the pattern or replacement stands for a line break. Exit 0 only when it occurs exactly once.
mutate() {
    python3 - "$1" "$2" "$ROOT" <<'PY'
import sys
line, mode, root = sys.argv[1], sys.argv[2], sys.argv[3]
mid, path, _, pattern, replacement = [p.strip() for p in line.split(" ~~ ")]
pattern = pattern.replace("\\n", "\n")
replacement = replacement.replace("\\n", "\n")
try:
    text = open(f"{root}/{path}", encoding="utf-8").read()
except OSError as e:
    sys.exit(f"{mid}: {e}")
count = text.count(pattern)
if count != 1:
    sys.exit(f"{mid}: pattern found {count} times in {path}")
if mode == "apply":
    open(f"{root}/{path}", "w", encoding="utf-8").write(text.replace(pattern, replacement))
PY
}

SELECTED=()
while IFS= read -r line; do
    [ -z "$line" ] && continue
    id=${line%% ~~ *}
    [[ $id =~ $FILTER ]] && SELECTED+=("$line")
done <<<"$MUTANTS"
[ ${#SELECTED[@]} -gt 0 ] || die "no mutant matches '$FILTER'"

if [ $LIST_ONLY = 1 ]; then
    bad=0
    for line in "${SELECTED[@]}"; do
        mapfile -t f < <(fields "$line")
        if mutate "$line" check; then
            printf '%-20s %-45s %s\n' "${f[0]}" "${f[1]}" "${f[2]}"
        else
            bad=1
        fi
    done
    echo "${#SELECTED[@]} mutants"
    exit $bad
fi

export CMAKE_CXX_COMPILER_LAUNCHER=ccache CMAKE_C_COMPILER_LAUNCHER=ccache CCACHE_BASEDIR=/work
if [ ! -f "$BUILD/CMakeCache.txt" ]; then
    nice -n 10 cmake -S "$ROOT" -B "$BUILD" -DNY_BUILD_BENCH=OFF >/dev/null || die "configure failed"
fi
LOGDIR="$BUILD/mutants.logs"
mkdir -p "$LOGDIR"

BACKUP=""
BACKUP_OF=""
restore() {
    if [ -n "$BACKUP" ]; then
        # A plain copy (new time stamp), so the next build recompiles the restored file.
        cp "$BACKUP" "$ROOT/$BACKUP_OF" && rm -f "$BACKUP"
        BACKUP=""
    fi
}
trap 'restore; exit 130' INT TERM
trap restore EXIT

programs_of() {
    tr ',' '\n' <<<"$1" | sed '/^$/d'
}

build_targets() {
    local targets
    targets=$(for p in "$@"; do echo "${p%%:*}"; done | sort -u)
    # shellcheck disable=SC2086
    nice -n 10 cmake --build "$BUILD" -j2 --target $targets
}

# Tests that fail on the unmutated tree (an environment they cannot run in) are left out of
# every mutant run, so they cannot pass for kills; they are listed in the results file.
declare -A EXCLUDE

# Runs one "prog[:filter]"; 0 when it passed.
run_program() {
    local prog=${1%%:*} filter="*"
    [[ $1 == *:* ]] && filter=${1#*:}
    local negative=${EXCLUDE[$prog]:-}
    if [ -n "$negative" ]; then
        [[ $filter == *-* ]] && filter="$filter:$negative" || filter="$filter-$negative"
    fi
    (cd "$BUILD" && nice -n 10 timeout -k 10 "$RUN_LIMIT" "$BUILD/bin/$prog" \
        --gtest_filter="$filter" --gtest_brief=1)
}

: >"$RESULTS"
if [ $SKIP_CLEAN = 0 ]; then
    mapfile -t ALL < <(for line in "${SELECTED[@]}"; do
        programs_of "$(fields "$line" | sed -n 3p)"
    done | sort -u)
    build_targets "${ALL[@]}" >"$LOGDIR/clean.build.log" 2>&1 || die "clean build failed"
    for p in "${ALL[@]}"; do
        log="$LOGDIR/clean.${p//[:\/*]/_}.log"
        run_program "$p" >"$log" 2>&1 && continue
        failed=$(sed -n 's/^\[  FAILED  \] \([A-Za-z0-9_/.]*\) .*/\1/p' "$log" | sort -u | paste -sd:)
        [ -n "$failed" ] || die "$p fails without any mutant and names no failed test (see $log)"
        EXCLUDE[${p%%:*}]=$failed
        echo "# excluded (fail unmutated): ${p%%:*} $failed" | tee -a "$RESULTS"
        run_program "$p" >"$log.retry" 2>&1 || die "$p still fails without its excluded tests"
    done
fi

for line in "${SELECTED[@]}"; do
    mapfile -t f < <(fields "$line")
    id=${f[0]} file=${f[1]}
    mapfile -t progs < <(programs_of "${f[2]}")
    log="$LOGDIR/$id.log"
    BACKUP=$(mktemp)
    BACKUP_OF=$file
    cp "$ROOT/$file" "$BACKUP"
    if ! mutate "$line" apply >"$log" 2>&1; then
        status="NOT-APPLIED"
        detail=$(tail -1 "$log")
    elif ! build_targets "${progs[@]}" >>"$log" 2>&1; then
        status="BUILD-FAIL"
        detail=""
    else
        status="SURVIVED"
        detail=""
        for p in "${progs[@]}"; do
            start=$(date +%s)
            run_program "$p" >>"$log" 2>&1
            rc=$?
            if [ $rc != 0 ]; then
                status="KILLED"
                detail="$p rc=$rc $(($(date +%s) - start))s"
                break
            fi
        done
    fi
    restore
    echo "$id $status $detail" | tee -a "$RESULTS"
done
# Leave the build matching the restored sources.
mapfile -t ALL < <(for line in "${SELECTED[@]}"; do
    programs_of "$(fields "$line" | sed -n 3p)"
done | sort -u)
build_targets "${ALL[@]}" >"$LOGDIR/final.build.log" 2>&1
echo "killed $(grep -c ' KILLED' "$RESULTS") of $(grep -vc '^#' "$RESULTS") (results: $RESULTS)"
