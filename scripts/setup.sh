# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# What the scripts here share: steps with a log, packages, configuring and building with a preset.
# Sourced, from the root of the checkout.

readonly logs=build/log
readonly oldest_node=18

# One line for people about what happens next.
say() {
    printf '%s\n' "$*"
}

die() {
    printf '%s\n' "$*" >&2
    exit 1
}

# step NAME TEXT COMMAND...: says TEXT and runs COMMAND with its output in the log NAME. When it fails,
# the end of that log is shown and everything stops.
step() {
    local log=$logs/$1.log text=$2 status=0
    shift 2
    say "$text"
    mkdir -p "$logs"
    "$@" >"$log" 2>&1 </dev/null || status=$?
    ((status == 0)) && return
    tail -n 40 "$log" >&2
    die "That failed (status $status). The whole output is in $log."
}

# install_packages running|tests: what running needs, and with "tests" also what only the tests need.
install_packages() {
    if [[ $(uname -s) == Darwin ]]; then
        install_homebrew_packages "$@"
    elif command -v apt-get >/dev/null; then
        install_debian_packages "$@"
    else
        say "Packages: no apt-get here, so nothing is installed; README.md lists what is needed."
    fi
}

debian_packages() {
    printf '%s\n' build-essential cmake ninja-build qt6-base-dev qt6-wayland qcoro-qt6-dev librsvg2-bin \
        libboost-dev libssl-dev curl libarchive-tools ca-certificates file git
    has_node || echo nodejs
    [[ ${1-} != tests ]] || debian_test_packages
}

# Among them a desktop, a second compiler with its fuzzer, which also reads the sources of macOS, and what
# checks and installs packages.
debian_test_packages() {
    printf '%s\n' libgtest-dev libgmock-dev libcurl4-openssl-dev openssl clang libclang-rt-dev libice-dev libsm-dev \
        xvfb weston xauth xdotool imagemagick dbus dbus-x11 at-spi2-core xfce4-panel \
        debootstrap lintian appstream desktop-file-utils groff-base systemd iproute2 libxml2-utils shellcheck
}

has_node() {
    local version
    version=$(node -p 'process.versions.node.split(".")[0]' 2>/dev/null) || return 1
    ((version >= oldest_node))
}

# Those of the packages named on standard input that are not installed.
missing_debian_packages() {
    local installed
    installed=$(dpkg-query -W -f '${db:Status-Status} ${Package}\n' 2>/dev/null |
        sed -n 's/^installed //p' | sort -u)
    sort | comm -23 - <(printf '%s\n' "$installed")
}

install_debian_packages() {
    local missing=()
    mapfile -t missing < <(debian_packages "$@" | missing_debian_packages)
    if ((${#missing[@]} == 0)); then
        say "Packages: all there."
        return
    fi
    require_root "${missing[@]}"
    step packages-list "Packages: updating the list." as_root apt-get "${apt_options[@]}" update
    step packages "Packages: installing ${missing[*]}." \
        as_root apt-get "${apt_options[@]}" install -y --no-install-recommends "${missing[@]}"
}

# Another apt-get at work is waited for instead of failing.
readonly apt_options=(-q -o DPkg::Lock::Timeout=120)

require_root() {
    ((EUID == 0)) && return
    command -v sudo >/dev/null ||
        die "These packages are missing: $*. Install them as root, or install sudo, and start again."
    sudo -v || die "sudo refused; it is needed to install: $*."
}

as_root() {
    local environment=(env DEBIAN_FRONTEND=noninteractive)
    if ((EUID == 0)); then
        "${environment[@]}" "$@"
    else
        sudo "${environment[@]}" "$@"
    fi
}

install_homebrew_packages() {
    local formula missing=() formulas=(boost cmake librsvg ninja qt)
    [[ ${1-} != tests ]] || formulas+=(bash googletest)
    command -v brew >/dev/null || die "Homebrew is missing. Install it, then start again."
    for formula in "${formulas[@]}"; do
        [[ -d $(brew --prefix)/opt/$formula ]] || missing+=("$formula")
    done
    has_node || missing+=(node)
    if ((${#missing[@]} == 0)); then
        say "Packages: all there."
    else
        step packages "Packages: installing ${missing[*]}." brew install "${missing[@]}"
    fi
}

# build PRESET: configures where that has not been done, then builds what has changed.
build() {
    local preset=$1 text="Building $1."
    [[ -f build/$preset/.ninja_log ]] || text="Building $preset, which takes minutes the first time."
    if [[ ! -f build/$preset/build.ninja || CMakePresets.json -nt build/$preset/build.ninja ]]; then
        step "$preset-configure" "Configuring $preset." configure "$preset"
    fi
    step "$preset-build" "$text" cmake --build --preset "$preset" --parallel "${CMAKE_BUILD_PARALLEL_LEVEL:-$(processors)}"
}

configure() {
    local options=()
    command -v ccache >/dev/null && options+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    cmake --preset "$1" ${options[@]+"${options[@]}"}
}

processors() {
    getconf _NPROCESSORS_ONLN
}
