#!/usr/bin/env bash
# Installs every build and test dependency from Debian's packages. Safe to run again:
# packages that are already installed are left alone and nothing is fetched.
set -euo pipefail

packages=(
    build-essential cmake pkg-config clang
    zlib1g-dev
    fst-dev
    juce-modules-source-data
    libsndfile1-dev
    libx11-dev libxext-dev libcairo2-dev libfreetype-dev libpng-dev fonts-inter
    xvfb libxtst-dev xauth
    googletest libgtest-dev libgmock-dev libbenchmark-dev
)

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$package")
    fi
done

if [ "${#missing[@]}" -eq 0 ]; then
    echo "setup: all dependencies are installed"
    exit 0
fi

sudo=""
if [ "$(id -u)" -ne 0 ]; then
    sudo="sudo"
fi
echo "setup: installing ${missing[*]}"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}"
