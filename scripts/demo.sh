# shellcheck shell=bash
# Sourced by ./run: the demonstration network. All of its files lie in demo/, its programs talk to 127.0.0.1 only.

bin=$PWD/build/release/bin
demo=$PWD/demo
room="Boat house" # where everybody meets
started=() # process ids, in the order of starting

# Ends what was started, the last first, and waits. Everything saves its state on SIGTERM within two seconds; whoever
# does not end within ten is killed.
stop_everything() {
  trap '' INT TERM HUP # from here on it is ending anyway
  local index pid tenths
  for ((index = ${#started[@]} - 1; index >= 0; index--)); do
    kill -TERM "${started[index]}" 2>/dev/null || true
  done
  for pid in "${started[@]}"; do
    for ((tenths = 0; tenths < 100; tenths++)); do
      kill -0 "$pid" 2>/dev/null || break
      sleep 0.1
    done
    kill -KILL "$pid" 2>/dev/null || true
    wait "$pid" 2>/dev/null || true
  done
}

fail() {
  echo "$1" >&2
  exit 1
}

# start LOG COMMAND...: in the background, noted for the end; the id is in $! afterwards.
start() {
  local log=$1
  shift
  : >"$log"
  "$@" >>"$log" 2>&1 </dev/null &
  started+=($!)
}

is_port_free() {
  ! (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null
}

# A free port for a client to listen on; each call looks above the one before.
next_port=42350
choose_port() {
  until is_port_free "$next_port"; do next_port=$((next_port + 1)); done
  port=$next_port
  next_port=$((next_port + 1))
}

# The sample files are made once; their content is the same everywhere.
make_samples() {
  [ -f "$demo/samples/made-2" ] && return 0
  echo "Making the sample files."
  rm -rf "$demo/samples"
  mkdir -p "$demo/samples/Marlo/Tide tables" "$demo/samples/Marlo/Notes" "$demo/samples/Pebble/Pictures"
  awk 'BEGIN {
    print "minute,station,height_cm"
    for (minute = 0; length_so_far < 20000000; minute++) {
      line = sprintf("%d,station-%02d,%.1f", minute, minute % 24, 240 + 180 * sin(minute / 118.6) + 40 * sin(minute / 49.3))
      length_so_far += length(line) + 1
      print line
    }
  }' >"$demo/samples/Marlo/Tide tables/readings of a year.csv"
  printf '%s\n' 'Spring tides come with the full and the new moon,' 'neap tides with the quarters between them.' \
    >"$demo/samples/Marlo/Notes/spring and neap.txt"
  printf '%s\n' 'Bring: boots, a lamp, the key to the boat house.' >"$demo/samples/Marlo/Notes/before the tide.txt"
  local hue
  for hue in 190 205 220; do
    printf '<svg xmlns="http://www.w3.org/2000/svg" width="640" height="400">%s%s</svg>\n' \
      "<rect width=\"640\" height=\"400\" fill=\"hsl($hue,60%,80%)\"/>" \
      "<path d=\"M0 260 Q80 200 160 260 T320 260 T480 260 T640 260 V400 H0 Z\" fill=\"hsl($hue,70%,40%)\"/>" \
      >"$demo/samples/Pebble/Pictures/wave at $hue degrees.svg"
  done
  cp "$demo/samples/Pebble/Pictures/wave at 205 degrees.svg" "$demo/samples/Pebble/Pictures/high tide.svg"
  touch "$demo/samples/made-2"
}

# make_home NAME: a fresh home folder with the settings of a client of that name, logging in here and nowhere else.
make_home() {
  home=$demo/homes/$1
  store=$home/.Tidewell
  rm -rf "$home"
  mkdir -p "$home"
  choose_port
  "$bin/tidewell-store" set "$store" username "$1"
  "$bin/tidewell-store" set "$store" password "the tide is out"
  "$bin/tidewell-store" set "$store" server_host 127.0.0.1
  "$bin/tidewell-store" set "$store" server_port "$server_port"
  "$bin/tidewell-store" set "$store" listening_port "$port"
  "$bin/tidewell-store" set "$store" use_upnp no
  "$bin/tidewell-store" set "$store" download_folder "$home/Downloads"
  "$bin/tidewell-store" autojoin "$store" "$room"
}

start_server() {
  rm -f "$demo"/server.sqlite*
  start "$demo/server.log" "$bin/tidewell-server" --listen 127.0.0.1 --port 0 --data "$demo/server.sqlite" \
    --registration open --motd "Welcome to the demonstration."
  local pid=$! tenths
  server_port=
  for ((tenths = 0; tenths < 100; tenths++)); do
    server_port=$(sed -n 's/^listening on .*:\([0-9]\{1,\}\)$/\1/p' "$demo/server.log")
    [ -n "$server_port" ] && return 0
    kill -0 "$pid" 2>/dev/null || break
    sleep 0.1
  done
  fail "The server did not start: $(cat "$demo/server.log")"
}

start_sharing_client() {
  make_home "$1"
  "$bin/tidewell-store" share "$store" "$demo/samples/$1" public
  start "$demo/$1.log" env HOME="$home" QT_QPA_PLATFORM=offscreen "$bin/tidewell"
}

# The newcomer's wish is the largest of Marlo's files.
make_newcomer() {
  wanted="$demo/samples/Marlo/Tide tables/readings of a year.csv"
  make_home Newcomer
}

run_window() {
  "$bin/tidewell-store" want "$store" Marlo "$wanted" "$(stat -c %s "$wanted")"
  echo "The window is yours: you are Newcomer on 127.0.0.1:$server_port, with a download under way on the Transfers page."
  echo "Try \"tide\" on the Search page; Marlo and Pebble answer. Closing the window, or Ctrl+C here, ends everything."
  start "$demo/Newcomer.log" env HOME="$home" "$bin/tidewell"
  wait $! || fail "The client did not end well; what it said lies in $demo/Newcomer.log."
}

run_stand_in() {
  echo "There is no display. A stand-in plays your part in the window, by mouse and keys:"
  local pictures=$demo/pictures digest
  rm -rf "$pictures"
  digest=$(sha256sum "$wanted" | cut -d' ' -f1)
  env HOME="$home" QT_QPA_PLATFORM=offscreen "$bin/tidewell-demo" --search tide --user Marlo --user Pebble \
    --name "${wanted##*/}" --pictures "${pictures#"$PWD/"}" --sha256 "$digest" \
    --file "$home/Downloads/complete/Tide tables/${wanted##*/}" 2>"$demo/Newcomer.log" </dev/null &
  started+=($!)
  wait $! || fail "The demonstration did not succeed; what the programs said lies in $demo/*.log."
}

run_demo() {
  mkdir -p "$demo"
  exec 9>"$demo/lock" # what is started holds it too, so that leftovers are noticed
  flock -n 9 || fail "A demonstration is already running in $demo."
  trap stop_everything EXIT
  trap 'exit 130' INT
  trap 'exit 143' TERM HUP
  make_samples
  start_server
  start_sharing_client Marlo
  start_sharing_client Pebble
  make_newcomer
  if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
    run_window
  else
    run_stand_in
  fi
}
