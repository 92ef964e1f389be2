# shellcheck shell=bash
# shellcheck disable=SC2154  # root and program come from the script that reads this one
# Sourced by ./corvel and ./test: system packages, configuring and building, each only when something changed.
#
# Says one line on standard error for each slow step and nothing otherwise. Everything a step prints goes to a log
# under build/, whose end is shown when the step fails.
#
# Before: `root` is the project's folder, `program` the name to say messages under.

buildFolder=$root/build/release
logFolder=$root/build/logs
# shellcheck disable=SC2034  # read by name
# What the bundle is made from. A change elsewhere (docs, tests, examples) does not concern it.
bundleSources=(CMakeLists.txt CMakePresets.json cmake desktop filesystem host platform processbridge property quicktime
    timecode worker writer)
# shellcheck disable=SC2034
bundleTargets=(host/sdk/all writer/all worker/all host/app/all host/panel/all)

say() { printf '%s: %s\n' "$program" "$*" >&2; }

# showFailure TEXT LOG: what went wrong, the end of the log, and the end of this run.
showFailure() {
    say "$1"
    tail -n 40 "$2" >&2
    say "the whole log is in $2"
    exit 1
}

# missingPackages LIST…: the packages named in the lists that are not installed, one a line. A list holds one
# package a line; "#" begins a comment.
missingPackages() {
    local wanted
    mapfile -t wanted < <(sed 's/#.*//; s/[[:space:]]//g; /^$/d' "$@")
    dpkg-query --show --showformat '${db:Status-Status} ${Package}\n' "${wanted[@]}" 2>/dev/null |
        awk -v wanted="${wanted[*]}" '
            $1 == "installed" { have[$2] = 1 }
            END { count = split(wanted, name, " "); for (i = 1; i <= count; ++i) if (!(name[i] in have)) print name[i] }'
}

# installPackages LIST…: installs what is missing. Nothing is asked of apt while nothing is missing, and its lists
# are fetched anew only when they do not know a package.
installPackages() {
    local stamp="$root/build/.have-${*##*/}" missing become=()
    # Another installation or removal since the last look touches dpkg's own file.
    if [[ -e $stamp && ! /var/lib/dpkg/status -nt $stamp ]]; then
        local list fresh=1
        for list in "$@"; do [[ $list -nt $stamp ]] && fresh=0; done
        ((fresh)) && return
    fi
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        say "this is no Debian system: please see that the libraries named in packages.txt are installed"
        return
    fi
    mkdir -p "$logFolder"
    mapfile -t missing < <(missingPackages "$@")
    if ((${#missing[@]})); then
        if ((EUID != 0)); then
            if ! command -v sudo >/dev/null; then
                say "these packages are missing, and only root can install them (there is no sudo here):"
                say "    apt-get install ${missing[*]}"
                exit 1
            fi
            become=(sudo)
        fi
        say "installing ${#missing[@]} system packages: ${missing[*]}"
        local log=$logFolder/packages.log
        local install=("${become[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=600 -y
            --no-install-recommends install "${missing[@]}")
        if ! "${install[@]}" >"$log" 2>&1 </dev/null; then
            say "fetching the package lists"
            if ! "${become[@]}" apt-get -o DPkg::Lock::Timeout=600 update >>"$log" 2>&1 </dev/null ||
                ! "${install[@]}" >>"$log" 2>&1 </dev/null; then
                showFailure "the packages could not be installed; apt-get said:" "$log"
            fi
        fi
    fi
    touch "$stamp"
}

# isFresh STAMP PATH…: whether nothing under the paths changed since STAMP was made, in this very folder. Folders
# count too: their time changes when a file comes or goes.
isFresh() {
    local stamp=$1
    shift
    [[ -e $stamp && $(<"$stamp") == "$root" ]] &&
        [[ -z $(cd "$root" && find "$@" -newer "$stamp" -print -quit 2>&1) ]]
}

# On a terminal ninja's own count runs on in one line; elsewhere one line says that it began.
runNinja() {
    local log=$logFolder/build.log line
    if [[ -t 2 ]]; then
        NINJA_STATUS='[%f/%t] ' ninja -C "$buildFolder" -j "$(nproc)" "$@" 2>&1 | tee "$log" |
            while IFS= read -r line; do
                [[ $line =~ ^\[[0-9]+/[0-9]+\] ]] && printf '\r%s: building %s ' "$program" "${BASH_REMATCH[0]}" >&2
            done
        local status=${PIPESTATUS[0]}
        printf '\r\033[K' >&2
    else
        say "building"
        ninja -C "$buildFolder" -j "$(nproc)" "$@" >"$log" 2>&1
        local status=$?
    fi
    ((status == 0)) || showFailure "the build failed:" "$log"
}

# CORVEL_CMAKE_ARGUMENTS, split at blanks, goes to CMake; CI asks for warnings as errors with it.
configure() {
    local log=$logFolder/configure.log fresh=() extra
    read -ra extra <<<"${CORVEL_CMAKE_ARGUMENTS:-}"
    # A folder that was moved or copied takes its old paths along in the cache.
    if [[ -e $buildFolder/CMakeCache.txt ]]; then
        grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$buildFolder/CMakeCache.txt" || fresh=(--fresh)
        [[ -e $buildFolder/build.ninja && ${#fresh[@]} == 0 && ${#extra[@]} == 0 ]] && return
    fi
    say "configuring"
    (cd "$root" && cmake --preset release "${fresh[@]}" "${extra[@]}") >"$log" 2>&1 || showFailure "configuring failed:" "$log"
}

# build STAMP TARGETS SOURCES: names of arrays. Two runs at once wait for each other.
build() {
    local stamp=$buildFolder/$1
    local -n targets=$2 sources=$3
    isFresh "$stamp" "${sources[@]}" && return
    mkdir -p "$buildFolder" "$logFolder"
    exec {lock}>"$root/build/.lock"
    if ! flock --nonblock "$lock"; then
        say "waiting for another build in this folder"
        flock "$lock"
    fi
    local begun
    begun=$(mktemp "$buildFolder/.begun-XXXXXX")
    configure
    runNinja "${targets[@]}"
    # As old as the beginning of the build, so that what is changed while it runs counts as changed.
    printf '%s' "$root" >"$stamp"
    touch --reference "$begun" "$stamp"
    rm -f "$begun"
    exec {lock}>&-
}
