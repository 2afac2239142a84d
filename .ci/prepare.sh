# Shared by the scripts that build. To be sourced by a script in the project's root folder.

# Installs the Debian packages that are missing. On a machine without apt it only names them.
install_missing() {
  local missing=() package
  if ! command -v apt-get >/dev/null; then
    for package in "$@"; do
      has_contents_of "$package" >/dev/null 2>&1 || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    echo "Please install what Debian has in these packages: ${missing[*]}" >&2
    exit 2
  fi
  for package in "$@"; do
    case "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" in
      installed) ;;
      *) missing+=("$package") ;;
    esac
  done
  [ ${#missing[@]} -eq 0 ] && return
  local as_root=()
  [ "$(id -u)" -eq 0 ] || as_root=(sudo)
  echo "Installing ${missing[*]} ..." >&2
  local log
  log=$(mktemp)
  if ! { "${as_root[@]}" apt-get update &&
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
      apt-get install -y --no-install-recommends "${missing[@]}"; } >"$log" 2>&1 </dev/null; then
    cat "$log" >&2
    rm -f "$log"
    echo "The packages could not be installed." >&2
    exit 2
  fi
  rm -f "$log"
}

# Whether what is needed of a Debian package is there, wherever it comes from.
has_contents_of() {
  case $1 in
    ninja-build) command -v ninja ;;
    g++) command -v c++ ;;
    binutils) command -v nm ;;
    libcli11-dev) echo '#include <CLI/CLI.hpp>' | c++ -std=c++20 -x c++ -E - ;;
    libgtest-dev) pkg-config --exists gtest_main ;;
    libsqlite3-dev) pkg-config --exists sqlite3 ;;
    zlib1g-dev) pkg-config --exists zlib ;;
    nettle-dev) pkg-config --exists nettle ;;
    libexpat1-dev) pkg-config --exists expat ;;
    libbrotli-dev) pkg-config --exists libbrotlidec ;;
    lib*-dev) pkg-config --exists "${1%-dev}" || pkg-config --exists "$(expr "$1" : 'lib\(.*\)-dev')" ;;
    *) command -v "$1" ;;
  esac
}

# Passes on the output of a build, and shows on a terminal how far it is.
show_progress() {
  local line
  while IFS= read -r line; do
    printf '%s\n' "$line"
    [[ ! -t 8 || $line != \[[1-9]* ]] || printf '\rBuilding ... %s ' "${line%%]*}]" >&8
  done
  [ ! -t 8 ] || printf '\r\033[K' >&8
}

# Builds a preset, or only the targets named after it, and says nothing when all goes well.
build_preset() {
  local preset=$1 log target_arguments=()
  shift
  [ $# -eq 0 ] || target_arguments=(--target "$@")
  log="build/$preset/build.log"
  if ! { mkdir -p "build/$preset" && : >>"$log"; } 2>/dev/null; then
    echo "The folder $PWD/build/$preset cannot be written to." >&2
    exit 2
  fi
  # One at a time: a second caller waits for the first one's build.
  if ! (
    set -o pipefail
    flock 9
    if [ ! -f "build/$preset/build.ninja" ]; then
      echo "Building ..." >&8
      cmake --preset "$preset" || exit
    fi
    cmake --build "build/$preset" "${target_arguments[@]}" 2>&1 | show_progress
  ) 8>&2 9>"build/$preset/lock" >"$log" 2>&1 </dev/null; then
    cat "$log" >&2
    echo "The build has failed." >&2
    exit 2
  fi
}

build_packages=(cmake ninja-build g++ pkg-config libutf8proc-dev libsqlite3-dev
  libcli11-dev zlib1g-dev nettle-dev libseccomp-dev libexpat1-dev
  libbrotli-dev libre2-dev)
test_packages=(libgtest-dev python3 binutils)
