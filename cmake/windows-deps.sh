#!/usr/bin/env bash
# Builds the static Windows libraries cansimu links against, for one MinGW-w64
# target, and prints the prefix that holds them on the last line of stdout:
#
#   prefix=$(cmake/windows-deps.sh x86_64-w64-mingw32 | tail -1)
#   prefix=$(cmake/windows-deps.sh i686-w64-mingw32 | tail -1)
#
# The prefix is ${XDG_CACHE_HOME:-$HOME/.cache}/cansimu/windeps-<id>-<target>
# with include/ and lib/ inside:
#   ACE 7.0.8      lib/libACE.a       include/ace/  (config.h selects Win32)
#   pugixml 1.13   lib/libpugixml.a   include/pugixml.hpp, lib/cmake/pugixml
#   GoogleTest     lib/libgtest.a, libgtest_main.a
#                                     include/gtest, lib/cmake/GTest
# ACE comes from Debian's "ace" source package, built with its own GNU make
# build; pugixml from Debian's "pugixml" source package and GoogleTest from
# /usr/src/googletest, both with CMake and cmake/toolchain-mingw{32,64}.cmake.
# Code using ACE must define ACE_AS_STATIC_LIBS (the installed config.h does
# it too) and link ws2_32 mswsock iphlpapi netapi32.
#
# Missing Debian packages are installed with apt-get (through sudo unless
# running as root), and a deb-src entry for the machine's own suite is added
# when apt has none. Downloaded source packages are kept in the cache as well.
# Nothing is written inside the source tree.
#
# A prefix is complete only once it carries the .complete stamp: it is built
# in a temporary directory beside its final place and renamed there when
# every library has been installed, so an interrupted build never looks
# usable. With a complete prefix the script does nothing but print it.
#
# Environment: XDG_CACHE_HOME (cache root), CANSIMU_JOBS (parallel compile
# jobs, default: number of CPUs), CANSIMU_KEEP_WORK=1 (keep the build trees
# and logs of a successful run too; delete them by hand).
set -euo pipefail

# Changing any version or build setting below must change this id, which
# names the prefix; the toolchain files read it from this line.
CANSIMU_WINDEPS_ID="ace7.0.8-pugixml1.13-gtest1.12.1-r4"
ACE_VERSION=7.0.8
PUGIXML_VERSION=1.13
GTEST_VERSION=1.12.1

# Only the prefix goes to stdout; everything else, including the output of
# the tools called, goes to stderr.
exec 3>&1 1>&2

log() { printf 'windows-deps: %s\n' "$*"; }
die() { printf 'windows-deps: error: %s\n' "$*"; exit 1; }

usage() {
  printf 'usage: %s i686-w64-mingw32|x86_64-w64-mingw32\n' "$0"
  exit 2
}

[[ $# -eq 1 ]] || usage
TARGET=$1
case $TARGET in
  i686-w64-mingw32) toolchain_name='toolchain-mingw32.cmake' ;;
  x86_64-w64-mingw32) toolchain_name='toolchain-mingw64.cmake' ;;
  *) usage ;;
esac

if [[ -n ${XDG_CACHE_HOME:-} ]]; then
  cache_root=$XDG_CACHE_HOME/cansimu
else
  [[ -n ${HOME:-} ]] || die "neither XDG_CACHE_HOME nor HOME is set"
  cache_root=$HOME/.cache/cansimu
fi
prefix_name=windeps-$CANSIMU_WINDEPS_ID-$TARGET
prefix=$cache_root/$prefix_name
stamp_name=.complete

# Fast path: a finished prefix is reused without touching anything else.
if [[ -f $prefix/$stamp_name ]]; then
  printf '%s\n' "$prefix" >&3
  exit 0
fi

script_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
toolchain=$script_dir/$toolchain_name
[[ -f $toolchain ]] || die "missing $toolchain"
jobs=${CANSIMU_JOBS:-$(nproc 2>/dev/null || echo 2)}

mkdir -p "$cache_root"
# One build per target at a time; a second caller waits and then finds the
# prefix the first one finished.
exec 9>"$cache_root/.lock-$TARGET"
if ! flock -n 9; then
  log "another build for $TARGET is running, waiting for it"
  flock 9
fi
if [[ -f $prefix/$stamp_name ]]; then
  printf '%s\n' "$prefix" >&3
  exit 0
fi

start_time=$SECONDS

# --- Debian packages ----------------------------------------------------------

# Runs a command as root, through sudo unless the script already is root.
as_root() {
  if [[ $(id -u) -eq 0 ]]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    die "need root for: $*; run as root or install sudo"
  fi
}

# CANSIMU_APT_SOURCES names a sources list of the caller's (./dev passes the
# project's, which carries the deb-src entries too); apt then reads it instead
# of the machine's lists.
apt_options=()
if [[ -n ${CANSIMU_APT_SOURCES:-} ]]; then
  apt_options=(-o "Dir::Etc::sourcelist=$CANSIMU_APT_SOURCES" -o Dir::Etc::sourceparts=-)
fi

apt_updated=0
apt_update() {
  log "apt-get update"
  as_root apt-get "${apt_options[@]}" update
  apt_updated=1
}

is_installed() {
  [[ $(dpkg-query -W -f='${db:Status-Abbrev}' "$1" 2>/dev/null) == "ii " ]]
}

required_packages=(
  g++-mingw-w64-i686-posix g++-mingw-w64-x86-64-posix
  binutils-mingw-w64-i686 binutils-mingw-w64-x86-64
  dpkg-dev googletest cmake make perl xz-utils
)
missing=()
for pkg in "${required_packages[@]}"; do
  is_installed "$pkg" || missing+=("$pkg")
done
if ((${#missing[@]})); then
  apt_update
  log "installing ${missing[*]}"
  as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get "${apt_options[@]}" install -y --no-install-recommends "${missing[@]}"
fi

# "ace" is also the name of an unrelated binary package, so source lookups
# must say --only-source or apt fetches that package's source instead.
have_source() {
  local records
  records=$(apt-cache "${apt_options[@]}" showsrc --only-source "$1" 2>/dev/null) || return 1
  grep -q "^Package: $1\$" <<<"$records"
}

codename() {
  local VERSION_CODENAME=""
  # shellcheck disable=SC1091
  [[ -r /etc/os-release ]] && . /etc/os-release
  [[ -n $VERSION_CODENAME ]] || VERSION_CODENAME=$(lsb_release -sc 2>/dev/null || true)
  [[ -n $VERSION_CODENAME ]] || die "cannot tell the distribution codename"
  printf '%s\n' "$VERSION_CODENAME"
}

# deb822 stanzas (sources.list.d/*.sources) that fetch binary packages from a
# suite of this release ("bookworm", "bookworm-updates", ...), rewritten as
# deb-src stanzas. Continuation lines (Signed-By key blocks) are kept.
deb822_src_stanzas() {
  awk -v codename="$1" '
    function flush(   i, n, s, suites, ok, types) {
      if (nlines == 0) return
      types = " " fields["types"] " "
      n = split(fields["suites"], suites, /[ \t]+/)
      ok = 0
      for (i = 1; i <= n; i++)
        if (suites[i] == codename || index(suites[i], codename "-") == 1) ok = 1
      if (types ~ /[ \t]deb[ \t]/ && ok && tolower(fields["enabled"]) != "no") {
        out = ""
        for (i = 1; i <= nlines; i++) {
          s = lines[i]
          if (tolower(s) ~ /^types:/) s = "Types: deb-src"
          out = out s "\n"
        }
        printf "%s\n", out
      }
      nlines = 0; delete fields; delete lines
    }
    /^[ \t]*#/ { next }
    /^[ \t]*$/ { flush(); next }
    /^[ \t]/ { lines[++nlines] = $0; next }
    {
      lines[++nlines] = $0
      key = tolower(substr($0, 1, index($0, ":") - 1))
      val = substr($0, index($0, ":") + 1)
      gsub(/^[ \t]+|[ \t]+$/, "", val)
      fields[key] = val
    }
    END { flush() }
  ' "${@:2}"
}

# One-line entries (sources.list, sources.list.d/*.list) for this release,
# rewritten as deb-src lines.
classic_src_lines() {
  awk -v codename="$1" '
    $1 != "deb" { next }
    {
      line = $0; sub(/^[ \t]*deb[ \t]+/, "", line)
      if (line ~ /^\[/) sub(/^\[[^]]*\][ \t]*/, "", line)
      split(line, f, /[ \t]+/)
      suite = f[2]
      if (suite == codename || index(suite, codename "-") == 1) {
        out = $0; sub(/^[ \t]*deb/, "deb-src", out); print out
      }
    }
  ' "${@:2}"
}

add_deb_src() {
  local cn deb822_files=() list_files=() f text
  cn=$(codename)
  for f in /etc/apt/sources.list.d/*.sources; do
    [[ -f $f && $f != */cansimu-deb-src.sources ]] && deb822_files+=("$f")
  done
  for f in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [[ -f $f && $f != */cansimu-deb-src.list ]] && list_files+=("$f")
  done
  if ((${#deb822_files[@]})); then
    text=$(deb822_src_stanzas "$cn" "${deb822_files[@]}")
    if [[ -n $text ]]; then
      log "adding deb-src entries for $cn to /etc/apt/sources.list.d/cansimu-deb-src.sources"
      printf '%s\n' "$text" | as_root tee /etc/apt/sources.list.d/cansimu-deb-src.sources >/dev/null
    fi
  fi
  if ((${#list_files[@]})); then
    text=$(classic_src_lines "$cn" "${list_files[@]}")
    if [[ -n $text ]]; then
      log "adding deb-src entries for $cn to /etc/apt/sources.list.d/cansimu-deb-src.list"
      printf '%s\n' "$text" | as_root tee /etc/apt/sources.list.d/cansimu-deb-src.list >/dev/null
    fi
  fi
}

src_cache=$cache_root/sources
mkdir -p "$src_cache"

# Upstream part of a Debian version: no epoch, revision or +dfsg/+ds suffix.
upstream_of() {
  local v=${1#*:}
  v=${v%-*}
  printf '%s\n' "${v%%+*}"
}

# Sets fetched_dsc to the .dsc of source package $1, downloading it into the
# source cache unless a copy of upstream version $2 is there already.
fetch_source() {
  local pkg=$1 want=$2 dsc version records
  fetched_dsc=
  for dsc in "$src_cache/$pkg/${pkg}_"*.dsc; do
    [[ -f $dsc ]] || continue
    version=$(sed -n 's/^Version: //p' "$dsc")
    if [[ $(upstream_of "$version") == "$want" ]]; then
      fetched_dsc=$dsc
      return
    fi
  done
  if ! have_source "$pkg"; then
    ((apt_updated)) || apt_update
    if ! have_source "$pkg"; then
      add_deb_src
      apt_update
      have_source "$pkg" || die "apt knows no source package '$pkg' even with deb-src entries"
    fi
  fi
  records=$(apt-cache "${apt_options[@]}" showsrc --only-source "$pkg")
  version=$(sed -n 's/^Version: //p' <<<"$records" | sort -V | tail -n 1)
  [[ $(upstream_of "$version") == "$want" ]] ||
    die "Debian offers $pkg $version but this script builds $want; update it (and CANSIMU_WINDEPS_ID)"
  log "downloading source package $pkg $version"
  rm -rf "$src_cache/$pkg.part"
  mkdir -p "$src_cache/$pkg.part"
  (cd "$src_cache/$pkg.part" && apt-get "${apt_options[@]}" source --only-source --download-only "$pkg=$version")
  mkdir -p "$src_cache/$pkg"
  mv "$src_cache/$pkg.part"/* "$src_cache/$pkg/"
  rmdir "$src_cache/$pkg.part"
  fetched_dsc=$src_cache/$pkg/${pkg}_${version#*:}.dsc
  [[ -f $fetched_dsc ]] || die "apt-get source did not leave $fetched_dsc"
}

# --- Staging --------------------------------------------------------------------

# Leftovers of interrupted runs for this target (the lock says none is live).
rm -rf "$cache_root/.$prefix_name".*
if [[ -e $prefix ]]; then
  log "removing incomplete prefix $prefix"
  rm -rf "$prefix"
fi

# Everything is installed for its final location with DESTDIR pointing into
# the temporary directory, so files that record their prefix (pkg-config
# files) are right once the tree is moved into place.
tmp=$(mktemp -d "$cache_root/.$prefix_name.XXXXXX")
destdir=$tmp/root
stage=$destdir$prefix
work=$tmp/work
mkdir -p "$stage/include" "$stage/lib" "$work"
# bash reports status 0 to an EXIT trap when a signal ends it, so success is
# tracked explicitly: the build trees are kept, with their logs, only when the
# build did not finish (or on request).
finished=0
cleanup() {
  if ((finished)) && [[ ${CANSIMU_KEEP_WORK:-0} != 1 ]]; then
    rm -rf "$tmp"
  elif ((finished)); then
    log "build trees kept in $tmp"
  else
    log "build trees kept in $tmp (removed by the next build for $TARGET)"
  fi
}
trap cleanup EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM

# Runs a build step with its output in a log file, showing the tail on error.
run_logged() {
  local name=$1
  shift
  if ! "$@" >"$work/$name.log" 2>&1; then
    tail -n 60 "$work/$name.log"
    die "$name failed; full log: $work/$name.log"
  fi
}

# --- ACE --------------------------------------------------------------------------

# Only the ACE library project: no TAO, tests, examples or other ACE libraries.
ace_generate_makefile() (
  cd "$ACE_ROOT/ace" && perl "$ACE_ROOT/bin/mpc.pl" -type gnuace ace.mpc
)

# The ACE sources compiled: those whose objects the DLL, the program and the
# tests take from a whole libACE.a when they link, for either target (found
# with the linker's map; 32-bit builds need Atomic_Op besides), about a
# quarter of ACE's 314. A change that uses an ACE class outside
# them fails to link with an undefined ACE_ symbol: add the class's source
# file here and change the id above.
ace_sources=(
  ACE Addr Atomic_Op Base_Thread_Adapter CDR_Base CDR_Stream Cleanup Condition_Thread_Mutex
  Copy_Disabled DLL DLL_Manager Event_Base Event_Handler Event_Handler_Handle_Timeout_Upcall
  Flag_Manip Framework_Component Get_Opt Handle_Set INET_Addr IPC_SAP Init_ACE Lib_Find
  Log_Category Log_Msg Log_Msg_Backend Log_Msg_IPC Log_Msg_NT_Event_Log Log_Record Malloc
  Malloc_Allocator Message_Block Message_Queue Mutex OS_NS_Thread OS_NS_arpa_inet OS_NS_fcntl
  OS_NS_signal OS_NS_stdio OS_NS_stdlib OS_NS_string OS_NS_sys_socket OS_NS_sys_uio OS_NS_time
  OS_NS_unistd OS_QoS OS_Thread_Adapter Obchunk Object_Manager Object_Manager_Base Parse_Node
  Process_Mutex RW_Mutex RW_Thread_Mutex Reactor Reactor_Impl Reactor_Timer_Interface
  Recursive_Thread_Mutex SOCK SOCK_Acceptor SOCK_Connector SOCK_Stream Service_Config
  Service_Gestalt Service_Manager Service_Object Service_Repository Service_Types Shared_Object
  Sig_Adapter Sig_Handler Signal Sock_Connect Stack_Trace String_Base_Const Svc_Conf_Lexer
  Svc_Conf_y Task Thread_Adapter Thread_Control Thread_Exit Thread_Manager Thread_Mutex Time_Value
  WFMO_Reactor
)

build_ace() {
  local dsc src t0=$SECONDS
  fetch_source ace "$ACE_VERSION"
  dsc=$fetched_dsc
  log "ACE: unpacking $(basename "$dsc")"
  run_logged ace-unpack dpkg-source --no-check -x "$dsc" "$work/ace"
  src=$work/ace

  # The Win32 configuration, pinned to what the library is built with: static
  # linkage and inlined ACE functions. The make build passes both on the
  # command line; putting them here as well keeps consumers from compiling
  # against a different view of the headers. __ACE_INLINE__ needs a value:
  # config-win32-common.h compares it with 0.
  cat >"$src/ace/config.h" <<'EOF'
#ifndef CANSIMU_ACE_CONFIG_H
#define CANSIMU_ACE_CONFIG_H
#ifndef ACE_AS_STATIC_LIBS
#  define ACE_AS_STATIC_LIBS
#endif
#ifndef __ACE_INLINE__
#  define __ACE_INLINE__ 1
#endif
#include "ace/config-win32.h"
#endif
EOF

  # The MinGW platform file picks "<prefix>gcc"/"<prefix>g++", which are the
  # win32 thread-model compilers on Debian; the posix ones are named with a
  # -posix suffix, so the compilers are set again after the include. No
  # -m32/-m64 is needed: each cross compiler targets one architecture.
  cat >"$src/include/makeinclude/platform_macros.GNU" <<EOF
static_libs_only = 1
debug = 0
optimize = 1
inline = 1
CROSS_COMPILE = $TARGET-
include \$(ACE_ROOT)/include/makeinclude/platform_mingw32.GNU
CC = $TARGET-gcc-posix
CXX = $TARGET-g++-posix
AR = $TARGET-ar
RANLIB = $TARGET-ranlib
DLLTOOL = $TARGET-dlltool
RC = $TARGET-windres
EOF

  export ACE_ROOT=$src MPC_ROOT=$src/MPC
  log "ACE: generating the makefile"
  run_logged ace-mpc ace_generate_makefile
  local files="${ace_sources[*]/%/.cpp}"
  log "ACE: compiling libACE.a (${#ace_sources[@]} sources) for $TARGET with $jobs jobs"
  run_logged ace-make make -C "$src/ace" -f GNUmakefile.ACE -j"$jobs" FILES="$files"
  run_logged ace-install make -C "$src/ace" -f GNUmakefile.ACE install FILES="$files" \
    DESTDIR="$destdir" INSTALL_PREFIX="$prefix" install_rpath=0
  unset ACE_ROOT MPC_ROOT
  # share/ace is a copy of the MPC build system for building more ACE
  # projects against this tree; nothing here needs it.
  rm -rf "$stage/share/ace"
  rmdir "$stage/share" 2>/dev/null || true
  [[ -f $stage/lib/libACE.a && -f $stage/include/ace/config.h && -f $stage/include/ace/OS_NS_Thread.h ]] ||
    die "ACE install is missing files"
  log "ACE: done in $((SECONDS - t0)) s"
}

# --- CMake projects ---------------------------------------------------------------

cmake_build() {
  local name=$1 srcdir=$2
  shift 2
  local bdir=$work/$name-build
  run_logged "$name-configure" cmake -S "$srcdir" -B "$bdir" \
    -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_INSTALL_PREFIX="$prefix" -DCMAKE_INSTALL_LIBDIR=lib \
    -DBUILD_SHARED_LIBS=OFF "$@"
  run_logged "$name-build" cmake --build "$bdir" -j"$jobs"
  run_logged "$name-install" env DESTDIR="$destdir" cmake --install "$bdir"
}

build_pugixml() {
  local dsc t0=$SECONDS
  fetch_source pugixml "$PUGIXML_VERSION"
  dsc=$fetched_dsc
  log "pugixml: unpacking $(basename "$dsc")"
  run_logged pugixml-unpack dpkg-source --no-check -x "$dsc" "$work/pugixml"
  log "pugixml: building"
  cmake_build pugixml "$work/pugixml" -DPUGIXML_BUILD_TESTS=OFF
  [[ -f $stage/lib/libpugixml.a && -f $stage/include/pugixml.hpp ]] || die "pugixml install is missing files"
  log "pugixml: done in $((SECONDS - t0)) s"
}

build_googletest() {
  local src=/usr/src/googletest version t0=$SECONDS
  version=$(dpkg-query -W -f='${Version}' googletest)
  [[ $(upstream_of "$version") == "$GTEST_VERSION" ]] ||
    die "googletest $version is installed but this script builds $GTEST_VERSION; update it (and CANSIMU_WINDEPS_ID)"
  [[ -f $src/CMakeLists.txt ]] || die "$src/CMakeLists.txt missing"
  log "googletest: building"
  # Windows threading primitives rather than winpthread: consumers then see
  # GoogleTest's default (no GTEST_HAS_PTHREAD) and agree with the library.
  cmake_build googletest "$src" -DBUILD_GMOCK=OFF -DINSTALL_GTEST=ON \
    -Dgtest_disable_pthreads=ON
  for lib in gtest gtest_main; do
    [[ -f $stage/lib/lib$lib.a ]] || die "googletest install is missing lib$lib.a"
  done
  log "googletest: done in $((SECONDS - t0)) s"
}

build_pugixml
build_googletest
build_ace

cat >"$stage/$stamp_name" <<EOF
id=$CANSIMU_WINDEPS_ID
target=$TARGET
built=$(date -u +%Y-%m-%dT%H:%M:%SZ)
EOF
mv -T "$stage" "$prefix"
finished=1
log "prefix for $TARGET ready in $((SECONDS - start_time)) s"
printf '%s\n' "$prefix" >&3
