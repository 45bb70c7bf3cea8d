#!/bin/sh
# Installs the built programs, or makes the Debian package of them and unpacks it, and runs what lies there.
#
#   install_test.sh CMAKE BUILD prefix
#   install_test.sh CMAKE BUILD package
#
# The status is 77, "skipped", where a tool for packages is missing.
set -eu
cmake=$1 build=$2 kind=$3
sources=$(readlink -f "$(dirname "$0")/../..")

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
trap 'exit 130' INT
trap 'exit 143' TERM
fail() {
    echo "FAILED: $*" >&2
    exit 1
}
expect_file() {
    [ -f "$1" ] || fail "there is no $1"
}

case $kind in
prefix)
    root=$folder/installed
    "$cmake" --install "$build" --prefix "$root" >"$folder/out" 2>&1 || { cat "$folder/out"; fail "install"; }
    # What is installed does not depend on where.
    mv "$root" "$folder/moved to"
    root="$folder/moved to"
    if "$cmake" --install "$build" --prefix "$folder/Release" >"$folder/out" 2>&1; then
        fail "installed into a folder where the programs do not find their data"
    fi
    ;;
package)
    for tool in dpkg-deb dpkg-shlibdeps file; do
        command -v $tool >/dev/null || { echo "$tool is not installed"; exit 77; }
    done
    "$(dirname "$cmake")/cpack" -G DEB --config "$build/CPackConfig.cmake" -B "$folder/package" \
        >"$folder/out" 2>&1 || { cat "$folder/out"; fail "cpack"; }
    deb=$(echo "$folder"/package/tessarin_*_*.deb)
    expect_file "$deb"
    [ "$(dpkg-deb -f "$deb" Package Section | tr '\n' ' ')" = "Package: tessarin Section: games " ] ||
        fail "control: $(dpkg-deb -f "$deb")"
    dpkg-deb -f "$deb" Depends | grep -q 'libc6 (>= ' || fail "Depends: $(dpkg-deb -f "$deb" Depends)"
    dpkg-deb -c "$deb" | grep -v ' root/root ' && fail "not owned by root"
    dpkg-deb -x "$deb" "$folder/unpacked"
    root=$folder/unpacked/usr
    ;;
*) fail "what is $kind?" ;;
esac

# The programs are run as by a user of their own, from elsewhere, through the links.
export XDG_DATA_HOME="$folder/data" XDG_CONFIG_HOME="$folder/config" XDG_RUNTIME_DIR="$folder/run" HOME="$folder"
mkdir -m 700 "$XDG_RUNTIME_DIR"
mkdir "$folder/elsewhere"
cd "$folder/elsewhere"

"$root/bin/tessarin-cli" bench --depth 5 >"$folder/out" || fail "bench"
tail -n 1 "$folder/out" | grep -Eq '^nodes [0-9]+, ' || fail "bench: $(tail -n 1 "$folder/out")"
"$root/bin/tessarin-cli" analyze "$root/lib/tessarin/games/sample.pdn" --time 0.001 >"$folder/out" || fail "analyze"
grep -q '^1\. 32-28 {' "$folder/out" || fail "analyze: $(head -n 9 "$folder/out")"

for file in share/man/man1/tessarin-cli.1.gz share/bash-completion/completions/tessarin-cli share/doc/tessarin/copyright share/doc/tessarin/changelog.gz \
    share/doc/tessarin/manual/en/index.html lib/tessarin/manual/manual.css lib/tessarin/manual/en/index.html; do
    expect_file "$root/$file"
done
for pattern in $(sed -n 's/^Files: \([^*].*\)/\1/p' "$root/share/doc/tessarin/copyright"); do
    expect_file "$sources/$pattern"
done
[ -z "$(find "$root" -name CMakeLists.txt)" ] || fail "files of the build are installed"

if [ -f "$build/bin/tessarin" ]; then
    expect_file "$root/share/applications/tessarin.desktop"
    expect_file "$root/share/icons/hicolor/scalable/apps/tessarin.svg"
    if command -v desktop-file-validate >/dev/null; then
        desktop-file-validate "$root/share/applications/tessarin.desktop" || fail "the desktop entry"
    fi
    if command -v appstreamcli >/dev/null; then
        appstreamcli validate --no-net "$root/share/metainfo/tessarin.metainfo.xml" || fail "the metainfo"
    fi

    # The window comes up and stays; the engine has started when the system's lines are in the log.
    log="$XDG_DATA_HOME/Quillorn/Tessarin International/Tessarin.log"
    rm -f "$log"
    QT_QPA_PLATFORM=offscreen "$root/bin/tessarin" >"$folder/out" 2>&1 &
    program=$!
    waited=0
    until grep -q '^MTC directory:' "$log" 2>/dev/null; do
        kill -0 $program 2>/dev/null || { cat "$folder/out"; fail "the desktop program ended"; }
        [ $waited -lt 300 ] || { kill $program; cat "$log" "$folder/out"; fail "the engine did not start"; }
        sleep 0.1
        waited=$((waited + 1))
    done
    sleep 1
    kill $program 2>/dev/null || { cat "$folder/out"; fail "the desktop program ended by itself"; }
    wait $program 2>/dev/null || true
    grep -Fxq "program path: $root/lib/tessarin/" "$log" || fail "$(grep '^program path' "$log")"
fi
echo "everything runs from $root"
