# Shared by the scripts that build. To be sourced by a script in the project's root folder.

# Installs the Debian packages that are missing.
install_missing() {
  local missing=() package
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

# Builds a preset, or only the targets named after it, and says nothing when all goes well.
build_preset() {
  local preset=$1 log target_arguments=()
  shift
  [ $# -eq 0 ] || target_arguments=(--target "$@")
  mkdir -p "build/$preset"
  log="build/$preset/build.log"
  # One at a time: a second caller waits for the first one's build.
  if ! (
    flock 9
    if [ ! -f "build/$preset/build.ninja" ]; then
      echo "Building ..." >&8
      cmake --preset "$preset" || exit
    fi
    cmake --build "build/$preset" "${target_arguments[@]}"
  ) 8>&2 9>"build/$preset/lock" >"$log" 2>&1 </dev/null; then
    cat "$log" >&2
    echo "The build has failed." >&2
    exit 2
  fi
}

build_packages=(cmake ninja-build g++ pkg-config libutf8proc-dev libsqlite3-dev
  libcli11-dev zlib1g-dev nettle-dev libseccomp-dev libexpat1-dev
  libbrotli-dev)
test_packages=(libgtest-dev python3 binutils)
