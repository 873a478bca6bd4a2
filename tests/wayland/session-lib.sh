# Helpers of the Wayland checks, sourced by them inside scripts/wayland-session.sh. The region
# helpers use `drag`, the virtual pointer's program.

# Each check in a home of its own.
fresh_home() {
  HOME=$(mktemp -d "${TMPDIR:-/tmp}/zelmor-wlcheck.XXXXXX")
  export HOME XDG_CONFIG_HOME=$HOME/config XDG_DATA_HOME=$HOME/data XDG_CACHE_HOME=$HOME/cache
  log=$XDG_DATA_HOME/Zelmor/Zelmor/zelmor.log
}
pictures() { find "$HOME" -name '*.png' | sort; }

# The pixels of a picture, whatever its file format.
pixels() { ffmpeg -v error -i "$1" -f rawvideo -pix_fmt rgb24 - | md5sum; }

# A photograph on every output, so that every row and column counts.
show_photograph() {
  local plain
  plain=$(grim - | md5sum)
  swaymsg -q output '*' bg /usr/share/matplotlib/mpl-data/sample_data/grace_hopper.jpg fill
  for _ in $(seq 100); do
    [ "$(grim - | md5sum)" != "$plain" ] && break
    sleep 0.05
  done
}

# Once the region overlay shows, a drag on it and Return: `shot` is the picture saved, empty
# when none came.
drag_region_and_save() {
  for _ in $(seq 200); do
    swaymsg -t get_tree | grep -q '"name": "Zelmor capture"' && break
    sleep 0.05
  done
  "$drag" 300 200 700 400 1920 1080
  # The seat has a keyboard only once wtype made one; the wait lets the overlay learn of it.
  wtype -s 300 -k Return
  shot=
  for _ in $(seq 100); do
    shot=$(pictures | head -1)
    [ -n "$shot" ] && break
    sleep 0.05
  done
}

# Whether `shot` holds grim's picture of the dragged region (its end pixel included); grim's
# picture stays in `reference`.
shot_is_grims_region() {
  reference=$(mktemp "${TMPDIR:-/tmp}/zelmor-grim.XXXXXX.png")
  grim -g "300,200 401x201" "$reference"
  [ -n "$shot" ] && [ "$(pixels "$shot")" = "$(pixels "$reference")" ]
}
