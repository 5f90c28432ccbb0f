# shellcheck shell=bash
# The two database servers. Those named by MONGODB_URL and REDIS_URL are used as they are; otherwise
# servers of our own are started on loopback, with their data in a temporary folder, and stopped by
# process id when ./dev ends, however it ends. MongoDB's part is taken by a mongod if there is one,
# else by FerretDB over PostgreSQL with the DocumentDB extension.

SERVER_NAMES=() # in the order of their start
SERVER_PIDS=()
SERVER_FOLDER=
PG_BIN= # the programs of PostgreSQL, once they are looked for
FERRETDB=$CACHE/ferretdb/ferretdb

start_servers() {
    if [[ -z ${MONGODB_URL-} && -z ${KELVRO_MACHINE_MONGOD-} && -z $(type -P mongod) ]]; then
        build_ferretdb
    fi
    make_server_folder
    if [[ -z ${REDIS_URL-} ]]; then
        start_redis
        export REDIS_URL
    fi
    if [[ -z ${MONGODB_URL-} ]]; then
        if [[ -n ${KELVRO_MACHINE_MONGOD-} || -n $(type -P mongod) ]]; then
            start_mongod
        else
            start_postgresql
            start_ferretdb
        fi
        export MONGODB_URL KELVRO_ALLOW_DROP=1
    fi
}

# For tests that start, and kill, servers of their own. (They have Redis from PATH.)
export_server_programs() {
    build_ferretdb
    find_postgresql
    export KELVRO_FERRETDB=$FERRETDB KELVRO_POSTGRESQL_BIN=$PG_BIN
}

make_server_folder() {
    remove_stale_server_folders
    # Directly below /tmp, for the path of a socket in it has to be short.
    SERVER_FOLDER=$(mktemp -d /tmp/kelvro.XXXXXX)
    EXIT_HOOKS+=(stop_servers)
    lock "$SERVER_FOLDER/.lock" exclusive # the servers hold it too
    chmod 711 "$SERVER_FOLDER" # PostgreSQL's user has its data in there
}

# Those of a ./dev that was killed: nobody holds their lock. One that is younger than a minute may
# only be on the way to its lock.
remove_stale_server_folders() {
    local file
    while read -r file; do
        if try_lock "$file" exclusive && [[ -O ${file%/*} ]]; then
            say "removing ${file%/*}, which a killed ./dev has left"
            remove_folder "${file%/*}"
        fi
        unlock "$file"
    done < <(find /tmp -maxdepth 2 -path '/tmp/kelvro.??????/.lock' -user "$EUID" -mmin +1 2>/dev/null)
}

stop_servers() {
    local i signal deadline
    for ((i = ${#SERVER_PIDS[@]} - 1; i >= 0; i--)); do
        signal=TERM
        [[ ${SERVER_NAMES[i]} != postgresql ]] || signal=INT # do not wait for clients
        kill -s "$signal" "${SERVER_PIDS[i]}" 2>/dev/null || continue
        deadline=$((SECONDS + 10))
        while kill -0 "${SERVER_PIDS[i]}" 2>/dev/null; do
            if ((SECONDS >= deadline)); then
                kill -s KILL "${SERVER_PIDS[i]}" 2>/dev/null || true
                break
            fi
            sleep 0.02
        done
    done
    SERVER_PIDS=() SERVER_NAMES=()
    rm -rf --one-file-system "$SERVER_FOLDER"
}

# launch NAME CMD…: starts a server that outlives neither ./dev nor the terminal's Ctrl-C.
launch() {
    local name=$1
    shift
    : >>"$SERVER_FOLDER/$name.log" # is read before the server has written to it
    setsid "$@" </dev/null >>"$SERVER_FOLDER/$name.log" 2>&1 &
    SERVER_NAMES+=("$name")
    SERVER_PIDS+=("$!")
}

forget_last_server() {
    unset 'SERVER_NAMES[-1]' 'SERVER_PIDS[-1]'
}

# await_server SECONDS CHECK…: polls CHECK; fails at once when the server last launched has ended.
await_server() {
    local pid=${SERVER_PIDS[-1]} deadline=$((SECONDS + $1))
    shift
    until "$@"; do
        kill -0 "$pid" 2>/dev/null || return 1
        ((SECONDS < deadline)) || return 1
        sleep 0.02
    done
}

server_failed() {
    local kept=$LOGS/$1.log
    mkdir -p "$LOGS"
    cp "$SERVER_FOLDER/$1.log" "$kept"
    show_failure "$1 did not start" "$kept"
}

# start_on_free_port NAME CHECK CMD…: for servers that cannot choose a port by themselves. CMD is a
# function that gets the port and launches the server; CHECK gets it too. A port that somebody else
# takes first ends the server, and another one is tried.
start_on_free_port() {
    local name=$1 check=$2 command=$3 attempt
    for attempt in 1 2 3 4 5; do
        PORT=$(free_port)
        "$command" "$PORT"
        if await_server 30 "$check" "$PORT"; then return 0; fi
        if kill -0 "${SERVER_PIDS[-1]}" 2>/dev/null || ((attempt == 5)); then
            server_failed "$name"
        fi
        forget_last_server
    done
}

free_port() {
    python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])'
}

# --- Redis

start_redis() {
    start_on_free_port redis redis_is_ours launch_redis
    REDIS_URL=redis://127.0.0.1:$PORT
}

launch_redis() {
    mkdir -p "$SERVER_FOLDER/redis"
    launch redis setpriv --pdeathsig TERM -- redis-server --port "$1" --bind 127.0.0.1 \
        --dir "$SERVER_FOLDER/redis" --save '' --appendonly no --daemonize no
}

redis_is_ours() {
    [[ $(redis-cli -h 127.0.0.1 -p "$1" info server 2>/dev/null) == *"process_id:${SERVER_PIDS[-1]}"[!0-9]* ]]
}

# --- MongoDB by mongod

start_mongod() {
    start_on_free_port mongod mongod_listens launch_mongod
    MONGODB_URL=mongodb://127.0.0.1:$PORT/
}

launch_mongod() {
    local run=(setpriv --pdeathsig TERM --)
    mkdir -p "$SERVER_FOLDER/mongod"
    # The machine's mongod runs on the machine's own files; /tmp is the same folder on both sides.
    [[ -z ${KELVRO_MACHINE_MONGOD-} ]] ||
        run=(nsenter --mount="/proc/self/fd/$KELVRO_MACHINE_MOUNTS" -- "${run[@]}")
    launch mongod "${run[@]}" "${KELVRO_MACHINE_MONGOD:-mongod}" --port "$1" --bind_ip 127.0.0.1 \
        --dbpath "$SERVER_FOLDER/mongod" --nounixsocket
}

mongod_listens() {
    grep -q 'Waiting for connections' "$SERVER_FOLDER/mongod.log"
}

# --- MongoDB by FerretDB and PostgreSQL

build_ferretdb() {
    local sources=$PROJECT/tools/ferretdb wanted
    wanted=$(hash_of "$sources/go.mod" "$sources/go.sum" "$(declare -f make_ferretdb)")
    ! ferretdb_is_made "$wanted" || return 0
    lock "$CACHE/ferretdb.lock" exclusive
    if ! ferretdb_is_made "$wanted"; then
        step ferretdb "building FerretDB (one to three minutes)" make_ferretdb "$sources" "$wanted"
    fi
    unlock "$CACHE/ferretdb.lock"
}

ferretdb_is_made() {
    [[ -x $FERRETDB ]] && stamp_is "$FERRETDB.stamp" "$1"
}

make_ferretdb() {
    mkdir -p "$(dirname "$FERRETDB")"
    cd "$1" || exit
    GOTOOLCHAIN=local CGO_ENABLED=0 GOFLAGS="${GOFLAGS-} -modcacherw" \
        GOMODCACHE=$CACHE/go/modules GOCACHE=$CACHE/go/build \
        go build -v -trimpath -o "$FERRETDB.new" github.com/FerretDB/FerretDB/v2/cmd/ferretdb
    mv "$FERRETDB.new" "$FERRETDB"
    echo "$2" >"$FERRETDB.stamp"
}

# The newest one that has DocumentDB.
find_postgresql() {
    local folder
    folder=$(printf '%s\n' /usr/lib/postgresql/*/lib/pg_documentdb.so | sort --version-sort | tail -n 1)
    [[ -e $folder ]] || die "no PostgreSQL in /usr/lib/postgresql has the DocumentDB extension"
    PG_BIN=${folder%/lib/*}/bin
}

start_postgresql() {
    local data=$SERVER_FOLDER/postgresql sockets=$SERVER_FOLDER/sockets as_user=()
    find_postgresql
    # The server trusts whoever gets into the folder of its socket.
    mkdir --mode=700 "$data" "$sockets"
    if ((EUID == 0)); then # as which PostgreSQL refuses to run
        chown postgres: "$data" "$sockets"
        as_user=(setpriv --reuid=postgres --regid=postgres --init-groups --)
    fi
    "${as_user[@]}" "$PG_BIN/initdb" --pgdata="$data" --username=postgres --auth=trust \
        --encoding=UTF8 --locale=C.UTF-8 --no-sync >"$SERVER_FOLDER/postgresql.log" 2>&1 ||
        server_failed postgresql
    # No TCP, hence no port to find: pg_cron and DocumentDB connect to the server by the socket too.
    # The data lives no longer than the server, so none of it is worth waiting for the disk.
    launch postgresql "${as_user[@]}" setpriv --pdeathsig INT -- "$PG_BIN/postgres" -D "$data" \
        -c listen_addresses= -c unix_socket_directories="$sockets" -c max_connections=200 \
        -c shared_preload_libraries=pg_cron,pg_documentdb_core,pg_documentdb \
        -c cron.database_name=postgres -c cron.host="$sockets" -c cron.log_run=off \
        -c documentdb.localhost_connection_string="host=$sockets" \
        -c documentdb.maxWriteBatchSize=100000 \
        -c fsync=off -c synchronous_commit=off -c full_page_writes=off
    await_server 30 test_sql "select 1" || server_failed postgresql
    sql "create extension documentdb cascade" >>"$SERVER_FOLDER/postgresql.log" 2>&1 ||
        server_failed postgresql
}

sql() {
    "$PG_BIN/psql" --no-psqlrc --quiet --host="$SERVER_FOLDER/sockets" --username=postgres \
        --dbname=postgres --command="$1"
}

test_sql() {
    sql "$1" >/dev/null 2>&1
}

start_ferretdb() {
    mkdir "$SERVER_FOLDER/ferretdb"
    # It chooses a free port by itself and says which.
    launch ferretdb setpriv --pdeathsig TERM -- "$FERRETDB" --listen-addr=127.0.0.1:0 \
        --postgresql-url="postgres://postgres@/postgres?host=$SERVER_FOLDER/sockets" \
        --no-auth --telemetry=disable --debug-addr=- --state-dir="$SERVER_FOLDER/ferretdb"
    await_server 30 ferretdb_port || server_failed ferretdb
    MONGODB_URL=mongodb://127.0.0.1:$PORT/
}

ferretdb_port() {
    PORT=$(sed -n 's/.*Listening on TCP 127\.0\.0\.1:\([0-9]*\).*/\1/p' "$SERVER_FOLDER/ferretdb.log")
    [[ -n $PORT ]]
}

# --- the commands

command_servers() {
    start_servers
    echo "MONGODB_URL=$MONGODB_URL"
    echo "REDIS_URL=$REDIS_URL"
    say "both servers are there; Ctrl-C ends"
    trap 'exit 0' INT
    if ((${#SERVER_PIDS[@]} > 0)); then
        wait -n "${SERVER_PIDS[@]}" || true
        die "a server has ended by itself"
    fi
    while :; do sleep 1; done
}

command_with_servers() {
    if [[ ! -f $PROJECT/build/.last-plugin ]]; then
        build_preset dev strict
        unlock "$PROJECT/build/.lock" # what runs now may go on for hours
    fi
    [[ ! -f $PROJECT/build/.last-plugin ]] || export_plugin
    export_server_programs
    start_servers
    run_child "$@"
}
