# ZAV: the two everyday commands are `make run` and `make test`.
# Everything the build and the tests need comes from Debian's packages.

BUILD_DIR   ?= build
BUILD_TYPE  ?= RelWithDebInfo
JOBS        ?= $(shell nproc 2>/dev/null || echo 2)
CMAKE_FLAGS ?=

# Everything configure, build, packaging and tests need on a bare Debian 12. Debian's
# qt6-charts-dev needs libqt6opengl6-dev without depending on it. tests/packaging/deps-guard.sh
# fails the suite when CMake finds, or a test runs, something this list does not bring.
PACKAGES := cmake g++ make ninja-build ccache pkg-config file dpkg-dev time \
            qt6-base-dev qt6-multimedia-dev qt6-serialport-dev qt6-charts-dev qt6-svg-dev \
            libqt6opengl6-dev libgl-dev libgtest-dev libgmock-dev libbenchmark-dev \
            libhamlib-dev libhamlib-utils \
            sox socat pulseaudio pulseaudio-utils libpulse-dev gnuplot-nox xvfb xauth \
            shared-mime-info desktop-file-utils xdg-utils

SUDO := $(shell [ "$$(id -u)" = 0 ] || echo sudo)

.PHONY: deps print-packages build test run demo package bench fuzz test-sanitize clean format mutate

deps:
	@missing=""; \
	for p in $(PACKAGES); do dpkg -s $$p >/dev/null 2>&1 || missing="$$missing $$p"; done; \
	if [ -z "$$missing" ]; then exit 0; fi; \
	if ! command -v apt-get >/dev/null 2>&1; then \
	  echo "ZAV needs these packages (Debian names):$$missing"; \
	  echo "This system has no apt-get: install them with its own package manager."; exit 1; \
	fi; \
	echo "Installing:$$missing"; \
	$(SUDO) env DEBIAN_FRONTEND=noninteractive apt-get update -qq && \
	$(SUDO) env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $$missing

print-packages:
	@echo $(PACKAGES)

$(BUILD_DIR)/build.ninja:
	cmake -S . -B $(BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) $(CMAKE_FLAGS)

build: deps $(BUILD_DIR)/build.ninja
	cmake --build $(BUILD_DIR) -j $(JOBS)

test: build
	cd $(BUILD_DIR) && ctest --output-on-failure -j $(JOBS)

# ZAV keeps its default profile ZAV.zav and the data log in the folder it starts in: a
# working folder of the operator's, never the source tree.
RUN_DIR ?= $(HOME)/ZAV
run: build
	mkdir -p "$(RUN_DIR)"
	cd "$(RUN_DIR)" && "$(abspath $(BUILD_DIR))/bin/zav"

# A Debian package of both programs (build/zav_VERSION_ARCH.deb).
package: build
	cd $(BUILD_DIR) && cpack

# The three steps on the demo recordings with the example profile: prints the report.
demo: build
	$(BUILD_DIR)/bin/zavcli measure --profile examples/example.zav \
	    examples/soundcard.wav examples/receiver.wav examples/external.wav

# Figures, not tests: the detector pass and zavcli analyse against sox (Release build).
bench: deps
	cmake -S . -B build-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DZAV_BENCHMARKS=ON -DZAV_TESTS=OFF
	cmake --build build-bench -j $(JOBS)
	build-bench/bin/zav_detector_benchmark
	build-bench/bin/zav_profile_benchmark
	sh benchmarks/analyse_vs_sox.sh build-bench/bin/zavcli

# Every libFuzzer target for FUZZ_SECONDS seconds each (default 60); fails on any crash.
FUZZ_SECONDS ?= 60
fuzz: deps
	@dpkg -s clang libclang-rt-14-dev >/dev/null 2>&1 || $(SUDO) env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq clang libclang-rt-14-dev
	FUZZ_SECONDS=$(FUZZ_SECONDS) sh scripts/fuzz.sh

# Plants one-line faults in the core, one at a time, and counts how many the tests notice
# (scripts/mutations.tsv; MUTATE_ARGS="--only PATTERN" for a subset). Not part of `make test`.
MUTATE_ARGS ?=
mutate: build
	sh scripts/mutate.sh --build-dir $(BUILD_DIR) --jobs $(JOBS) $(MUTATE_ARGS)

# The whole suite built with the address and undefined-behaviour sanitizers (leaks checked).
test-sanitize: deps
	cmake -S . -B build-sanitize -G Ninja -DCMAKE_BUILD_TYPE=Debug -DZAV_SANITIZE=ON
	cmake --build build-sanitize -j $(JOBS)
	cd build-sanitize && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
	    LSAN_OPTIONS=suppressions=$(CURDIR)/tests/lsan.supp \
	    ctest --output-on-failure -j $(JOBS)

clean:
	rm -rf $(BUILD_DIR)

format:
	git ls-files '*.cpp' '*.h' | xargs clang-format -i
