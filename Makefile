# The main targets.  Each first installs the tools that are missing (scripts/setup).
SHELL := /bin/bash
.SHELLFLAGS := -eu -o pipefail -c
DESTDIR ?=
PREFIX ?= /usr/local
DEMO := build/demo

.PHONY: all release demo test damage faults live power stops threads windows windows-zip fuzz bench install uninstall deb clean setup

# Builds the programs in build/bin/, without tests.
all: setup
	@cmake --preset release -DCMAKE_INSTALL_PREFIX=$(PREFIX) >/dev/null
	@cmake --build --preset release

# Builds the programs to install, in build/release/, with profile-guided optimisation, which compiles twice.
release: setup
	@cmake --preset trained -DCMAKE_INSTALL_PREFIX=$(PREFIX) >/dev/null
	@cmake --build build/release

# Creates a sample print system in build/demo/ and reports its server.
demo:
	@$(MAKE) --no-print-directory all >&2
	@rm -rf $(DEMO)
	@build/bin/mksample $(DEMO)
	@scripts/demo build/bin/qvledger $(DEMO)

test: setup
	@cmake --preset dev >/dev/null
	@cmake --build --preset dev
	@ctest --preset dev
	@awk '/: Skipped$$/ {getline; print "Skipped: " $$0}' build/dev/Testing/Temporary/LastTest.log

# Makes each STEP-th allocation and system call of a run fail, with and without sanitizers.
STEP ?= 1
faults: setup
	@cmake --preset dev >/dev/null
	@cmake --build --preset dev --target faults | tail -n 1
	@build/dev/bin/faults $(STEP)
	@cmake --preset asan >/dev/null
	@cmake --build --preset asan --target faults | tail -n 1
	@build/asan/bin/faults $(STEP)

# Reports logs while a server writes them and other runs read or delete them; ROUNDS rounds of each kind.
ROUNDS ?= 2000
live: setup
	@cmake --preset dev >/dev/null
	@cmake --build --preset dev --target live | tail -n 1
	@QVLEDGER_LIVE_ROUNDS=$(ROUNDS) build/dev/bin/live

# Checks which records are found in LOGS damaged logs, and in three small logs cut at each byte or with a flipped bit.
LOGS ?= 10000
damage: setup
	@cmake --preset dev >/dev/null
	@cmake --build --preset dev --target unit_tests | tail -n 1
	@QVLEDGER_DAMAGED_LOGS=$(LOGS) build/dev/bin/unit_tests --gtest_filter='Damage.*'

# Stops a run before each STEP-th system call, and lets another program change its files there.
stops: setup
	@cmake --preset dev >/dev/null
	@cmake --build --preset dev --target stops | tail -n 1
	@build/dev/bin/stops $(STEP)

# Simulates a power failure after each call of a run, with many selections of the calls that reached the disk.
power: setup
	@cmake --preset dev >/dev/null
	@cmake --build --preset dev --target power | tail -n 1
	@build/dev/bin/power

# Runs all operations ROUNDS times in each of eight threads with their own handles, with and without ThreadSanitizer.
threads: ROUNDS := 2000
threads: setup
	@cmake --preset dev >/dev/null
	@cmake --build --preset dev --target threads | tail -n 1
	@build/dev/bin/threads $(ROUNDS)
	@cmake --preset tsan >/dev/null
	@cmake --build --preset tsan --target threads | tail -n 1
	@build/tsan/bin/threads $(ROUNDS)

# Builds for Windows, and compares the programs under wine with those of this system.
windows: setup
	@scripts/setup wine
	@cmake --preset dev >/dev/null
	@cmake --build --preset dev --target all seam | tail -n 1
	@cmake --preset windows >/dev/null
	@cmake --build --preset windows | tail -n 1
	@scripts/windows build/dev build/windows

# Builds the zip for Windows in build/windows/packages/.
windows-zip: setup
	@scripts/setup windows
	@cmake --preset windows >/dev/null
	@cmake --build --preset windows | tail -n 1
	@scripts/check-windows build/windows/bin
	@cd build/windows && cpack >cpack.log || { cat cpack.log >&2; exit 1; }
	@ls build/windows/packages/*.zip

# Fuzzes each target (or TARGETS) for SECONDS seconds, JOBS targets at a time.
SECONDS ?= 60
JOBS ?= 2
fuzz:
	@scripts/setup clang
	@cmake --preset fuzz >/dev/null
	@cmake --build --preset fuzz
	@scripts/fuzz build/fuzz $(SECONDS) $(JOBS) $(TARGETS)

# Measures the release build against a minimal reader and dump-acct; GROWTH=--growth also measures growth.
bench:
	@scripts/setup bench
	@cmake --preset trained -B build/bench -DQVLEDGER_BENCH=ON >/dev/null
	@cmake --build build/bench | tail -n 1
	@tests/bench/run.py build/bench $(GROWTH)
	@build/bench/bin/micro --benchmark_min_time=0.2

install: release
	@DESTDIR=$(DESTDIR) cmake --install build/release

# Removes the files of the last `make install`.
uninstall:
	@[ -e build/release/install_manifest.txt ] || { echo "uninstall: build/release/ has no list of installed files" >&2; exit 1; }
	@xargs -d '\n' -a build/release/install_manifest.txt printf '$(DESTDIR)%s\0' | xargs -0 rm -fv --

# Builds the Debian packages in build/deb/packages/.  The same commit and compiler give the same bytes.
deb:
	@scripts/setup package
	@scripts/package build/deb

clean:
	@rm -rf build

setup:
	@scripts/setup
