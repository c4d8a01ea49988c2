#!/usr/bin/env bash
# Compiles every source of provider/ and hal/ as a device build does, against
# the real libhidl headers of every Android release found under
# PLATFORM_DIR/libhidl (each folder android-N), and headers that
# hidl-gen generates from the real standard .hal files; then checks that the
# host runtime and the host copies of the standard interfaces offer no more
# than those releases do.
# Usage: scripts/platform-check.sh [PLATFORM_DIR]
#   PLATFORM_DIR holds libhidl/android-N/, libfmq/ and interfaces/ (default:
#   $ZD_PLATFORM_DIR, else ../shared/platform beside the repository).
set -euo pipefail
cd "$(dirname "$0")/.."

platform=${1:-${ZD_PLATFORM_DIR:-../shared/platform}}
if [ ! -d "${platform}/libhidl" ]; then
  echo "platform check: SKIPPED, no platform headers at ${platform} (give the folder as argument or ZD_PLATFORM_DIR)"
  exit 0
fi
platform=$(realpath "${platform}")
# Every release whose headers are there, oldest first: a release added to the
# platform folder is checked without a change here.
mapfile -t releases < <(find -L "${platform}/libhidl" -mindepth 1 -maxdepth 1 -type d \
  -name 'android-*' -printf '%f\n' | sort -V)
if ((${#releases[@]} == 0)); then
  echo "platform check: FAILED, no libhidl/android-N folder under ${platform}"
  exit 1
fi
out=$PWD/build/platform
rm -rf "${out}"
mkdir -p "${out}/gen" "${out}/standins/sys" "${out}/logs"

# The vendor-only headers that the device gets from other vendor modules.
ln -s "$PWD/host/include/HidlUtil.h" "$PWD/host/include/bounded_copy.h" "${out}/standins/"
ln -s "$PWD/host/include/sys/system_properties.h" "${out}/standins/sys/"

# <root>/a/b/1.0/*.hal -> <prefix>.a.b@1.0
packages_under() {
  local root=$1 prefix=$2 dir
  find "${root}" -name '*.hal' -printf '%h\n' | sort -u | while read -r dir; do
    dir=${dir#"${root}"/}
    echo "${prefix}.$(dirname "${dir}" | tr / .)@$(basename "${dir}")"
  done
}
for package in $(packages_under "${platform}/interfaces/android.hardware" android.hardware) \
  $(packages_under "${platform}/interfaces/android.hidl" android.hidl) \
  $(packages_under interfaces vendor.zendra.hardware); do
  hidl-gen -o "${out}/gen" -Lc++-headers \
    -r "android.hardware:${platform}/interfaces/android.hardware" \
    -r "android.hidl:${platform}/interfaces/android.hidl" \
    -r vendor.zendra.hardware:interfaces "${package}"
done

# Android's C++ flags: libc++, no exceptions, no RTTI, warnings as errors.
export ZD_CXX="clang++ -stdlib=libc++ -std=gnu++17 -fno-exceptions -fno-rtti"
export ZD_PLATFORM=${platform} ZD_OUT=${out}
release_includes() {
  echo "-I${ZD_PLATFORM}/libhidl/$1/base/include -I${ZD_PLATFORM}/libhidl/$1/transport/include" \
    "-I${ZD_PLATFORM}/libfmq/base"
}
compile_source() {
  local release=$1 source=$2
  # shellcheck disable=SC2046
  ${ZD_CXX} -fsyntax-only -Wall -Wextra -Werror -Wthread-safety \
    -D_LIBCPP_ENABLE_THREAD_SAFETY_ANNOTATIONS -Iinclude -Iprovider $(release_includes "${release}") \
    -I"${ZD_OUT}/standins" -isystem "${ZD_OUT}/gen" -isystem /usr/include/android "${source}"
}
# Lists which uses of the HIDL runtime the given headers accept.
list_api_forms() {
  local release=$1 includes="-Ihost/include"
  [ "${release}" = host ] || includes=$(release_includes "${release}")
  # shellcheck disable=SC2086
  ${ZD_CXX} -w ${includes} -isystem /usr/include/android tests/platform/hidl_api_forms.cpp \
    -o "${ZD_OUT}/forms-${release}" && "${ZD_OUT}/forms-${release}" >"${ZD_OUT}/forms-${release}.txt"
}
run_job() {
  local log
  log="${ZD_OUT}/logs/$(echo "$*" | tr ' /' '__').log"
  "$@" >"${log}" 2>&1 || { echo "FAILED: $*"; cat "${log}"; return 1; }
}
export -f release_includes compile_source list_api_forms run_job

list_jobs() {
  echo list_api_forms host
  for release in "${releases[@]}"; do
    echo list_api_forms "${release}"
    for source in provider/*.cpp hal/*.cpp; do echo compile_source "${release}" "${source}"; done
  done
}
failed=0
list_jobs | xargs -P "$(nproc)" -L 1 bash -c 'run_job "$@"' _ || failed=1

for release in "${releases[@]}"; do
  [ -f "${out}/forms-host.txt" ] && [ -f "${out}/forms-${release}.txt" ] || continue
  wider=$(grep -vxFf "${out}/forms-${release}.txt" "${out}/forms-host.txt" | grep '^1 ' || true)
  if [ -n "${wider}" ]; then
    echo "FAILED: the host runtime accepts what ${release}'s libhidl rejects: ${wider//$'\n'/, }"
    failed=1
  fi
done

python3 tests/interfaces/check_interfaces.py standard "$(command -v hidl-gen)" . "${out}/interfaces" \
  --platform "${platform}" || failed=1

sources=$(ls provider/*.cpp hal/*.cpp | wc -l)
if ((failed)); then
  echo "platform check: FAILED (see above)"
  exit 1
fi
echo "platform check: ${sources} sources clean against ${releases[*]}; host runtime and interfaces match"
