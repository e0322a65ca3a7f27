# The two commands of the README:
#   make demo   installs what is missing, builds the library, the simulation driver and
#               the command-line program, and runs the program against the driver
#   make check  installs what is missing, checks that every include goes down the layers,
#               builds, and runs every test, first in the plain build, then with
#               AddressSanitizer and UndefinedBehaviorSanitizer
#   make coverage   (not part of check) builds with gcov instrumentation, runs every test
#               and prints line and branch coverage of the library's folders
# Both are safe to run again.
#   make fuzz     builds the fuzz targets with clang (tests/fuzz) and runs each for
#               FUZZ_SECONDS (300); make check runs each for a few seconds when clang is there
#   make package  builds the Debian package (cpack) in the build directory
#   make docs     builds the API reference with Doxygen, when it is installed

SHELL := /bin/bash
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
BUILD ?= build
SANITIZE_BUILD ?= build-sanitize
PACKAGE_BUILD ?= build-package
COVERAGE_BUILD ?= build-coverage
FUZZ_BUILD ?= build-fuzz
FUZZ_SECONDS ?= 300
FUZZ_CHECK_SECONDS ?= 5
FUZZ_TARGETS := registry ini profile symbol_map price_format sec_files secmaint tik driver_packets
PACKAGES := build-essential cmake pkg-config libgtest-dev libgmock-dev libbenchmark-dev \
            libcli11-dev libsqlite3-dev tzdata gcovr qt6-base-dev

.PHONY: all deps build build-sanitize check layers test test-sanitize coverage demo bench package docs clean \
        build-fuzz fuzz fuzz-check

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

check: layers test test-sanitize fuzz-check

# Fuzzing needs clang's libFuzzer; its build is separate, since everything in it is
# instrumented. New inputs go to $(FUZZ_BUILD)/corpus/<target>; the seeds in the tree stay.
$(FUZZ_BUILD)/CMakeCache.txt:
	CC=clang CXX=clang++ cmake -S . -B $(FUZZ_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DQVNRT_FUZZ=ON -DQVNRT_BUILD_TESTS=OFF -DQVNRT_BUILD_BENCH=OFF

build-fuzz: $(FUZZ_BUILD)/CMakeCache.txt
	cmake --build $(FUZZ_BUILD) -j $(JOBS) --target $(addprefix fuzz_,$(FUZZ_TARGETS))

# Each target in turn; the first finding stops the run and leaves its input in $(FUZZ_BUILD).
fuzz: build-fuzz
	@for t in $(FUZZ_TARGETS); do \
	  mkdir -p $(FUZZ_BUILD)/corpus/$$t; \
	  echo "fuzz_$$t: $(FUZZ_SECONDS) s"; \
	  $(FUZZ_BUILD)/tests/fuzz/fuzz_$$t -max_total_time=$(FUZZ_SECONDS) -print_final_stats=1 \
	    -artifact_prefix=$(FUZZ_BUILD)/ $(FUZZ_BUILD)/corpus/$$t tests/fuzz/corpus/$$t 2>&1 \
	    | grep -E '^stat::number_of_executed_units|ERROR|SUMMARY|Test unit written'; \
	  [ $${PIPESTATUS[0]} -eq 0 ] || exit 1; \
	done

fuzz-check:
	@if command -v clang++ >/dev/null; then \
	  $(MAKE) --no-print-directory build-fuzz FUZZ_SECONDS=$(FUZZ_CHECK_SECONDS) && \
	  $(MAKE) --no-print-directory fuzz FUZZ_SECONDS=$(FUZZ_CHECK_SECONDS); \
	else echo "clang is not installed: the fuzz targets are not run"; fi

# Tests, drivers, the program and the benchmarks are users of the library, not what is measured.
$(COVERAGE_BUILD)/CMakeCache.txt: | deps
	cmake -S . -B $(COVERAGE_BUILD) -DCMAKE_BUILD_TYPE=Debug -DQVNRT_COVERAGE=ON -DQVNRT_BUILD_BENCH=OFF

coverage: deps $(COVERAGE_BUILD)/CMakeCache.txt
	cmake --build $(COVERAGE_BUILD) -j $(JOBS)
	find $(COVERAGE_BUILD) -name '*.gcda' -delete
	cd $(COVERAGE_BUILD) && ctest --no-tests=error -j $(JOBS) --output-on-failure
	gcovr --root . --object-directory $(COVERAGE_BUILD) \
	  --exclude 'tests/' --exclude 'drivers/' --exclude 'bench/' --exclude 'cli/' \
	  --exclude 'examples/' --exclude '$(COVERAGE_BUILD)/' --exclude-unreachable-branches \
	  --exclude-throw-branches --print-summary --txt $(COVERAGE_BUILD)/coverage.txt

# The demo needs only the library, the simulation driver and the program, not the tests.
demo: deps $(BUILD)/CMakeCache.txt
	cmake --build $(BUILD) -j $(JOBS) --target qvnrt qvnsim qvnrt-cli
	./$(BUILD)/cli/qvnrt-cli demo

# The peers that bench/peers/ measures the library against; only `make bench` needs them.
BENCH_PACKAGES := libabsl-dev libfmt-dev python3-pandas

# Configured again so that peers installed since the last configure are found; ends with
# the table of the library's rates over its peers'.
bench:
	@$(MAKE) --no-print-directory deps PACKAGES="$(PACKAGES) $(BENCH_PACKAGES)"
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQVNRT_BUILD_BENCH=ON >/dev/null
	cmake --build $(BUILD) -j $(JOBS)
	@table=$(BUILD)/bench/peer-ratios.tsv; rm -f $$table; \
	for b in $(BUILD)/bench/*/bench_*; do [ -x "$$b" ] && QVNRT_PEER_TABLE=$$table "$$b"; done; \
	/usr/bin/python3 bench/peers/peer_table.py $$table $(BUILD)

# Its own build, without tests, for the prefix /usr and Debian's library directory.
$(PACKAGE_BUILD)/CMakeCache.txt: | deps
	cmake -S . -B $(PACKAGE_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_INSTALL_PREFIX=/usr \
	  -DQVNRT_BUILD_TESTS=OFF -DQVNRT_BUILD_BENCH=OFF

package: deps $(PACKAGE_BUILD)/CMakeCache.txt
	cmake --build $(PACKAGE_BUILD) -j $(JOBS)
	cd $(PACKAGE_BUILD) && cpack -G DEB
	@ls $(PACKAGE_BUILD)/*.deb

# Not part of check: Doxygen is optional (apt-get install doxygen).
docs:
	@command -v doxygen >/dev/null || { echo "make docs needs doxygen (apt-get install doxygen)"; exit 1; }
	mkdir -p $(BUILD)/docs
	QVNRT_DOCS_DIR=$(BUILD)/docs QVNRT_VERSION=$$(sed -n 's/^project(qvnrt VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt) \
	  doxygen docs/Doxyfile
	@echo "API reference: $(BUILD)/docs/html/index.html"

clean:
	rm -rf $(BUILD) $(SANITIZE_BUILD) $(PACKAGE_BUILD) $(COVERAGE_BUILD)
