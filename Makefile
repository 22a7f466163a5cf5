# A thin front: every target does its own set-up first, so that each works on a fresh machine.
.PHONY: all setup setup-ci build test demo bench format lint docs package clean

all: build

setup:
	@scripts/setup.sh

setup-ci:
	@scripts/setup.sh --ci

build: setup
	@cmake --preset debug >/dev/null && cmake --build --preset debug

test: build
	@ctest --preset debug -j "$$(nproc)"

demo: build
	@scripts/demo.sh

bench: setup
	@cmake --preset release >/dev/null && cmake --build --preset release --target benchmarks
	@set -e; for benchmark in boot_apply boot_load staging shell; do build/release/bench/$$benchmark; done

format: setup-ci
	@scripts/format.sh

lint: build setup-ci
	@scripts/lint.sh

docs: setup-ci
	@rm -rf build/docs && mkdir -p build/docs && doxygen docs/Doxyfile

package: setup-ci
	@cmake --preset package >/dev/null && cmake --build --preset package && cpack --preset package

clean:
	@rm -rf build
