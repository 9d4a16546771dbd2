# The front door.  Every target installs what the machine lacks first (scripts/setup).
SHELL := /bin/bash
.SHELLFLAGS := -eu -o pipefail -c
DESTDIR ?=
PREFIX ?= /usr/local
DEMO := build/demo

.PHONY: all release demo test damage faults live power stops threads windows fuzz bench install uninstall deb clean setup

# Builds once, into build/bin/.
all: setup
	@cmake --preset release -DCMAKE_INSTALL_PREFIX=$(PREFIX) >/dev/null
	@cmake --build --preset release

# Builds what is installed, in build/release/: laid out by what a first build did most.
release: setup
	@cmake --preset trained -DCMAKE_INSTALL_PREFIX=$(PREFIX) >/dev/null
	@cmake --build build/release

# Lays a sample print-system root under build/demo/ and reports its server.
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

# Fails each STEP-th allocation and call of a run, plain and under the sanitizers.
STEP ?= 1
faults: setup
	@cmake --preset dev >/dev/null
	@cmake --build --preset dev --target faults | tail -n 1
	@build/dev/bin/faults $(STEP)
	@cmake --preset asan >/dev/null
	@cmake --build --preset asan --target faults | tail -n 1
	@build/asan/bin/faults $(STEP)

# Reports logs while a server writes and other runs work on them, in ROUNDS rounds of each kind.
ROUNDS ?= 2000
live: setup
	@cmake --preset dev >/dev/null
	@cmake --build --preset dev --target live | tail -n 1
	@QVLEDGER_LIVE_ROUNDS=$(ROUNDS) build/dev/bin/live

# Damages LOGS logs, and cuts and flips each byte and bit of three small ones.
LOGS ?= 10000
damage: setup
	@cmake --preset dev >/dev/null
	@cmake --build --preset dev --target unit_tests | tail -n 1
	@QVLEDGER_DAMAGED_LOGS=$(LOGS) build/dev/bin/unit_tests --gtest_filter='Damage.*'

# Stops a run at each STEP-th of its system calls, where another program acts.
stops: setup
	@cmake --preset dev >/dev/null
	@cmake --build --preset dev --target stops | tail -n 1
	@build/dev/bin/stops $(STEP)

# Cuts the power after each call of a run, with every selection of what reached the disk.
power: setup
	@cmake --preset dev >/dev/null
	@cmake --build --preset dev --target power | tail -n 1
	@build/dev/bin/power

# Lets eight threads with a handle each do ROUNDS rounds of all operations, plain and under ThreadSanitizer.
threads: ROUNDS := 2000
threads: setup
	@cmake --preset dev >/dev/null
	@cmake --build --preset dev --target threads | tail -n 1
	@build/dev/bin/threads $(ROUNDS)
	@cmake --preset tsan >/dev/null
	@cmake --build --preset tsan --target threads | tail -n 1
	@build/tsan/bin/threads $(ROUNDS)

# Builds for Windows, and compares what the programs do under wine with what they do here.
windows: setup
	@scripts/setup wine
	@cmake --preset dev >/dev/null
	@cmake --build --preset dev --target all seam | tail -n 1
	@cmake --preset windows >/dev/null
	@cmake --build --preset windows --target all seam | tail -n 1
	@scripts/windows build/dev build/windows

# Fuzzes each target (or TARGETS) for SECONDS, in turn; JOBS of them at a time.
SECONDS ?= 60
JOBS ?= 2
fuzz:
	@scripts/setup clang
	@cmake --preset fuzz >/dev/null
	@cmake --build --preset fuzz
	@scripts/fuzz build/fuzz $(SECONDS) $(JOBS) $(TARGETS)

# Measures the release build side by side with a bare reader and dump-acct; GROWTH=--growth for more.
bench:
	@scripts/setup bench
	@cmake --preset trained -B build/bench -DQVLEDGER_BENCH=ON >/dev/null
	@cmake --build build/bench | tail -n 1
	@tests/bench/run.py build/bench $(GROWTH)
	@build/bench/bin/micro --benchmark_min_time=0.2

install: release
	@DESTDIR=$(DESTDIR) cmake --install build/release

# Removes what the last `make install` wrote.
uninstall:
	@[ -e build/release/install_manifest.txt ] || { echo "uninstall: nothing is known of an installation" >&2; exit 1; }
	@xargs -d '\n' -a build/release/install_manifest.txt printf '$(DESTDIR)%s\0' | xargs -0 rm -fv --

# The Debian packages, in build/deb/packages/: the same bytes from the same commit, by the same compiler.
deb:
	@scripts/setup package
	@scripts/package build/deb

clean:
	@rm -rf build

setup:
	@scripts/setup
