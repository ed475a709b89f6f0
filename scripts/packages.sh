# Sourced by the scripts beside it: installs Debian packages that are missing.

# The libraries are named where CMake looks for them.
mapfile -t build_packages < <(sed -n 's/^tkv_find(\([^ ]*\).*/\1/p' \
    "$(dirname "${BASH_SOURCE[0]}")/../cmake/libraries.cmake")
build_packages+=(cmake g++ ninja-build dvdauthor ffmpeg fonts-dejavu-core genisoimage)

# What the tests need besides: their framework, other people's programs that open what the tool
# wrote or make a disc of it, fonts for the scripts that DejaVu lacks, and photographs.
test_packages=(
    libgtest-dev
    imagemagick libimage-exiftool-perl libjpeg-turbo-progs libopenjp2-tools
    libavif-gdk-pixbuf webp-pixbuf-loader
    lsdvd poppler-utils xorriso
    fonts-noto-color-emoji fonts-vlgothic
    lomiri-wallpapers-16.04
)

# Since Debian 13 the encoders of HEIC and AVIF, which the tests' pictures are made with, are packages
# of their own.
debian=$(dpkg-query -W -f='${Version}' base-files 2>/dev/null || true)
[[ ${debian%%[!0-9]*} -lt 13 ]] || test_packages+=(libheif-plugin-aomenc libheif-plugin-x265)

# What the checks need besides, to read the benchmarks too.
lint_packages=(clang-format clang-tidy cppcheck libbenchmark-dev)

# What the benchmarks need besides: their framework, and the programs the tool is timed against.
bench_packages=(ffmpeg fontconfig imagemagick libbenchmark-dev time)

# What fuzzing needs besides: the compiler that has a fuzzer, and the makers of its first inputs.
fuzz_packages=(
    clang libclang-rt-dev llvm
    imagemagick libimage-exiftool-perl libopenjp2-tools
    heif-gdk-pixbuf libavif-gdk-pixbuf librsvg2-common webp-pixbuf-loader
)

# What the faults need besides: a network share that can be taken away, and what reads the table of
# mounts and of processes.
fault_packages=(bindfs mount perl-base procps util-linux)

# What the contact sheet needs besides: letters of every script, and what joins its pictures.
sheet_packages=(fonts-noto-core fonts-noto-cjk fonts-noto-color-emoji imagemagick)

# What packages are made with besides, and what looks at them.
package_packages=(dpkg-dev file git)
package_check_packages=(devscripts lintian)

# Installs those of the named packages that are missing.
install_packages() {
    local missing=() package as_root=()
    for package in "$@"; do
        [ "$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null)" = "install ok installed" ] ||
            missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    echo "Installing: ${missing[*]}"
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || {
            echo "These packages are missing, and there is neither root nor sudo. As an" \
                "administrator: apt-get install ${missing[*]}" >&2
            return 1
        }
        as_root=(sudo)
    fi
    "${as_root[@]}" apt-get update -q
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -q -y --no-install-recommends "${missing[@]}"
}
