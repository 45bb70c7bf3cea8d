# shellcheck shell=sh disable=SC2034
# Sourced by ./start and ./test: the Debian packages that they need.

# refuse_build_names FOLDER: programs below a folder with such a name look for their data in the current folder.
refuse_build_names() {
    case "$1" in
    *Release* | *Debug*)
        printf 'The path %s has "Release" or "Debug" in it: please put the sources elsewhere.\n' "$1" >&2
        exit 1
        ;;
    esac
}

# need_packages NAME...: installs those that are missing. Where that takes rights that we do not have, it prints
# the command that does it and ends the script. Systems without dpkg are left alone: the build will tell.
need_packages() {
    command -v dpkg-query >/dev/null || return 0
    missing=""
    for package in "$@"; do
        status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
        [ "$status" = installed ] || missing="$missing $package"
    done
    [ -n "$missing" ] || return 0

    as_root=""
    if [ "$(id -u)" -ne 0 ]; then
        as_root=sudo
        # Without a terminal nobody can type a password.
        if ! command -v sudo >/dev/null || { [ ! -t 0 ] && ! sudo -n true 2>/dev/null; }; then
            printf 'Packages are missing. Please run:\n  sudo apt-get install%s\n' "$missing" >&2
            exit 1
        fi
    fi
    printf 'Installing:%s\n' "$missing" >&2
    $as_root apt-get update -qq >&2 || true # an old index may still do
    # The names are words of their own on purpose.
    # shellcheck disable=SC2086
    if ! $as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing >&2; then
        printf 'That failed. Please run:\n  sudo apt-get install%s\n' "$missing" >&2
        exit 1
    fi
}

CONSOLE_PACKAGES="cmake ninja-build g++ libcli11-dev nlohmann-json3-dev"
PROGRAM_PACKAGES="$CONSOLE_PACKAGES qt6-base-dev qt6-svg-dev qt6-multimedia-dev qt6-translations-l10n"
TEST_PACKAGES="libgtest-dev libbenchmark-dev python3 xvfb openbox xdotool dpkg-dev file"
LINT_PACKAGES="clang-format clang-tidy cppcheck"
