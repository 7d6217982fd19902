# Shared by the scripts: strict mode, the project's root as current directory, packages on demand.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."

say() { printf '== %s\n' "$*"; }

# Installs those of the named Debian packages that are missing. With nothing missing it only asks
# dpkg, which takes no time and no rights.
need_packages() {
  if ! command -v dpkg-query >/dev/null; then
    say "not a Debian system: taking these for installed: $*"
    return
  fi
  local installed missing=() as_root=() package
  installed=$(dpkg-query -W -f '${Package} ${db:Status-Status}\n' "$@" 2>/dev/null || true)
  for package in "$@"; do
    grep -qxF "$package installed" <<<"$installed" || missing+=("$package")
  done
  [[ ${#missing[@]} -eq 0 ]] && return
  if [[ $(id -u) -ne 0 ]]; then
    if ! command -v sudo >/dev/null; then
      echo "missing packages, and neither root nor sudo to install them: ${missing[*]}" >&2
      return 1
    fi
    as_root=(sudo)
  fi
  say "installing ${missing[*]}"
  "${as_root[@]}" apt-get update -q </dev/null
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -q -y --no-install-recommends "${missing[@]}" </dev/null
}
