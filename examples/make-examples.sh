#!/usr/bin/env bash
# Makes the demo recordings: 1.5 s each of white noise at 44.1 kHz, 16-bit mono, at levels
# that pass every judgement of the three steps (sound card about −66 dBFS, receiver 34 dB
# above it, external noise 14 dB above the receiver, within a 20 dB AGC threshold).
# sox's repeatable mode (-R) makes the same files on every run.
set -euo pipefail
cd "$(dirname "$0")"
make_noise() { sox -R -D -n -r 44100 -b 16 -c 1 "$1" synth 1.5 whitenoise vol "$2"; }
make_noise soundcard.wav 0.001
make_noise receiver.wav 0.05
make_noise external.wav 0.25
