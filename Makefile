# The two commands of the README:
#   make demo   installs what is missing, builds the library, the simulation driver and
#               the command-line program, and runs the program against the driver
#   make check  installs what is missing, checks that every include goes down the layers,
#               builds, and runs every test, first in the plain build, then with
#               AddressSanitizer and UndefinedBehaviorSanitizer
# Both are safe to run again.

SHELL := /bin/bash
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
BUILD ?= build
SANITIZE_BUILD ?= build-sanitize
PACKAGES := build-essential cmake libgtest-dev libgmock-dev libbenchmark-dev libcli11-dev libsqlite3-dev tzdata

.PHONY: all deps build build-sanitize check layers test test-sanitize demo bench clean

all: build

deps:
	@missing=""; \
	for p in $(PACKAGES); do \
	  dpkg-query -W -f='$${Status}' $$p 2>/dev/null | grep -q 'install ok installed' || missing="$$missing $$p"; \
	done; \
	if [ -n "$$missing" ]; then \
	  echo "Installing:$$missing"; \
	  sudo=""; [ "$$(id -u)" -eq 0 ] || sudo=sudo; \
	  $$sudo apt-get update -qq && \
	  DEBIAN_FRONTEND=noninteractive $$sudo apt-get install -y -qq --no-install-recommends $$missing; \
	fi

$(BUILD)/CMakeCache.txt: | deps
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo

$(SANITIZE_BUILD)/CMakeCache.txt: | deps
	cmake -S . -B $(SANITIZE_BUILD) -DCMAKE_BUILD_TYPE=Debug -DQVNRT_SANITIZE=ON -DQVNRT_BUILD_BENCH=OFF

build: deps $(BUILD)/CMakeCache.txt
	cmake --build $(BUILD) -j $(JOBS)

build-sanitize: deps $(SANITIZE_BUILD)/CMakeCache.txt
	cmake --build $(SANITIZE_BUILD) -j $(JOBS)

test: build
	cd $(BUILD) && ctest --output-on-failure --no-tests=error -j $(JOBS)

test-sanitize: build-sanitize
	cd $(SANITIZE_BUILD) && ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 \
	  UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	  ctest --output-on-failure --no-tests=error -j $(JOBS)

layers:
	tools/check-layers.sh

check: layers test test-sanitize

# The demo needs only the library, the simulation driver and the program, not the tests.
demo: deps $(BUILD)/CMakeCache.txt
	cmake --build $(BUILD) -j $(JOBS) --target qvnrt qvnsim qvnrt-cli
	./$(BUILD)/cli/qvnrt-cli demo

# Only the benchmarks need pandas (bench/compare_pandas.py).
BENCH_PACKAGES := python3-pandas

bench: build
	@dpkg-query -W -f='$${Status}' $(BENCH_PACKAGES) 2>/dev/null | grep -q 'install ok installed' || { \
	  sudo=""; [ "$$(id -u)" -eq 0 ] || sudo=sudo; \
	  DEBIAN_FRONTEND=noninteractive $$sudo apt-get install -y -qq --no-install-recommends $(BENCH_PACKAGES); }
	@for b in $(BUILD)/bench/*/bench_*; do [ -x "$$b" ] && "$$b"; done
	/usr/bin/python3 bench/compare_pandas.py $(BUILD)/bench/securities/bench_conversion

clean:
	rm -rf $(BUILD) $(SANITIZE_BUILD)
