# SPDX-License-Identifier: MIT
# What a bare Debian 12 lacks, for the scripts at the root.

# The build, native and for Windows, with the tests that every build compiles.
build_packages=(
    g++ cmake ninja-build pkg-config python3
    libcli11-dev nlohmann-json3-dev googletest frei0r-plugins-dev
    libavcodec-dev libavfilter-dev libavformat-dev libavutil-dev libswresample-dev libswscale-dev
)

# What the tests and the other checks run.
check_packages=(
    g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64 libz-mingw-w64-dev nasm wine wine64 xvfb xauth nsis
    g++-aarch64-linux-gnu qemu-user-static
    fonts-wine fonts-ipafont-gothic fonts-nanum
    ccache clang-14 clang-format-14 clang-tidy-14 libclang-rt-14-dev
    git dpkg-dev python3-pytest python3-numpy python3-pil
    pybind11-dev python3-dev mypy python3-pip python3-venv python3-setuptools python3-wheel
    python3-av python3-opencv jupyter-nbconvert python3-ipykernel
    ffmpeg melt
    libmlt-dev libobs-dev libsimde-dev libx11-dev libgl1-mesa-dri
    parallel slurm-wlm snakemake
    man-db zsh fish bash-completion
    libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev
    gstreamer1.0-tools gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-plugins-bad
    emscripten binaryen node-acorn node-typescript chromium
)
# Newer ones than the system's may stand on the machine already.
for command_and_package in node:nodejs npm:npm; do
    command -v "${command_and_package%:*}" >/dev/null || check_packages+=("${command_and_package#*:}")
done

# What ./check --long runs beside.
long_packages=(
    debootstrap llvm-14
    obs-studio kdenlive shotcut openbox dbus dbus-daemon xdotool imagemagick python3-websockets procps
)

as_root() {
    if [[ $EUID == 0 ]]; then "$@"; else sudo "$@"; fi
}

# install_packages NAME... installs those that are missing.
install_packages() {
    local missing=() name
    for name in "$@"; do
        [[ $(dpkg-query -Wf '${db:Status-Status}' "$name" 2>/dev/null) == installed ]] || missing+=("$name")
    done
    ((${#missing[@]})) || return 0
    echo "Installing ${missing[*]}"
    as_root apt-get update -qq &&
        as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}
