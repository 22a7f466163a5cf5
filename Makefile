# A thin front: every target does its own set-up first, so that each works on a fresh machine.
.PHONY: all setup build test demo bench format lint clean

all: build

setup:
	@scripts/setup.sh

build: setup
	@cmake --preset debug >/dev/null && cmake --build --preset debug

test: build
	@ctest --preset debug -j "$$(nproc)"

demo: build
	@scripts/demo.sh

bench: setup
	@cmake --preset release >/dev/null && cmake --build --preset release --target benchmarks
	@set -e; for benchmark in build/release/bench/boot_*[a-z]; do $$benchmark; done

format: setup
	@scripts/format.sh

lint: build
	@scripts/lint.sh

clean:
	@rm -rf build
