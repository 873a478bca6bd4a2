# Helpers of the Wayland checks, sourced by them inside scripts/wayland-session.sh. They use
# `bin`, the programs' folder, and `press`, the program that plays the mouse and keyboard.

fail() { echo "not ok - $*" >&2; exit 1; }

# Each check in a home of its own.
fresh_home() {
  HOME=$(mktemp -d "${TMPDIR:-/tmp}/zelmor-wlcheck.XXXXXX")
  export HOME XDG_CONFIG_HOME=$HOME/config XDG_DATA_HOME=$HOME/data XDG_CACHE_HOME=$HOME/cache
  log=$XDG_DATA_HOME/Zelmor/Zelmor/zelmor.log
}
pictures() { find "$HOME" -name '*.png' | sort; }
# `shot`: the first picture saved.
saved() { shot=$(pictures | head -1); [ -n "$shot" ]; }

# Runs the command until it succeeds, for at most 10 s.
await() {
  for _ in $(seq 200); do "$@" 2>/dev/null && return 0; sleep 0.05; done
  return 1
}

# Asks the zelmor of process `$1` to quit, and waits for it.
stop_zelmor() {
  "$bin/zelmor" --quit >/dev/null 2>&1 || true
  wait "$1" || true
}

# The pixels of a picture, whatever its file format.
pixels() { ffmpeg -v error -i "$1" -f rawvideo -pix_fmt rgb24 - | md5sum; }

# A photograph on every output, so that every row and column counts.
show_photograph() {
  local plain
  plain=$(grim - | md5sum)
  swaymsg -q output '*' bg /usr/share/matplotlib/mpl-data/sample_data/grace_hopper.jpg fill
  await eval '[ "$(grim - | md5sum)" != "$plain" ]' || true
}

# Once the region overlay shows, a drag on it and Return; `shot` is the picture saved.
drag_region_and_save() {
  await eval 'swaymsg -t get_tree | grep -q "\"name\": \"Zelmor capture\""' || true
  "$press" drag 300 200 700 400
  # The seat has a keyboard only once wtype made one; the wait lets the overlay learn of it.
  wtype -s 300 -k Return
  await saved || true
}

# Whether `shot` is grim's picture of the desktop or of a region ("X,Y WxH"), which stays in
# `reference`. The dragged region is "300,200 401x201": its end pixel is included.
shot_is_grims() {
  reference=$(mktemp "${TMPDIR:-/tmp}/zelmor-grim.XXXXXX.png")
  grim ${1:+-g "$1"} "$reference"
  [ -n "$shot" ] && [ "$(pixels "$shot")" = "$(pixels "$reference")" ]
}
