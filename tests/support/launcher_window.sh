# Finding the launcher's window on an X display and telling when its page has
# been drawn, for the window tests, the demo and the window benchmark.
# Sourced; needs xdotool and ImageMagick's import.

# The visible window titled like the launcher's that the process <pid> owns;
# fails while there is none, so it can be waited for.
window_of() {  # <pid>
  local window
  window=$(xdotool search --onlyvisible --pid "$1" --name '^Vardeni Launcher$' 2>/dev/null | head -n 1)
  [ -n "$window" ] && echo "$window"
}

# The page has painted: the middle of the window is neither the window's own
# background (shown until the page loads) nor blank.
page_drawn() {  # <pid>
  local window colour
  window=$(window_of "$1") || return 1  # without one, import would wait for a click on some window
  colour=$(import -window "$window" -crop 1x1+500+320 -depth 8 txt:- 2>/dev/null | grep -o '#[0-9A-F]\{6\}' | head -n 1)
  [ -n "$colour" ] && [ "$colour" != "#0B0F17" ] && [ "$colour" != "#FFFFFF" ]
}
