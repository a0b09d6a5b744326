#!/usr/bin/env bash
# Remakes the four interface sounds from synthesis (sox), encoded as AAC in
# M4A (ffmpeg). Each sound is well under 150 ms, eased in and out so that it
# starts and ends at silence, and peaks around -20 dBFS so that it sits
# quietly under music.
#   resources/sounds/make-sounds.sh
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

rate=44100
tone() { sox -q -R -n -r $rate -c 1 -b 16 "$work/$1.wav" synth "${@:2}"; }

# Shapes a mix into its final sound: a short fade-in, a longer fade-out that
# reaches zero at the last sample, then the level.
finish() {
    local name=$1 length=$2 fadeIn=$3 level=$4
    shift 4
    sox -q -R -m "$@" "$work/$name-mix.wav" \
        fade q "$fadeIn" 0 "$(awk "BEGIN { print $length - $fadeIn }")" \
        norm "$level"
    ffmpeg -loglevel error -y -i "$work/$name-mix.wav" -map_metadata -1 \
        -fflags +bitexact -flags:a +bitexact -c:a aac -b:a 96k \
        "$here/$name.m4a"
}

# click: a small woody tick, a bright partial over a breath of noise.
tone click-a 0.04 sine 2400 fade l 0 0.04 0.038
tone click-b 0.04 sine 1250 fade l 0 0.04 0.040
tone click-c 0.04 pinknoise fade l 0 0.04 0.037 gain -14
finish click 0.04 0.002 -20 -v 0.6 "$work/click-a.wav" -v 0.5 "$work/click-b.wav" -v 1 "$work/click-c.wav"

# min: a soft falling glide, the window settling away.
tone min-a 0.11 sine 880-440
tone min-b 0.11 sine 1320-660 gain -12
finish min 0.11 0.006 -22 -v 1 "$work/min-a.wav" -v 1 "$work/min-b.wav"

# pop: a quick rising bubble for a menu choice.
tone pop-a 0.07 sine 420-980 fade l 0 0.07 0.06
tone pop-b 0.07 sine 840-1960 fade l 0 0.07 0.05 gain -10
finish pop 0.07 0.003 -20 -v 1 "$work/pop-a.wav" -v 1 "$work/pop-b.wav"

# drag: a low, muted thud as a track lands in its new place.
tone drag-a 0.09 sine 300-190 fade l 0 0.09 0.085
tone drag-b 0.09 brownnoise fade l 0 0.09 0.07 gain -10
finish drag 0.09 0.003 -19 -v 1 "$work/drag-a.wav" -v 0.7 "$work/drag-b.wav"
