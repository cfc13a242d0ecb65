#!/usr/bin/env bash
# A throw-away PostgreSQL server for the tests, on loopback, in a temporary folder.
#   pg-throwaway.sh start DIR   -> prints the admin address postgresql://zarek@127.0.0.1:PORT/postgres
#   pg-throwaway.sh stop DIR
set -euo pipefail
cmd="$1"; dir="$2"
bin="$(ls -d /usr/lib/postgresql/*/bin | sort -V | tail -n 1)"

as_owner() {
  # The server refuses to run as root: run it as the postgres user then.
  if [ "$(id -u)" -eq 0 ]; then runuser -u postgres -- "$@"; else "$@"; fi
}

case "$cmd" in
start)
  mkdir -p "$dir"
  [ "$(id -u)" -eq 0 ] && chown postgres:postgres "$dir"
  as_owner "$bin/initdb" -D "$dir/data" -U zarek -A trust -E UTF8 --locale=C.UTF-8 >"$dir/initdb.log" 2>&1
  for attempt in 1 2 3 4 5 6 7 8; do
    port=$(( 20000 + RANDOM % 20000 ))
    if as_owner "$bin/pg_ctl" -D "$dir/data" -l "$dir/server.log" -w -t 30 \
         -o "-p $port -k $dir -c listen_addresses=127.0.0.1 -c fsync=off -c max_connections=200" start >/dev/null 2>&1; then
      echo "postgresql://zarek@127.0.0.1:$port/postgres"
      exit 0
    fi
  done
  echo "PostgreSQL did not start; see $dir/server.log" >&2
  exit 1
  ;;
stop)
  [ -d "$dir/data" ] && as_owner "$bin/pg_ctl" -D "$dir/data" -m fast stop >/dev/null 2>&1 || true
  ;;
esac
