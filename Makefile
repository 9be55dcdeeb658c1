# ZAV: the two everyday commands are `make run` and `make test`.
# Everything the build and the tests need comes from Debian's packages.

BUILD_DIR   ?= build
BUILD_TYPE  ?= RelWithDebInfo
JOBS        ?= $(shell nproc 2>/dev/null || echo 2)
CMAKE_FLAGS ?=

PACKAGES := cmake g++ make ninja-build ccache pkg-config \
            qt6-base-dev qt6-multimedia-dev qt6-serialport-dev qt6-charts-dev qt6-svg-dev \
            libgl-dev libgtest-dev libgmock-dev libbenchmark-dev \
            sox socat pulseaudio pulseaudio-utils gnuplot-nox xvfb xauth

SUDO := $(shell [ "$$(id -u)" = 0 ] || echo sudo)

.PHONY: deps build test run demo bench clean format

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

$(BUILD_DIR)/build.ninja:
	cmake -S . -B $(BUILD_DIR) -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) $(CMAKE_FLAGS)

build: deps $(BUILD_DIR)/build.ninja
	cmake --build $(BUILD_DIR) -j $(JOBS)

test: build
	cd $(BUILD_DIR) && ctest --output-on-failure -j $(JOBS)

run: build
	$(BUILD_DIR)/bin/zav

# The three steps on the demo recordings with the example profile: prints the report.
demo: build
	$(BUILD_DIR)/bin/zavcli measure --profile examples/example.zav \
	    examples/soundcard.wav examples/receiver.wav examples/external.wav

clean:
	rm -rf $(BUILD_DIR)

format:
	git ls-files '*.cpp' '*.h' | xargs clang-format -i
