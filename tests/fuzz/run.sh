#!/usr/bin/env bash
# Builds the OBJ reader's fuzz target with clang in its own small build folder and fuzzes it for a
# bounded time from the seed corpus. Exits non-zero on a crash; skips (exit 0) where clang or
# libFuzzer's runtime is missing.
# Usage: tests/fuzz/run.sh [build-folder] [seconds]
set -euo pipefail
cd "$(dirname "$0")/../.."

BUILD_DIR="${1:-build-fuzz}"
SECONDS_TO_RUN="${2:-20}"
CXX_FUZZ="${CXX_FUZZ:-clang++}"

if ! command -v "$CXX_FUZZ" >/dev/null 2>&1; then
  echo "fuzz: skipped, $CXX_FUZZ is not installed"
  exit 0
fi

# A one-line fuzz target tells whether this clang has libFuzzer's runtime.
mkdir -p "$BUILD_DIR"
probe="$BUILD_DIR/libfuzzer_probe"
if ! echo 'extern "C" int LLVMFuzzerTestOneInput(const unsigned char*, unsigned long) { return 0; }' |
  "$CXX_FUZZ" -x c++ -fsanitize=fuzzer - -o "$probe" >/dev/null 2>&1; then
  echo "fuzz: skipped, $CXX_FUZZ cannot link libFuzzer (is libclang-rt-dev installed?)"
  exit 0
fi
rm -f "$probe"

cmake -S tests/fuzz -B "$BUILD_DIR" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_CXX_COMPILER="$CXX_FUZZ" >/dev/null
cmake --build "$BUILD_DIR" --target obj_reader_fuzz

# New inputs go to the first folder, never into the checked-in seeds; crashes land in the build
# folder, named crash-<hash>.
work_corpus="$BUILD_DIR/corpus"
mkdir -p "$work_corpus"
echo "fuzz: OBJ reader for ${SECONDS_TO_RUN}s"
if ! "$BUILD_DIR/bin/obj_reader_fuzz" -max_total_time="$SECONDS_TO_RUN" -timeout=10 \
  -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$BUILD_DIR/" \
  "$work_corpus" tests/fuzz/corpus >"$BUILD_DIR/fuzz.log" 2>&1; then
  tail -n 60 "$BUILD_DIR/fuzz.log"
  echo "fuzz: FAILED, the crashing input is in $BUILD_DIR/ (rerun: $BUILD_DIR/bin/obj_reader_fuzz <file>)"
  exit 1
fi
grep -E '^stat::number_of_executed_units' "$BUILD_DIR/fuzz.log" || true
echo "fuzz: passed"
