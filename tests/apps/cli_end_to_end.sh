#!/usr/bin/env bash
# End-to-end checks of the lattica program: outputs, count lines, exit codes and messages.
set -u
LATTICA="$1"
SCENES="$2"
WORK="$(mktemp -d)"
trap 'rm -rf "$WORK"' EXIT
passed=0
failed=0

check() {  # name, condition command...
  local name="$1"
  shift
  if "$@"; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    echo "FAILED: $name"
  fi
}

expect_exit() {  # name, expected code, stderr must contain, command...
  local name="$1" code="$2" text="$3"
  shift 3
  "$@" >"$WORK/out.txt" 2>"$WORK/err.txt"
  local got=$?
  if [ "$got" -ne "$code" ] || ! grep -qF -- "$text" "$WORK/err.txt"; then
    failed=$((failed + 1))
    echo "FAILED: $name (exit $got, wanted $code with '$text')"
    cat "$WORK/err.txt"
  else
    passed=$((passed + 1))
  fi
}

# The parameter table on every host id.
for host in FXTC KeyG MOTN PrMr; do
  "$LATTICA" params --json --host "$host" >"$WORK/params_$host.json"
  check "params $host lists 314 rows" test "$(grep -c '"index"' "$WORK/params_$host.json")" -eq 314
done
check "KeyG wraps the Size X maximum" grep -q '"name": "Size X".*"validMax": -31072' "$WORK/params_KeyG.json"

# A composition alone renders transparent frames in all three formats, with one count line each.
"$LATTICA" render "$SCENES/no_particles.json" -o "$WORK/png8/f_###.png" --info --quiet 2>"$WORK/info.txt"
check "png 8-bit exit 0" test $? -eq 0
check "six frames" test "$(ls "$WORK/png8" | wc -l)" -eq 6
check "count lines" test "$(grep -cx 'Total: 0   Visible: 0' "$WORK/info.txt")" -eq 6
"$LATTICA" render "$SCENES/no_particles.json" -o "$WORK/png16/f_#.png" --depth 16 -f 0-5x2 --quiet
check "png 16-bit frames 0,2,4" test -f "$WORK/png16/f_0.png" -a -f "$WORK/png16/f_2.png" -a -f "$WORK/png16/f_4.png" -a ! -f "$WORK/png16/f_1.png"
"$LATTICA" render "$SCENES/no_particles.json" -o "$WORK/exr/####.exr" -f 1,3 --quiet
check "exr frames" test -f "$WORK/exr/0001.exr" -a -f "$WORK/exr/0003.exr"
check "no temporary files left" test "$(find "$WORK" -name '*.tmp*' | wc -l)" -eq 0

# Values, keyframes, popups by label, layers and points bind; motion blur gives a line per sample.
"$LATTICA" render "$SCENES/full_values.json" -o "$WORK/full/####.png" -f 0 --info --quiet 2>"$WORK/full.txt"
check "full scene renders" test $? -eq 0
check "three samples" test "$(grep -c "Total: " "$WORK/full.txt")" -eq 3

# Bad input: exit 2 with a message naming the key or value at fault.
expect_exit "unknown key" 2 "composition.framerate" "$LATTICA" render "$SCENES/unknown_key.json" -o "$WORK/x.png"
expect_exit "unknown parameter" 2 "Particle/Sise" "$LATTICA" render "$SCENES/unknown_param.json" -f 0 -o "$WORK/x.png"
expect_exit "separator label" 2 "\"(-\"" "$LATTICA" render "$SCENES/bad_popup.json" -f 0 -o "$WORK/x.png"
expect_exit "wrong value type" 2 "Particle/Color" "$LATTICA" render "$SCENES/wrong_type.json" -f 0 -o "$WORK/x.png"
expect_exit "missing layer" 2 "nowhere" "$LATTICA" render "$SCENES/missing_layer.json" -f 0 -o "$WORK/x.png"
expect_exit "frame out of range" 2 "--frames" "$LATTICA" render "$SCENES/no_particles.json" -f 0-6 -o "$WORK/y_#.png"
expect_exit "frame list syntax" 2 "--frames" "$LATTICA" render "$SCENES/no_particles.json" -f 1-x -o "$WORK/y_#.png"
expect_exit "missing scene" 2 "no_such.json" "$LATTICA" render "$SCENES/no_such.json"
expect_exit "PrMr refused" 2 "PrMr" "$LATTICA" render "$SCENES/no_particles.json" --host PrMr -o "$WORK/p_#.png"
expect_exit "bad depth" 2 "--depth" "$LATTICA" render "$SCENES/no_particles.json" --depth 12 -o "$WORK/d_#.png"
expect_exit "unknown extension" 2 "--output" "$LATTICA" render "$SCENES/no_particles.json" -o "$WORK/x_#.tif"
expect_exit "unknown option" 2 "--colour" "$LATTICA" render "$SCENES/no_particles.json" --colour

# An output that cannot be created is exit 3.
touch "$WORK/blocker"
expect_exit "unwritable output" 3 "blocker" "$LATTICA" render "$SCENES/no_particles.json" -f 0 -o "$WORK/blocker/f_#.png" --quiet

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
