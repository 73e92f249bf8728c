# Shared by ./run and ./test: installs the Debian packages the build needs
# (only those missing) and builds a tree with CMake and Ninja.

ONDRELS_PACKAGES=(
  build-essential cmake ninja-build pkg-config
  qtbase5-dev libqt5opengl5-dev
  libfreeimage-dev libpng-dev libtiff-dev libassimp-dev libtinyxml2-dev zlib1g-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  xvfb xauth libgl1-mesa-dri libglx-mesa0 libgl1 fonts-dejavu-core
)

install_missing_packages() {
  local missing=()
  for package in "${ONDRELS_PACKAGES[@]}"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  echo "Installing: ${missing[*]}"
  local sudo=""
  [ "$(id -u)" -ne 0 ] && sudo="sudo"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

# build_tree DIR BUILD_TYPE [CMAKE ARGS...]
build_tree() {
  local dir=$1 type=$2
  shift 2
  if [ ! -f "$dir/build.ninja" ]; then
    cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE="$type" "$@"
  fi
  cmake --build "$dir" --parallel "$(nproc)"
}

install_missing_packages
