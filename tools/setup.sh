# shellcheck shell=sh
# What the commands share: getting what is missing, finding the checkout, building. Sourced, with `top` set to the
# checkout. Everything is told on standard error, so that the output of a command is its own.

: "${top:?the checkout}"

: "${top:?the checkout}"

say() {
    printf '%s\n' "$*" >&2
}

fail() {
    say "$@"
    exit 1
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        fail "Installing packages needs root or sudo: $*"
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
    [ -z "${package_lists_updated:-}" ] || return 0
    as_root apt-get update -q >&2
    package_lists_updated=yes
}

# Installs those of the given packages that are missing.
install_packages() {
    command -v dpkg-query >/dev/null || return 0
    missing=$(missing_packages "$@")
    [ -n "$missing" ] || return 0
    say "Installing: $missing"
    update_package_lists
    # shellcheck disable=SC2086  # One word for each package.
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends $missing >&2
}

has_python() {
    [ -z "${LING_PYTHON:-}" ] || return 0
    ! pkg-config --exists python-3.13-embed || return 0
    for library in "${PYENV_ROOT:-$HOME/.pyenv}"/versions/3.13*/lib/libpython3.13.so.1.0; do
        [ ! -e "$library" ] || return 0
    done
    return 1
}

# Takes CPython 3.13 from the distribution when there is none yet. Where the distribution has none either, the
# configuration that follows says what was looked for and how to give it.
ensure_python() {
    command -v dpkg-query >/dev/null || return 0
    ! has_python || return 0
    update_package_lists
    if [ -n "$(apt-cache --names-only search '^libpython3\.13-dev$')" ]; then
        install_packages python3.13 libpython3.13-dev
    fi
}

# Installs what building and testing need.
ensure_tools() {
    install_packages cmake g++ libcli11-dev libgmp-dev libgtest-dev ninja-build pkgconf
    ensure_python
}

# build <preset> <target>...: configures when that was not done, or when an interpreter is asked for; then builds.
build() {
    preset=$1
    shift
    if [ ! -f "$top/build/$preset/build.ninja" ] || [ -n "${LING_PYTHON:-}" ]; then
        (cd "$top" && cmake --preset "$preset") >&2
    fi
    cmake --build "$top/build/$preset" --parallel --target "$@" >&2
}
