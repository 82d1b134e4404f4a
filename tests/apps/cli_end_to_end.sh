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
check "exr exit 0" test $? -eq 0
check "exr frames" test -f "$WORK/exr/0001.exr" -a -f "$WORK/exr/0003.exr"
check "no temporary files left" test "$(find "$WORK" -name '*.tmp*' | wc -l)" -eq 0

# Values, keyframes, popups by label, layers and points bind; motion blur gives a line per sample.
"$LATTICA" render "$SCENES/full_values.json" -o "$WORK/full/####.png" -f 0 --info --quiet 2>"$WORK/full.txt"
check "full scene renders" test $? -eq 0
check "three samples" test "$(grep -c "Total: " "$WORK/full.txt")" -eq 3

# The saved record: written after the render, and read back as the scene's sequence data.
"$LATTICA" render "$SCENES/no_particles.json" -o "$WORK/rec/####.png" -f 0 --quiet --save-record "$WORK/rec/state.bin"
check "record written" test "$(stat -c %s "$WORK/rec/state.bin" 2>/dev/null)" = 7200
printf '{"composition": {"width": 8, "height": 8, "duration": 0.1}, "effect": {"sequenceData": {"file": "state.bin"}}}' >"$WORK/rec/again.json"
"$LATTICA" render "$WORK/rec/again.json" -o "$WORK/rec/again_####.png" --quiet --save-record "$WORK/rec/again.bin"
check "record read back unchanged" cmp -s "$WORK/rec/state.bin" "$WORK/rec/again.bin"
head -c 7199 "$WORK/rec/state.bin" >"$WORK/rec/short.bin"
printf '{"composition": {"width": 8, "height": 8, "duration": 0.1}, "effect": {"sequenceData": {"file": "short.bin"}}}' >"$WORK/rec/short.json"
expect_exit "a record of the wrong size starts from defaults" 0 "sequence data with wrong size" \
  "$LATTICA" render "$WORK/rec/short.json" -o "$WORK/rec/short_####.png" --quiet

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

expect_exit "missing image file" 2 "no_such_sprite.png" "$LATTICA" render "$SCENES/missing_image.json" -f 0 -o "$WORK/x.png"
expect_exit "PrMr refused, one frame" 2 "PrMr" "$LATTICA" render "$SCENES/no_particles.json" --host PrMr -f 0 -o "$WORK/p.png"
expect_exit "several frames, one name" 2 "no run of '#'" "$LATTICA" render "$SCENES/no_particles.json" -o "$WORK/same.png"
expect_exit "numbered movie" 2 "is a movie" "$LATTICA" render "$SCENES/no_particles.json" -o "$WORK/clip_##.mp4"
expect_exit "bad downsample" 2 "--downsample" "$LATTICA" render "$SCENES/no_particles.json" --downsample 0 -o "$WORK/d_#.png"
expect_exit "non-numeric depth" 2 "--depth" "$LATTICA" render "$SCENES/no_particles.json" --depth deep -o "$WORK/d_#.png"
expect_exit "no scene" 2 "scene" "$LATTICA" render
check "nothing written by refused runs" test ! -e "$WORK/x.png" -a ! -e "$WORK/p.png" -a ! -e "$WORK/same.png"

# Options that change the pixels' path but not the picture; --downsample shrinks the frame.
png_size() { od -An -tu1 -j16 -N8 "$1" | awk '{print $3*256+$4 "x" $7*256+$8}'; }
"$LATTICA" render "$SCENES/full_values.json" -f 2 -o "$WORK/argb.png" --quiet
"$LATTICA" render "$SCENES/full_values.json" -f 2 -o "$WORK/bgra.png" --order bgra --threads 1 --quiet
check "bgra and one thread give the same image" cmp -s "$WORK/argb.png" "$WORK/bgra.png"
"$LATTICA" render "$SCENES/full_values.json" -f 2 -o "$WORK/half.png" --downsample 3 --quiet
check "downsample 3 of 40x30 is 13x10" test "$(png_size "$WORK/half.png")" = "13x10"

# An output that cannot be created is exit 3.
touch "$WORK/blocker"
expect_exit "unwritable output" 3 "blocker" "$LATTICA" render "$SCENES/no_particles.json" -f 0 -o "$WORK/blocker/f_#.png" --quiet
mkdir -p "$WORK/readonly"
chmod a-w "$WORK/readonly"
if [ "$(id -u)" -ne 0 ]; then
  expect_exit "read-only folder" 3 "readonly" "$LATTICA" render "$SCENES/no_particles.json" -f 0 -o "$WORK/readonly/f.png" --quiet
fi

# Movies: without ffmpeg on PATH the run stops before rendering, exit 3.
expect_exit "ffmpeg missing" 3 "ffmpeg" env PATH= "$LATTICA" render "$SCENES/no_particles.json" -o "$WORK/nompeg/clip.mp4" --quiet
check "nothing written without ffmpeg" test ! -e "$WORK/nompeg/clip.mp4"

# A stand-in ffmpeg records its arguments and keeps the raw frames as the "movie".
FAKE="$WORK/fakebin"
mkdir -p "$FAKE"
cat >"$FAKE/ffmpeg" <<'SH'
#!/bin/sh
for out; do :; done
echo "$@" >"$(dirname "$out")/args.txt"
echo $$ >"$(dirname "$out")/ffmpeg.pid"
exec cat >"$out"
SH
chmod +x "$FAKE/ffmpeg"
PATH="$FAKE:$PATH" "$LATTICA" render "$SCENES/no_particles.json" -o "$WORK/movie8/clip.mov" --quiet
check "movie exit 0" test $? -eq 0
check "six 40x30 rgba frames piped" test "$(wc -c <"$WORK/movie8/clip.mov")" -eq $((6 * 40 * 30 * 4))
check "raw rgba at the comp rate" grep -q -- "-pix_fmt rgba -video_size 40x30 -framerate 24000/1000" "$WORK/movie8/args.txt"
PATH="$FAKE:$PATH" "$LATTICA" render "$SCENES/no_particles.json" -o "$WORK/movie16/clip.mp4" --depth 16 -f 0-1 --quiet
check "16-bit frames as rgba64le" test "$(wc -c <"$WORK/movie16/clip.mp4")" -eq $((2 * 40 * 30 * 8))
check "16-bit pixel format" grep -q -- "-pix_fmt rgba64le" "$WORK/movie16/args.txt"

cat >"$FAKE/failing" <<'SH'
#!/bin/sh
echo "stand-in encoder: no such codec" >&2
exit 1
SH
chmod +x "$FAKE/failing"
mkdir -p "$WORK/failbin"
ln -s "$FAKE/failing" "$WORK/failbin/ffmpeg"
expect_exit "ffmpeg fails" 3 "ffmpeg" env PATH="$WORK/failbin:$PATH" "$LATTICA" render "$SCENES/no_particles.json" -o "$WORK/failed/clip.mp4" --quiet
check "failed movie leaves nothing" test "$(ls -A "$WORK/failed" | wc -l)" -eq 0

if command -v ffmpeg >/dev/null && command -v ffprobe >/dev/null; then
  "$LATTICA" render "$SCENES/no_particles.json" -o "$WORK/real/clip.mp4" -f 0-2 --quiet
  check "real ffmpeg writes three frames" test "$(ffprobe -v error -count_frames -select_streams v:0 -show_entries stream=nb_read_frames -of csv=p=0 "$WORK/real/clip.mp4")" = 3
fi

# SIGINT / SIGTERM: only complete frames remain, no temporary file, the encoder is gone.
wait_for() {  # up to 60 s for a file matching the glob
  for _ in $(seq 600); do
    compgen -G "$1" >/dev/null && return 0
    sleep 0.1
  done
  return 1
}
"$LATTICA" render "$SCENES/many_frames.json" -o "$WORK/stopped/f_####.png" --quiet 2>/dev/null &
pid=$!
wait_for "$WORK/stopped/f_0000.png"
kill -INT "$pid"
wait "$pid"
check "SIGINT exits 130" test $? -eq 130
check "frames remain" test "$(ls "$WORK/stopped" | wc -l)" -ge 1
check "no partial file after SIGINT" test "$(ls -A "$WORK/stopped" | grep -vc '^f_[0-9]*\.png$')" -eq 0
complete=1
for f in "$WORK"/stopped/*.png; do
  [ "$(tail -c 8 "$f" | head -c 4)" = "IEND" ] || complete=0
done
check "every remaining frame is complete" test "$complete" -eq 1

PATH="$FAKE:$PATH" "$LATTICA" render "$SCENES/many_frames.json" -o "$WORK/stopmovie/clip.mov" --quiet 2>/dev/null &
pid=$!
wait_for "$WORK/stopmovie/ffmpeg.pid"
sleep 0.5
kill -TERM "$pid"
wait "$pid"
check "SIGTERM exits 143" test $? -eq 143
check "encoder killed" test -n "$(cat "$WORK/stopmovie/ffmpeg.pid")" -a ! -d "/proc/$(cat "$WORK/stopmovie/ffmpeg.pid")"
check "no movie or temporary file after SIGTERM" test "$(ls -A "$WORK/stopmovie" | grep -vc '^args.txt$\|^ffmpeg.pid$')" -eq 0

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
