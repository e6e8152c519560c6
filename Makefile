# Velarion's commands: `make run` (the demo show, headless), `make test` and
# `make bench`. Each installs what is missing, builds, and runs.

BUILD     ?= build
ASAN      ?= build-asan
FUZZ      ?= build-fuzz
TSAN      ?= build-tsan
JOBS      ?= $(shell nproc)
FUZZ_SECONDS ?= 120
# Line tables and function names only: backtraces and sanitizer reports keep
# their lines, and the four trees compile about a fifth faster than with -g.
DEBUG_INFO ?= -g1
RELEASE_FLAGS := -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O2 $(DEBUG_INFO) -DNDEBUG"
CMAKE_GEN := -G Ninja

.PHONY: deps build run test unit-test sanitize-test thread-test fuzz-test boundary-check bench clean

deps:
	@scripts/install-deps

$(BUILD)/build.ninja: CMakeLists.txt | deps
	cmake -S . -B $(BUILD) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo $(RELEASE_FLAGS)

build: deps $(BUILD)/build.ninja
	cmake --build $(BUILD) -j $(JOBS)

unit-test: build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

# The core libraries' tests again under AddressSanitizer and UBSan.
sanitize-test: deps
	cmake -S . -B $(ASAN) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG="$(DEBUG_INFO)" -DVELARION_SANITIZE=ON -DVELARION_CORE_ONLY=ON
	cmake --build $(ASAN) -j $(JOBS)
	cd $(ASAN) && ctest --output-on-failure -j $(JOBS)

# The tests that run threads again under ThreadSanitizer: the show writer's
# snapshots, the MIDI inbox, the agent socket and its requests on workers.
# Only the one program of those tests is built (ThreadTests), to keep the
# tree small; tests/CMakeLists.txt says why GStreamer's tests are not in it.
thread-test: deps
	cmake -S . -B $(TSAN) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVELARION_TSAN=ON -DVELARION_CORE_ONLY=ON -DVELARION_BENCH=OFF
	cmake --build $(TSAN) -j $(JOBS) --target ThreadTests
	cd $(TSAN) && TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1" \
	  ctest --output-on-failure -j $(JOBS)

# A short libFuzzer run of every parser of outside input, on the kept corpus:
# FUZZ_SECONDS in all, shared evenly by the fuzz programs.
fuzz-test: deps
	CC=clang CXX=clang++ cmake -S . -B $(FUZZ) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=RelWithDebInfo $(RELEASE_FLAGS) -DVELARION_FUZZ=ON
	cmake --build $(FUZZ) -j $(JOBS)
	scripts/run-fuzzers $(FUZZ) $(FUZZ_SECONDS)

boundary-check: build
	scripts/check-boundaries $(BUILD)

test: unit-test sanitize-test thread-test fuzz-test boundary-check

# The demo show on a fresh copy, opened by `velarion --headless`.
# `make run AGENT=run,edit` lets an agent run the show and build shows
# (kept in the preferences; AGENT=none takes it back).
run: build
	scripts/run-demo $(BUILD) $(AGENT)

bench: build
	cmake --build $(BUILD) -j $(JOBS) --target benchmarks
	scripts/run-benchmarks $(BUILD)

clean:
	rm -rf $(BUILD) $(ASAN) $(TSAN) $(FUZZ)
