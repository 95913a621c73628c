#!/usr/bin/env bash
# A throwaway HTTPS patch host for tests and demos: nginx on 127.0.0.1, on a free port,
# with a certificate from a CA made here with the openssl command.
#
#   https_host.sh start <state-dir> <www-dir> [lifetime-seconds]
#       Makes <state-dir>/ca.pem (+ ca.der for Windows stores) and a server certificate for
#       localhost and 127.0.0.1, starts nginx serving <www-dir>, prints the port and writes it
#       to <state-dir>/port. nginx stops by itself after the lifetime (default 1800 s).
#       gzip is on for text/plain; <state-dir>/logs/access.log has one line per request:
#       "<uri> | <status> | <protocol> | Range: <value> | Accept-Encoding: <value> |
#        Content-Encoding: <value> | User-Agent: <value> | Sent: <body bytes sent>"
#       With HTTPS_HOST_RATE set (nginx's limit_rate, such as "200k"), every response is
#       sent no faster, so a demo or a test can watch a patch while it runs.
#   https_host.sh stop <state-dir>
#
# Clients trust the CA through SSL_CERT_FILE=<state-dir>/ca.pem (OpenSSL) or by adding
# ca.der to a certificate store; nothing is installed system-wide.
set -euo pipefail

usage() { echo "usage: $0 start <state-dir> <www-dir> [lifetime-seconds] | stop <state-dir>" >&2; exit 2; }

free_port() {
  python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])'
}

# A process that has exited but not been reaped yet (a zombie) counts as gone.
running() { local state; state=$(ps -o stat= -p "$1" 2>/dev/null) && [ "${state:0:1}" != Z ]; }

port_open() { (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null; }

# Wine's crypt32 cannot verify an ECDSA signature whose r or s is shorter than
# 32 bytes (about 1 signature in 128): the whole host would be untrusted under Wine for
# that run. Each signing draws a fresh nonce, so such a certificate is simply signed again.
signature_is_full_length() {
  local offset
  offset=$(openssl asn1parse -in "$1" | tail -n 1 | cut -d: -f1)
  openssl asn1parse -in "$1" -strparse "$offset" |
    awk -F: '/INTEGER/ { if (length($NF) < 64) short = 1 } END { exit short }'
}

sign_until_full_length() {  # <certificate> <openssl arguments...>
  local certificate=$1
  shift
  for _ in $(seq 20); do
    openssl "$@" -out "$certificate" 2>/dev/null
    signature_is_full_length "$certificate" && return 0
  done
  echo "https_host: no full-length signature for $certificate in 20 tries" >&2
  return 1
}

make_certificates() {
  local dir=$1
  openssl genpkey -algorithm EC -pkeyopt ec_paramgen_curve:P-256 -out "$dir/ca.key" 2>/dev/null
  sign_until_full_length "$dir/ca.pem" req -x509 -new -key "$dir/ca.key" -sha256 -days 30 \
    -subj "/CN=Launcher Test CA" \
    -addext "basicConstraints=critical,CA:TRUE" -addext "keyUsage=critical,keyCertSign,cRLSign"
  openssl x509 -in "$dir/ca.pem" -outform DER -out "$dir/ca.der"
  openssl genpkey -algorithm EC -pkeyopt ec_paramgen_curve:P-256 -out "$dir/server.key" 2>/dev/null
  openssl req -new -key "$dir/server.key" -subj "/CN=localhost" -out "$dir/server.csr"
  printf '%s\n' "subjectAltName=DNS:localhost,IP:127.0.0.1" "basicConstraints=CA:FALSE" \
    "keyUsage=critical,digitalSignature" "extendedKeyUsage=serverAuth" >"$dir/server.ext"
  sign_until_full_length "$dir/server.pem" x509 -req -in "$dir/server.csr" -CA "$dir/ca.pem" \
    -CAkey "$dir/ca.key" -set_serial "0x$(openssl rand -hex 8)" -days 30 -sha256 \
    -extfile "$dir/server.ext"
}

write_config() {
  local dir=$1 www=$2 port=$3
  cat >"$dir/nginx.conf" <<EOF
daemon off;
worker_processes 1;
user $(id -un);
pid $dir/nginx.pid;
error_log $dir/logs/error.log warn;
events { worker_connections 256; }
http {
  include /etc/nginx/mime.types;
  default_type application/octet-stream;
  log_format transfer '\$request_uri | \$status | \$server_protocol | Range: \$http_range | Accept-Encoding: \$http_accept_encoding | Content-Encoding: \$sent_http_content_encoding | User-Agent: \$http_user_agent | Sent: \$body_bytes_sent';
  access_log $dir/logs/access.log transfer;
  client_body_temp_path $dir/temp/body;
  proxy_temp_path $dir/temp/proxy;
  fastcgi_temp_path $dir/temp/fastcgi;
  uwsgi_temp_path $dir/temp/uwsgi;
  scgi_temp_path $dir/temp/scgi;
  gzip on;
  gzip_types text/plain;
  gzip_min_length 1;
  server {
    listen 127.0.0.1:$port ssl http2;
    server_name localhost;
    ssl_certificate $dir/server.pem;
    ssl_certificate_key $dir/server.key;
    root $www;
    ${HTTPS_HOST_RATE:+limit_rate $HTTPS_HOST_RATE;}
  }
}
EOF
}

stop_host() {
  local dir=$1 pid
  for file in watchdog.pid nginx.pid; do
    [ -f "$dir/$file" ] || continue
    pid=$(cat "$dir/$file")
    # Both were started with setsid: signal the whole group (the watchdog has a sleep child).
    kill -- "-$pid" 2>/dev/null || kill "$pid" 2>/dev/null || true
    for _ in $(seq 50); do running "$pid" || break; sleep 0.1; done
    rm -f "$dir/$file"
  done
}

start_host() {
  local dir www lifetime port
  dir=$(mkdir -p "$1" && cd "$1" && pwd)
  www=$(mkdir -p "$2" && cd "$2" && pwd)
  lifetime=${3:-1800}
  stop_host "$dir"
  mkdir -p "$dir/logs" "$dir/temp"
  make_certificates "$dir"
  # The free port is only free until someone else takes it: try a few.
  for _ in 1 2 3 4 5; do
    port=$(free_port)
    write_config "$dir" "$www" "$port"
    : >"$dir/logs/error.log"
    setsid nginx -c "$dir/nginx.conf" -p "$dir" -e "$dir/logs/error.log" \
      </dev/null >"$dir/logs/nginx.out" 2>&1 &
    local nginx_pid=$!
    for _ in $(seq 100); do
      if port_open "$port" && [ -f "$dir/nginx.pid" ]; then
        echo "$port" >"$dir/port"
        setsid bash -c "sleep $lifetime; kill $nginx_pid" </dev/null >/dev/null 2>&1 &
        echo $! >"$dir/watchdog.pid"
        echo "$port"
        return 0
      fi
      kill -0 "$nginx_pid" 2>/dev/null || break
      sleep 0.1
    done
    kill "$nginx_pid" 2>/dev/null || true
  done
  echo "https_host: nginx did not start; see $dir/logs/error.log" >&2
  cat "$dir/logs/error.log" >&2
  return 1
}

case "${1:-}" in
  start) [ $# -ge 3 ] || usage; start_host "$2" "$3" "${4:-}" ;;
  stop) [ $# -eq 2 ] || usage; stop_host "$2" ;;
  *) usage ;;
esac
