# shellcheck shell=sh
# What the commands share: getting what is missing, finding the checkout, building. Sourced, with `top` set to the
# checkout. Everything is told on standard error, so that the output of a command is its own.

: "${top:?the checkout}"

say() {
    printf '%s\n' "$*" >&2
}

fail() {
    say "$@"
    exit 1
}

# Runs a command and shows what it printed when it fails.
quietly() {
    output=$(mktemp)
    "$@" >"$output" 2>&1 || {
        status=$?
        cat "$output" >&2
        rm -f "$output"
        return "$status"
    }
    rm -f "$output"
}

# Runs a build or a test run. On a terminal both show their progress in one line; anywhere else a line for each tenth
# stands for what went well, and the rest is shown as it is.
with_progress() {
    if [ -t 2 ]; then
        "$@" >&2
        return
    fi
    exec 3>&2
    status=$({ { "$@" 2>&1 && echo 0 >&4 || echo "$?" >&4; } | awk -f "$top/tools/progress.awk" >&3; } 4>&1)
    exec 3>&-
    return "$status"
}

may_install() {
    [ "$(id -u)" -eq 0 ] || { command -v sudo >/dev/null && { [ -t 0 ] || sudo -n true 2>/dev/null; }; }
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    else
        sudo "$@"
    fi
}

# Of the given packages, those that are not installed.
missing_packages() {
    installed=$(dpkg-query -W -f='${db:Status-Status} ${Package}\n' "$@" 2>/dev/null | sed -n 's/^installed //p')
    for package in "$@"; do
        printf '%s\n' "$installed" | grep -qxF -- "$package" || printf '%s ' "$package"
    done
}

# Knows the packages of the distribution, once in a run.
update_package_lists() {
    [ -z "${package_lists_updated:-}" ] && may_install || return 0
    quietly as_root apt-get update -q || return 1
    package_lists_updated=yes
}

# Installs those of the given packages that are missing, or says in one command what to ask an administrator for.
install_packages() {
    command -v dpkg-query >/dev/null || return 0
    missing=$(missing_packages "$@")
    [ -n "$missing" ] || return 0
    # shellcheck disable=SC2086  # One word for each package.
    if may_install; then
        say "Installing: $missing"
        update_package_lists &&
            quietly as_root env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends $missing &&
            return 0
    fi
    fail "Packages are missing. Ask an administrator for:
    $(has_package g++ || echo "apt-get update && ")apt-get install --no-install-recommends ${missing% }"
}

has_python() {
    [ -z "${LING_PYTHON:-}" ] || return 0
    ! pkg-config --exists python-3.13-embed 2>/dev/null || return 0
    for library in "${PYENV_ROOT:-$HOME/.pyenv}"/versions/3.13*/lib/libpython3.13.so.1.0 \
        "$top"/build/python/lib/libpython3.13.so.1.0; do
        [ ! -e "$library" ] || return 0
    done
    return 1
}

has_package() {
    apt-cache show "$1" 2>/dev/null | grep -q .
}

# The packages that give CPython 3.13: the distribution's own, or what building one needs.
python_packages() {
    command -v dpkg-query >/dev/null && ! has_python || return 0
    if has_package libpython3.13-dev || { ! has_package g++ && grep -q '^VERSION_ID="13' /etc/os-release; }; then
        echo python3.13 libpython3.13-dev
    else
        echo dpkg-dev debian-archive-keyring libbz2-dev libffi-dev liblzma-dev libncurses-dev libreadline-dev \
            libsqlite3-dev libssl-dev uuid-dev zlib1g-dev make xz-utils
    fi
}

# Installs what building and testing need. A distribution without CPython 3.13 gets one that is built here.
ensure_tools() {
    has_python || has_package libpython3.13-dev || update_package_lists || true
    # shellcheck disable=SC2046  # One word for each package.
    install_packages cmake g++ libcli11-dev libgmp-dev libgtest-dev ninja-build pkgconf $(python_packages)
    if command -v dpkg-query >/dev/null && ! has_python; then
        "$top/tools/build_python"
    fi
}

# build <preset> <target>...: configures when that was not done, or when an interpreter is asked for; then builds.
build() {
    preset=$1
    shift
    if [ ! -f "$top/build/$preset/build.ninja" ] || [ -n "${LING_PYTHON:-}" ]; then
        (cd "$top" && quietly cmake --preset "$preset")
    fi
    with_progress cmake --build "$top/build/$preset" --parallel --target "$@"
}
