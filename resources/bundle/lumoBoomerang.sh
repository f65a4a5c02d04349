#!/bin/sh
# Makes a short clip that runs forward and back: lumoBoomerang.sh MOVIE CLIP.mp4 [SECONDS]
#
# Takes the first seconds of the movie (1 to 10, 3 when not given), at most 30 pictures a second and 1280
# points wide and high, and writes them forward and then backward without sound, so that the clip can be
# played over and over. CLIP.mp4 is replaced in one step, and stays as it is when something goes wrong, which
# is told in one line on standard error. Needs ffmpeg. A file of this name beside the executable is run in its
# place.
set -u
export LC_ALL=C

# A movie that cannot be read must not keep the machine busy for good.
PATIENCE=300

fail() {
  printf 'lumoBoomerang: %s\n' "$*" >&2
  exit 1
}
usage() {
  printf 'Usage: lumoBoomerang.sh MOVIE CLIP.mp4 [SECONDS]\n' >&2
  exit 2
}

{ [ $# -eq 2 ] || [ $# -eq 3 ]; } && [ -n "$1" ] && [ -n "$2" ] || usage
movie=$1
clip=$2
seconds=${3-3}
case $seconds in
  [1-9] | 10) ;;
  *) usage ;;
esac
for tool in ffmpeg ffprobe; do
  command -v "$tool" >/dev/null || fail "$tool is missing; install ffmpeg"
done
[ -f "$movie" ] && [ -r "$movie" ] || fail "there is no movie $movie"
case $clip in
  */*) folder=${clip%/*}/ ;;
  *) folder=./ ;;
esac
[ -d "$folder" ] && [ -w "$folder" ] || fail "the folder $folder cannot be written to"
[ -d "$clip" ] && fail "$clip is a folder"

work=$(mktemp -d "${folder}.lumoBoomerang-XXXXXX") || fail "the folder $folder cannot be written to"
trap 'rm -rf "$work"' EXIT
trap 'exit 1' HUP INT TERM

# "file:" and the whitelist keep a name, and a playlist, from reaching for anything but files.
# The movie's own rate, as a fraction, is asked for because newer filters forget it behind a change of times. What
# cannot be read is told below.
rate=$(timeout "$PATIENCE" ffprobe -v error -protocol_whitelist file -select_streams v:0 \
  -show_entries stream=r_frame_rate -of default=nokey=1:noprint_wrappers=1 "file:$movie" </dev/null 2>/dev/null | head -n 1)
case $rate in
  *[!0-9/]* | */*/* | ????????????????????*) rate=30 ;;
  [1-9]*/[1-9]*) [ "${rate%/*}" -le $((30 * ${rate#*/})) ] || rate=30 ;;
  *) rate=30 ;;
esac
# The first picture of the way back would be the last one of the way there, and its last one the first of
# the next round; both are left out. All pictures of the way back are in memory at once, hence the bounds.
forward="trim=duration=$seconds,setpts=PTS-STARTPTS,fps=$rate,\
scale=w='min(1280,iw)':h='min(1280,ih)':force_original_aspect_ratio=decrease:force_divisible_by=2,\
setsar=1,format=yuv420p"
back="trim=start_frame=1,reverse,trim=start_frame=1,setpts=PTS-STARTPTS"
if ! timeout "$PATIENCE" ffmpeg -nostdin -hide_banner -loglevel error -y -protocol_whitelist file \
  -t "$((seconds + 1))" -i "file:$movie" \
  -filter_complex "[0:v:0]$forward,split[there][turned];[turned]${back}[back];\
[there][back]concat=n=2:v=1:a=0,fps=${rate}[clip]" \
  -map '[clip]' -map_metadata -1 -c:v libx264 -crf 26 -movflags +faststart -f mp4 "file:$work/clip.mp4" \
  </dev/null 2>"$work/said"; then
  said=$(tail -n 1 "$work/said")
  ! grep -q "matches no streams" "$work/said" || said="there are no pictures in it"
  fail "$movie cannot be made into a clip: $said"
fi
# A photo is a movie of one picture to ffmpeg.
pictures=$(ffprobe -v error -count_packets -select_streams v:0 -show_entries stream=nb_read_packets -of csv=p=0 \
  "file:$work/clip.mp4" </dev/null 2>/dev/null)
[ "${pictures:-0}" -ge 4 ] || fail "$movie is too short for a clip"
chmod 644 "$work/clip.mp4"
mv -f -- "$work/clip.mp4" "$clip" 2>/dev/null || fail "$clip cannot be written"
