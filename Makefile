# The front door.  Every target installs what the machine lacks first (scripts/setup).
SHELL := /bin/bash
.SHELLFLAGS := -eu -o pipefail -c

.PHONY: all test clean setup

all: setup
	@cmake --preset release >/dev/null
	@cmake --build --preset release

test: setup
	@cmake --preset dev >/dev/null
	@cmake --build --preset dev
	@ctest --preset dev

clean:
	@rm -rf build

setup:
	@scripts/setup
