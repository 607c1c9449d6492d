# Thin wrapper over CMake. `make test` and `make run` install what they need first.
BUILD    ?= build
SANITIZE ?= OFF
# BENCH=OFF leaves the benchmarks out, DESKTOP_TESTS=OFF the window, tray and page tests (CI's
# sanitizer build does both); CTEST_ARGS narrows `make test`, e.g. CTEST_ARGS="-LE 'e2e|faults'".
BENCH    ?= ON
DESKTOP_TESTS ?= ON
CTEST_ARGS ?=
# `make tidy TIDY_FILES="src/a.cpp src/b.hpp"` checks only those files.
TIDY_FILES ?=
JOBS     ?= $(shell nproc 2>/dev/null || echo 2)
# Where `make install` puts things: /usr, as a distribution package would (the Linux texts point
# at the polkit rule example under this prefix). DESTDIR stages the whole tree under another
# root (for packaging); `make uninstall` removes what the last install put down.
PREFIX   ?= /usr
DESTDIR  ?=
EXE       = $(BUILD)/velmora-heat-monitor
# `make fuzz`: how long each fuzzer runs, and where the clang build goes.
FUZZ_SECONDS ?= 30
FUZZ_BUILD   ?= build-fuzz

.PHONY: deps configure build test run install uninstall bench fuzz format format-check tidy clean

deps:
	@scripts/install-deps

# The benchmarks are built with everything else, so that a change that breaks one fails the
# build; `make bench` runs them from an optimised build of their own.
configure: deps
	cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVELMORA_SANITIZE=$(SANITIZE) \
	  -DVELMORA_BUILD_BENCH=$(BENCH) -DVELMORA_DESKTOP_TESTS=$(DESKTOP_TESTS) \
	  -DCMAKE_INSTALL_PREFIX=$(PREFIX)

build: configure
	cmake --build $(BUILD) -j $(JOBS)

test: build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS) $(CTEST_ARGS)

# On a desktop this opens the window, without a display it is the headless watchdog; ARGS
# adds switches, e.g.
# make run ARGS="--dry-run-shutdown --test-emergency"
# On a Mac the program is an application bundle and is opened as one.
ifeq ($(shell uname -s),Darwin)
RUN = open -n "$(BUILD)/Velmora Heat Monitor.app" --args
else
RUN = $(EXE)
endif
run: build
	$(RUN) $(ARGS)

install: build
	DESTDIR="$(DESTDIR)" cmake --install $(BUILD)

uninstall:
	DESTDIR="$(DESTDIR)" cmake --build $(BUILD) --target uninstall

bench: deps
	cmake -S . -B $(BUILD)-bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DVELMORA_BUILD_BENCH=ON
	cmake --build $(BUILD)-bench -j $(JOBS)
	@for b in $(BUILD)-bench/bench/*_bench; do [ -x "$$b" ] && "$$b"; done; true
	bench/idle_cost.sh $(BUILD)-bench/velmora-heat-monitor

# libFuzzer on every decoder of outside input, one core at a time, each on a copy of its corpus.
fuzz:
	@scripts/install-deps fuzz
	CC=clang CXX=clang++ cmake -S . -B $(FUZZ_BUILD) -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
	  -DVELMORA_FUZZ=ON -DVELMORA_BUILD_TESTS=OFF
	cmake --build $(FUZZ_BUILD) -j $(JOBS) --target velmora_fuzzers
	scripts/run-fuzzers $(FUZZ_BUILD) $(FUZZ_SECONDS)

# The same checks CI runs: `make format-check` and `make tidy` fail on any finding; `make format`
# rewrites the files in place.
format:
	scripts/format

format-check:
	scripts/format --check

tidy: configure
	JOBS=$(JOBS) scripts/tidy $(BUILD) $(TIDY_FILES)

clean:
	rm -rf $(BUILD) $(BUILD)-bench $(BUILD)-asan $(FUZZ_BUILD)
