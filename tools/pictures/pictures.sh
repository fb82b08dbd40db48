#!/usr/bin/env bash
# Takes a picture of every page and dialog, light and dark, at 100 and 200 %, on Qt's offscreen platform, with a server
# of its own on this machine.
#
#   tools/pictures/pictures.sh [BUILD [FOLDER [SCENE]]]
#
# BUILD: the folder with the programs, build/release by default. FOLDER: docs/pictures by default.
set -euo pipefail
cd "$(dirname "$0")/../.."
bin=${1:-build/release}/bin
pictures=${2:-docs/pictures}
only=${3:+--only=$3}

scratch=/tmp/tidewell-pictures # its name is to be seen in pictures
mkdir "$scratch"
touch "$scratch/server.log"
server=
trap '[ -n "$server" ] && kill "$server"; wait; rm -rf "$scratch"' EXIT

"$bin/tidewell-server" --listen 127.0.0.1 --port 0 --data "$scratch/server.sqlite" --registration open \
  >"$scratch/server.log" 2>&1 &
server=$!
port=
for ((tenths = 0; tenths < 100 && ${#port} == 0; tenths++)); do
  port=$(sed -n 's/^listening on .*:\([0-9]\{1,\}\)$/\1/p' "$scratch/server.log")
  [ -n "$port" ] || sleep 0.1
done

make_home() {
  local home=$1
  mkdir -p "$home/Music/Sea songs" "$home/Notes" "$home/Pictures of the coast"
  truncate --size 3400000 "$home/Music/Sea songs/"{one,two,three}.ogg
  truncate --size 61444 "$home/Notes/tides.txt" "$home/Pictures of the coast/low water.png"
  local store=$home/.Tidewell
  "$bin/tidewell-store" set "$store" username Newcomer
  "$bin/tidewell-store" set "$store" password "the tide is out"
  "$bin/tidewell-store" set "$store" server_host 127.0.0.1
  "$bin/tidewell-store" set "$store" server_port "$port"
  "$bin/tidewell-store" set "$store" listening_port 42235
  "$bin/tidewell-store" set "$store" use_upnp no
  "$bin/tidewell-store" set "$store" download_folder /home/newcomer/Downloads
  "$bin/tidewell-store" share "$store" "$home/Music" public
  "$bin/tidewell-store" share "$store" "$home/Notes" userlist
  "$bin/tidewell-store" share "$store" "$home/Pictures of the coast" public
}

take() {
  local home=$1
  shift
  env HOME="$home" QT_QPA_PLATFORM=offscreen QT_SCALE_FACTOR=$scale XDG_RUNTIME_DIR="$scratch" \
    QT_LOGGING_RULES="*.warning=false" \
    "$bin/tidewell-pictures" "$@" ${only:+"$only"} "$pictures"
}

for palette in light dark; do
  for scale in 1 2; do
    home=$scratch/home
    rm -rf "$home"
    make_home "$home"
    options=(--suffix "_${palette}_${scale}00")
    [ "$palette" = dark ] && options+=(--dark)
    take "$home" "${options[@]}"
    rm -rf "$home"
    mkdir -p "$home"
    take "$home" --first "${options[@]}"
  done
done
