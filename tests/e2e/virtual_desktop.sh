#!/usr/bin/env bash
# A private X11 desktop for end-to-end tests and headless runs: Xvfb with a us,ru keyboard,
# a session bus, the accessibility bus and a system tray, with XDG folders of its own.
#
#   virtual_desktop.sh start [--env-file FILE] [--no-tray] [--no-a11y]
#       Brings the desktop up. Prints `export` lines to evaluate, or with --env-file writes
#       them to FILE (a copy is always in <desktop dir>/env). --no-tray leaves out the tray.
#       --no-a11y leaves out the accessibility bus, and its session bus cannot start that bus
#       on demand, so nothing brings it up behind the test's back.
#   virtual_desktop.sh start-tray [ENV_FILE|DESKTOP_DIR]
#       Starts the tray later, on a desktop started with --no-tray.
#   virtual_desktop.sh start-a11y [ENV_FILE|DESKTOP_DIR]
#       Starts the accessibility bus later, switched on, on a desktop started with --no-a11y.
#   virtual_desktop.sh stop [ENV_FILE|DESKTOP_DIR]
#       Ends every process of the desktop, newest first, and removes its folder (kept when
#       ORVANTIS_DESKTOP_KEEP=1). Without an argument, the desktop of $ORVANTIS_DESKTOP_DIR.
#
# ORVANTIS_DESKTOP_SCREEN sets the screen (default 1280x800x24).
#
# Every process started here is recorded by PID in <desktop dir>/pids and ended by that PID.
# They all carry ORVANTIS_DESKTOP_PROCESS=<desktop dir> in their environment (the env file
# does not, so callers and the programs under test never do); processes that the desktop's
# buses started on demand inherit it, and that is how they are found.
set -euo pipefail

readonly SCREEN="${ORVANTIS_DESKTOP_SCREEN:-1280x800x24}"
readonly STEP=0.05

die() {
  echo "virtual_desktop: $*" >&2
  exit 1
}

# wait_for SECONDS COMMAND...: runs COMMAND until it succeeds, at most SECONDS long.
wait_for() {
  local limit=$1
  shift
  local deadline=$((SECONDS + limit))
  until "$@" >/dev/null 2>&1; do
    ((SECONDS < deadline)) || return 1
    sleep "$STEP"
  done
}

record_pid() { # NAME PID
  echo "$1 $2" >>"$DESKTOP_DIR/pids"
}

# True when PID is a process of this desktop: a PID taken over by an unrelated process after
# ours ended is never touched.
is_ours() {
  local pid=$1
  [[ -r /proc/$pid/environ ]] || return 1
  grep -qzxF "ORVANTIS_DESKTOP_PROCESS=$DESKTOP_DIR" "/proc/$pid/environ" 2>/dev/null
}

end_pid() {
  local pid=$1
  is_ours "$pid" || return 0
  kill -TERM "$pid" 2>/dev/null || return 0
  local i
  for ((i = 0; i < 40; i++)); do
    kill -0 "$pid" 2>/dev/null || return 0
    # A zombie child of ours counts as ended.
    [[ "$(awk '{print $3}' "/proc/$pid/stat" 2>/dev/null)" == Z ]] && return 0
    sleep "$STEP"
  done
  kill -KILL "$pid" 2>/dev/null || true
}

# PIDs of processes whose environment names this desktop, newest first.
desktop_processes() {
  local environ pid
  for environ in /proc/[0-9]*/environ; do
    pid=${environ#/proc/}
    pid=${pid%/environ}
    is_ours "$pid" && echo "$pid"
  done | sort -rn
}

resolve_dir() { # [ENV_FILE|DESKTOP_DIR]
  local target=${1:-${ORVANTIS_DESKTOP_DIR:-}}
  [[ -n $target ]] || die "which desktop? give its env file or folder"
  if [[ -f $target ]]; then
    target=$(sed -n "s/^export ORVANTIS_DESKTOP_DIR='\(.*\)'$/\1/p" "$target")
  fi
  [[ -d $target && -f $target/pids ]] || die "no desktop at ${1:-\$ORVANTIS_DESKTOP_DIR}"
  DESKTOP_DIR=$target
}

stop_desktop() {
  [[ -d ${DESKTOP_DIR:-} ]] || return 0
  local pid
  if [[ -f $DESKTOP_DIR/pids ]]; then
    while read -r _ pid; do
      end_pid "$pid"
    done < <(tac "$DESKTOP_DIR/pids")
  fi
  # What the buses started on demand: the accessibility registry, settings daemons.
  for pid in $(desktop_processes); do
    end_pid "$pid"
  done
  if [[ ${ORVANTIS_DESKTOP_KEEP:-0} != 1 ]]; then
    rm -rf "$DESKTOP_DIR"
  fi
}

start_tray() {
  trayer --edge top --align right --widthtype request --height 28 --SetDockType true \
    --transparent false --tint 0x2e3436 --expand true --padding 2 \
    >>"$DESKTOP_DIR/logs/trayer.log" 2>&1 &
  record_pid trayer $!
  # The tray exists once it owns the system tray selection of screen 0.
  wait_for 10 tray_owned || die "the tray did not come up (see $DESKTOP_DIR/logs/trayer.log)"
}

start_accessibility() {
  # Switched on as a desktop with assistive technology in use.
  /usr/libexec/at-spi-bus-launcher --launch-immediately >>"$DESKTOP_DIR/logs/at-spi.log" 2>&1 &
  record_pid at-spi-bus-launcher $!
  wait_for 10 accessibility_bus_published || die "the accessibility bus did not come up"
  dbus-send --session --print-reply --dest=org.a11y.Bus /org/a11y/bus \
    org.freedesktop.DBus.Properties.Set string:org.a11y.Status string:IsEnabled variant:boolean:true \
    >>"$DESKTOP_DIR/logs/at-spi.log" 2>&1 || true
}

# A session bus like the system's own whose activatable services are the system's less the
# accessibility bus launcher: nothing can start that bus on demand. The others stay, dconf
# above all: without it the launcher's IsEnabled switch does not hold.
write_bus_config_without_accessibility() {
  mkdir -p "$DESKTOP_DIR/dbus-services"
  local service
  for service in /usr/local/share/dbus-1/services/*.service /usr/share/dbus-1/services/*.service; do
    [[ -e $service && $(basename "$service") != org.a11y.Bus.service ]] || continue
    grep -qx 'Name=org.a11y.Bus' "$service" && continue
    ln -sf "$service" "$DESKTOP_DIR/dbus-services/"
  done
  cat >"$DESKTOP_DIR/session.conf" <<CONFIG
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <keep_umask/>
  <listen>unix:tmpdir=/tmp</listen>
  <auth>EXTERNAL</auth>
  <servicedir>$DESKTOP_DIR/dbus-services</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
CONFIG
}

tray_owned() {
  # xprop cannot read selections; a window of trayer's class being mapped is enough.
  xdotool search --onlyvisible --classname trayer >/dev/null 2>&1 ||
    xdotool search --onlyvisible --class trayer >/dev/null 2>&1
}

write_env() {
  {
    printf "export ORVANTIS_DESKTOP_DIR='%s'\n" "$DESKTOP_DIR"
    printf "export DISPLAY='%s'\n" "$DISPLAY"
    printf "export XDG_RUNTIME_DIR='%s'\n" "$XDG_RUNTIME_DIR"
    printf "export XDG_CONFIG_HOME='%s'\n" "$XDG_CONFIG_HOME"
    printf "export XDG_DATA_HOME='%s'\n" "$XDG_DATA_HOME"
    printf "export XDG_STATE_HOME='%s'\n" "$XDG_STATE_HOME"
    printf "export XDG_CACHE_HOME='%s'\n" "$XDG_CACHE_HOME"
    printf "export DBUS_SESSION_BUS_ADDRESS='%s'\n" "$DBUS_SESSION_BUS_ADDRESS"
  } >"$DESKTOP_DIR/env"
}

start_desktop() {
  local env_file="" with_tray=1 with_accessibility=1
  while (($#)); do
    case $1 in
      --env-file) env_file=${2:?--env-file needs a path}; shift 2 ;;
      --no-tray) with_tray=0; shift ;;
      --no-a11y) with_accessibility=0; shift ;;
      *) die "unknown option $1" ;;
    esac
  done

  DESKTOP_DIR=$(mktemp -d "${TMPDIR:-/tmp}/orvantis-desktop.XXXXXX")
  trap 'stop_desktop; exit 1' ERR INT TERM
  mkdir -p "$DESKTOP_DIR"/{runtime,config,data,state,cache,logs}
  chmod 700 "$DESKTOP_DIR" "$DESKTOP_DIR/runtime"
  : >"$DESKTOP_DIR/pids"

  # 1. Private XDG folders before anything starts, so nothing writes into the real home.
  export XDG_RUNTIME_DIR=$DESKTOP_DIR/runtime
  export XDG_CONFIG_HOME=$DESKTOP_DIR/config
  export XDG_DATA_HOME=$DESKTOP_DIR/data
  export XDG_STATE_HOME=$DESKTOP_DIR/state
  export XDG_CACHE_HOME=$DESKTOP_DIR/cache
  unset DBUS_SESSION_BUS_ADDRESS AT_SPI_BUS_ADDRESS SESSION_MANAGER
  export ORVANTIS_DESKTOP_PROCESS=$DESKTOP_DIR

  # 2. The X server, on the first free display number from ORVANTIS_DISPLAY_FROM (90).
  start_x_server || die "no X server could be started (see $DESKTOP_DIR/logs/xvfb.log)"
  setxkbmap -layout us,ru

  # 3. The session bus, before any client that would start one of its own.
  local bus_config=(--session)
  if ((!with_accessibility)); then
    write_bus_config_without_accessibility
    bus_config=(--config-file="$DESKTOP_DIR/session.conf")
  fi
  dbus-daemon "${bus_config[@]}" --fork --print-address=1 --print-pid=1 >"$DESKTOP_DIR/dbus.out" 2>>"$DESKTOP_DIR/logs/dbus.log"
  DBUS_SESSION_BUS_ADDRESS=$(sed -n 1p "$DESKTOP_DIR/dbus.out")
  export DBUS_SESSION_BUS_ADDRESS
  record_pid dbus-daemon "$(sed -n 2p "$DESKTOP_DIR/dbus.out")"
  [[ -n $DBUS_SESSION_BUS_ADDRESS ]] || die "no session bus address"

  # 4. The accessibility bus.
  if ((with_accessibility)); then start_accessibility; fi

  # 5. The tray.
  if ((with_tray)); then start_tray; fi

  write_env
  trap - ERR INT TERM
  if [[ -n $env_file ]]; then
    cp "$DESKTOP_DIR/env" "$env_file"
  else
    cat "$DESKTOP_DIR/env"
  fi
}

# Starts Xvfb on a free display and exports DISPLAY. A number whose lock or socket exists is
# skipped; a server that exits at once lost a race for its number, and the next one is tried.
# -noreset keeps the keymap when the last client leaves.
start_x_server() {
  local n pid
  for ((n = ${ORVANTIS_DISPLAY_FROM:-90}; n < ${ORVANTIS_DISPLAY_FROM:-90} + 200; n++)); do
    [[ -e /tmp/.X$n-lock || -e /tmp/.X11-unix/X$n ]] && continue
    Xvfb ":$n" -screen 0 "$SCREEN" -nolisten tcp -noreset >>"$DESKTOP_DIR/logs/xvfb.log" 2>&1 &
    pid=$!
    if wait_for_server "$n" "$pid"; then
      record_pid xvfb "$pid"
      export DISPLAY=":$n"
      return 0
    fi
    kill "$pid" 2>/dev/null || true
    wait "$pid" 2>/dev/null || true
  done
  return 1
}

# True once display N answers and its lock names PID; false when PID ended first.
wait_for_server() {
  local n=$1 pid=$2 deadline=$((SECONDS + 10))
  while ((SECONDS < deadline)); do
    kill -0 "$pid" 2>/dev/null || return 1
    if [[ "$({ tr -d ' ' <"/tmp/.X$n-lock"; } 2>/dev/null)" == "$pid" ]] && xdpyinfo -display ":$n" >/dev/null 2>&1; then
      return 0
    fi
    sleep "$STEP"
  done
  return 1
}

accessibility_bus_published() {
  xprop -root AT_SPI_BUS | grep -q '= "'
}

main() {
  local command=${1:-}
  shift || true
  case $command in
    start)
      start_desktop "$@"
      ;;
    start-tray)
      resolve_dir "${1:-}"
      # shellcheck disable=SC1091
      source "$DESKTOP_DIR/env"
      export ORVANTIS_DESKTOP_PROCESS=$DESKTOP_DIR
      start_tray
      ;;
    start-a11y)
      resolve_dir "${1:-}"
      # shellcheck disable=SC1091
      source "$DESKTOP_DIR/env"
      export ORVANTIS_DESKTOP_PROCESS=$DESKTOP_DIR
      start_accessibility
      ;;
    stop)
      resolve_dir "${1:-}"
      stop_desktop
      ;;
    *)
      echo "usage: $0 start [--env-file FILE] [--no-tray] [--no-a11y] | start-tray [ENV|DIR] | start-a11y [ENV|DIR] | stop [ENV|DIR]" >&2
      exit 2
      ;;
  esac
}

main "$@"
