#!/usr/bin/env bash
# The Debian packages as a host gets them: build them (preset `package`), check them with lintian,
# unpack them into a scratch root and build and run both install consumers against that root.
set -euo pipefail
cd "$(dirname "$0")/.."
rm -rf build/package/packages
cmake --workflow --preset package
debs=(build/package/packages/*.deb)
# Warnings left are overridden, each with its reason, in cmake/debian/*.lintian-overrides.
lintian --fail-on error,warning --info "${debs[@]}"

root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
for deb in "${debs[@]}"; do dpkg-deb -x "$deb" "$root"; done
libdir=$(dirname "$(find "$root/usr/lib" -name libKDRCore.so)")
export LD_LIBRARY_PATH=$libdir

cmake -S tests/install -B "$root/consumer-cmake" -DCMAKE_PREFIX_PATH="$root/usr" >/dev/null
cmake --build "$root/consumer-cmake"
"$root/consumer-cmake/consumer"

# kdrcore.pc finds its prefix from its own place (${pcfiledir}): no rewriting needed.
c++ -std=c++17 tests/install/consumer.cpp \
    $(PKG_CONFIG_PATH=$libdir/pkgconfig pkg-config --cflags --libs kdrcore) -o "$root/consumer-pc"
"$root/consumer-pc"
# Both consumers ran on the packaged library, not on one installed elsewhere.
for program in "$root/consumer-cmake/consumer" "$root/consumer-pc"; do
    grep -q "$libdir/libKDRCore.so.1 " <<<"$(ldd "$program")" ||
        { echo "FAILED: $program did not load the packaged library"; exit 1; }
done
echo "packages: $(cd build/package/packages && echo *.deb): lintian clean, consumers ok"
