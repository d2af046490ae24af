#!/usr/bin/env bash
# Installs what the project needs from Debian's packages, only what is missing.
set -euo pipefail

packages=(
    build-essential cmake pkg-config
    qtbase5-dev
    libopencv-dev
    libgtest-dev
    libbenchmark-dev
    clang libclang-rt-14-dev
    libquazip1-qt5-dev libxlsxwriter-dev
    python3-openpyxl python3-pil
)

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$package")
    fi
done

if [ ${#missing[@]} -eq 0 ]; then
    exit 0
fi

if [ "$(id -u)" -ne 0 ]; then
    echo "setup: missing packages (${missing[*]}); run as root to install them" >&2
    exit 1
fi
echo "setup: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq
apt-get install -y -qq --no-install-recommends "${missing[@]}"
